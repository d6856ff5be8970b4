#include <gmock/gmock.h>

#include <random>

#include "cli/Fixtures.h"
#include "support/Proves.h"
#include "support/XmlText.h"

namespace installer::cli {
namespace {

using test::XmlDocument;
using test::XmlNode;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

constexpr const char* kRoot = "file:/Volumes/HF/install/Fix.pkg";

std::string replaced(std::string text, const std::string& root) {
  const std::string placeholder = "${installer.root}";
  for (std::size_t at = 0; (at = text.find(placeholder, at)) != std::string::npos;
       at += root.size())
    text.replace(at, placeholder.size(), root);
  return text;
}

XmlNode* firstNamed(XmlNode* element, const char* name) {
  if (element == nullptr) return nullptr;
  const auto found = element->elements(name);
  return found.empty() ? nullptr : found[0];
}

// The naive rewrite: the url of each feature of the first requirements of each installfeature of
// the first install of the first object-data of the first domain-object.
void rewrite(XmlDocument& document, const std::string& root) {
  XmlNode* install = firstNamed(
      firstNamed(firstNamed(&document.root(), "domain-object"), "object-data"), "install");
  if (install == nullptr) return;
  for (XmlNode* installFeature : install->elements("installfeature")) {
    XmlNode* requirements = firstNamed(installFeature, "requirements");
    if (requirements == nullptr) continue;
    for (XmlNode* feature : requirements->elements("feature"))
      if (std::string* url = feature->attribute("url")) *url = replaced(*url, root);
  }
}

std::string comparable(XmlDocument document) {
  dropIndentation(document.root());
  std::string text = document.documentType + "\n";
  for (const XmlNode& node : document.top) text += described(node);
  return text;
}

// A manifest around the content of its install element.
std::string manifestOf(const std::string& install) {
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<m><domain-object><object-data><install>" +
         install + "</install></object-data></domain-object></m>\n";
}
std::string featureOf(const std::string& attributes) {
  return "<installfeature><requirements><feature " + attributes +
         "/></requirements></installfeature>";
}

// The manifest that a run leaves in the instance, with the root's placeholder resolved.
class ManifestTest : public InstallerTest {
 protected:
  RunResult installManifest(const std::string& text) {
    _sandbox.writeFile(_package.deployFile("install.hotfix.xml"), text);
    return install();
  }

  std::string left() const {
    return _sandbox.readFile(_instance.deploy("install.update.xml")).value_or("(none)");
  }

  void expectRewritten(const std::string& text, const std::string& root = kRoot) {
    auto expected = XmlDocument::parse(text);
    ASSERT_TRUE(expected.has_value()) << text;
    rewrite(*expected, root);
    const auto actual = XmlDocument::parse(left());
    ASSERT_TRUE(actual.has_value()) << left();
    EXPECT_EQ(comparable(*expected), comparable(*actual)) << text << "\n" << left();
  }
};

TEST_F(ManifestTest, LinkedManifestsInThePackageAreInstalled) {
  proves("FILES-22");
  for (const char* name : {"install.hotfix.xml", "uninstall.hotfix.xml"}) {
    _sandbox.remove(_package.deployFile(name));
    _sandbox.makeLink(_package.deployFile(name), std::string("../Fix.pkg/Contents/") + name);
  }
  _sandbox.writeFile(_package.folder + "/Contents/install.hotfix.xml", kSimpleManifest);
  _sandbox.writeFile(_package.folder + "/Contents/uninstall.hotfix.xml", kUninstallManifest);

  ASSERT_EQ(0, install().status);

  EXPECT_TRUE(_sandbox.isRegular(_instance.deploy("install.update.xml")));
  EXPECT_THAT(*_sandbox.readFile(_instance.deploy("install.update.xml")),
              HasSubstr(std::string(kRoot) + "/updates"));
  EXPECT_TRUE(_sandbox.isRegular(_instance.deploy("uninstall.hotfix.xml")));
  EXPECT_EQ(kUninstallManifest, _sandbox.readFile(_instance.deploy("uninstall.hotfix.xml")));
  EXPECT_EQ(kSimpleManifest, _sandbox.readFile(_package.folder + "/Contents/install.hotfix.xml"));
}

TEST_F(ManifestTest, LinkedManifestFromElsewhereIsNotPublished) {
  proves("FILES-22");
  _sandbox.remove(_package.deployFile("install.hotfix.xml"));
  _sandbox.writeFile("/etc/secret.xml", kSimpleManifest, 0600);
  _sandbox.makeLink(_package.deployFile("install.hotfix.xml"), "/etc/secret.xml");

  EXPECT_EQ(1, install().status);

  EXPECT_EQ((ErrorRecord{4, {"install.hotfix.xml"}}), errorRecord());
  EXPECT_FALSE(_sandbox.exists(_instance.deploy("install.update.xml")));
}

struct Manifest {
  const char* name;
  std::string text;
};
void PrintTo(const Manifest& manifest, std::ostream* stream) {
  *stream << manifest.name;
}

class RewrittenTest : public ManifestTest, public ::testing::WithParamInterface<Manifest> {};

TEST_P(RewrittenTest, KeepsEverythingButTheFeaturesLocations) {
  proves("DOCUMENT-1");
  EXPECT_EQ(0, installManifest(GetParam().text).status);

  expectRewritten(GetParam().text);
  EXPECT_THAT(_sandbox.texts("Error"), IsEmpty());
  EXPECT_EQ((ErrorRecord{0, {}}), errorRecord());
}

INSTANTIATE_TEST_SUITE_P(
    Manifests, RewrittenTest,
    ::testing::Values(
        Manifest{"Simple", kSimpleManifest},
        Manifest{"Twice", manifestOf(featureOf("url='${installer.root}/a?${installer.root}'"))},
        Manifest{"NoPlaceholder", manifestOf(featureOf("url='http://x/y'"))},
        Manifest{"Capitals", manifestOf(featureOf("url='${INSTALLER.ROOT}/x'"))},
        Manifest{"Partial", manifestOf(featureOf("url='${installer.root /x'"))},
        Manifest{"NoUrl", manifestOf(featureOf("id='${installer.root}'"))},
        Manifest{"EmptyUrl", manifestOf(featureOf("url=''"))},
        Manifest{"CapitalUrl", manifestOf(featureOf("URL='${installer.root}'"))},
        Manifest{"OtherAttributes",
                 manifestOf(featureOf("b='2' url='${installer.root}' a='${installer.root}' c=''"))},
        Manifest{"NoRequirements",
                 manifestOf("<installfeature/><installfeature><x/></installfeature>")},
        Manifest{"FirstWithoutRequirements",
                 manifestOf("<installfeature/>" + featureOf("url='${installer.root}'"))},
        Manifest{"SecondRequirements",
                 manifestOf("<installfeature><requirements><feature url='${installer.root}/1'/>"
                            "</requirements><requirements><feature url='${installer.root}/2'/>"
                            "</requirements></installfeature>")},
        Manifest{
            "EmptyFirstRequirements",
            manifestOf("<installfeature><requirements/><requirements>"
                       "<feature url='${installer.root}/2'/></requirements></installfeature>")},
        Manifest{"ManyFeatures", manifestOf(featureOf("url='${installer.root}/1'") +
                                            featureOf("url='${installer.root}/2'") +
                                            "<installfeature><requirements>"
                                            "<feature url='${installer.root}/3'/><other/>"
                                            "<feature url='${installer.root}/4'/>"
                                            "</requirements></installfeature>")},
        Manifest{"DeeperFeature",
                 manifestOf("<installfeature><requirements><group>"
                            "<feature url='${installer.root}'/></group></requirements>"
                            "</installfeature>")},
        Manifest{"NestedFeature",
                 manifestOf("<installfeature><requirements><feature url='${installer.root}/o'>"
                            "<feature url='${installer.root}/i'/></feature></requirements>"
                            "</installfeature>")},
        Manifest{"FeatureBesideRequirements",
                 manifestOf("<installfeature><feature url='${installer.root}'/></installfeature>")},
        Manifest{"OtherNames", manifestOf("<installfeature><requirements>"
                                          "<Feature url='${installer.root}'/>"
                                          "<features url='${installer.root}'/>"
                                          "</requirements></installfeature>")},
        Manifest{"SecondDomainObject",
                 "<m><domain-object><object-data><install><installfeature/></install>"
                 "</object-data></domain-object><domain-object><object-data><install>" +
                     featureOf("url='${installer.root}'") +
                     "</install></object-data></domain-object></m>"},
        Manifest{"SecondObjectData",
                 "<m><domain-object><object-data><install><installfeature/></install>"
                 "</object-data><object-data><install>" +
                     featureOf("url='${installer.root}'") +
                     "</install></object-data></domain-object></m>"},
        Manifest{"SecondInstall",
                 "<m><domain-object><object-data><install><installfeature/>"
                 "</install><install>" +
                     featureOf("url='${installer.root}'") +
                     "</install></object-data></domain-object></m>"},
        Manifest{"AnyRootName", "<installfeature><domain-object><object-data><install>" +
                                    featureOf("url='${installer.root}'") +
                                    "</install></object-data></domain-object></installfeature>"},
        Manifest{"TextElsewhere", manifestOf(featureOf("url='${installer.root}'") +
                                             "<note>${installer.root} &amp; more</note>")},
        Manifest{"MixedContent",
                 manifestOf(featureOf("url='x'") + "<p>one <b>two</b> three  <i>four</i></p>")},
        Manifest{"Comments",
                 "<!-- before --><m><!-- in --><domain-object><object-data><install>"
                 "<installfeature><!-- deep --></installfeature><!-- ${installer.root} "
                 "--></install></object-data></domain-object></m><!-- after -->"},
        Manifest{"Instructions",
                 "<?style sheet=\"a\"?><m><?in ${installer.root}?><domain-object><object-data>"
                 "<install><installfeature/></install></object-data></domain-object></m><?end?>"},
        Manifest{"Cdata", manifestOf("<installfeature/><note><![CDATA[a < b && ${installer.root}]]>"
                                     "</note>")},
        Manifest{"DocumentType",
                 "<!DOCTYPE m SYSTEM \"m.dtd\">\n<m><domain-object><object-data><install>"
                 "<installfeature/></install></object-data></domain-object></m>"},
        Manifest{"EscapesInAttributes",
                 manifestOf(featureOf("url='${installer.root}/a?b=1&amp;c=&lt;&quot;&#233;'"))},
        Manifest{"EscapesInText",
                 manifestOf("<installfeature/><t>&lt;&amp;&gt;&#233;\xC3\xA9</t>")},
        Manifest{"DefaultNamespace", "<m xmlns='urn:m'><domain-object><object-data><install>" +
                                         featureOf("url='${installer.root}'") +
                                         "</install></object-data></domain-object></m>"},
        Manifest{"Unicode",
                 manifestOf(featureOf("url='${installer.root}/\xE2\x82\xAC\xF0\x9F\x98\x80'"
                                      " name='\xC3\xA9'"))},
        Manifest{"NoDeclaration", "<m><domain-object><object-data><install>" +
                                      featureOf("url='${installer.root}'") +
                                      "</install></object-data></domain-object></m>"},
        Manifest{"CarriageReturnsInText", manifestOf("<installfeature/><t>a&#13;b</t>")}),
    CaseName());

struct Missing {
  const char* name;
  std::string text;
  std::string line;
};
void PrintTo(const Missing& missing, std::ostream* stream) {
  *stream << missing.name;
}

class MissingLevelTest : public ManifestTest, public ::testing::WithParamInterface<Missing> {};

TEST_P(MissingLevelTest, IsLoggedAndTheRestIsRewrittenAllTheSame) {
  proves("DOCUMENT-6");
  EXPECT_EQ(0, installManifest(GetParam().text).status);

  EXPECT_THAT(_sandbox.texts("Error"), ElementsAre(GetParam().line));
  const auto before = XmlDocument::parse(GetParam().text);
  const auto after = XmlDocument::parse(left());
  ASSERT_TRUE(before && after);
  EXPECT_EQ(comparable(*before), comparable(*after));
  EXPECT_THAT(_sandbox.texts(), Contains("Save install manifest."));
}

INSTANTIATE_TEST_SUITE_P(
    Levels, MissingLevelTest,
    ::testing::Values(
        Missing{"DomainObject", "<m/>", "Not able to get domain-object element"},
        Missing{"DomainObjectDeeper",
                "<m><x><domain-object><object-data><install><installfeature/></install>"
                "</object-data></domain-object></x></m>",
                "Not able to get domain-object element"},
        Missing{"DomainObjectAsRoot",
                "<domain-object><object-data><install><installfeature/></install></object-data>"
                "</domain-object>",
                "Not able to get domain-object element"},
        Missing{"DomainObjectInCapitals", "<m><Domain-Object/></m>",
                "Not able to get domain-object element"},
        Missing{"DomainObjectWithPrefix", "<m xmlns:p='urn:p'><p:domain-object/></m>",
                "Not able to get domain-object element"},
        Missing{"ObjectData", "<m><domain-object/></m>", "Not able to get object-data element"},
        Missing{"ObjectDataInTheSecond",
                "<m><domain-object/><domain-object><object-data/></domain-object></m>",
                "Not able to get object-data element"},
        Missing{"Install", "<m><domain-object><object-data/></domain-object></m>",
                "Not able to get install element"},
        Missing{"InstallFeature",
                "<m><domain-object><object-data><install/></object-data></domain-object></m>",
                "Not able to get install-feature element"},
        Missing{"InstallFeatureWithHyphen",
                "<m><domain-object><object-data><install><install-feature/></install>"
                "</object-data></domain-object></m>",
                "Not able to get install-feature element"}),
    CaseName());

class MalformedTest : public ManifestTest, public ::testing::WithParamInterface<Manifest> {};

TEST_P(MalformedTest, StaysAsCopiedAndStopsTheWorkflow) {
  proves("DOCUMENT-7");
  EXPECT_EQ(1, installManifest(GetParam().text).status);

  EXPECT_EQ((ErrorRecord{4, {"install.hotfix.xml"}}), errorRecord());
  EXPECT_EQ(GetParam().text, left());
  EXPECT_THAT(_sandbox.texts(), Not(Contains("Copy install manifest.")));
  EXPECT_FALSE(_sandbox.exists(kMarker));
}

INSTANTIATE_TEST_SUITE_P(
    Texts, MalformedTest,
    ::testing::Values(
        Manifest{"Empty", ""}, Manifest{"NoXml", "install these please"},
        Manifest{"Unclosed", "<m><domain-object>"}, Manifest{"Crossed", "<m><a><b></a></b></m>"},
        Manifest{"TwoRoots", "<m/><m/>"}, Manifest{"TextBehind", "<m/>x"},
        Manifest{"TextBefore", "x<m/>"}, Manifest{"DoubledAttribute", "<m a='1' a='2'/>"},
        Manifest{"BareAttribute", "<m a/>"}, Manifest{"UnquotedAttribute", "<m a=1/>"},
        Manifest{"LessInAttribute", "<m a='<'/>"}, Manifest{"BareAmpersand", "<m>a & b</m>"},
        Manifest{"UnknownEntity", "<m>&nope;</m>"},
        Manifest{"UnknownEntityInUrl", manifestOf(featureOf("url='&nope;'"))},
        Manifest{"DoubleHyphenInComment", "<m><!-- a -- b --></m>"},
        Manifest{"ControlCharacter", "<m>\x01</m>"}, Manifest{"ControlReference", "<m>&#1;</m>"},
        Manifest{"BadUtf8", "<m>\xFF</m>"},
        Manifest{"UnknownEncoding", "<?xml version='1.0' encoding='nope'?><m/>"},
        Manifest{"LateDeclaration", "\n<?xml version='1.0'?><m/>"},
        Manifest{"OnlyComment", "<!-- nothing -->"}, Manifest{"OnlyByteOrderMark", "\xEF\xBB\xBF"},
        Manifest{"UnknownPrefixedEnd", "<m></n>"}, Manifest{"CdataEnd", "<m>]]></m>"},
        Manifest{"Nulls", std::string("<m>\0</m>", 8)}, Manifest{"NumberName", "<1/>"}),
    CaseName());

// --- Form ----------------------------------------------------------------------------------------

TEST_F(ManifestTest, OneLineIsSpreadOverMany) {
  EXPECT_EQ(0, installManifest("<m><domain-object><object-data><install><installfeature/></install>"
                               "</object-data></domain-object></m>")
                   .status);

  EXPECT_THAT(left(), HasSubstr(">\n"));
  const auto lines = sortedLines(left());
  EXPECT_GE(lines.size(), 9u) << left();
  EXPECT_THAT(lines, Contains("      <install>"));
}

TEST_F(ManifestTest, OddIndentationIsMadeEven) {
  EXPECT_EQ(0, installManifest("<m>\n\n\n\t\t<domain-object>\n<object-data>\n<install>\n"
                               "             <installfeature/></install>"
                               "</object-data></domain-object></m>")
                   .status);

  EXPECT_THAT(left(), Not(HasSubstr("\t")));
  EXPECT_THAT(left(), Not(HasSubstr("\n\n")));
}

TEST_F(ManifestTest, RewritingTwiceChangesNothingMore) {
  ASSERT_EQ(0, installManifest(kSimpleManifest).status);
  const std::string once = left();

  ASSERT_EQ(0, installManifest(once).status);

  EXPECT_EQ(once, left());
}

TEST_F(ManifestTest, PreservedSpaceIsKept) {
  ASSERT_EQ(
      0,
      installManifest(manifestOf("<installfeature/><t xml:space=\"preserve\"> <b/>  </t>")).status);

  EXPECT_THAT(left(), HasSubstr("<t xml:space=\"preserve\"> <b/>  </t>"));
}

TEST_F(ManifestTest, DeclaredLatinOneIsKept) {
  const std::string text =
      "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\n<m n=\"\xE9\"><domain-object>"
      "<object-data><install>" +
      featureOf("url='${installer.root}/\xE9'") + "</install></object-data></domain-object></m>";

  ASSERT_EQ(0, installManifest(text).status);

  EXPECT_THAT(left(), StartsWith("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>"));
  EXPECT_THAT(left(), HasSubstr("n=\"\xE9\""));
  EXPECT_THAT(left(), HasSubstr(std::string("url=\"") + kRoot + "/\xE9\""));
}

TEST_F(ManifestTest, InternalSubsetAndItsReferencesSurvive) {
  proves("DOCUMENT-8");
  const std::string text =
      "<!DOCTYPE m [<!ENTITY who \"Velna\"><!ELEMENT m ANY>]>\n<m><domain-object><object-data>"
      "<install>" +
      featureOf("url='${installer.root}' by='&who;'") +
      "</install></object-data></domain-object><note>made by &who;</note></m>";

  ASSERT_EQ(0, installManifest(text).status);

  EXPECT_THAT(left(), HasSubstr("<!ENTITY who \"Velna\">"));
  EXPECT_THAT(left(), HasSubstr("<note>made by &who;</note>"));
  EXPECT_THAT(left(), HasSubstr("by=\"&who;\""));
  EXPECT_THAT(left(), HasSubstr(std::string("url=\"") + kRoot + "\""));
}

TEST_F(ManifestTest, ExternalEntityIsNeverRead) {
  proves("DOCUMENT-14");
  _sandbox.writeFile("/etc/secret", "secret words");

  const std::string manifest =
      "<!DOCTYPE m [<!ENTITY x SYSTEM \"file:///etc/secret\">]><m><domain-object>"
      "<object-data><install>" +
      featureOf("url='${installer.root}'") +
      "<note>&x;</note></install></object-data></domain-object></m>";

  (void)installManifest(manifest);  // what it leaves is looked at

  EXPECT_THAT(left(), Not(HasSubstr("secret words")));
  EXPECT_THAT(left(), HasSubstr("<note>&x;</note>"));
}

TEST_F(ManifestTest, ExplodingEntitiesEndInBoundedTimeAndSpace) {
  proves("DOCUMENT-14");
  std::string entities = "<!ENTITY a0 \"aaaaaaaaaaaaaaaaaaaa\">";
  for (int i = 1; i < 12; ++i) {
    std::string value;
    for (int k = 0; k < 20; ++k) value += "&a" + std::to_string(i - 1) + ";";
    entities += "<!ENTITY a" + std::to_string(i) + " \"" + value + "\">";
  }

  const std::string text = "<!DOCTYPE m [" + entities +
                           "]><m><domain-object><object-data><install>" +
                           featureOf("url='${installer.root}&a11;'") +
                           "<t>&a11;</t></install></object-data></domain-object></m>";
  const RunResult result = installManifest(text);

  EXPECT_EQ(1, result.status) << result.err;
  EXPECT_EQ((ErrorRecord{4, {"install.hotfix.xml"}}), errorRecord());
  EXPECT_EQ(text, left());
  EXPECT_EQ(std::nullopt, recorded("hotfixVersion"));
}

TEST_F(ManifestTest, DeepNestingEndsWithoutACrash) {
  proves("DOCUMENT-7");
  std::string text;
  for (int i = 0; i < 100'000; ++i) text += "<d>";
  for (int i = 0; i < 100'000; ++i) text += "</d>";

  text = "<m>" + text + "</m>";
  const RunResult result = installManifest(text);

  EXPECT_EQ(1, result.status) << result.err;
  EXPECT_EQ((ErrorRecord{4, {"install.hotfix.xml"}}), errorRecord());
  EXPECT_TRUE(left() == text) << "too long to be shown";
  EXPECT_EQ(std::nullopt, recorded("hotfixVersion"));
}

TEST_F(ManifestTest, ManyFeaturesAreAllResolved) {
  std::string features;
  for (int i = 0; i < 20'000; ++i)
    features += "<feature url='${installer.root}/" + std::to_string(i) + "'/>";

  ASSERT_EQ(0, installManifest(manifestOf("<installfeature><requirements>" + features +
                                          "</requirements></installfeature>"))
                   .status);

  EXPECT_THAT(left(), Not(HasSubstr("${installer.root}")));
  EXPECT_THAT(left(), HasSubstr(std::string(kRoot) + "/19999\""));
}

struct RootPath {
  const char* name;
  std::string folder;
};
void PrintTo(const RootPath& root, std::ostream* stream) {
  *stream << root.name;
}

class RootPathTest : public ManifestTest, public ::testing::WithParamInterface<RootPath> {};

TEST_P(RootPathTest, IsEscapedByTheSerialiser) {
  _package.folder = GetParam().folder;
  buildPackage(_package);

  ASSERT_EQ(0, install().status);

  expectRewritten(kSimpleManifest, "file:" + GetParam().folder);
  EXPECT_THAT(_sandbox.texts(),
              Contains("Get ${installer.root} : file:" + GetParam().folder + "."));
}

INSTANTIATE_TEST_SUITE_P(Folders, RootPathTest,
                         ::testing::Values(RootPath{"Ampersand", "/Volumes/a&b/i/Fix.pkg"},
                                           RootPath{"Angles", "/Volumes/a<b>/i/Fix.pkg"},
                                           RootPath{"Entity", "/Volumes/a&amp/i/Fix.pkg"},
                                           RootPath{"Blanks", "/Volumes/a b/i/Fix.pkg"},
                                           RootPath{"Unicode",
                                                    "/Volumes/\xC3\xA9\xE2\x82\xAC/Fix.pkg"},
                                           RootPath{"Dollar", "/Volumes/$&${x}/i/Fix.pkg"}),
                         CaseName());

TEST_F(ManifestTest, PlaceholderInTheRootIsNotReplacedAgain) {
  _package.folder = "/Volumes/${installer.root}/i/Fix.pkg";
  buildPackage(_package);

  ASSERT_EQ(0, install().status);

  EXPECT_THAT(left(), HasSubstr("url=\"file:/Volumes/${installer.root}/i/Fix.pkg/updates\""));
}

TEST_F(ManifestTest, RemovalManifestIsCopiedUnparsed) {
  recordHotfix("1.4");
  _sandbox.writeFile(_instance.deploy("uninstall.hotfix.xml"), "<not closed ${installer.root}");
  _sandbox.script("rcplauncher", 1,
                  ChildScript()
                      .snapshot(_instance.deploy("install.update.xml"))
                      .write(_instance.result(), "rc=0\n"));

  ASSERT_EQ(0, install().status);

  EXPECT_EQ("<not closed ${installer.root}",
            _sandbox.children("rcplauncher").at(0).fileAt(_instance.deploy("install.update.xml")));
}

// --- Generated manifests -------------------------------------------------------------------------

class ManifestGenerator {
 public:
  explicit ManifestGenerator(unsigned seed) : _random(seed) {}

  std::string text() {
    std::string result;
    if (chance(2)) result += "<?xml version=\"1.0\" encoding=\"UTF-8\"?>" + blanks();
    if (chance(4)) result += "<!-- top -->\n";
    if (chance(6)) result += "<!DOCTYPE m>\n";
    result += element("m", 0);
    if (chance(5)) result += "\n<?end now?>";
    return result;
  }

 private:
  int number(int from, int to) { return std::uniform_int_distribution<int>(from, to)(_random); }
  bool chance(int of) { return number(1, of) == 1; }

  std::string blanks() {
    static const char* kinds[] = {"", "", "\n", " ", "\n    ", "\t", "\r\n", "\n\n"};
    return kinds[number(0, 7)];
  }

  // What mostly stands at a depth, so that whole paths come about.
  std::string nameAt(int depth) {
    static const char* path[] = {"m",       "domain-object",  "object-data",
                                 "install", "installfeature", "requirements",
                                 "feature"};
    if (chance(5)) return path[number(1, 6)];
    if (chance(12)) return "other";
    return path[std::min(depth, 6)];
  }

  std::string element(const std::string& name, int depth) {
    std::string result = "<" + name + attributes();
    const int children = depth >= 7 ? 0 : number(depth < 5 ? 1 : 0, 3);
    if (children == 0) return result + (chance(2) ? "/>" : "></" + name + ">");
    result += ">";
    const bool mixed = chance(10);
    for (int i = 0; i < children; ++i) {
      result += mixed ? "text" + entity() : blanks();
      result += child(depth + 1);
    }
    return result + (mixed ? "" : blanks()) + "</" + name + ">";
  }

  std::string child(int depth) {
    if (chance(12)) return "<!-- ${installer.root} -->";
    if (chance(15)) return "<?go ${installer.root}?>";
    if (chance(15)) return "<t><![CDATA[ <&${installer.root} ]]></t>";
    if (chance(15)) return "<t>a " + entity() + " ${installer.root}</t>";
    return element(nameAt(depth), depth);
  }

  std::string entity() {
    static const char* kinds[] = {"&amp;", "&lt;", "&gt;", "&#233;", "&#x20AC;", "\xC3\xA9"};
    return kinds[number(0, 5)];
  }

  std::string attributes() {
    static const char* names[] = {"url", "id", "version", "URL", "name"};
    std::string result;
    for (const char* name : names) {
      if (!chance(name[0] == 'u' ? 1 : 3)) continue;
      const char quote = chance(2) ? '"' : '\'';
      result += blanks() + " " + name + "=" + quote + value() + quote;
    }
    return result;
  }

  std::string value() {
    static const char* parts[] = {
        "${installer.root}", "${installer.root}", "/a",    "&amp;", "&lt;",     "$",   "{", "}",
        "${INSTALLER.ROOT}", "${installer.",      "&#10;", " ",     "\xC3\xA9", "&gt;"};
    std::string result;
    for (int i = number(0, 4); i > 0; --i) result += parts[number(0, 13)];
    return result;
  }

  std::mt19937 _random;
};

class GeneratedManifestTest : public ManifestTest,
                              public ::testing::WithParamInterface<unsigned> {};

TEST_P(GeneratedManifestTest, IsRewrittenAsTheModelDoes) {
  proves("DOCUMENT-1");
  const std::string text = ManifestGenerator(GetParam()).text();

  EXPECT_EQ(0, installManifest(text).status) << text;

  expectRewritten(text);
}

INSTANTIATE_TEST_SUITE_P(Seeds, GeneratedManifestTest, ::testing::Range(1u, 151u));

// Damages a good manifest somewhere: whatever comes of it, the run ends by itself, and the copy is
// whole, either as it was copied or as a document.
class DamagedManifestTest : public ManifestTest, public ::testing::WithParamInterface<unsigned> {};

TEST_P(DamagedManifestTest, LeavesAWholeFile) {
  proves("DOCUMENT-7");
  std::mt19937 random(GetParam());
  std::string text = ManifestGenerator(GetParam()).text();
  for (int i = 0; i < 3; ++i) {
    const std::size_t at = random() % text.size();
    switch (random() % 3) {
      case 0:
        text.erase(at, 1 + random() % 3);
        break;
      case 1:
        text.insert(at, 1, "<>&\"'\0\xFF!["[random() % 9]);
        break;
      default:
        text[at] = static_cast<char>(random());
    }
    if (text.empty()) text = "x";
  }

  const RunResult result = installManifest(text);

  if (result.status == 1) {
    EXPECT_EQ(text, left());
    EXPECT_EQ((ErrorRecord{4, {"install.hotfix.xml"}}), errorRecord());
  } else {
    EXPECT_EQ(0, result.status) << ::testing::PrintToString(text);
    EXPECT_EQ((ErrorRecord{0, {}}), errorRecord());
    EXPECT_THAT(_sandbox.texts(), Contains("Save install manifest."));
  }
}

INSTANTIATE_TEST_SUITE_P(Seeds, DamagedManifestTest, ::testing::Range(1000u, 1060u));

}  // namespace
}  // namespace installer::cli
