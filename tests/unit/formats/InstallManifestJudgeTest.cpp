#include <gmock/gmock.h>
#include <iconv.h>

#include <vector>

#include "hotfix/formats/InstallManifest.h"
#include "support/Judge.h"
#include "support/Proves.h"
#include "support/RandomText.h"
#include "support/Sandbox.h"

// Random manifests before xmllint: their canonical forms before and after the rewrite differ in the
// locations that are to change, and in white space, and in nothing else.
namespace installer {
namespace {

using test::RandomSource;

// Locations on the path carry a mark of their own, so that the expected canonical form is the old
// one with that text replaced.
const std::string kPlaceholder = "${installer.root}";
const std::string kChanging = kPlaceholder + "/on-the-path";
const std::string kStaying = kPlaceholder + "/elsewhere";
const std::string kRoot = "file:/Volumes/A & B/<\u00E9\u65E5>/\"q\"'.pkg";
const std::string kRootInCanonicalForm =
    "file:/Volumes/A &amp; B/&lt;\u00E9\u65E5>/&quot;q&quot;'.pkg";

class RandomManifest {
 public:
  explicit RandomManifest(std::uint64_t seed) : _random(seed) {}

  // UTF-8, without declaration.
  std::string document() {
    const std::string subset =
        "<!DOCTYPE m [\n<!ENTITY who \"you &amp; me\">\n<!ENTITY site 'a/\u00E9'>\n"
        "<!ATTLIST feature kind CDATA #IMPLIED>]>\n";
    return junk(false) + subset + junk(false) + "<m xmlns:p=\"urn:p\"" + attributes() + ">" +
           decoys() + onThePath(0) + decoys() + "</m>" + junk(false) + "\n";
  }

 private:
  // The elements of the path below the root, each once and with company; a second element of the
  // same name behind the first is as good as any other.
  std::string onThePath(std::size_t level) {
    static const std::vector<std::string> names = {"domain-object", "object-data", "install"};
    if (level == names.size()) return installFeatures();
    const std::string& name = names[level];
    std::string text = "<" + name + attributes() + ">" + decoys() + onThePath(level + 1) +
                       decoys() + "</" + name + ">";
    if (_random.below(2) == 0) text += blank() + "<" + name + ">" + stray() + "</" + name + ">";
    return text;
  }

  std::string installFeatures() {
    std::string text;
    for (std::size_t left = 1 + _random.below(3); left > 0; --left)
      text += "<installfeature" + attributes() + ">" + decoys() + requirements() + decoys() +
              "</installfeature>" + blank();
    return text;
  }

  std::string requirements() {
    if (_random.below(5) == 0) return "";
    std::string text = "<requirements>" + blank();
    for (std::size_t left = _random.below(4); left > 0; --left)
      text += (_random.below(4) == 0 ? decoys() : feature(kChanging)) + blank();
    text += "</requirements>";
    if (_random.below(3) == 0) text += "<requirements>" + feature(kStaying) + "</requirements>";
    return text;
  }

  std::string feature(const std::string& location) {
    static const std::vector<std::string> forms = {"@",         "@/x",        "jar:@!/@",
                                                   "@/&site;/", "&site;@",    "@/&amp;&lt;&quot;",
                                                   "@/&#233;",  "@?a=1&amp;b"};
    std::string value = _random.oneOf(forms);
    for (std::size_t at = value.find('@'); at != std::string::npos; at = value.find('@', at))
      value.replace(at, 1, location);
    return "<feature" + attributes() + " url=\"" + value + "\"" +
           (_random.below(2) == 0 ? "/>" : " ></feature>");
  }

  // A feature that is not where features are looked for.
  std::string stray() {
    static const std::vector<std::string> around = {"x", "Requirements", "domain", "p:install"};
    const std::string name = _random.oneOf(around);
    return "<" + name + ">" + feature(kStaying) + "</" + name + ">";
  }

  std::string decoys() {
    std::string text = blank();
    for (std::size_t left = _random.below(4); left > 0; --left) {
      text += decoy() + blank();
    }
    return text;
  }

  std::string decoy() {
    switch (_random.below(6)) {
      case 0:
        return stray();
      case 1:
        return "<text" + attributes() + ">words &who; and <b>more</b> &lt;&amp;&#65; \u00E9</text>";
      case 2:
        return "<data><![CDATA[<raw> & ]]></data>";
      case 3:
        return "<keep xml:space=\"preserve\"><a/><b><c/></b></keep>";
      case 4:
        return "<empty" + attributes() + "/>";
      default:
        return junk(true);
    }
  }

  std::string junk(bool inside) {
    static const std::vector<std::string> kinds = {"", "<!-- a \u00E9 & < -->",
                                                   "<?step a=\"1\" ?>"};
    return _random.oneOf(kinds) + (inside ? "" : "\n");
  }

  std::string attributes() {
    static const std::vector<std::string> kinds = {"", " id=\"1\"", " b='&who;' a=\"&quot;'\"",
                                                   " p:url='${installer.root}'", " c='\u00E9&#9;'"};
    return _random.oneOf(kinds);
  }

  std::string blank() {
    static const std::vector<std::string> kinds = {"", "\n", "  ", "\r\n\t"};
    return _random.oneOf(kinds);
  }

  RandomSource _random;
};

struct Encoding {
  const char* name;
  const char* mark;  // what stands before the document
};
constexpr Encoding kEncodings[] = {
    {"UTF-8", ""}, {"UTF-16LE", "\xFF\xFE"}, {"ISO-8859-1", ""}, {"windows-1252", ""}};

std::string encoded(std::string text, const char* encoding) {
  const iconv_t converter = iconv_open(encoding, "UTF-8");
  std::string bytes(text.size() * 2, '\0');
  char* from = text.data();
  char* to = bytes.data();
  std::size_t fromSize = text.size();
  std::size_t toSize = bytes.size();
  EXPECT_EQ(iconv(converter, &from, &fromSize, &to, &toSize), 0U) << encoding;
  iconv_close(converter);
  bytes.resize(bytes.size() - toSize);
  return bytes;
}

// The canonical form without the white space between two pieces of markup.
std::string packed(const std::string& canonical) {
  std::string text;
  for (std::size_t at = 0; at < canonical.size(); ++at) {
    text += canonical[at];
    if (canonical[at] != '>') continue;
    const std::size_t next = canonical.find_first_not_of(" \t\r\n", at + 1);
    if (next == std::string::npos) break;
    if (canonical[next] == '<') at = next - 1;
  }
  return text;
}

std::string replaced(std::string text, const std::string& what, const std::string& with) {
  for (std::size_t at = text.find(what); at != std::string::npos;
       at = text.find(what, at + with.size()))
    text.replace(at, what.size(), with);
  return text;
}

TEST(InstallManifestJudgeTest, OnlyTheLocationsOnThePathChange) {
  proves("DOCUMENT-1");
  constexpr std::size_t kManifests = 120;
  const test::Sandbox sandbox;
  for (std::size_t number = 0; number < kManifests; ++number) {
    const Encoding& encoding = kEncodings[number % std::size(kEncodings)];
    const std::string declaration = std::string("<?xml version=\"1.0\" encoding=\"") +
                                    (encoding.mark[0] != '\0' ? "UTF-16" : encoding.name) +
                                    "\"?>\n";
    const std::string name = "tmp/" + std::to_string(number);
    InstallManifest manifest(sandbox.write(
        name + ".in", encoding.mark + encoded(declaration + RandomManifest(number + 1).document(),
                                              encoding.name)));
    ASSERT_TRUE(manifest.replaceInstallerRootWith(kRoot)) << number;
    ASSERT_TRUE(manifest.saveInstallManifestAs(sandbox.path(name + ".out"))) << number;
  }

  const test::JudgeVerdict verdict =
      test::askJudge(sandbox.path("tmp"),
                     "for file in *.in *.out; do "
                     "xmllint --nonet --c14n $file > $file.canonical || exit 1; done");

  ASSERT_EQ(verdict.output, "");
  ASSERT_EQ(verdict.status, 0);
  std::size_t changed = 0;
  for (std::size_t number = 0; number < kManifests; ++number) {
    const std::string name = "tmp/" + std::to_string(number);
    const std::string before = packed(sandbox.read(name + ".in.canonical"));
    const std::string after = packed(sandbox.read(name + ".out.canonical"));
    ASSERT_EQ(after, replaced(before, kChanging, kRootInCanonicalForm + "/on-the-path")) << number;
    if (after != before) ++changed;
  }
  EXPECT_GT(changed, kManifests / 2);
}

// The canonical form of a file in tmp.
std::string canonical(const test::Sandbox& sandbox, const std::string& name) {
  const test::JudgeVerdict verdict =
      test::askJudge(sandbox.path("tmp"), "xmllint --nonet --c14n " + name);
  EXPECT_EQ(verdict.status, 0) << name << ": " << verdict.output;
  return packed(verdict.output);
}

TEST(InstallManifestJudgeTest, WhatXmllintWritesInAnyEncodingIsRewrittenInIt) {
  proves("DOCUMENT-11");
  constexpr std::size_t kDeclaration = 36;  // bytes that tell every encoding from the others
  const test::Sandbox sandbox;
  std::uint64_t seed = 1000;
  for (const std::string encoding : test::kXmllintEncodings) {
    sandbox.write("tmp/made", RandomManifest(++seed).document());
    const test::JudgeVerdict verdict = test::askJudge(
        sandbox.path("tmp"), "xmllint --nonet --encode " + encoding + " --output given made");
    ASSERT_EQ(verdict.status, 0) << encoding << ": " << verdict.output;

    InstallManifest manifest(sandbox.path("tmp/given"));
    ASSERT_TRUE(manifest.replaceInstallerRootWith(kRoot)) << encoding;
    ASSERT_TRUE(manifest.saveInstallManifestAs(sandbox.path("tmp/rewritten"))) << encoding;

    EXPECT_EQ(sandbox.read("tmp/rewritten").substr(0, kDeclaration),
              sandbox.read("tmp/given").substr(0, kDeclaration))
        << encoding;
    EXPECT_EQ(canonical(sandbox, "rewritten"), replaced(canonical(sandbox, "given"), kChanging,
                                                        kRootInCanonicalForm + "/on-the-path"))
        << encoding;
  }
}

TEST(InstallManifestJudgeTest, RewritingARewrittenManifestChangesNothing) {
  proves("DOCUMENT-12");
  const test::Sandbox sandbox;
  for (std::uint64_t seed = 1; seed <= 100; ++seed) {
    const std::string file = sandbox.write("tmp/m.xml", RandomManifest(seed).document());
    EXPECT_TRUE(InstallManifest(file).saveInstallManifestAs(std::nullopt));
    const std::string once = sandbox.read("tmp/m.xml");

    EXPECT_TRUE(InstallManifest(file).saveInstallManifestAs(std::nullopt));

    ASSERT_EQ(sandbox.read("tmp/m.xml"), once) << seed;
  }
}

}  // namespace
}  // namespace installer
