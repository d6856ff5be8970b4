#include "base/XmlElements.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "base/XmlPropertyListElements.h"
#include "support/Proves.h"
#include "support/RandomValue.h"
#include "support/XmlList.h"

// A plain document says the same whoever reads it: the same documents go both ways.
namespace installer::xml {
namespace {

using namespace std::string_literals;

constexpr std::string_view kType = "<!DOCTYPE m SYSTEM \"m.dtd\">";
using PropertyList::kUsualType;

// Writes down what it is told, pieces of a text as one.
class Notes : public ElementReceiver {
 public:
  void begin() override { _notes = "begin"; }
  bool open(std::string_view name) override {
    _isInText = false;
    _notes.append("\nopen ").append(name);
    return name != "unwanted";
  }
  bool text(std::string_view text) override {
    _notes.append(_isInText ? "" : "\ntext ").append(text);
    _isInText = true;
    return text.find("unwanted") == std::string_view::npos;
  }
  bool close() override {
    _isInText = false;
    _notes.append("\nclose");
    return true;
  }

  const std::string& notes() const { return _notes; }

 private:
  std::string _notes;
  bool _isInText = false;
};

struct Told {
  bool wanted = false;
  std::string notes;
  friend bool operator==(const Told&, const Told&) = default;
};
void PrintTo(const Told& told, std::ostream* stream) {
  *stream << told.wanted << ' ' << told.notes;
}

std::optional<Told> toldByPlain(std::string_view bytes, std::string_view type) {
  Notes notes;
  const std::optional<bool> wanted = readPlainElements(bytes, type, notes);
  if (!wanted) return std::nullopt;
  return Told{*wanted, notes.notes()};
}

Told toldByAny(std::string_view bytes) {
  Notes notes;
  const bool wanted = readAnyElements(bytes, notes);
  return {wanted, notes.notes()};
}

// Whether the document is plain; it says the same to the library then.
bool isPlainAndTheSame(std::string_view bytes, std::string_view type = kType) {
  const std::optional<Told> told = toldByPlain(bytes, type);
  if (!told) return false;
  EXPECT_EQ(*told, toldByAny(bytes)) << bytes;
  return true;
}

TEST(XmlElementsTest, PlainDocumentsSayTheSameBothWays) {
  proves("LIST-22");
  for (const char* document :
       {"<m/>", "<?xml version='1.0'?><m a='b'>text</m>", "<m>a<!-- b -->c<?d?>e<f/>g</m>",
        "<m>a<![CDATA[]]>b<![CDATA[<&amp;]]><![CDATA[c]]></m>",
        "<m>&#13;&lt;\u00E9&#x1F600; > </m>", "<!DOCTYPE m SYSTEM \"m.dtd\"><m/>",
        "<!-- a --><!DOCTYPE m SYSTEM \"m.dtd\"> <n/>", "<m><unwanted><n/></unwanted></m>",
        "<m>unwanted<n/></m>", "<m><![CDATA[unwanted]]></m>"})
    EXPECT_TRUE(isPlainAndTheSame(document)) << document;
}

TEST(XmlElementsTest, OtherDocumentsAreTheLibrarysAlone) {
  for (const char* document :
       {"<p:m/>", "<m xmlns='u'/>", "<m>\r\n</m>", "<m>&who;</m>", "<m>", "<!DOCTYPE m><m/>",
        "<!DOCTYPE n SYSTEM \"m.dtd\"><m/>", "<!DOCTYPE m SYSTEM \"m.dtd\" []><m/>",
        "<!DOCTYPE m SYSTEM \"m.dtd\"><!DOCTYPE m SYSTEM \"m.dtd\"><m/>",
        "<m/><!DOCTYPE m SYSTEM \"m.dtd\">", "<m><!DOCTYPE m SYSTEM \"m.dtd\"></m>",
        "<!doctype m SYSTEM \"m.dtd\"><m/>"})
    EXPECT_FALSE(isPlainAndTheSame(document)) << document;
}

// What the plain reader had told before it found something unusual does not count.
TEST(XmlElementsTest, ADocumentThatIsNotPlainIsToldFromItsBeginning) {
  Notes notes;
  EXPECT_TRUE(readElements("<m>a<n/>\r\n</m>", kType, notes));
  EXPECT_EQ(notes.notes(), "begin\nopen m\ntext a\nopen n\nclose\ntext \n\nclose");
}

TEST(XmlElementsTest, WhatIsNotWantedEndsTheReading) {
  Notes notes;
  EXPECT_FALSE(readElements("<m><unwanted/>\r<", kType, notes));
  EXPECT_EQ(notes.notes(), "begin\nopen m\nopen unwanted");
}

// --- Lists ---------------------------------------------------------------------------------------

TEST(XmlElementsTest, KeptListsAreTheSameBothWays) {
  proves("LIST-22");
  namespace fs = std::filesystem;
  std::size_t plain = 0;
  for (const char* folder : {"InstallManifestFuzzer", "XmlPropertyListFuzzer"})
    for (const auto& file :
         fs::directory_iterator(fs::path(HOTFIX_SOURCE_DIR) / "fuzz/corpora" / folder)) {
      std::ifstream stream(file.path(), std::ios::binary);
      const std::string bytes{std::istreambuf_iterator<char>(stream), {}};
      if (isPlainAndTheSame(bytes, kUsualType)) ++plain;
    }
  EXPECT_GT(plain, 10U);
}

TEST(XmlElementsTest, WhatIsWrittenIsPlain) {
  proves("LIST-22");
  for (std::uint64_t seed = 0; seed < 200 && !::testing::Test::HasFailure(); ++seed) {
    const auto bytes = PropertyList::serialize(test::RandomValues(seed).value(3));
    ASSERT_TRUE(bytes.has_value()) << seed;
    EXPECT_TRUE(isPlainAndTheSame(*bytes, kUsualType)) << *bytes;
  }
}

// At each place cut off, and with something else there.
TEST(XmlElementsTest, WhatIsChangedAnywhereIsTheSameBothWays) {
  proves("LIST-22");
  const std::string document = test::xmlList(
      "<dict>\n\t<key>a &amp; b</key><string>\u00E9<![CDATA[<]]> &#13;</string>\n"
      "<!-- c --><key n=\"1\">d</key> <array ><true/></array>\n</dict>");
  const std::vector<std::string> others = {
      "",   "<",   ">",   "/",  "&",    "'",    "\"",   "=", "!",    "?",     "-",
      "]",  "[",   " ",   "\n", "\r",   ":",    ";",    "x", "\x01", "\0"s,   "\xC3",
      "--", "]]>", "<a>", "</", "<a/>", "&lt;", "&#0;", "%", "<!",   "SYSTEM"};
  for (std::size_t at = 0; at <= document.size() && !::testing::Test::HasFailure(); ++at) {
    isPlainAndTheSame(document.substr(0, at), kUsualType);
    for (const std::string& other : others) {
      isPlainAndTheSame(std::string(document).insert(at, other), kUsualType);
      if (at < document.size())
        isPlainAndTheSame(std::string(document).replace(at, 1, other), kUsualType);
    }
  }
}

}  // namespace
}  // namespace installer::xml
