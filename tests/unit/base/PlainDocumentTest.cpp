#include "base/PlainDocument.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "base/LibraryDocument.h"
#include "support/Proves.h"
#include "support/RandomText.h"

// A plain document is read and written as the library would: the same documents go both ways.
namespace installer::xml {
namespace {

using test::RandomSource;

constexpr std::string_view kPlaceholder = "${installer.root}";
constexpr std::string_view kRoot = "file:/A & B/<\u00E9>/\"q\"'\t\n\r.pkg";

std::string withRoot(std::string_view location) {
  std::string text(location);
  for (std::size_t at = 0; (at = text.find(kPlaceholder, at)) != std::string::npos;
       at += kRoot.size())
    text.replace(at, kPlaceholder.size(), kRoot);
  return text;
}

// The element and those below it on a path of these names.
void addElements(const RewritableDocument& document, RewritableDocument::Element element,
                 std::vector<RewritableDocument::Element>& found) {
  found.push_back(element);
  for (const char* name : {"a", "b", "feature"})
    for (const auto& child : document.childrenNamed(element, name))
      addElements(document, child, found);
}

// What the document is saved as, as it was read and with new locations; nullopt for none.
std::optional<std::string> savedTwice(const Document& document) {
  if (!document) return std::nullopt;
  const std::optional<std::string> before = document->serialize();
  std::vector<RewritableDocument::Element> elements;
  addElements(*document, document->root(), elements);
  document->changeAttributes(elements, "url", withRoot);
  const std::optional<std::string> after = document->serialize();
  if (!before || !after) return std::nullopt;
  return *before + "\n-----\n" + *after;
}

// Whether the document is plain; it is the same to the library then.
bool isPlainAndTheSame(const std::string& bytes) {
  std::string given = bytes;
  const Document plain = PlainDocument::parse(given);
  if (!plain) {
    EXPECT_EQ(given, bytes);  // the library is to read them
    return false;
  }
  EXPECT_EQ(savedTwice(plain), savedTwice(LibraryDocument::parse(bytes))) << bytes;
  return true;
}

std::string contentOf(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

// --- What is plain -------------------------------------------------------------------------------

TEST(PlainDocumentTest, IsWhatProgramsWrite) {
  proves("DOCUMENT-15");
  for (const char* document :
       {"<m/>", "<m></m>", "<m a=\"1\"/>", "\n<m>text</m>\n", "<?xml version=\"1.0\"?><m/>",
        "<?xml version='1.0' encoding=\"UTF-8\" ?>\n<m/>",
        "<?xml version=\"1.0\" encoding=\"utf-8\" standalone='no'?>\n<m/>",
        "<?xml version = \"1.0\"\n standalone=\"yes\"?><m/>",
        "<!-- a --><?b c?><?d?><?e ?><m/><!-- f - --><?xml-g?>",
        "<m  a = '1'\n\tb='\"' c=\"'>\t\n&lt;&amp;&quot;&apos;&#65;&#xe9;&#9;&#10;&#13;\" ><n "
        "/></m >",
        "<m>a &amp; &lt; > &#38;lt; &quot;&apos; &#x1F600; &#13;&#10; "
        "\u00E9\U0001F600\x7F\u0085</m>",
        "<m><a/> <b/>\n\n<c>\t</c><!-- c --><?p i?><d> <!-- d --> </d></m>",
        "<m><a/>&#32;<b/>&#13;</m>", "<m>text<a/><b><c/></b></m>", "<m> <![CDATA[]]> <a/></m>",
        "<m><![CDATA[a]]> <![CDATA[<&>\n]]>x]]&gt;<b/></m>", "<M-1._x A-1._y='1'/>",
        "<m><a url='${installer.root}/x'/><b><feature url=\"&#36;{installer.root}\"/></b></m>",
        "<xml xmlnsa='1' xml='2'/>"})
    EXPECT_TRUE(isPlainAndTheSame(document)) << document;
}

std::string nested(std::size_t depth) {
  std::string text;
  for (std::size_t level = 0; level < depth; ++level) text += "<a>";
  for (std::size_t level = 0; level < depth; ++level) text += "</a>";
  return text;
}

std::string attributes(std::size_t count) {
  std::string text;
  for (std::size_t number = 0; number < count; ++number)
    text += " a" + std::to_string(number) + "=''";
  return text;
}

TEST(PlainDocumentTest, IsWithinBounds) {
  const std::string blanks(std::size_t{1} << 13, ' ');
  const std::string text(std::size_t{8} << 20, 'x');
  EXPECT_TRUE(isPlainAndTheSame(nested(200)));
  EXPECT_FALSE(isPlainAndTheSame(nested(201)));
  EXPECT_TRUE(isPlainAndTheSame("<m" + attributes(32) + "/>"));
  EXPECT_FALSE(isPlainAndTheSame("<m" + attributes(33) + "/>"));
  EXPECT_TRUE(isPlainAndTheSame("<m" + blanks + "/>"));
  EXPECT_FALSE(isPlainAndTheSame("<m" + blanks + blanks + "/>"));
  EXPECT_TRUE(isPlainAndTheSame("<m></m" + blanks + ">"));
  EXPECT_FALSE(isPlainAndTheSame("<m></m" + blanks + blanks + ">"));
  EXPECT_TRUE(isPlainAndTheSame("<" + std::string(256, 'm') + "/>"));
  EXPECT_FALSE(isPlainAndTheSame("<" + std::string(257, 'm') + "/>"));
  EXPECT_TRUE(isPlainAndTheSame("<m>" + text + "</m>"));
  EXPECT_FALSE(isPlainAndTheSame("<m>" + text + "x</m>"));
  EXPECT_FALSE(isPlainAndTheSame("<m><!--" + text + "x--></m>"));
}

// The library keeps each word once, and no more than so many of them.
TEST(PlainDocumentTest, HasSoManyWords) {
  const auto withWords = [](std::size_t count) {
    const std::string start = "<" + std::string(200, 'a');
    std::string text = "<m>";
    for (std::size_t number = 0; number < count; ++number)
      text += start + std::to_string(number + 1'000'000) + "/>";
    return text + "</m>";
  };
  const auto withBlanks = [](std::size_t count) {
    std::string text = "<m>";
    for (std::size_t number = 0; number < count; ++number) {
      text += "<a/>";
      for (std::size_t bit = 0; bit < 17; ++bit) text += (number >> bit & 1U) != 0 ? '\t' : ' ';
      text.append(42, ' ');
    }
    return text + "</m>";
  };
  EXPECT_TRUE(isPlainAndTheSame(withWords(20'000)));
  EXPECT_FALSE(isPlainAndTheSame(withWords(20'300)));
  EXPECT_TRUE(isPlainAndTheSame(withBlanks(71'000)));
  EXPECT_FALSE(isPlainAndTheSame(withBlanks(71'200)));
}

TEST(PlainDocumentTest, IsNothingElse) {
  using namespace std::string_view_literals;
  for (const std::string_view document :
       {""sv,
        " "sv,
        "text"sv,
        "<m/>text"sv,
        "text<m/>"sv,
        "<m/><m/>"sv,
        "<m>"sv,
        "</m>"sv,
        "<m></n>"sv,
        "<m></mn>"sv,
        "<m><a></m></a>"sv,
        "<m"sv,
        "<m a"sv,
        "<m a="sv,
        "<m a='"sv,
        "<m a='1"sv,
        "<m a=1/>"sv,
        "<m a='1'b='2'/>"sv,
        "<m a='1' a='2'/>"sv,
        "<m a='<'/>"sv,
        "<m / >"sv,
        "<m/ >"sv,
        "< m/>"sv,
        "<1/>"sv,
        "<m 1='a'/>"sv,
        "<m>]]></m>"sv,
        "<m>&</m>"sv,
        "<m>&who;</m>"sv,
        "<m>&amp</m>"sv,
        "<m>&#;</m>"sv,
        "<m>&#x;</m>"sv,
        "<m>&#0;</m>"sv,
        "<m>&#xD800;</m>"sv,
        "<m>&#xFFFE;</m>"sv,
        "<m>&#1114112;</m>"sv,
        "<m>&#X41;</m>"sv,
        "<m>&#-65;</m>"sv,
        "<m a='&who;'/>"sv,
        "<m>\r\n</m>"sv,
        "<m>\x01</m>"sv,
        "<m>\0</m>"sv,
        "<m/>\0"sv,
        "<m>\xE9</m>"sv,
        "<m>\xED\xA0\x80</m>"sv,
        "<m>\xEF\xBF\xBE</m>"sv,
        "\xEF\xBB\xBF<m/>"sv,
        "<m\u00E9/>"sv,
        "<p:m/>"sv,
        "<m p:a=''/>"sv,
        "<m xmlns='u'/>"sv,
        "<m xmlns:p='u'/>"sv,
        "<m xml:space='preserve'/>"sv,
        "<!DOCTYPE m><m/>"sv,
        "<!DOCTYPE m [<!ENTITY a 'b'>]><m/>"sv,
        "<m><!DOCTYPE m></m>"sv,
        "<m/><!DOCTYPE m>"sv,
        "<!ELEMENT m ANY><m/>"sv,
        "<!-- a -- b --><m/>"sv,
        "<!-- a ---><m/>"sv,
        "<!--><m/>"sv,
        "<!- a --><m/>"sv,
        "<m><!-- a</m>"sv,
        "<![CDATA[a]]><m/>"sv,
        "<m/><![CDATA[a]]>"sv,
        "<m><![CDATA[a</m>"sv,
        "<m><![CDATA[a]]><![CDATA[b]]></m>"sv,
        "<m><![cdata[a]]></m>"sv,
        "<?xml?><m/>"sv,
        "<m><?xml a?></m>"sv,
        "<m><?XmL a?></m>"sv,
        "<?a<m/>"sv,
        "<?a:b c?><m/>"sv,
        "<??\x3E<m/>"sv,
        "<?a\xC3\xA9?><m/>"sv,
        " <?xml version='1.0'?><m/>"sv,
        "<?xml version='1.1'?><m/>"sv,
        "<?xml encoding='UTF-8'?><m/>"sv,
        "<?xml version='1.0' encoding='ISO-8859-1'?><m/>"sv,
        "<?xml version='1.0' encoding=''?><m/>"sv,
        "<?xml version='1.0' standalone='maybe'?><m/>"sv,
        "<?xml version='1.0' standalone=''?><m/>"sv,
        "<?xml version='1.0' a='b'?><m/>"sv,
        "<?xml version='1.0' standalone='no' encoding='UTF-8'?><m/>"sv,
        "<?xml version='1.0'encoding='UTF-8'?><m/>"sv,
        "<?xml version='1.0'><m/>"sv})
    EXPECT_FALSE(isPlainAndTheSame(std::string(document))) << document;
}

// --- What becomes of it --------------------------------------------------------------------------

// The documents of whoever looked for faults in the readers.
TEST(PlainDocumentTest, KeptDocumentsAreTheSameBothWays) {
  proves("DOCUMENT-15");
  namespace fs = std::filesystem;
  std::size_t plain = 0;
  for (const char* folder :
       {"InstallManifestFuzzer", "XmlPropertyListFuzzer", "PlainDocumentFuzzer"})
    for (const auto& file :
         fs::directory_iterator(fs::path(HOTFIX_SOURCE_DIR) / "fuzz/corpora" / folder))
      if (isPlainAndTheSame(contentOf(file.path()))) ++plain;
  EXPECT_GT(plain, 5U);
}

// Documents of all that can be in one, well-formed but for rare slips.
class RandomDocument {
 public:
  explicit RandomDocument(std::uint64_t seed) : _random(seed) {}

  std::string text() {
    static const std::vector<std::string> heads = {
        "", "", "<?xml version=\"1.0\"?>\n", "<?xml version='1.0' encoding='UTF-8'?>",
        "<?xml version=\"1.0\" encoding=\"utf-8\" standalone=\"yes\" ?>"};
    return _random.oneOf(heads) + around() + element(0) + around();
  }

 private:
  std::string around() {
    static const std::vector<std::string> pieces = {" ",         "\n",    "<!-- a & <b> -->",
                                                    "<?p a?b?>", "<?p?>", "<?p \t?>"};
    return _random.textOf(pieces, 2);
  }

  std::string element(int level) {
    static const std::vector<std::string> names = {"a", "b", "feature", "x-1._"};
    const std::string& name = _random.oneOf(names);
    std::string text = "<" + name;
    if (_random.below(2) == 0) text += attribute("url");
    if (_random.below(3) == 0) text += attribute("n");
    text += _random.below(4) == 0 ? " " : "";
    if (_random.below(4) == 0) return text + "/>";
    text += ">";
    const bool mixed = _random.below(3) == 0;
    for (std::size_t left = level > 3 ? 0 : _random.below(4); left > 0; --left)
      text += content(mixed) + element(level + 1);
    return text + content(mixed) + "</" + name + (_random.below(5) == 0 ? "\n>" : ">");
  }

  std::string attribute(const std::string& name) {
    static const std::vector<std::string> pieces = {"${installer.root}",
                                                    "/x",
                                                    "&amp;",
                                                    "&lt;",
                                                    "&#10;",
                                                    "&#x24;",
                                                    "{installer.root}",
                                                    ">",
                                                    "\t",
                                                    "\n",
                                                    "\u00E9",
                                                    "&quot;",
                                                    "]]>",
                                                    " "};
    static const std::vector<std::string> signs = {"=", "=", "=", " = ", "\n="};
    const std::string quote = _random.below(3) == 0 ? "'" : "\"";
    return (_random.below(5) == 0 ? "\n  " : " ") + name + _random.oneOf(signs) + quote +
           _random.textOf(pieces, 4) + quote;
  }

  std::string content(bool mixed) {
    static const std::vector<std::string> layout = {" ", "\n", "\t", "<!---->", "<?p i?>", "&#32;"};
    static const std::vector<std::string> pieces = {
        " ",      "x",  "&gt;",       ">",     "&amp;", "<![CDATA[ <>&]]>", "<![CDATA[]]>",
        "\u00E9", "]]", "<!-- - -->", "&#13;", "\n"};
    return _random.textOf(mixed ? pieces : layout, 4);
  }

  RandomSource _random;
};

TEST(PlainDocumentTest, RandomDocumentsAreTheSameBothWays) {
  proves("DOCUMENT-15");
  constexpr std::uint64_t kDocuments = 2000;
  std::size_t plain = 0;
  for (std::uint64_t seed = 0; seed < kDocuments && !::testing::Test::HasFailure(); ++seed)
    if (isPlainAndTheSame(RandomDocument(seed).text())) ++plain;
  EXPECT_GT(plain, kDocuments / 2);
}

// At each place cut off, and with something else there.
void expectAllVariationsTheSame(const std::string& document) {
  using namespace std::string_literals;
  static const std::vector<std::string> others = {"",
                                                  "<",
                                                  ">",
                                                  "/",
                                                  "&",
                                                  "'",
                                                  "\"",
                                                  "=",
                                                  "!",
                                                  "?",
                                                  "-",
                                                  "]",
                                                  "[",
                                                  " ",
                                                  "\n",
                                                  "\r",
                                                  "\t",
                                                  ":",
                                                  ";",
                                                  "#",
                                                  "x",
                                                  "0",
                                                  "\x01"s,
                                                  "\0"s,
                                                  "\xC3",
                                                  "\u00E9",
                                                  "--",
                                                  "]]>",
                                                  "?>",
                                                  "/>",
                                                  "<a>",
                                                  "</",
                                                  "<!--",
                                                  "&lt;",
                                                  "&#x110000;",
                                                  "\x7F",
                                                  "<?xml version='1.0'?>",
                                                  " xmlns='u'",
                                                  "<!DOCTYPE a>",
                                                  "xml"};
  for (std::size_t at = 0; at <= document.size() && !::testing::Test::HasFailure(); ++at) {
    isPlainAndTheSame(document.substr(0, at));
    isPlainAndTheSame(document.substr(at));
    for (const std::string& other : others) {
      isPlainAndTheSame(std::string(document).insert(at, other));
      if (at < document.size()) isPlainAndTheSame(std::string(document).replace(at, 1, other));
    }
  }
}

TEST(PlainDocumentTest, WhatIsChangedAnywhereIsTheSameBothWays) {
  proves("DOCUMENT-15");
  expectAllVariationsTheSame(
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!--c--><?p i?>\n"
      "<a url=\"${installer.root}/&amp;\" b = '&#65;'>\n <b/><feature url='x'> t&lt;\u00E9 "
      "</feature>\n"
      "<![CDATA[ d]]><!-- e - --><b><a /> <?q?></b></a>\n");
  for (std::uint64_t seed = 10'000; seed < 10'006 && !::testing::Test::HasFailure(); ++seed)
    expectAllVariationsTheSame(RandomDocument(seed).text());
}

// Of what cannot be told in XML any more both ways save nothing.
TEST(PlainDocumentTest, WhatXmlCannotTellIsNotSaved) {
  for (const char* value : {"\x01", "\x1B", "\xEF\xBF\xBE", "\xED\xA0\x80", "\xFF"}) {
    std::string bytes = "<a url='x'/>";
    const Document document = PlainDocument::parse(bytes);
    ASSERT_TRUE(document);
    document->changeAttributes({document->root()}, "url",
                               [&](std::string_view) { return std::string(value); });
    EXPECT_EQ(document->serialize(), std::nullopt);
  }
}

// What grows beyond what is plain is left to the library, which still saves it.
TEST(PlainDocumentTest, WhatIsNoLongerPlainIsStillSaved) {
  std::string bytes = "<a url='x'/>";
  const Document document = PlainDocument::parse(bytes);
  ASSERT_TRUE(document);
  const std::string longValue(20'000, 'y');
  document->changeAttributes({document->root()}, "url",
                             [&](std::string_view) { return longValue; });
  EXPECT_EQ(document->serialize(), "<a url=\"" + longValue + "\"/>\n");
}

TEST(PlainDocumentTest, AMillionNodesArePlainAndNotOneMore) {
  const auto with = [](std::size_t others) {
    std::string text = "<m a=''><!----><?p?><![CDATA[]]>";  // five
    for (; others > 0; --others) text += "<a/> ";
    return text + "</m>";
  };
  std::string most = with(kMaximumNodes - 5);
  EXPECT_TRUE(PlainDocument::parse(most));
  std::string more = with(kMaximumNodes - 4);
  EXPECT_FALSE(PlainDocument::parse(more));
}

}  // namespace
}  // namespace installer::xml
