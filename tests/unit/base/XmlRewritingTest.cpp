#include "base/XmlRewriting.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "base/MarkupScan.h"
#include "support/Proves.h"

// The bounds of documents. What is done with those within them is tested with the manifests.
namespace installer::xml {
namespace {

std::string repeated(std::string_view text, std::size_t times) {
  std::string whole;
  whole.reserve(text.size() * times);
  for (; times > 0; --times) whole += text;
  return whole;
}

std::string attributes(std::size_t count) {
  std::string text;
  for (std::size_t number = 0; number < count; ++number)
    text += " a" + std::to_string(number) + "=''";
  return text;
}

// --- Nodes ---------------------------------------------------------------------------------------

// Elements that are so many nodes together, mostly attributes.
std::string fillers(std::size_t nodes) {
  constexpr std::size_t kNodesOfAFull = 65;
  static const std::string full = "<f" + attributes(kNodesOfAFull - 1) + "/>";
  return repeated(full, nodes / kNodesOfAFull) + repeated("<f/>", nodes % kNodesOfAFull);
}

TEST(XmlRewritingTest, AMillionNodesAreReadAndNotOneMore) {
  proves("DOCUMENT-14");
  EXPECT_TRUE(parse("<m>" + repeated("<a/>", kMaximumNodes - 1) + "</m>"));

  EXPECT_FALSE(parse("<m>" + repeated("<a/>", kMaximumNodes) + "</m>"));
}

TEST(XmlRewritingTest, TextsAreNoNodesOfTheirOwn) {
  EXPECT_TRUE(parse("<m>x" + repeated("<a/>\n", kMaximumNodes - 1) + "</m>"));
}

struct Kind {
  std::string name;
  std::string declared;  // in the document type
  std::string inside;    // in the root element
  std::size_t nodes;     // that both are together
};
void PrintTo(const Kind& row, std::ostream* stream) {
  *stream << row.name;
}

class NodeKinds : public ::testing::TestWithParam<Kind> {};

TEST_P(NodeKinds, Count) {
  const auto documentWith = [](std::size_t others) {
    return "<!DOCTYPE m [" + GetParam().declared + "]><m>" + fillers(others) + GetParam().inside +
           "</m>";
  };
  const std::size_t others = kMaximumNodes - 1 - GetParam().nodes;

  EXPECT_TRUE(parse(documentWith(others)));
  EXPECT_FALSE(parse(documentWith(others + 1)));
}

INSTANTIATE_TEST_SUITE_P(All, NodeKinds,
                         ::testing::ValuesIn(std::vector<Kind>{
                             {"Attributes", "", "<a b='' c=''/>", 3},
                             {"Namespaces", "", "<a xmlns='urn:a' xmlns:b='urn:b'/>", 3},
                             {"Comments", "", "<!--a-->", 1},
                             {"Instructions", "", "<?a b?>", 1},
                             {"Sections", "", "<![CDATA[a]]>", 1},
                             {"References", "<!ENTITY e 'x'>", "&e;&e;", 3},
                             {"ReferencesInAttributes", "<!ENTITY e 'x'>", "<a b='&e;&e;'/>", 5},
                             {"WhatEntitiesHold", "<!ENTITY e '<a/><b/>'>", "&e;&e;", 5},
                             {"DeclaredElements", "<!ELEMENT a ANY>", "", 1},
                             {"DeclaredAttributes", "<!ATTLIST a b CDATA #IMPLIED>", "", 1},
                             {"DeclaredDefaults", "<!ATTLIST a b CDATA 'x'>", "<a/><a/>", 5},
                             {"DeclaredNotations", "<!NOTATION n SYSTEM 'n'>", "", 1},
                             {"DeclaredUnparsedEntities", "<!ENTITY e SYSTEM 'e' NDATA n>", "", 1},
                             {"DeclaredParameterEntities", "<!ENTITY % e 'x'>", "", 1},
                             {"DeclaredComments", "<!--a--><?b c?>", "", 2},
                         }),
                         [](const auto& test) { return test.param.name; });

// --- What would take quadratic time --------------------------------------------------------------

TEST(XmlRewritingTest, ElementsHaveAtMostSixtyFourAttributes) {
  proves("DOCUMENT-14");
  EXPECT_TRUE(parse("<m" + attributes(64) + "/>"));
  EXPECT_FALSE(parse("<m" + attributes(65) + "/>"));
  EXPECT_TRUE(parse("<m xmlns='urn:m' xmlns:n='urn:n'" + attributes(62) + "/>"));
  EXPECT_FALSE(parse("<m xmlns='urn:m' xmlns:n='urn:n'" + attributes(63) + "/>"));
  EXPECT_FALSE(parse("<!DOCTYPE m [<!ATTLIST m b CDATA 'x'>]><m" + attributes(64) + "/>"));
}

std::string namespaces(char letter, std::size_t count) {
  std::string text;
  for (std::size_t number = 0; number < count; ++number)
    text += std::string(" xmlns:") + letter + std::to_string(number) + "='urn:n'";
  return text;
}

TEST(XmlRewritingTest, AtMostSixtyFourNamespacesAreInScope) {
  const std::string half = "<b" + namespaces('b', 32) + "/>";

  EXPECT_TRUE(parse("<m" + namespaces('m', 32) + ">" + half + half + "</m>"));
  EXPECT_FALSE(parse("<m" + namespaces('m', 33) + ">" + half + "</m>"));
}

TEST(XmlRewritingTest, AtMost4096AttributesAreDeclared) {
  const auto declaring = [](std::size_t count) {
    std::string lists;
    for (std::size_t number = 0; number < count; ++number)
      lists += "<!ATTLIST e a" + std::to_string(number) + " CDATA #IMPLIED>";
    return "<!DOCTYPE m [" + lists + "]><m/>";
  };

  EXPECT_TRUE(parse(declaring(4096)));
  EXPECT_FALSE(parse(declaring(4097)));
}

TEST(XmlRewritingTest, MarkupIsShort) {
  const std::string name(kMaximumMarkup, 'a');

  EXPECT_FALSE(parse("<m " + name + "=''/>"));
  EXPECT_FALSE(parse("<!DOCTYPE m [<!ATTLIST m a (" + name + ") #IMPLIED>]><m/>"));
}

TEST(XmlRewritingTest, MarkupOfAnEntityIsShort) {
  const auto used = [](std::size_t blanks) {
    return "<!DOCTYPE m [<!ENTITY e '<a" + std::string(blanks, ' ') + "/>'>]><m>&e;</m>";
  };

  EXPECT_TRUE(parse(used(1000)));
  EXPECT_FALSE(parse(used(kMaximumMarkup)));
}

TEST(XmlRewritingTest, ParameterEntitiesInsertSoMuchTogether) {
  const auto inserting = [](std::size_t times) {
    return "<!DOCTYPE m [<!ENTITY % e '" + std::string(1024, ' ') + "'>" + repeated("%e;", times) +
           "]><m/>";
  };

  constexpr std::size_t kMost = kMaximumMarkup / 1024;

  EXPECT_TRUE(parse(inserting(kMost - 1)));  // the declaration counts as well
  EXPECT_FALSE(parse(inserting(kMost)));
}

// Behind an error nobody knows any more what is a tag. This one would take hours.
TEST(XmlRewritingTest, NothingIsReadBehindTheFirstError) {
  EXPECT_FALSE(parse("<m>&#1;<a ' <b" + attributes(1'000'000) + "/></m>"));
}

TEST(XmlRewritingTest, NothingIsReadBehindTheFirstErrorOfAnEntity) {
  EXPECT_FALSE(parse("<!DOCTYPE m [<!ENTITY e \"<a>&#38;#1;<a '<b" + attributes(200'000) +
                     "/></a>\">]><m>&e;</m>"));
}

}  // namespace
}  // namespace installer::xml
