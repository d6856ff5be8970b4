#include <gmock/gmock.h>

#include <cmath>
#include <fstream>
#include <vector>

#include "hotfix/base/PropertyList.h"
#include "support/BinaryListWriter.h"
#include "support/Judge.h"
#include "support/Proves.h"
#include "support/RandomValue.h"
#include "support/TemporaryFolder.h"
#include "support/XmlList.h"

// Property lists before programs of other makers: what is written here is read there, what they
// write is read here, and no value changes on the way.
namespace installer::PropertyList {
namespace {

using test::askJudge;
using test::JudgeVerdict;

// A value as lines that Python can write as well, whatever its type and content.
class Dump {
 public:
  static std::string of(const Value& value) {
    Dump dump;
    dump.add(value);
    return dump._text;
  }

 private:
  void add(const Value& value) {
    std::visit([this](const auto& held) { addHeld(held); }, value.storage());
  }

  void line(const char* type, const std::string& content) {
    _text.append(type).append(" ").append(content).append("\n");
  }

  static std::string hex(std::string_view bytes) {
    std::string digits;
    for (const char byte : bytes)
      for (const int shift : {4, 0})
        digits += "0123456789abcdef"[(static_cast<unsigned char>(byte) >> shift) & 0xF];
    return digits;
  }

  void addHeld(const std::string& text) { line("text", hex(text)); }
  void addHeld(bool flag) { line("flag", flag ? "1" : "0"); }
  void addHeld(std::int64_t number) { line("integer", std::to_string(number)); }
  void addHeld(std::uint64_t number) { line("integer", std::to_string(number)); }
  void addHeld(double number) {
    line("real", hex(test::bigEndian(std::bit_cast<std::uint64_t>(number), 8)));
  }
  void addHeld(const Data& data) { line("data", hex(data.bytes)); }
  void addHeld(const Date& date) {
    line("date", std::to_string(static_cast<std::int64_t>(date.seconds)));
  }
  void addHeld(const Uid& uid) { line("uid", std::to_string(uid.number)); }
  void addHeld(const Array& array) {
    line("array", std::to_string(array.size()));
    for (const Value& value : array) add(value);
  }
  void addHeld(const Dictionary& dictionary) {
    line("dict", std::to_string(dictionary.size()));
    for (const auto& [key, value] : dictionary) {
      addHeld(key);
      add(value);
    }
  }

  std::string _text;
};

constexpr const char* kPython = R"(
import datetime, glob, plistlib, struct, sys

def is_uid(value):
    return isinstance(value, dict) and list(value) == ["CF$UID"] and type(value["CF$UID"]) is int

def dump(value):
    if isinstance(value, str): return "text " + value.encode().hex() + "\n"
    if isinstance(value, bool): return "flag " + str(int(value)) + "\n"
    if isinstance(value, int): return "integer " + str(value) + "\n"
    if isinstance(value, float): return "real " + struct.pack(">d", value).hex() + "\n"
    if isinstance(value, bytes): return "data " + value.hex() + "\n"
    if isinstance(value, datetime.datetime):
        return "date " + str(round((value - datetime.datetime(2001, 1, 1)).total_seconds())) + "\n"
    if isinstance(value, plistlib.UID): return "uid " + str(value.data) + "\n"
    if is_uid(value): return "uid " + str(value["CF$UID"]) + "\n"
    if isinstance(value, list): return "array %d\n" % len(value) + "".join(map(dump, value))
    return "dict %d\n" % len(value) + "".join(dump(k) + dump(v) for k, v in value.items())

def binary(value):
    if is_uid(value): return plistlib.UID(value["CF$UID"])
    if isinstance(value, dict): return {k: binary(v) for k, v in value.items()}
    if isinstance(value, list): return [binary(v) for v in value]
    return value

files = sorted(glob.glob("*.plist"))
for name in files:
    with open(name, "rb") as file: value = plistlib.load(file)
    if dump(value) != open(name + ".dump").read(): print("differs:", name)
    with open(name + ".xml", "wb") as file:
        plistlib.dump(value, file, fmt=plistlib.FMT_XML, sort_keys=False)
    with open(name + ".bin", "wb") as file:
        plistlib.dump(binary(value), file, fmt=plistlib.FMT_BINARY, sort_keys=False)
print("read", len(files))
)";

// What a list may hold, in the words of a schema.
constexpr const char* kSchema = R"(
<grammar xmlns="http://relaxng.org/ns/structure/1.0"
         datatypeLibrary="http://www.w3.org/2001/XMLSchema-datatypes">
  <start>
    <element name="plist"><attribute name="version"><value>1.0</value></attribute>
      <ref name="value"/></element>
  </start>
  <define name="value">
    <choice>
      <element name="string"><text/></element>
      <element name="data"><data type="base64Binary"/></element>
      <element name="date"><data type="dateTime"/></element>
      <element name="integer"><data type="integer"/></element>
      <element name="real"><data type="double"/></element>
      <element name="true"><empty/></element>
      <element name="false"><empty/></element>
      <element name="array"><zeroOrMore><ref name="value"/></zeroOrMore></element>
      <element name="dict">
        <zeroOrMore><element name="key"><text/></element><ref name="value"/></zeroOrMore>
      </element>
    </choice>
  </define>
</grammar>
)";

class PropertyListJudgeTest : public ::testing::Test {
 protected:
  // Random lists as files "<n>.plist", each with its dump beside it.
  void writeLists(std::uint64_t seed, std::size_t count) {
    test::RandomValues random(seed);
    for (std::size_t number = 0; number < count; ++number) {
      _values.push_back(random.dictionary(8, 4));
      const std::optional<std::string> bytes = serialize(_values.back());
      ASSERT_TRUE(bytes) << number;
      _folder.makeFile(name(number), *bytes);
      _folder.makeFile(name(number) + ".dump", Dump::of(_values.back()));
    }
  }

  // Reads the list that a judge made of each, which must hold the same values in the same order.
  void expectSameLists(const std::string& ending) {
    for (std::size_t number = 0; number < _values.size(); ++number) {
      const std::optional<Value> read = parse(_folder.content(name(number) + ending));
      ASSERT_TRUE(read) << name(number) << ending;
      ASSERT_EQ(serialize(*read), serialize(_values[number])) << name(number) << ending;
    }
  }

  static std::string name(std::size_t number) { return std::to_string(number) + ".plist"; }

  test::TemporaryFolder _folder;
  std::vector<Value> _values;
};

TEST_F(PropertyListJudgeTest, PythonReadsWhatIsWrittenAndIsReadInTurn) {
  proves("LIST-19");
  writeLists(1, 200);
  _folder.makeFile("judge.py", kPython);

  const JudgeVerdict verdict = askJudge(_folder.path(), "python3 judge.py");

  ASSERT_EQ(verdict.output, "read 200\n");
  ASSERT_EQ(verdict.status, 0);
  expectSameLists(".xml");
  expectSameLists(".bin");
}

TEST_F(PropertyListJudgeTest, PlistutilReadsWhatIsWrittenAndIsReadInTurn) {
  proves("LIST-19");
  writeLists(2, 200);

  const JudgeVerdict verdict =
      askJudge(_folder.path(),
               "for list in *.plist; do plistutil -i $list -o $list.bin -f bin && "
               "plistutil -i $list.bin -o $list.xml -f xml || exit 1; done");

  ASSERT_EQ(verdict.output, "");
  ASSERT_EQ(verdict.status, 0);
  expectSameLists(".bin");
  expectSameLists(".xml");
}

TEST_F(PropertyListJudgeTest, XmllintFindsWhatIsWrittenValid) {
  proves("LIST-19");
  writeLists(3, 200);
  _folder.makeFile("schema", kSchema);

  // With the document type in place xmllint would ask the network for it.
  const JudgeVerdict verdict =
      askJudge(_folder.path(),
               "xmllint --nonet --noout *.plist && sed -i '/^<!DOCTYPE plist /d' *.plist && "
               "xmllint --nonet --noout --relaxng schema *.plist >told 2>&1; status=$?; "
               "grep -v ' validates$' told; exit $status");

  EXPECT_EQ(verdict.output, "");
  EXPECT_EQ(verdict.status, 0);
}

TEST_F(PropertyListJudgeTest, WhatXmllintWritesInAnyEncodingIsRead) {
  proves("LIST-6");
  writeLists(8, 5);
  for (const std::string encoding : test::kXmllintEncodings) {
    const JudgeVerdict verdict =
        askJudge(_folder.path(), "for list in *.plist; do xmllint --nonet --encode " + encoding +
                                     " --output $list." + encoding + " $list || exit 1; done");

    ASSERT_EQ(verdict.output, "") << encoding;
    ASSERT_EQ(verdict.status, 0) << encoding;
    expectSameLists("." + encoding);
  }
}

TEST_F(PropertyListJudgeTest, PythonReadsTheEdgesOfEveryType) {
  proves("LIST-19");
  const double infinity = HUGE_VAL;
  const Value value(
      Array{std::numeric_limits<std::int64_t>::min(), std::numeric_limits<std::int64_t>::max(),
            std::numeric_limits<std::uint64_t>::max(), infinity, -infinity, -0.0,
            std::numeric_limits<double>::denorm_min(), std::numeric_limits<double>::max(),
            Date{-63113904000}, Date{252423993599}, "a\r\nb\rc", Data{std::string(1000, '\0')},
            std::string(100'000, 'x'), Dictionary{{"", Array{}}}});
  _folder.makeFile("0.plist", *serialize(value));
  _folder.makeFile("0.plist.dump", Dump::of(value));
  _folder.makeFile("judge.py", kPython);

  const JudgeVerdict verdict = askJudge(_folder.path(), "python3 judge.py");

  EXPECT_EQ(verdict.output, "read 1\n");
  EXPECT_EQ(parse(_folder.content("0.plist.bin")), value);
}

TEST_F(PropertyListJudgeTest, DatesOfPythonKeepThePartOfASecondInMemoryOnly) {
  const JudgeVerdict verdict =
      askJudge(_folder.path(),
               "python3 -c 'import datetime, plistlib; open(\"d\", \"wb\").write(plistlib.dumps("
               "datetime.datetime(2001, 1, 1, 0, 0, 1, 750000), fmt=plistlib.FMT_BINARY))'");
  ASSERT_EQ(verdict.output, "");

  const std::optional<Value> read = parse(_folder.content("d"));

  EXPECT_EQ(read, Value(Date{1.75}));
  EXPECT_EQ(serialize(*read), test::xmlList("<date>2001-01-01T00:00:01Z</date>"));
}

// --- Models and faults ---------------------------------------------------------------------------

TEST(PropertyListModelTest, BinaryListsOfEverySizeAreReadAsTheyWereMeant) {
  proves("LIST-16");
  test::RandomValues random(4);
  for (std::size_t round = 0; round < 2000; ++round) {
    const Value value(random.dictionary(8, 4));
    const std::size_t offsetSize = 3 + round % 6;
    const std::size_t referenceSize = 2 + round % 7;

    ASSERT_EQ(parse(test::BinaryListWriter(offsetSize, referenceSize).bytes(value)), value)
        << round;
  }
}

TEST(PropertyListModelTest, WhatIsWrittenIsReadBackUnchanged) {
  proves("LIST-16");
  test::RandomValues random(5);
  for (std::size_t round = 0; round < 2000; ++round) {
    const Value value(random.dictionary(8, 4));
    const std::optional<std::string> bytes = serialize(value);

    ASSERT_TRUE(bytes) << round;
    ASSERT_EQ(parse(*bytes), value) << round;
  }
}

// A few bytes changed, cut out or put in, most often near the end, where the binary form keeps its
// sizes and offsets.
std::string damaged(std::string bytes, test::RandomSource& random) {
  for (std::size_t left = 1 + random.below(4); left > 0 && !bytes.empty(); --left) {
    const std::size_t tail = std::min<std::size_t>(bytes.size(), 64);
    const std::size_t place =
        random.below(2) == 0 ? random.below(bytes.size()) : bytes.size() - 1 - random.below(tail);
    switch (random.below(4)) {
      case 0:
        bytes.erase(place, 1 + random.below(8));
        break;
      case 1:
        bytes.insert(place, 1, static_cast<char>(random.next()));
        break;
      default:
        bytes[place] = static_cast<char>(random.next() & 0xFF);
    }
  }
  return bytes;
}

// Whatever is read of a damaged list can be written and read again, or not be written at all.
void expectConsistent(const std::string& bytes) {
  const std::optional<Value> read = parse(bytes);
  if (!read) return;
  const std::optional<std::string> written = serialize(*read);
  if (!written) return;
  const std::optional<Value> again = parse(*written);
  ASSERT_TRUE(again);
  EXPECT_EQ(serialize(*again), written);
}

TEST(PropertyListFaultTest, DamagedBinaryListsAreReadOrRefusedInBoundedTime) {
  proves("LIST-10");
  test::RandomValues values(6);
  test::RandomSource random(6);
  for (std::size_t round = 0; round < 200; ++round) {
    const std::string whole =
        test::BinaryListWriter(2 + round % 2, 2).bytes(values.dictionary(5, 3));
    for (std::size_t copy = 0; copy < 100; ++copy) expectConsistent(damaged(whole, random));
  }
}

TEST(PropertyListFaultTest, DamagedXmlListsAreReadOrRefusedSilently) {
  proves("LIST-10");
  test::RandomValues values(7);
  test::RandomSource random(7);
  ::testing::internal::CaptureStderr();

  for (std::size_t round = 0; round < 100; ++round) {
    const std::string whole = *serialize(values.dictionary(5, 3));
    for (std::size_t copy = 0; copy < 50; ++copy) expectConsistent(damaged(whole, random));
  }

  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
}

}  // namespace
}  // namespace installer::PropertyList
