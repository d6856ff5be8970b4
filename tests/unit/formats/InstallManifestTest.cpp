#include "hotfix/formats/InstallManifest.h"

#include <gmock/gmock.h>

#include <cerrno>

#include "base/XmlRewriting.h"
#include "formats/ManifestFeatures.h"
#include "support/Memory.h"
#include "support/Proves.h"
#include "support/Sandbox.h"

namespace installer {
namespace {

using test::Says;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using namespace std::string_view_literals;

constexpr const char* kManifest = "tmp/install.xml";

class InstallManifestTest : public ::testing::Test {
 protected:
  // What a manifest becomes when its root is replaced and it is saved over itself.
  std::string rewritten(std::string_view manifest, const std::string& root = "file:/pkg") {
    InstallManifest document(_sandbox.write(kManifest, manifest));
    EXPECT_TRUE(document.replaceInstallerRootWith(root)) << manifest;
    EXPECT_TRUE(document.saveInstallManifestAs(std::nullopt)) << manifest;
    return _sandbox.read(kManifest);
  }

  // The same for a document that need not be a manifest.
  std::string reformatted(std::string_view bytes) {
    InstallManifest document(_sandbox.write(kManifest, bytes));
    EXPECT_TRUE(document.saveInstallManifestAs(std::nullopt)) << bytes;
    return _sandbox.read(kManifest);
  }

  // The features alone, around them the path on which they are looked for.
  static std::string manifestWith(std::string_view features) {
    return std::string("<m><domain-object><object-data><install><installfeature><requirements>")
        .append(features)
        .append("</requirements></installfeature></install></object-data></domain-object></m>");
  }

  // The text that a single feature with this attribute becomes.
  std::string rewrittenFeature(std::string_view feature, const std::string& root = "file:/pkg") {
    const std::string text = rewritten(manifestWith(feature), root);
    const std::size_t begin = text.find("<feature");
    return text.substr(begin, text.find("\n", begin) - begin);
  }

  test::Sandbox _sandbox;
};

// --- Which features ------------------------------------------------------------------------------

TEST_F(InstallManifestTest, RootIsReplacedInEveryFeatureOnThePath) {
  proves("DOCUMENT-1");
  EXPECT_EQ(rewritten(R"(<?xml version="1.0" encoding="UTF-8"?>
<provision>
    <domain-object><other/><object-data>
      <install>
        <installfeature name="a"><requirements>
          <feature id="1" url="${installer.root}/site"/><feature id="2"
            url="jar:${installer.root}/x!/${installer.root}"/>
        </requirements></installfeature>
        <text>keep</text>
        <installfeature name="b"><requirements><feature id="3" url='${installer.root}'/></requirements></installfeature>
      </install></object-data></domain-object></provision>
)"),
            R"(<?xml version="1.0" encoding="UTF-8"?>
<provision>
  <domain-object>
    <other/>
    <object-data>
      <install>
        <installfeature name="a">
          <requirements>
            <feature id="1" url="file:/pkg/site"/>
            <feature id="2" url="jar:file:/pkg/x!/file:/pkg"/>
          </requirements>
        </installfeature>
        <text>keep</text>
        <installfeature name="b">
          <requirements>
            <feature id="3" url="file:/pkg"/>
          </requirements>
        </installfeature>
      </install>
    </object-data>
  </domain-object>
</provision>
)");
  EXPECT_THAT(_sandbox.log(), IsEmpty());
}

TEST_F(InstallManifestTest, OnlyTheFirstOfEachUpperLevelCounts) {
  proves("DOCUMENT-2");
  const std::string features =
      "<installfeature><requirements><feature url='${installer.root}'/></requirements>"
      "</installfeature>";
  const std::string text =
      rewritten("<m><domain-object><object-data><install>" + features + "</install><install>" +
                features + "</install></object-data><object-data><install>" + features +
                "</install></object-data></domain-object><domain-object><object-data><install>" +
                features + "</install></object-data></domain-object></m>");

  EXPECT_EQ(text.find("file:/pkg"), text.find("url=\"") + 5);
  EXPECT_EQ(text.find("file:/pkg"), text.rfind("file:/pkg"));
}

TEST_F(InstallManifestTest, OnlyTheFirstRequirementsCount) {
  proves("DOCUMENT-2");
  const std::string text = rewritten(
      "<m><domain-object><object-data><install><installfeature>"
      "<requirements><feature url='${installer.root}/1'/></requirements>"
      "<requirements><feature url='${installer.root}/2'/></requirements>"
      "</installfeature></install></object-data></domain-object></m>");

  EXPECT_THAT(text, HasSubstr("\"file:/pkg/1\""));
  EXPECT_THAT(text, HasSubstr("\"${installer.root}/2\""));
}

TEST_F(InstallManifestTest, InstallFeaturesWithoutRequirementsArePassedOver) {
  proves("DOCUMENT-3");
  const std::string text = rewritten(
      "<m><domain-object><object-data><install><installfeature/><installfeature>"
      "<requirements><feature url='${installer.root}'/></requirements>"
      "</installfeature></install></object-data></domain-object></m>");

  EXPECT_THAT(text, HasSubstr("<feature url=\"file:/pkg\"/>"));
}

TEST_F(InstallManifestTest, WithoutAnyFeatureNothingChangesAndItSaysYes) {
  proves("DOCUMENT-3");
  EXPECT_THAT(rewritten("<m><domain-object><object-data><install><installfeature/></install>"
                        "</object-data></domain-object></m>"),
              HasSubstr("<installfeature/>"));
  EXPECT_THAT(rewritten(manifestWith("")), HasSubstr("<requirements/>"));
}

TEST_F(InstallManifestTest, OnlyDirectChildrenCount) {
  proves("DOCUMENT-2");
  const std::string text = rewritten(manifestWith(
      "<x><feature url='${installer.root}/deep'/></x><feature url='${installer.root}/direct'/>"));

  EXPECT_THAT(text, HasSubstr("${installer.root}/deep"));
  EXPECT_THAT(text, HasSubstr("file:/pkg/direct"));
}

TEST_F(InstallManifestTest, RootElementMayHaveAnyName) {
  proves("DOCUMENT-2");
  InstallManifest document(_sandbox.write(
      kManifest,
      "<domain-object><object-data><install><installfeature/></install></object-data>"
      "</domain-object>"));

  EXPECT_FALSE(document.replaceInstallerRootWith("r"));

  EXPECT_THAT(_sandbox.log(),
              ElementsAre(Says(LogLevel::error, "Not able to get domain-object element")));
}

// --- Missing levels ------------------------------------------------------------------------------

struct MissingLevel {
  std::string name;
  std::string manifest;
  std::string message;
};
void PrintTo(const MissingLevel& row, std::ostream* stream) {
  *stream << row.name;
}

class MissingLevels : public InstallManifestTest,
                      public ::testing::WithParamInterface<MissingLevel> {};

TEST_P(MissingLevels, AreNamedInOneErrorLineAndTheDocumentIsStillSaved) {
  proves("DOCUMENT-6");
  InstallManifest document(_sandbox.write(kManifest, GetParam().manifest));

  EXPECT_FALSE(document.replaceInstallerRootWith("file:/pkg"));
  EXPECT_TRUE(document.saveInstallManifestAs(_sandbox.path("tmp/out.xml")));

  EXPECT_THAT(_sandbox.log(), ElementsAre(Says(LogLevel::error, GetParam().message)));
  EXPECT_EQ(_sandbox.read(kManifest), GetParam().manifest);
  EXPECT_EQ(_sandbox.read("tmp/out.xml").find("file:/pkg"), std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(
    Path, MissingLevels,
    ::testing::ValuesIn(std::vector<MissingLevel>{
        {"NoDomainObject", "<m/>", "Not able to get domain-object element"},
        {"DomainObjectAsGrandchild",
         "<m><x><domain-object><object-data><install><installfeature/></install></object-data>"
         "</domain-object></x></m>",
         "Not able to get domain-object element"},
        {"DomainObjectInOtherCase", "<m><Domain-Object/></m>",
         "Not able to get domain-object element"},
        {"DomainObjectWithPrefix", "<m xmlns:x='urn:x'><x:domain-object/></m>",
         "Not able to get domain-object element"},
        {"DomainObjectWithUndeclaredPrefix", "<m><x:domain-object/></m>",
         "Not able to get domain-object element"},
        {"DomainObjectInstructionOnly", "<m><?domain-object x?></m>",
         "Not able to get domain-object element"},
        {"NoObjectData", "<m><domain-object/></m>", "Not able to get object-data element"},
        {"ObjectDataInTheSecondOnly",
         "<m><domain-object/><domain-object><object-data/></domain-object></m>",
         "Not able to get object-data element"},
        {"NoInstall", "<m><domain-object><object-data/></domain-object></m>",
         "Not able to get install element"},
        {"InstallWithPrefix",
         "<m xmlns:x='urn:x'><domain-object><object-data><x:install/></object-data>"
         "</domain-object></m>",
         "Not able to get install element"},
        {"LongerInstall",
         "<m><domain-object><object-data><install2/><installs/></object-data></domain-object></m>",
         "Not able to get install element"},
        {"NoInstallFeature",
         "<m><domain-object><object-data><install/></object-data></domain-object></m>",
         "Not able to get install-feature element"},
        {"InstallFeatureWithHyphen",
         "<m><domain-object><object-data><install><install-feature/></install></object-data>"
         "</domain-object></m>",
         "Not able to get install-feature element"},
    }),
    [](const auto& test) { return test.param.name; });

class RootlessDocument : public xml::RewritableDocument {
 public:
  Element root() const override { return nullptr; }
  std::vector<Element> childrenNamed(Element, std::string_view) const override { return {}; }
  void changeAttributes(const std::vector<Element>&, std::string_view, const Change&) override {}
  std::optional<std::string> serialize() const override { return std::nullopt; }
};

TEST_F(InstallManifestTest, DocumentWithoutRootElementIsNamed) {
  proves("DOCUMENT-6");
  EXPECT_EQ(manifestFeatures(RootlessDocument()), std::nullopt);

  EXPECT_THAT(_sandbox.log(), ElementsAre(Says(LogLevel::error, "Not able to get root element")));
}

// --- The value of "url" --------------------------------------------------------------------------

TEST_F(InstallManifestTest, PlaceholderIsReplacedWhereverItStands) {
  proves("DOCUMENT-4");
  EXPECT_EQ(rewrittenFeature("<feature url='${installer.root}'/>"),
            R"(<feature url="file:/pkg"/>)");
  EXPECT_EQ(rewrittenFeature("<feature url='a${installer.root}b${installer.root}'/>"),
            R"(<feature url="afile:/pkgbfile:/pkg"/>)");
  EXPECT_EQ(rewrittenFeature("<feature url='$&#123;installer.root&#x7d;/x'/>"),
            R"(<feature url="file:/pkg/x"/>)");
}

TEST_F(InstallManifestTest, OtherValuesStay) {
  proves("DOCUMENT-4");
  for (const char* feature :
       {R"(<feature url="${INSTALLER.ROOT}/x"/>)", R"(<feature url="${installer.root/x"/>)",
        R"(<feature url="$ {installer.root}"/>)", R"(<feature url="http://x/?a=1&amp;b=2"/>)",
        R"(<feature url=""/>)", R"(<feature/>)", R"(<feature URL="${installer.root}"/>)",
        R"(<feature id="${installer.root}"/>)"})
    EXPECT_EQ(rewrittenFeature(feature), feature);
}

TEST_F(InstallManifestTest, OnlyTheUrlWithoutPrefixIsReplaced) {
  proves("DOCUMENT-4");
  EXPECT_EQ(rewrittenFeature("<feature xmlns:x='urn:x' x:url='${installer.root}'/>"),
            R"(<feature xmlns:x="urn:x" x:url="${installer.root}"/>)");
  EXPECT_EQ(rewrittenFeature(
                "<feature xmlns:x='urn:x' x:url='${installer.root}/1' url='${installer.root}/2'/>"),
            R"(<feature xmlns:x="urn:x" x:url="${installer.root}/1" url="file:/pkg/2"/>)");
}

TEST_F(InstallManifestTest, AttributesKeepTheirOrder) {
  proves("DOCUMENT-4");
  EXPECT_EQ(rewrittenFeature("<feature z='1' url='${installer.root}' a='2' m=''/>"),
            R"(<feature z="1" url="file:/pkg" a="2" m=""/>)");
}

TEST_F(InstallManifestTest, RootIsEscaped) {
  proves("DOCUMENT-5");
  EXPECT_EQ(rewrittenFeature("<feature url='${installer.root}/x'/>", "file:/a & b/<c>\"d\"'e'"),
            R"(<feature url="file:/a &amp; b/&lt;c&gt;&quot;d&quot;'e'/x"/>)");
  EXPECT_EQ(rewrittenFeature("<feature url='${installer.root}'/>", "file:/&amp;&who;"),
            R"(<feature url="file:/&amp;amp;&amp;who;"/>)");
  EXPECT_EQ(rewrittenFeature("<feature url='${installer.root}'/>", "a\tb\nc"),
            R"(<feature url="a&#9;b&#10;c"/>)");
}

TEST_F(InstallManifestTest, RootMayHoldThePlaceholderItself) {
  proves("DOCUMENT-5");
  EXPECT_EQ(rewrittenFeature("<feature url='${installer.root}/x'/>", "file:/${installer.root}/y"),
            R"(<feature url="file:/${installer.root}/y/x"/>)");
}

TEST_F(InstallManifestTest, RootThatIsNoUtf8CountsAsLatin1) {
  proves("DOCUMENT-5");
  EXPECT_EQ(rewrittenFeature("<feature url='${installer.root}/\u00DF'/>", "file:/\xE9\u65E5"),
            "<feature url=\"file:/\u00E9\u65E5/\u00DF\"/>");
}

TEST_F(InstallManifestTest, RootThatXmlCannotTellIsNotSaved) {
  proves("DOCUMENT-5");
  const std::string manifest = manifestWith("<feature url='${installer.root}'/>");
  InstallManifest document(_sandbox.write(kManifest, manifest));
  ::testing::internal::CaptureStderr();

  EXPECT_TRUE(document.replaceInstallerRootWith("file:/\x01"));
  EXPECT_FALSE(document.saveInstallManifestAs(std::nullopt));

  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
  EXPECT_EQ(_sandbox.read(kManifest), manifest);
}

// --- Entity references in "url" ------------------------------------------------------------------

std::string withEntities(std::string_view entities, std::string_view manifest) {
  return std::string("<!DOCTYPE m [").append(entities).append("]>").append(manifest);
}

class UrlEntities : public InstallManifestTest {
 protected:
  std::string rewrittenUrl(std::string_view entities, std::string_view value) {
    const std::string text = rewritten(withEntities(
        entities, manifestWith(std::string("<feature url=\"").append(value).append("\"/>"))));
    const std::size_t begin = text.find("url=\"") + 5;
    return text.substr(begin, text.find("\"/>", begin) - begin);
  }
};

TEST_F(UrlEntities, StayBesideThePlaceholder) {
  proves("DOCUMENT-9");
  EXPECT_EQ(rewrittenUrl("<!ENTITY site 'site &amp; more'>", "${installer.root}/&site;/x"),
            "file:/pkg/&site;/x");
  EXPECT_EQ(rewrittenUrl("<!ENTITY site 'site'>", "&site;${installer.root}&site;"),
            "&site;file:/pkg&site;");
}

TEST_F(UrlEntities, StayWithoutThePlaceholder) {
  proves("DOCUMENT-9");
  EXPECT_EQ(rewrittenUrl("<!ENTITY site 'site'>", "a/&site;&amp;b"), "a/&site;&amp;b");
}

TEST_F(UrlEntities, StayWhenTheirMeaningIsOutside) {
  proves("DOCUMENT-9");
  const std::string text = rewritten(
      "<!DOCTYPE m SYSTEM 'nowhere.dtd'>" +
      manifestWith("<feature url='&site;${installer.root}/&site;&other;'>&site;</feature>"));

  EXPECT_THAT(text, HasSubstr("<!DOCTYPE m SYSTEM \"nowhere.dtd\">"));
  EXPECT_THAT(text, HasSubstr("<feature url=\"&site;file:/pkg/&site;&other;\">&site;</feature>"));
}

TEST_F(UrlEntities, DeclaredByAParameterEntityStay) {
  proves("DOCUMENT-9");
  EXPECT_EQ(
      rewrittenUrl("<!ENTITY % inner '<!ENTITY one \"1\">'> %inner;", "${installer.root}/&one;"),
      "file:/pkg/&one;");
}

// The use of a parameter entity is lost when the document is written, and with it the licence to
// refer to entities that are declared nowhere.
TEST_F(UrlEntities, ThatOnlyAParameterEntityExcusesAreNotSavedWithoutIt) {
  proves("DOCUMENT-10");
  const std::string manifest = withEntities(
      "<!ENTITY % inner ''> %inner;", manifestWith("<feature url='${installer.root}/&two;'/>"));
  InstallManifest document(_sandbox.write(kManifest, manifest));

  EXPECT_TRUE(document.replaceInstallerRootWith("file:/pkg"));
  EXPECT_FALSE(document.saveInstallManifestAs(std::nullopt));

  EXPECT_EQ(_sandbox.read(kManifest), manifest);
}

TEST_F(UrlEntities, ThatHoldThePlaceholderAreWrittenOut) {
  proves("DOCUMENT-9");
  EXPECT_EQ(rewrittenUrl("<!ENTITY root '${installer.root}'>", "&root;/x"), "file:/pkg/x");
  EXPECT_EQ(rewrittenUrl("<!ENTITY root '${installer.root}'>", "${installer.root}/&root;/&amp;"),
            "file:/pkg/file:/pkg/&amp;");
  EXPECT_EQ(rewrittenUrl("<!ENTITY inner '${installer.root}'><!ENTITY root '&inner;/y'>", "&root;"),
            "file:/pkg/y");
}

TEST_F(UrlEntities, ThatCompleteThePlaceholderAreWrittenOut) {
  proves("DOCUMENT-9");
  EXPECT_EQ(rewrittenUrl("<!ENTITY open '${'>", "&open;installer.root}/&open;"), "file:/pkg/${");
}

TEST_F(UrlEntities, AreWrittenOutUpToAMebibyteAndStayBeyondIt) {
  proves("DOCUMENT-14");
  constexpr std::size_t kMebibyte = 1 << 20;
  const std::string most(kMebibyte - std::string_view("${installer.root}").size(), 'x');
  const auto declared = [](const std::string& rest) {
    return "<!ENTITY e '${installer.root}" + rest + "'>";
  };

  EXPECT_EQ(rewrittenUrl(declared(most), "&e;"), "file:/pkg" + most);
  EXPECT_EQ(rewrittenUrl(declared(most + "x"), "&e;"), "&e;");
  EXPECT_EQ(rewrittenUrl(declared(most), "${installer.root}&e;"), "file:/pkg&e;");
}

TEST_F(UrlEntities, AreWrittenOutUpToSixteenMebibytesTogether) {
  proves("DOCUMENT-9", "DOCUMENT-14");
  constexpr std::size_t kLength = std::size_t{1} << 19;
  const std::string features = "<feature url='&e;'/>";
  std::string many;
  for (int number = 0; number < 100; ++number) many += features;

  const std::string text = rewritten(withEntities(
      "<!ENTITY e '${installer.root}" + std::string(kLength, 'x') + "'>", manifestWith(many)));

  EXPECT_THAT(text, HasSubstr("url=\"file:/pkgx"));
  EXPECT_THAT(text, HasSubstr("url=\"&e;\""));
  EXPECT_LT(text.size(), 34 * kLength);
}

// --- What survives -------------------------------------------------------------------------------

TEST_F(InstallManifestTest, EverythingElseSurvives) {
  proves("DOCUMENT-8");
  const std::string document = R"(<?xml version="1.0" encoding="UTF-8" standalone="no"?>
<?style type="x"?>
<!-- before -->
<!DOCTYPE m [
<!ENTITY who "you &amp; me">
<!ENTITY out SYSTEM "nowhere.xml">
<!ATTLIST feature kind CDATA "plain">
]>
<m xmlns="urn:m" xmlns:x="urn:x" x:a="&who;" b="&lt;&amp;&quot;'">
  <!-- inside -->
  <?step one?>
  <x:text>some &who; text &amp; &out;</x:text>
  <data><![CDATA[<raw> & ]]></data>
  <mixed>a <b> <i/> </b> c</mixed>
  <blank> </blank>
  <reference> &who; <b/> </reference>
  <section> <![CDATA[ ]]> <b/> </section>
  <empty/>
  <wide>é日😀</wide>
</m>
<!-- after -->
)";

  EXPECT_EQ(reformatted(document), document);
}

TEST_F(InstallManifestTest, NamesOfNamespacesSurvive) {
  proves("DOCUMENT-8", "DOCUMENT-12");
  const std::string document =
      "<!DOCTYPE m [\n<!ENTITY who \"you\">\n]>\n"
      "<m xmlns=\"a&#10;b&#9;c&#13;d\" xmlns:x=\"&#38;lt; &lt;&#38; &who;\" xmlns:y=\"y\">\n"
      "  <e xmlns=\"\" xmlns:z=\"it's\"/>\n</m>\n";

  EXPECT_EQ(reformatted(document), document);
  EXPECT_EQ(reformatted("<m xmlns='&amp;\"'/>"), "<m xmlns='&#38;\"'/>\n");
}

TEST_F(InstallManifestTest, DeclaredDefaultsSurvive) {
  proves("DOCUMENT-8", "DOCUMENT-12");
  const std::string document =
      "<!DOCTYPE m [\n<!ENTITY who \"you\">\n"
      "<!ATTLIST m a CDATA \"&who;/&#10;a&#9;b&#13;&lt;c&#38;\" b CDATA #IMPLIED>\n]>\n<m/>\n";

  const std::string once = reformatted(document);

  EXPECT_THAT(once, HasSubstr("&who;/&#10;a&#9;b&#13;&lt;c&#38;"));
  EXPECT_EQ(reformatted(once), once);
}

TEST_F(InstallManifestTest, DocumentWithoutDeclarationGetsNone) {
  proves("DOCUMENT-8");
  EXPECT_EQ(reformatted("<m>\u00E9</m>"), "<m>\u00E9</m>\n");
}

TEST_F(InstallManifestTest, StandaloneIsKept) {
  proves("DOCUMENT-8");
  EXPECT_THAT(reformatted("<?xml version='1.0' standalone='yes'?><m/>"),
              HasSubstr("standalone=\"yes\""));
  EXPECT_EQ(reformatted("<?xml version='1.0' encoding='UTF-8'?><m/>"),
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<m/>\n");
}

// --- Layout --------------------------------------------------------------------------------------

TEST_F(InstallManifestTest, OneLineIsIndented) {
  proves("DOCUMENT-12");
  EXPECT_EQ(reformatted("<m><a><b/></a><!--c--><?d e?></m>"),
            "<m>\n  <a>\n    <b/>\n  </a>\n  <!--c-->\n  <?d e?>\n</m>\n");
}

TEST_F(InstallManifestTest, OldIndentationIsDropped) {
  proves("DOCUMENT-12");
  EXPECT_EQ(reformatted("<m>\r\n\t\t<a>\n\n<b/>   </a>\n\n\n</m>"),
            "<m>\n  <a>\n    <b/>\n  </a>\n</m>\n");
}

TEST_F(InstallManifestTest, LayoutIsStable) {
  proves("DOCUMENT-12");
  const std::string once = reformatted("<m><a><b/><c>t</c></a></m>");

  EXPECT_EQ(reformatted(once), once);
}

TEST_F(InstallManifestTest, ElementsWithTextAreLeftAlone) {
  proves("DOCUMENT-12");
  for (const char* element :
       {"<a>t<b/></a>", "<a><b/> t </a>", "<a> <![CDATA[]]><b/></a>", "<a>t <b> <c/> </b></a>",
        "<a> </a>", "<a> <!--c--> </a>", "<a> <?p i?> </a>", "<a>\u00A0<b/></a>"})
    EXPECT_EQ(reformatted(std::string("<m>") + element + "</m>"),
              std::string("<m>\n  ") + element + "\n</m>\n");
}

TEST_F(InstallManifestTest, PreservedSpaceIsLeftAlone) {
  proves("DOCUMENT-12");
  for (const char* element :
       {"<a xml:space=\"preserve\"><b/> <c/></a>", "<a xml:space=\"preserve\"> <b> <c/></b></a>"})
    EXPECT_EQ(reformatted(std::string("<m>") + element + "</m>"),
              std::string("<m>\n  ") + element + "\n</m>\n");
}

TEST_F(InstallManifestTest, PreservedSpaceIsLeftAloneWhereThereIsNone) {
  const std::string document =
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
      "<m>\n  <a xml:space=\"preserve\"><b><c/></b></a>\n</m>\n";

  EXPECT_EQ(reformatted(document), document);
}

TEST_F(InstallManifestTest, PreservingEndsWhereDefaultBegins) {
  proves("DOCUMENT-12");
  EXPECT_EQ(reformatted("<a xml:space='preserve'> <b xml:space='default'> <c/></b> </a>"),
            "<a xml:space=\"preserve\"> <b xml:space=\"default\">\n    <c/>\n  </b> </a>\n");
  EXPECT_EQ(reformatted("<a xml:space='preserve'> <b xml:space='other'> <c/></b> </a>"),
            "<a xml:space=\"preserve\"> <b xml:space=\"other\"> <c/></b> </a>\n");
  EXPECT_EQ(reformatted("<a><b space='preserve'> <c/></b></a>"),
            "<a>\n  <b space=\"preserve\">\n    <c/>\n  </b>\n</a>\n");
}

// --- Encodings -----------------------------------------------------------------------------------

TEST_F(InstallManifestTest, DeclaredEncodingIsKept) {
  proves("DOCUMENT-11");
  EXPECT_EQ(reformatted("<?xml version='1.0' encoding='ISO-8859-1'?><m a='\xE9'>\xDF</m>"),
            "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\n<m a=\"\xE9\">\xDF</m>\n");
  EXPECT_EQ(reformatted("<?xml version='1.0' encoding='Shift_JIS'?><m>\x93\xFA</m>"),
            "<?xml version=\"1.0\" encoding=\"Shift_JIS\"?>\n<m>\x93\xFA</m>\n");
}

TEST_F(InstallManifestTest, CharactersThatTheEncodingLacksBecomeReferences) {
  proves("DOCUMENT-11");
  const std::string manifest = "<?xml version='1.0' encoding='ISO-8859-1'?>" +
                               manifestWith("<feature url='${installer.root}/&#x65E5;\xE9'/>");

  const std::string text = rewritten(manifest, "file:/\u00E9\u672C");

  EXPECT_THAT(text, HasSubstr("<feature url=\"file:/\xE9&#26412;/&#26085;\xE9\"/>"));
}

TEST_F(InstallManifestTest, AsciiDocumentTellsAllOthersAsReferences) {
  EXPECT_EQ(reformatted("<?xml version='1.0' encoding='US-ASCII'?><m>&#233;</m>"),
            "<?xml version=\"1.0\" encoding=\"US-ASCII\"?>\n<m>&#233;</m>\n");
}

// ASCII text, little endian, without a mark.
std::string utf16(std::string_view text) {
  std::string bytes;
  for (const char character : text) bytes.append(1, character).append(1, '\0');
  return bytes;
}

TEST_F(InstallManifestTest, Utf16IsKeptWithAndWithoutDeclaration) {
  proves("DOCUMENT-11");
  constexpr std::string_view expected = "\xFF\xFE<\0m\0>\0\xE5\x65<\0/\0m\0>\0\n\0"sv;

  EXPECT_EQ(reformatted("\xFF\xFE<\0m\0>\0\xE5\x65<\0/\0m\0>\0"sv), expected);
  EXPECT_EQ(reformatted("\xFE\xFF\0<\0m\0>\x65\xE5\0<\0/\0m\0>"sv), expected);
  EXPECT_EQ(reformatted(utf16("<?xml version=\"1.0\"?><m/>")),
            "\xFF\xFE" + utf16("<?xml version=\"1.0\" encoding=\"UTF-16\"?>\n<m/>\n"));
  const std::string declared =
      "\xFF\xFE" + utf16("<?xml version=\"1.0\" encoding=\"UTF-16\"?>\n<m/>\n");
  EXPECT_EQ(reformatted(declared), declared);
}

// --- Loading and saving --------------------------------------------------------------------------

TEST_F(InstallManifestTest, SaveWritesElsewhereAndLeavesTheLoadedFile) {
  proves("DOCUMENT-13");
  const std::string manifest = manifestWith("<feature url='${installer.root}'/>");
  InstallManifest document(_sandbox.write(kManifest, manifest));
  EXPECT_TRUE(document.replaceInstallerRootWith("file:/pkg"));

  EXPECT_TRUE(document.saveInstallManifestAs(_sandbox.path("tmp/out.xml")));

  EXPECT_EQ(_sandbox.read(kManifest), manifest);
  EXPECT_THAT(_sandbox.read("tmp/out.xml"), HasSubstr("\"file:/pkg\""));
}

TEST_F(InstallManifestTest, ReplacingTwiceReplacesTheNewPlaceholders) {
  proves("DOCUMENT-13");
  InstallManifest document(
      _sandbox.write(kManifest, manifestWith("<feature url='${installer.root}'/>")));

  EXPECT_TRUE(document.replaceInstallerRootWith("${installer.root}/a"));
  EXPECT_TRUE(document.replaceInstallerRootWith("b"));
  EXPECT_TRUE(document.saveInstallManifestAs(std::nullopt));

  EXPECT_THAT(_sandbox.read(kManifest), HasSubstr("<feature url=\"b/a\"/>"));
}

TEST_F(InstallManifestTest, RefusingDiskFailsTheSave) {
  proves("DOCUMENT-13");
  const std::string manifest = manifestWith("");
  InstallManifest document(_sandbox.write(kManifest, manifest));
  _sandbox.files().failAt(1, ENOSPC);

  EXPECT_FALSE(document.saveInstallManifestAs(std::nullopt));

  EXPECT_EQ(_sandbox.read(kManifest), manifest);
  EXPECT_THAT(_sandbox.log(), ::testing::ElementsAre(test::Says(
                                  LogLevel::error, "\"" + _sandbox.path(kManifest) +
                                                       "\" cannot be written: No space left on "
                                                       "device")));
}

struct Malformed {
  std::string name;
  std::string bytes;
};
void PrintTo(const Malformed& row, std::ostream* stream) {
  *stream << row.name;
}

class MalformedManifests : public InstallManifestTest,
                           public ::testing::WithParamInterface<Malformed> {};

TEST_P(MalformedManifests, AreNoDocumentAndStayAsTheyAre) {
  proves("DOCUMENT-7");
  ::testing::internal::CaptureStderr();
  InstallManifest document(_sandbox.write(kManifest, GetParam().bytes));

  EXPECT_FALSE(document.replaceInstallerRootWith("file:/pkg"));
  EXPECT_FALSE(document.saveInstallManifestAs(std::nullopt));
  EXPECT_FALSE(document.saveInstallManifestAs(_sandbox.path("tmp/out.xml")));

  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
  EXPECT_THAT(_sandbox.log(), IsEmpty());
  EXPECT_EQ(_sandbox.read(kManifest), GetParam().bytes);
  EXPECT_FALSE(_sandbox.exists("tmp/out.xml"));
}

INSTANTIATE_TEST_SUITE_P(
    Forms, MalformedManifests,
    ::testing::ValuesIn(std::vector<Malformed>{
        {"Empty", ""},
        {"Blank", "\n"},
        {"Text", "hello"},
        {"NoElement", "<?xml version='1.0'?><!-- c -->"},
        {"OpenElement", "<m><a></m>"},
        {"CutDocument", "<m><a/>"},
        {"TwoRoots", "<m/><m/>"},
        {"TextBehindTheRoot", "<m/>text"},
        {"UndefinedEntity", "<m>&who;</m>"},
        {"UndefinedEntityInAnAttribute", "<m a='&who;'/>"},
        {"UndefinedEntityOfAStandaloneDocument",
         "<?xml version='1.0' standalone='yes'?><!DOCTYPE m SYSTEM 'x'><m a='&who;'/>"},
        {"EndlessEntity", "<!DOCTYPE m [<!ENTITY a '&b;'><!ENTITY b '&a;'>]><m>&a;</m>"},
        {"BareAmpersand", "<m a='a&b'/>"},
        {"BareLessThan", "<m a='a<b'/>"},
        {"AttributeTwice", "<m a='1' a='2'/>"},
        {"UnquotedAttribute", "<m a=1/>"},
        {"ControlCharacter", "<m>\x01</m>"},
        {"NoUtf8", "<m>\xE9</m>"},
        {"UnknownEncoding", "<?xml version='1.0' encoding='X-NONE'?><m/>"},
        {"WrongEncoding", "<?xml version='1.0' encoding='Shift_JIS'?><m>\xFF\xFF</m>"},
        {"TextBeforeTheDeclaration", " <?xml version='1.0'?><m/>"},
        {"BadComment", "<m><!-- a -- b --></m>"},
        {"OpenSection", "<m><![CDATA[x</m>"},
        {"ZeroByteBehindTheRoot", std::string("<m/>\0", 5)},
        {"ZeroByteAndMoreBehindTheRoot", std::string("<m/>\0<!-- c -->", 15)},
        {"ZeroByteInAComment", std::string("<m/><!-- \0 -->", 14)},
    }),
    [](const auto& test) { return test.param.name; });

TEST_F(InstallManifestTest, MissingFileAndFolderAreNoDocument) {
  proves("DOCUMENT-7");
  for (const std::string& path : {_sandbox.path("tmp/missing.xml"), _sandbox.makeFolder("tmp/f"),
                                  _sandbox.makePipe("tmp/pipe")}) {
    InstallManifest document(path);

    ASSERT_TRUE(document.readError().has_value()) << path;
    EXPECT_THAT(document.readError()->description, HasSubstr(path));
    EXPECT_FALSE(document.replaceInstallerRootWith("r")) << path;
    EXPECT_FALSE(document.saveInstallManifestAs(_sandbox.path("tmp/out.xml"))) << path;
  }
  EXPECT_FALSE(_sandbox.exists("tmp/out.xml"));
  EXPECT_THAT(_sandbox.log(), IsEmpty());
}

TEST_F(InstallManifestTest, WhatCanBeReadHasNoReadError) {
  for (const char* content : {"<m/>", "<m", ""}) {
    const std::string path = _sandbox.write("tmp/m.xml", content);
    EXPECT_FALSE(InstallManifest(path).readError().has_value()) << content;
  }
}

TEST_F(InstallManifestTest, NothingOutsideIsLoaded) {
  proves("DOCUMENT-14");
  const std::string outside = _sandbox.write("tmp/outside.dtd", "<!ENTITY who 'outside'>");
  const std::string document =
      "<!DOCTYPE m SYSTEM \"" + outside + "\">\n<m a=\"&who;\">&who;</m>\n";

  EXPECT_EQ(reformatted(document), document);
}

TEST_F(InstallManifestTest, NothingStaysInMemory) {
  const std::string bytes =
      "<!DOCTYPE m SYSTEM \"none.dtd\">\n" +
      manifestWith("\n  <feature url='${installer.root}/u'>&who;</feature>\n  ");
  const std::string file = _sandbox.write(kManifest, bytes);

  EXPECT_LT(test::bytesKeptBy([&] {
              (void)InstallManifest(file).replaceInstallerRootWith("r");  // the memory counts
            }),
            1000);
  EXPECT_LT(test::bytesKeptBy([&] {
              (void)xml::parse(bytes)->serialize();  // the memory counts
            }),
            1000);
}

TEST_F(InstallManifestTest, NamesOfElementsAreTheAgreedOnes) {
  EXPECT_STREQ(InstallManifest::DOMAIN_OBJECT, "domain-object");
  EXPECT_STREQ(InstallManifest::OBJECT_DATA, "object-data");
  EXPECT_STREQ(InstallManifest::INSTALL, "install");
  EXPECT_STREQ(InstallManifest::INSTALL_FEATURE, "installfeature");
  EXPECT_STREQ(InstallManifest::REQUIREMENTS, "requirements");
  EXPECT_STREQ(InstallManifest::FEATURE, "feature");
  EXPECT_STREQ(InstallManifest::URL_NODE, "url");
  EXPECT_STREQ(InstallManifest::INSTALLER_ROOT, "${installer.root}");
}

}  // namespace
}  // namespace installer
