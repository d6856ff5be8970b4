#include <gmock/gmock.h>

#include <random>

#include "cli/Fixtures.h"
#include "support/Proves.h"
#include "support/models/PropertiesReaderModel.h"
#include "support/models/PropertiesWriterModel.h"

namespace installer::cli {
namespace {

using model::Entries;
using model::merged;
using model::readProperties;
using model::store;
using model::valueOf;
using model::writtenProperties;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

struct Text {
  const char* name;
  std::string text;
  std::string saved;  // what a rewrite of the text leaves, by first sight
};
void PrintTo(const Text& text, std::ostream* stream) {
  *stream << text.name;
}

// The dialect of properties files, seen in what a rewrite leaves of a text.
class DialectTest : public InstallerTest, public ::testing::WithParamInterface<Text> {};

TEST_P(DialectTest, IsWrittenAsItWasUnderstoodFromTheHotfix) {
  proves("PROPERTIES-14");
  _sandbox.writeFile(_instance.customization(), "");
  _sandbox.writeFile(_package.deployFile("plugin_customization.ini"), GetParam().text);

  ASSERT_EQ(0, install().status);

  EXPECT_EQ(GetParam().saved, _sandbox.readFile(_instance.customization()));
}

TEST_P(DialectTest, IsWrittenAsItWasUnderstoodInTheInstance) {
  proves("PROPERTIES-14");
  _sandbox.writeFile(_instance.customization(), GetParam().text);
  _sandbox.writeFile(_package.deployFile("plugin_customization.ini"), "");

  ASSERT_EQ(0, install().status);

  EXPECT_EQ(GetParam().saved, _sandbox.readFile(_instance.customization()));
}

TEST_P(DialectTest, IsUnderstoodByTheTestsModelToo) {
  EXPECT_EQ(GetParam().saved, writtenProperties(readProperties(GetParam().text)));
}

TEST_P(DialectTest, WrittenTextIsUnderstoodAgainTheSameWay) {
  proves("PROPERTIES-14");
  _sandbox.writeFile(_instance.customization(), GetParam().text);
  ASSERT_EQ(0, install().status);
  const std::string once = *_sandbox.readFile(_instance.customization());

  ASSERT_EQ(0, install().status);

  const Entries again = merged(readProperties(once), {{"b", "3"}, {"c", "4"}});
  EXPECT_EQ(writtenProperties(again), _sandbox.readFile(_instance.customization()));
}

INSTANTIATE_TEST_SUITE_P(
    Texts, DialectTest,
    ::testing::Values(
        Text{"Nothing", "", ""}, Text{"CommentsOnly", "# a\n#b=1\n", ""},
        Text{"BlankLine", "\n", ""}, Text{"KeyAlone", "key\n", "key=\n"},
        Text{"KeyAndEquals", "key=\n", "key=\n"}, Text{"Blanks", "key = value\n", "key=value\n"},
        Text{"Colon", "key:value\n", "key=value\n"},
        Text{"BlankOnly", "key value\n", "key=value\n"}, Text{"Tab", "key\tvalue\n", "key=value\n"},
        Text{"RunOfSeparators", "key =:\t = value\n", "key=value\n"},
        Text{"SeparatorsOnly", "= : =\n", ""}, Text{"SecondEquals", "a=b=c\n", "a=b\\=c\n"},
        Text{"BlankInValue", "a=b c\n", "a=b c\n"},
        Text{"EscapedColonSeparates", "a\\:b=c\n", "a=b\\=c\n"},
        Text{"EscapedBlankSeparates", "a\\ b=c\n", "a=b\\=c\n"},
        Text{"EscapedEqualsSeparates", "a\\=b\n", "a=b\n"},
        Text{"DoubledBackslash", "a\\\\b=c\n", "a\\\\b=c\n"},
        Text{"DoubledBackslashInValue", "a=b\\\\c\n", "a=b\\\\c\n"},
        Text{"TripledBackslash", "a=b\\\\\\c\n", "a=b\\\\c\n"},
        Text{"BackslashBeforeLetter", "a=b\\n\n", "a=b\\\\n\n"},
        Text{"EscapedNumberSign", "a=\\#b\n", "a=\\#b\n"},
        Text{"NumberSignInValue", "a=b#c\n", "a=b\\#c\n"},
        Text{"EscapedExclamation", "\\!x=1\n", "\\!x=1\n"},
        Text{"NoCommentMarker", "!x=1\n", "\\!x=1\n"}, Text{"IndentedComment", "  # x=1\n", ""},
        Text{"IndentedKey", " \t a=1 \t \n", "a=1\n"},
        Text{"OptionAlone", "-Xmx512m\n", "-Xmx512m=\n"},
        Text{"OptionKeepsItsSeparator", "-Xbootclasspath/a:x.jar\n",
             "-Xbootclasspath/a=\\:x.jar\n"},
        Text{"OptionKeepsTheRunOfSeparators", "-Xa = b\n", "-Xa= \\= b\n"},
        Text{"SmallXIsNoOption", "-xa:b\n", "-xa=b\n"},
        Text{"ShortLineKeepsTheOptionFlag", "-Xa\n=\nb\n", "-Xa=\nb=\n"},
        Text{"OrdinaryLineEndsTheOptionFlag", "-Xa:b\nc:d\n", "-Xa=\\:b\nc=d\n"},
        Text{"ContinuedValueLosesItsLine", "a=1 \\\n2\n", ""},
        Text{"ContinuationThenOrdinaryLine", "a=1 \\\n2\nb=3\n", "b=3\n"},
        Text{"ContinuedLineWithSeparators", "a=1 \\\nb=2\n", ""},
        Text{"CommentBehindContinuation", "a=1 \\\n# x\n2\nb=3\n", "b=3\n"},
        Text{"BlankLineBehindContinuation", "a=1 \\\n\nb=3\nc=4\n", "c=4\n"},
        Text{"ContinuationAtTheEnd", "a=1\nb=2 \\", "a=1\n"},
        Text{"BackslashWithoutBlank", "a=1\\\nb=2\n", "a=1\\\\\nb=2\n"},
        Text{"BackslashAlone", "\\\n", "\\\\=\n"},
        Text{"UnicodeEscapeStays", "k=\\u00e9\n", "k=\\u00e9\n"},
        Text{"UnicodeEscapeInKeyDoubles", "\\u00e9=k\n", "\\\\u00e9=k\n"},
        Text{"CapitalUnicodeEscapeDoubles", "k=\\U00e9\n", "k=\\\\U00e9\n"},
        Text{"LatinLetter", "k=\xE9\n", "k=\\u00e9\n"}, Text{"LatinKey", "\xE9=k\n", "\\u00e9=k\n"},
        Text{"Utf8IsTwoLatinLetters", "k=\xC3\xA9\n", "k=\\u00c3\\u00a9\n"},
        Text{"TabInValue", "k=a\tb\n", "k=a\\u0009b\n"}, Text{"Delete", "k=\x7F\n", "k=\\u007f\n"},
        Text{"Tilde", "k=~\n", "k=~\n"}, Text{"Null", std::string("k=a\0b\n", 6), "k=a\\u0000b\n"},
        Text{"CarriageReturns", "a=1\r\nb=2\r\n", "a=1\nb=2\n"},
        Text{"CarriageReturnInside", "a=1\rb=2\n", "a=1\\u000db\\=2\n"},
        Text{"NoBreakSpaceIsTrimmed",
             "\xA0"
             "a=1\xA0\n",
             "a=1\n"},
        Text{"NextLineIsTrimmed",
             "\x85"
             "a=1\x85\n",
             "a=1\n"},
        Text{"FormFeedIsTrimmed", "\f\va=1\f\n", "a=1\n"},
        Text{"LastWins", "k=1\nj=0\nk=2\n", "k=2\nj=0\n"},
        Text{"EmptyKeyIsDropped", "=1\n:2\n", ""}, Text{"NoLastLineFeed", "a=1\nb=2", "a=1\nb=2\n"},
        Text{"Path", "p=c:\\dir\n", "p=c\\:\\\\dir\n"},
        Text{"ColonsAndMarks", "k=a:b!c\n", "k=a\\:b\\!c\n"},
        Text{"LeadingBlankOfValueIsConsumed", "k=  v\n", "k=v\n"},
        Text{"Apostrophes", "k='a' \"b\"\n", "k='a' \"b\"\n"}),
    CaseName());

class PropertiesFileTest : public InstallerTest {};

TEST_F(PropertiesFileTest, LongPropertiesFileIsMerged) {
  std::string text;
  for (int i = 0; i < 20'000; ++i) text += "key" + std::to_string(i) + "=value\n";
  _sandbox.writeFile(_instance.customization(), text);
  _sandbox.writeFile(_package.deployFile("plugin_customization.ini"), "key7=other\nlast=1\n");

  ASSERT_EQ(0, install().status);

  const Entries entries = merged(readProperties(text), {{"key7", "other"}, {"last", "1"}});
  EXPECT_EQ(writtenProperties(entries), _sandbox.readFile(_instance.customization()));
}

TEST_F(PropertiesFileTest, OneVeryLongLineIsMerged) {
  proves("PROPERTIES-3");
  const std::string text = "k=" + std::string(3'000'000, 'v') + "\n";
  _sandbox.writeFile(_package.deployFile("plugin_customization.ini"), text);

  ASSERT_EQ(0, install().status);

  EXPECT_EQ("a=1\nb=2\n" + text, _sandbox.readFile(_instance.customization()));
}

TEST_F(PropertiesFileTest, MergedFileKeepsTheOrderOfFirstSight) {
  _sandbox.writeFile(_instance.customization(), "z=1\na=2\nm=3\n");
  _sandbox.writeFile(_package.deployFile("plugin_customization.ini"), "m=4\ny=5\nb=6\n");

  ASSERT_EQ(0, install().status);

  EXPECT_EQ("z=1\na=2\nm=4\ny=5\nb=6\n", _sandbox.readFile(_instance.customization()));
}

// --- Generated texts -----------------------------------------------------------------------------

class TextGenerator {
 public:
  explicit TextGenerator(unsigned seed) : _random(seed) {}

  std::string text() {
    std::string result;
    const int lines = number(0, 8);
    for (int i = 0; i < lines; ++i) result += line() + (number(0, 9) == 0 ? "\r\n" : "\n");
    if (number(0, 3) == 0) result += line();
    return result;
  }

  int number(int from, int to) { return std::uniform_int_distribution<int>(from, to)(_random); }

 private:
  std::string line() {
    switch (number(0, 9)) {
      case 0:
        return "";
      case 1:
        return "# " + part(6);
      case 2:
        return "-X" + part(8);
      case 3:
        return part(4) + "=" + part(5) + " \\";
      case 4:
        return std::string(1, character());
      default:
        return part(4) + part(1) + "=" + part(8);
    }
  }

  std::string part(int most) {
    std::string result;
    const int length = number(0, most);
    for (int i = 0; i < length; ++i) result += character();
    return result;
  }

  char character() {
    using namespace std::string_literals;
    static const std::string special = "\\\\\\\\   ==::##!!\t\ruX-\xE9\x85\xA0\x7F\f\v\0\x01~"s;
    if (number(0, 2) == 0) return "abcdk0129"[number(0, 8)];
    if (number(0, 40) == 0) return static_cast<char>(number(0, 255) | 0x80);
    return special[static_cast<std::size_t>(number(0, static_cast<int>(special.size()) - 1))];
  }

  std::mt19937 _random;
};

bool isSuccess(const Entries& result) {
  const auto code = valueOf(result, "rc");
  if (!code) return false;
  const long long number = std::strtoll(code->c_str(), nullptr, 10);
  return number == 0 || number == 2;
}

// The launcher's and the workspace's properties through one run: the install id follows the
// version, both files are rewritten, and the launcher's is read and rewritten once more for the
// new stamp.
std::pair<std::string, std::string> rewritten(const std::string& launcher,
                                              const std::string& workspace,
                                              const std::string& stamp) {
  Entries first = readProperties(launcher), data = readProperties(workspace);
  if (const auto version = valueOf(first, "provisioning.manifest.version")) {
    store(first, "rcp.install.id", *version);
    store(data, "rcp.install.id", *version);
  }
  Entries second = readProperties(writtenProperties(first));
  store(second, "provisioning.manifest.version", stamp);
  return {writtenProperties(second), writtenProperties(data)};
}

// Four files of generated text each, all rewritten or read by one run.
class GeneratedTextsTest : public InstallerTest, public ::testing::WithParamInterface<unsigned> {};

TEST_P(GeneratedTextsTest, AreReadAndWrittenAsTheModelDoes) {
  proves("PROPERTIES-14");
  TextGenerator generate(GetParam());
  const std::string instance = generate.text(), hotfix = generate.text();
  std::string launcher = generate.text(), workspace = generate.text();
  std::string result = generate.text() + "\nrc" + (generate.number(0, 1) == 0 ? "=" : " : ") +
                       std::to_string(generate.number(-1, 3)) + "\n";
  if (generate.number(0, 1) == 0) launcher += "\nprovisioning.manifest.version=12\n";
  if (generate.number(0, 3) == 0) result += generate.text();
  _sandbox.writeFile(_instance.customization(), instance);
  _sandbox.writeFile(_package.deployFile("plugin_customization.ini"), hotfix);
  _sandbox.writeFile(_instance.launcherProperties(), launcher);
  _sandbox.writeFile(_instance.installProperties(), workspace);
  _sandbox.script("rcplauncher", ChildScript().write(_instance.result(), result));

  const int status = install().status;

  const Entries customization = merged(readProperties(instance), readProperties(hotfix));
  EXPECT_EQ(writtenProperties(customization), _sandbox.readFile(_instance.customization()))
      << ::testing::PrintToString(instance) << "\n"
      << ::testing::PrintToString(hotfix);
  const std::string left = *_sandbox.readFile(_instance.launcherProperties());
  const auto stamp = valueOf(readProperties(left), "provisioning.manifest.version");
  ASSERT_TRUE(stamp.has_value() && stamp->size() == 10) << left;
  const auto [launcherText, workspaceText] = rewritten(launcher, workspace, *stamp);
  EXPECT_EQ(launcherText, left) << ::testing::PrintToString(launcher);
  EXPECT_EQ(workspaceText, _sandbox.readFile(_instance.installProperties()))
      << ::testing::PrintToString(workspace);
  EXPECT_EQ(isSuccess(readProperties(result)) ? 0 : 1, status) << ::testing::PrintToString(result);
}

INSTANTIATE_TEST_SUITE_P(Seeds, GeneratedTextsTest, ::testing::Range(1u, 101u));

}  // namespace
}  // namespace installer::cli
