#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <functional>

#include "cli/Fixtures.h"
#include "support/Proves.h"

namespace installer::cli {
namespace {

using ::testing::AnyOf;
using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;

// Input that is missing, damaged or of another kind: the run ends by itself, with the answer that
// belongs to it, and leaves no temporary file.
class BadInputTest : public InstallerTest {
 protected:
  void TearDown() override { EXPECT_THAT(_sandbox.entriesNamed(".hotfix-"), IsEmpty()); }

  void replaceBy(const std::string& kind, const std::string& path) {
    _sandbox.remove(path);
    if (kind == "Folder") _sandbox.writeFile(path + "/inside", "x");
    if (kind == "Pipe") _sandbox.makePipe(path);
    if (kind == "DanglingLink") _sandbox.makeLink(path, "/nowhere/at/all");
    if (kind == "LinkLoop") _sandbox.makeLink(path, path);
    if (kind == "HugeFile") {
      _sandbox.writeFile(path, "");
      EXPECT_EQ(0, truncate(_sandbox.host(path).c_str(), off_t{300} << 20));
    }
    if (kind == "Device") _sandbox.makeLink(path, "/dev/zero");
    if (kind == "Binary") _sandbox.writeFile(path, std::string("bplist00\x01\xFF\0\0", 12));
    if (kind == "Random") _sandbox.writeFile(path, "\x89\xFF\xFE random <> & bytes \x00 \x01");
  }
};

struct Place {
  const char* name;
  std::string path;
  // Exit status with something odd there; 2 where a kind decides.
  int status;
};

Instance instance() {
  return {};
}
Package package() {
  return {};
}

const Place kPlaces[] = {
    {"HotfixList", package().list(), 1},
    {"PackageInfo", package().folder + "/Contents/Info.plist", 0},
    {"InstallManifest", package().deployFile("install.hotfix.xml"), 1},
    {"UninstallManifest", package().deployFile("uninstall.hotfix.xml"), 0},
    {"HotfixCustomization", package().deployFile("plugin_customization.ini"), 0},
    {"HotfixKeyStore", package().deployFile(".keystore"), 0},
    {"Extras", package().deployFile("extras"), 0},
    {"BundleInfo", instance().bundle + "/Contents/Info.plist", 0},
    {"InstallInfo", instance().info(), 0},
    {"LauncherProperties", instance().launcherProperties(), 0},
    {"InstallProperties", instance().installProperties(), 0},
    {"InstanceCustomization", instance().customization(), 0},
    {"InstanceKeyStore", instance().deploy(".keystore"), 0},
    {"InstanceManifest", instance().deploy("install.xml"), 2},
    {"UpdateManifest", instance().deploy("install.update.xml"), 0},
    {"OldUninstallManifest", instance().deploy("uninstall.hotfix.xml"), 0},
    {"InstanceExtras", instance().deploy("extras"), 0},
    {"Shared", instance().shared(), 0},
    {"CollectionTool", instance().tool(), 0},
    {"Locale", "/Users/alice/Library/Preferences/.GlobalPreferences.plist", 0},
    {"TracePreference", "/Users/alice/Library/Preferences/com.kiv.rcp.install.mac.plist", 0},
    {"Registration", "/Library/Application Support/Velna/Quillmere/framework.plist", 0},
    {"JavaPlugin", "/Library/Internet Plug-Ins/JavaAppletPlugin.plugin/Contents/Info.plist", 0},
    {"Trace", kTrace, 0},
    {"Marker", kMarker, 0},
    {"Pasteboard", kPasteboard, 0},
    {"Configuration", kConfiguration, 0},
    {"ResultPanel", "/tmp/qlm.config", 0},
    {"Staging", "/tmp/qlmcore2", 0},
    {"ReceiptTool", "/usr/sbin/pkgutil", 0},
    {"JavaHomeTool", "/usr/libexec/java_home", 0},
};

class OddItemTest : public BadInputTest,
                    public ::testing::WithParamInterface<std::tuple<Place, std::string>> {
 protected:
  int expected() const {
    const auto& [place, kind] = GetParam();
    const bool isThere = kind != "DanglingLink" && kind != "LinkLoop";
    if (place.status == 2) return isThere ? 0 : 1;
    return place.status;
  }
};

TEST_P(OddItemTest, IsAnsweredInBoundedTime) {
  proves("ODD-1");
  const auto& [place, kind] = GetParam();
  _package.set("allowMultiInstance", ListValue::boolean(false));
  writePreferences();
  replaceBy(kind, place.path);

  const RunResult result = install();

  EXPECT_EQ(expected(), result.status) << result.err;
}

TEST_P(OddItemTest, IsAnsweredInBoundedTimeByTheRemovalToo) {
  proves("ODD-1");
  const auto& [place, kind] = GetParam();
  _package.set("allowMultiInstance", ListValue::boolean(false));
  writePreferences();
  recordHotfix("1.4");
  _sandbox.installChild("/usr/sbin/pkgutil");
  replaceBy(kind, place.path);

  EXPECT_THAT(install().status, AnyOf(0, 1));
}

TEST_P(OddItemTest, IsAnsweredInBoundedTimeByTheFailurePathToo) {
  proves("ODD-1");
  const auto& [place, kind] = GetParam();
  recordHotfix("9");
  replaceBy(kind, place.path);

  EXPECT_THAT(install().status, AnyOf(0, 1));
}

INSTANTIATE_TEST_SUITE_P(Items, OddItemTest,
                         ::testing::Combine(::testing::ValuesIn(kPlaces),
                                            ::testing::Values("Folder", "Pipe", "DanglingLink",
                                                              "LinkLoop", "Device")),
                         [](const auto& given) {
                           return std::string(std::get<0>(given.param).name) +
                                  std::get<1>(given.param);
                         });

// Files that are read into memory, filled with what they should not hold.
class OddContentTest : public BadInputTest,
                       public ::testing::WithParamInterface<std::tuple<Place, std::string>> {};

TEST_P(OddContentTest, IsAnsweredInBoundedTime) {
  proves("ODD-1");
  const auto& [place, kind] = GetParam();
  _package.set("allowMultiInstance", ListValue::boolean(false));
  writePreferences();
  replaceBy(kind, place.path);
  const auto before = _sandbox.ownership(place.path);

  EXPECT_EQ(place.status, install().status);

  EXPECT_EQ(before.owner, _sandbox.ownership(place.path).owner == CliSandbox::kAlice
                              ? before.owner
                              : _sandbox.ownership(place.path).owner);
}

INSTANTIATE_TEST_SUITE_P(
    Items, OddContentTest,
    ::testing::Combine(
        ::testing::Values(Place{"HotfixList", package().list(), 1},
                          Place{"PackageInfo", package().folder + "/Contents/Info.plist", 0},
                          Place{"InstallManifest", package().deployFile("install.hotfix.xml"), 1},
                          Place{"BundleInfo", instance().bundle + "/Contents/Info.plist", 0},
                          Place{"InstallInfo", instance().info(), 0},
                          Place{"Registration",
                                "/Library/Application Support/Velna/Quillmere/framework.plist", 0},
                          Place{"Configuration", kConfiguration, 0}),
        ::testing::Values("Binary", "Random", "HugeFile")),
    [](const auto& given) {
      return std::string(std::get<0>(given.param).name) + std::get<1>(given.param);
    });

// --- What stays untouched ------------------------------------------------------------------------

struct Kept {
  const char* name;
  std::string path;
  std::string kind;
};
void PrintTo(const Kept& kept, std::ostream* stream) {
  *stream << kept.name;
}

class KeptTest : public BadInputTest, public ::testing::WithParamInterface<Kept> {};

TEST_P(KeptTest, StaysWhatItWas) {
  proves("ODD-2");
  replaceBy(GetParam().kind, GetParam().path);
  struct stat before {
  }, after{};
  ASSERT_EQ(0, lstat(_sandbox.host(GetParam().path).c_str(), &before));

  (void)install();  // what it leaves is looked at

  ASSERT_EQ(0, lstat(_sandbox.host(GetParam().path).c_str(), &after));
  EXPECT_EQ(before.st_ino, after.st_ino);
  EXPECT_EQ(before.st_size, after.st_size);
}

INSTANTIATE_TEST_SUITE_P(
    Items, KeptTest,
    ::testing::Values(Kept{"RandomInstallInfo", instance().info(), "Random"},
                      Kept{"BinaryInstallInfo", instance().info(), "Binary"},
                      Kept{"FolderInstallInfo", instance().info(), "Folder"},
                      Kept{"PipeInstallInfo", instance().info(), "Pipe"},
                      Kept{"PipeLauncherProperties", instance().launcherProperties(), "Pipe"},
                      Kept{"FolderLauncherProperties", instance().launcherProperties(), "Folder"},
                      Kept{"HugeLauncherProperties", instance().launcherProperties(), "HugeFile"},
                      Kept{"PipeInstallProperties", instance().installProperties(), "Pipe"},
                      Kept{"PipeCustomization", instance().customization(), "Pipe"},
                      Kept{"HugeCustomization", instance().customization(), "HugeFile"},
                      Kept{"FolderCustomization", instance().customization(), "Folder"}),
    CaseName());

// --- The package's list --------------------------------------------------------------------------

struct ListText {
  const char* name;
  std::string text;
};
void PrintTo(const ListText& list, std::ostream* stream) {
  *stream << list.name;
}

std::string nested(int depth) {
  std::string text = "<plist>";
  for (int i = 0; i < depth; ++i) text += "<array>";
  for (int i = 0; i < depth; ++i) text += "</array>";
  return text + "</plist>";
}

std::string selfHolding() {
  // A dictionary whose one value is itself.
  std::string bytes = "bplist00";
  bytes += std::string("\xD1\x01\x00", 3) + "\x51k";
  bytes += std::string("\x08\x0B", 2);
  bytes += std::string(6, '\0') + "\x01\x01";
  bytes += std::string(7, '\0') + "\x02" + std::string(7, '\0') + std::string(1, '\0') +
           std::string(7, '\0') + "\x0D";
  return bytes;
}

class DamagedListTest : public BadInputTest, public ::testing::WithParamInterface<ListText> {};

TEST_P(DamagedListTest, FailsTheSecondCheckWithTheDestinationAlone) {
  proves("PACKAGE-3");
  _sandbox.writeFile(_package.list(), GetParam().text);

  EXPECT_EQ(1, install().status);

  EXPECT_EQ((ErrorRecord{8, {"/Applications"}}), errorRecord());
  EXPECT_TRUE(_sandbox.exists(kMarker));
}

TEST_P(DamagedListTest, IsToldInOneErrorLine) {
  proves("PACKAGE-3");
  _sandbox.writeFile(_package.list(), GetParam().text);

  EXPECT_EQ(1, install().status);

  std::vector<std::string> told;
  for (const std::string& text : _sandbox.texts("Error"))
    if (text.rfind("No file at", 0) != 0 && text.find("rcplauncher") == std::string::npos)
      told.push_back(text);
  EXPECT_THAT(told, ::testing::ElementsAre(HasSubstr("hotfix")));
}

INSTANTIATE_TEST_SUITE_P(
    Texts, DamagedListTest,
    ::testing::Values(
        ListText{"Empty", ""}, ListText{"Words", "bundleName = Quillmere"},
        ListText{"OldStyle", "{ bundleName = Quillmere; }"},
        ListText{"Unclosed", "<plist><dict><key>bundleName</key><string>Quillmere</string>"},
        ListText{"ArrayRoot", xmlList(ListValue::array({ListValue::string("bundleName")}))},
        ListText{"StringRoot", xmlList(ListValue::string("Quillmere"))},
        ListText{"EmptyDictionary", xmlList(ListValue::dictionary({}))},
        ListText{"TwoValues", "<plist><dict/><dict/></plist>"}, ListText{"NoValue", "<plist/>"},
        ListText{"OtherRoot", "<html><dict/></html>"},
        ListText{"KeyWithoutValue", "<plist><dict><key>bundleName</key></dict></plist>"},
        ListText{"ValueWithoutKey", "<plist><dict><string>bundleName</string></dict></plist>"},
        ListText{"UnknownElement",
                 "<plist><dict><key>bundleName</key><text>Quillmere</text></dict></plist>"},
        ListText{"BadInteger",
                 "<plist><dict><key>bundleName</key><string>Quillmere</string>"
                 "<key>x</key><integer>zehn</integer></dict></plist>"},
        ListText{"BadData",
                 "<plist><dict><key>bundleName</key><string>Quillmere</string>"
                 "<key>x</key><data>***</data></dict></plist>"},
        ListText{"DeepNesting", nested(100'000)}, ListText{"BinaryHeaderOnly", "bplist00"},
        ListText{"BinaryTruncated",
                 binaryList(ListValue::dictionary({{"bundleName", ListValue::string("Quillmere")}}))
                     .substr(0, 40)},
        ListText{"BinarySelfHolding", selfHolding()},
        ListText{"BinaryArrayRoot", binaryList(ListValue::array({ListValue::string("x")}))},
        ListText{"IntegerBundleName",
                 xmlList(ListValue::dictionary({{"bundleName", ListValue::integer(5)}}))},
        ListText{"ArrayBundleName",
                 xmlList(ListValue::dictionary({{"bundleName", ListValue::array({})}}))},
        ListText{"TrueBundleName",
                 xmlList(ListValue::dictionary({{"bundleName", ListValue::boolean(true)}}))},
        ListText{"Null", std::string("\0\0\0\0", 4)}),
    CaseName());

TEST_F(BadInputTest, MissingFrameworkPathFailsTheSecondCheck) {
  _package.unset("frameworkPath");
  writePreferences();

  EXPECT_EQ(1, install().status);

  EXPECT_EQ((ErrorRecord{8, {"/Applications", "Quillmere.app"}}), errorRecord());
}

TEST_F(BadInputTest, FrameworkPathThatIsNoTextFailsTheSecondCheck) {
  proves("PACKAGE-3");
  _package.set("frameworkPath", ListValue::boolean(true));
  writePreferences();

  EXPECT_EQ(1, install().status);

  EXPECT_EQ((ErrorRecord{8, {"/Applications", "Quillmere.app"}}), errorRecord());
}

TEST_F(BadInputTest, EmptyBundleNameMakesAnEmptyApplication) {
  proves("ODD-4");
  _package.set("bundleName", "");
  writePreferences();

  EXPECT_EQ(1, install().status);

  EXPECT_EQ((ErrorRecord{8, {"/Applications", ".app"}}), errorRecord());
}

TEST_F(BadInputTest, EmptyFrameworkPathMeansTheBundleItself) {
  proves("ODD-4");
  _package.set("frameworkPath", "");
  writePreferences();
  _sandbox.writeFile("/Applications/Quillmere.app/rcp/deploy/install.xml", "x");

  (void)install();  // what it leaves is looked at

  EXPECT_THAT(_sandbox.texts(),
              Contains("Check the target platform under /Applications/Quillmere.app/rcp."));
}

TEST_F(BadInputTest, RepeatedKeyIsAnsweredOneWayOrTheOther) {
  std::string text = xmlList(ListValue::dictionary(_package.preferences));
  text.insert(text.find("<key>version"), "<key>bundleName</key><string>Quillmere</string>");
  _sandbox.writeFile(_package.list(), text);

  EXPECT_THAT(install().status, AnyOf(0, 1));
}

// --- Kinds of paths ------------------------------------------------------------------------------

TEST_F(BadInputTest, PackageThatIsAFile) {
  proves("ODD-3");
  _sandbox.remove(_package.folder);
  _sandbox.writeFile(_package.folder, "a file");

  EXPECT_EQ(1, install().status);

  EXPECT_EQ((ErrorRecord{8, {"/Applications"}}), errorRecord());
  EXPECT_THAT(_sandbox.texts("Error"), Contains(HasSubstr(_package.folder)));
}

TEST_F(BadInputTest, MissingPackageIsToldInOneErrorLine) {
  proves("PACKAGE-3");
  _sandbox.remove(_package.folder);

  EXPECT_EQ(1, install().status);

  EXPECT_THAT(_sandbox.texts("Error"), Contains(HasSubstr(_package.folder)));
}

TEST_F(BadInputTest, DestinationThatIsAFile) {
  proves("ODD-3");
  _sandbox.writeFile("/dest", "a file");

  EXPECT_EQ(1, _sandbox.run({_package.folder, "/dest"}).status);

  EXPECT_EQ((ErrorRecord{8, {"/dest", "Quillmere.app"}}), errorRecord());
  EXPECT_EQ("a file", _sandbox.readFile("/dest"));
}

TEST_F(BadInputTest, HomeThatIsAFile) {
  proves("ODD-3");
  _sandbox.remove(_instance.home());
  _sandbox.writeFile(_instance.home(), "a file", 0640);

  EXPECT_EQ(1, install().status);

  EXPECT_EQ((ErrorRecord{8, {"/Applications", "Quillmere.app"}}), errorRecord());
  EXPECT_EQ("a file", _sandbox.readFile(_instance.home()));
  EXPECT_EQ(0640u, _sandbox.mode(_instance.home()));
  EXPECT_TRUE(_sandbox.exists(kMarker));
}

TEST_F(BadInputTest, DeployThatIsAFile) {
  proves("ODD-3");
  _sandbox.remove(_instance.home() + "/deploy");
  _sandbox.writeFile(_instance.home() + "/deploy", "a file");

  EXPECT_EQ(1, install().status);

  EXPECT_EQ(8, errorRecord().code);
  EXPECT_EQ("a file", _sandbox.readFile(_instance.home() + "/deploy"));
}

TEST_F(BadInputTest, DataThatIsAFile) {
  proves("ODD-3");
  _sandbox.writeFile("/ws", "a file", 0640);

  EXPECT_EQ(0, installWithData("/ws").status);

  EXPECT_EQ("a file", _sandbox.readFile("/ws"));
  EXPECT_EQ(0640u, _sandbox.mode("/ws"));
}

TEST_F(BadInputTest, DataThatDoesNotExistIsNotMade) {
  proves("ODD-4");
  EXPECT_EQ(0, installWithData("/nowhere/ws").status);

  EXPECT_FALSE(_sandbox.exists("/nowhere"));
  EXPECT_EQ("/nowhere/ws", listAt(kConfiguration).stringAt("P_RCPDATA"));
}

TEST_F(BadInputTest, EmptyDataIsPassedOn) {
  proves("ODD-4");
  EXPECT_EQ(0, installWithData("").status);

  EXPECT_EQ("", _sandbox.children("rcplauncher").at(0).arguments.back());
}

TEST_F(BadInputTest, VeryLongPathsFailTheSecondCheck) {
  proves("ODD-6");
  const std::string folder = "/" + std::string(5000, 'x');

  EXPECT_EQ(1, _sandbox.run({_package.folder, folder}).status);

  EXPECT_EQ((ErrorRecord{8, {folder, "Quillmere.app"}}), errorRecord());
}

TEST_F(BadInputTest, VeryLongNamesFailTheSecondCheck) {
  proves("ODD-6");
  _package.set("bundleName", std::string(300, 'n'));
  writePreferences();

  EXPECT_EQ(1, install().status);

  EXPECT_EQ((ErrorRecord{8, {"/Applications", std::string(300, 'n') + ".app"}}), errorRecord());
}

// --- Bytes that are no UTF-8 ---------------------------------------------------------------------

TEST_F(BadInputTest, DestinationThatIsNoUtf8IsUsedAsItStands) {
  proves("ODD-5");
  Instance odd{"/Appl\xFF\xFE/Quillmere.app"};
  buildInstance(odd);

  EXPECT_EQ(0, _sandbox.run({_package.folder, "/Appl\xFF\xFE"}).status);

  EXPECT_EQ("1.5", listAt(odd.info()).stringAt("hotfixVersion"));
  EXPECT_EQ(odd.data(), _sandbox.children("rcplauncher").at(1).arguments.back());
}

TEST_F(BadInputTest, PackageThatIsNoUtf8IsUsedAsItStands) {
  proves("ODD-5");
  _package.folder = "/V\xE9l/in/Fix.pkg";
  buildPackage(_package);

  EXPECT_EQ(0, install().status);

  EXPECT_TRUE(readXmlList(*_sandbox.readFile(_instance.info())).has_value());
  EXPECT_THAT(_sandbox.children("rcplauncher").at(1).arguments.at(10),
              HasSubstr("file:/V\xE9l/in/Fix.pkg"));
  const auto manifest = _sandbox.readFile(_instance.deploy("install.update.xml"));
  EXPECT_THAT(*manifest, Not(HasSubstr("${installer.root}")));
}

TEST_F(BadInputTest, RecordOfADestinationThatIsNoUtf8IsStillAList) {
  proves("ODD-5");
  EXPECT_EQ(1, _sandbox.run({_package.folder, "/no\xFFwhere"}).status);

  EXPECT_EQ(8, errorRecord().code);
  EXPECT_THAT(errorRecord().details, SizeIs(2));
}

TEST_F(BadInputTest, RecordOfADestinationWithControlCharactersIsStillAList) {
  proves("ODD-5");
  EXPECT_EQ(1, _sandbox.run({_package.folder, "/no\x01\x1Bwhere"}).status);

  EXPECT_EQ(8, errorRecord().code);
  EXPECT_THAT(errorRecord().details, SizeIs(2));
}

TEST_F(BadInputTest, DataThatIsNoUtf8IsRecordedAsSomething) {
  proves("ODD-5");
  EXPECT_EQ(0, installWithData("/Users/alice/\xFFws").status);

  EXPECT_EQ("/Users/alice/\xFFws", _sandbox.children("rcplauncher").at(1).arguments.back());
  EXPECT_TRUE(listAt(kConfiguration).stringAt("P_RCPDATA").has_value());
}

TEST_F(BadInputTest, TraceOfBytesThatAreNoUtf8StaysLineByLine) {
  proves("ODD-5");
  EXPECT_EQ(1, _sandbox.run({"/no\xFF\x01\x7F\n\r\x1B[2Jpackage", "/Applications"}).status);

  EXPECT_THAT(_sandbox.texts(), Contains("Not success"));
  EXPECT_THAT(*_sandbox.readFile(kTrace), Not(HasSubstr("\x1B")));
}

// --- A full or failing disk ----------------------------------------------------------------------

class FullDiskTest : public BadInputTest {
 protected:
  void SetUp() override {
    BadInputTest::SetUp();
    _sandbox.remove(_instance.bundle);
    _sandbox.makeFolder(_instance.home());
    _sandbox.limitSpace(_instance.home(), 256 << 10);
    buildInstance(_instance);
  }
};

TEST_F(FullDiskTest, LeavesOldFilesWholeAndNoTemporaries) {
  proves("FILES-19");
  const std::string customization = *_sandbox.readFile(_instance.customization());
  _sandbox.fillSpace(_instance.home());

  EXPECT_EQ(1, install().status);

  EXPECT_EQ(customization, _sandbox.readFile(_instance.customization()));
  EXPECT_THAT(*_sandbox.readFile(_instance.launcherProperties()),
              HasSubstr("provisioning.manifest.version=0101200000"));
  EXPECT_EQ((ErrorRecord{4, {"install.hotfix.xml"}}), errorRecord());
}

TEST_F(FullDiskTest, FailurePathEndsAllTheSame) {
  proves("FILES-19");
  _sandbox.remove(_instance.deploy("install.xml"));
  _sandbox.fillSpace(_instance.home());

  EXPECT_EQ(1, install().status);

  EXPECT_TRUE(_sandbox.exists(kMarker));
}

TEST_F(BadInputTest, FullTmpIsSurvived) {
  proves("FILES-19");
  _sandbox.limitSpace("/tmp", 64 << 10);
  _sandbox.setMode("/tmp", 01777);
  _sandbox.fillSpace("/tmp");

  EXPECT_EQ(0, install().status);

  EXPECT_EQ("1.5", recorded("hotfixVersion"));
}

TEST_F(BadInputTest, LimitOnFileSizesIsAnErrorNotTheEnd) {
  proves("FILES-19");
  const std::string customization = *_sandbox.readFile(_instance.customization());
  RunOptions options;
  options.fileSizeLimit = 0;

  EXPECT_THAT(install(options).status, AnyOf(0, 1));

  EXPECT_EQ(customization, _sandbox.readFile(_instance.customization()));
}

}  // namespace
}  // namespace installer::cli
