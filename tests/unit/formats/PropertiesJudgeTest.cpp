#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "hotfix/formats/Properties.h"
#include "platform/FileManager.h"
#include "platform/Platform.h"
#include "support/Judge.h"
#include "support/Proves.h"
#include "support/Sandbox.h"

// Files that other programs made, rewritten without a change, before the program that made them: it
// finds every value that it wrote, in the order in which it wrote them.
namespace installer {
namespace {

using test::askJudge;
using test::JudgeVerdict;

// Makes random lists in every form that Python knows, each as "<n>.<form>.plist", and keeps the
// values in "<n>.expected".
constexpr const char* kMaker = R"(
import datetime, plistlib, random

ENCODINGS = {"utf8": "UTF-8", "mark": "utf-8-sig", "utf16": "UTF-16", "latin1": "ISO-8859-1",
             "ascii": "US-ASCII", "west": "windows-1252", "cyrillic": "KOI8-R"}
PIECES = ["a", "Z", "0", " ", "\t", "\n", "<", "&", ">", '"', "'", "]]>", "&amp;", "\u00e9",
          "\u0436", "\u65e5", "\u20ac", "\u0085", "\ufffd", "\U0001f600", "\U0010ffff"]

def text(chance): return "".join(chance.choices(PIECES, k=chance.randrange(0, 30)))

def real(chance):
    return chance.choice([-0.0, 0.1, 1e300, 5e-324, -1.5e-7, float("inf"), float("-inf"),
                          chance.uniform(-1e6, 1e6), float(chance.getrandbits(60))])

def date(chance):
    return datetime.datetime(1, 1, 1) + datetime.timedelta(seconds=chance.randrange(315537897599))

def integer(chance):
    return chance.choice([chance.getrandbits(64), -chance.getrandbits(63), chance.randrange(300),
                          2 ** chance.randrange(64), -2 ** 63, 2 ** 64 - 1])

def leaf(chance):
    make = chance.choice([text, real, date, integer, lambda c: c.random() < 0.5,
                          lambda c: c.randbytes(c.randrange(300))])
    return make(chance)

def value(chance, depth):
    kind = chance.randrange(8 if depth else 6)
    if kind < 6: return leaf(chance)
    if kind == 6: return [value(chance, depth - 1) for _ in range(chance.randrange(20))]
    return dictionary(chance, depth - 1)

def dictionary(chance, depth):
    return {text(chance): value(chance, depth) for _ in range(chance.randrange(20))}

def save(name, content):
    with open(name, "wb") as file: file.write(content)

count = 0
for number in range(40):
    chance = random.Random(number)
    list_ = dictionary(chance, 3)
    xml = plistlib.dumps(list_, fmt=plistlib.FMT_XML, sort_keys=False).decode()
    for form, encoding in ENCODINGS.items():
        told = xml.replace("UTF-8", "UTF-8" if form == "mark" else encoding, 1)
        save(f"{number}.{form}.plist", told.encode(encoding, "xmlcharrefreplace"))
    save(f"{number}.binary.plist",
         plistlib.dumps(list_, fmt=plistlib.FMT_BINARY, sort_keys=False))
    save(f"{number}.archive.plist",
         plistlib.dumps({"top": plistlib.UID(chance.getrandbits(32)), "values": list_},
                        fmt=plistlib.FMT_BINARY, sort_keys=False))
    save(f"{number}.expected",
         plistlib.dumps(list_, fmt=plistlib.FMT_BINARY, sort_keys=False))
    count += len(ENCODINGS) + 2
print("made", count)
)";

constexpr const char* kJudge = R"(
import glob, plistlib, struct

def plain(value):
    if isinstance(value, dict): return ["dict", [[key, plain(v)] for key, v in value.items()]]
    if isinstance(value, list): return ["list", [plain(v) for v in value]]
    if isinstance(value, float): return ["real", struct.pack(">d", value)]
    return [type(value).__name__, value]

def load(name):
    with open(name, "rb") as file: return plistlib.load(file)

count = 0
for name in glob.glob("*.plist"):
    read = load(name)
    number, form, _ = name.split(".")
    if form == "archive":
        if list(read) != ["top", "values"] or list(read["top"]) != ["CF$UID"]: print("lost", name)
        read = read["values"]
    if plain(read) != plain(load(number + ".expected")): print("differs:", name)
    count += 1
print("compared", count)
)";

TEST(PropertiesJudgeTest, RewritingAForeignFileKeepsEveryValueInOrder) {
  proves("STORE-4");
  const test::Sandbox sandbox;
  sandbox.write("tmp/make.py", kMaker);
  sandbox.write("tmp/judge.py", kJudge);
  const JudgeVerdict made = askJudge(sandbox.path("tmp"), "python3 make.py");
  ASSERT_EQ(made.output, "made 360\n");

  const std::optional<std::vector<std::string>> names =
      Platform::current().files->list(sandbox.path("tmp"));
  for (const std::string& name : *names) {
    if (!name.ends_with(".plist")) continue;
    const std::string file = sandbox.path("tmp/" + name);
    const Properties properties(file);
    sandbox.remove(file);
    ASSERT_TRUE(properties.savePropertiesToFile(std::nullopt)) << name;
    ASSERT_TRUE(sandbox.exists(file)) << name;
  }

  const JudgeVerdict verdict = askJudge(sandbox.path("tmp"), "python3 judge.py");
  EXPECT_EQ(verdict.output, "compared 360\n");
  EXPECT_EQ(verdict.status, 0);
}

}  // namespace
}  // namespace installer
