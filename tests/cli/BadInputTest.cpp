#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <functional>
#include <optional>
#include <ostream>

#include "cli/Fixtures.h"
#include "support/Proves.h"

namespace installer::cli {
namespace {

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
};

// What a run has come to.
struct Outcome {
  int status;
  int code;
  std::optional<std::string> recorded;  // the hotfix's version
  friend bool operator==(const Outcome&, const Outcome&) = default;
};
void PrintTo(const Outcome& outcome, std::ostream* stream) {
  *stream << "status " << outcome.status << ", code " << outcome.code << ", recorded "
          << outcome.recorded.value_or("nothing");
}

const Outcome kInstalled{0, 0, "1.5"};

Instance instance() {
  return {};
}
Package package() {
  return {};
}

const Place kPlaces[] = {
    {"HotfixList", package().list()},
    {"PackageInfo", package().folder + "/Contents/Info.plist"},
    {"InstallManifest", package().deployFile("install.hotfix.xml")},
    {"UninstallManifest", package().deployFile("uninstall.hotfix.xml")},
    {"HotfixCustomization", package().deployFile("plugin_customization.ini")},
    {"HotfixKeyStore", package().deployFile(".keystore")},
    {"Extras", package().deployFile("extras")},
    {"BundleInfo", instance().bundle + "/Contents/Info.plist"},
    {"InstallInfo", instance().info()},
    {"LauncherProperties", instance().launcherProperties()},
    {"InstallProperties", instance().installProperties()},
    {"InstanceCustomization", instance().customization()},
    {"InstanceKeyStore", instance().deploy(".keystore")},
    {"InstanceManifest", instance().deploy("install.xml")},
    {"UpdateManifest", instance().deploy("install.update.xml")},
    {"OldUninstallManifest", instance().deploy("uninstall.hotfix.xml")},
    {"InstanceExtras", instance().deploy("extras")},
    {"Shared", instance().shared()},
    {"CollectionTool", instance().tool()},
    {"Locale", "/Users/alice/Library/Preferences/.GlobalPreferences.plist"},
    {"TracePreference", "/Users/alice/Library/Preferences/com.kiv.rcp.install.mac.plist"},
    {"Registration", "/Library/Application Support/Velna/Quillmere/framework.plist"},
    {"JavaPlugin", "/Library/Internet Plug-Ins/JavaAppletPlugin.plugin/Contents/Info.plist"},
    {"Trace", kTrace},
    {"Marker", kMarker},
    {"Pasteboard", kPasteboard},
    {"Configuration", kConfiguration},
    {"ResultPanel", "/tmp/qlm.config"},
    {"Staging", "/tmp/qlmcore2"},
    {"ReceiptTool", "/usr/sbin/pkgutil"},
    {"JavaHomeTool", "/usr/libexec/java_home"},
};

class OddTest : public BadInputTest,
                public ::testing::WithParamInterface<std::tuple<Place, std::string>> {
 protected:
  const std::string _place = std::get<0>(GetParam()).name;
  const std::string _kind = std::get<1>(GetParam());

  // Puts something odd into the place; the registration is asked.
  void spoil() {
    _package.set("allowMultiInstance", ListValue::boolean(false));
    writePreferences();
    replaceBy(_kind, std::get<0>(GetParam()).path);
  }

  // What a run comes to that would end as told if nothing were odd, and before which the version is
  // recorded.
  Outcome expected(const Outcome& otherwise, const std::optional<std::string>& recorded) const {
    const bool isAbsent = _kind == "DanglingLink" || _kind == "LinkLoop";
    if (_place == "HotfixList" || (_place == "InstanceManifest" && isAbsent))
      return {1, 8, recorded};
    // What cannot be read is no version, and is not written over; a link to nothing is replaced.
    if (_place == "InstallInfo")
      return {0, 0, _kind == "DanglingLink" ? kInstalled.recorded : std::nullopt};
    if (_place == "InstallManifest" && otherwise == kInstalled) return {1, 4, std::nullopt};
    return otherwise;
  }

  // What holds anything but a list is not asked for a version.
  std::optional<std::string> recordedVersion() const {
    const bool isOddContent = _kind == "Binary" || _kind == "Random" || _kind == "HugeFile";
    if (_place == "InstallInfo" && isOddContent) return std::nullopt;
    return recorded("hotfixVersion");
  }

  // What is left is whole, whatever the run has come to.
  void expectLeft(const Outcome& outcome, const RunResult& result) {
    EXPECT_EQ(outcome, (Outcome{result.status, errorRecord().code, recordedVersion()}))
        << result.err;
    // A check that failed leaves the marker, save where a folder stands; code 4 comes after the
    // checks.
    const bool isFailedCheck = outcome.status == 1 && outcome.code != 4;
    if (_place == "Marker" && _kind == "Folder") {
      EXPECT_EQ("x", _sandbox.readFile(std::string(kMarker) + "/inside"));
    } else if (isFailedCheck) {
      EXPECT_EQ("", _sandbox.readFile(kMarker));
      EXPECT_EQ(0777u, _sandbox.mode(kMarker));
    } else if (_place != "Marker") {
      EXPECT_FALSE(_sandbox.exists(kMarker));
    }
    EXPECT_FALSE(_sandbox.exists("/nowhere")) << "written through the link";
  }
};

class OddItemTest : public OddTest {};

TEST_P(OddItemTest, IsAnsweredInBoundedTime) {
  proves("ODD-1");
  spoil();

  const RunResult result = install();

  expectLeft(expected(kInstalled, std::nullopt), result);
}

TEST_P(OddItemTest, IsAnsweredInBoundedTimeByTheRemovalToo) {
  proves("ODD-1");
  recordHotfix("1.4");
  _sandbox.installChild("/usr/sbin/pkgutil");
  spoil();

  const RunResult result = install();

  expectLeft(expected(kInstalled, "1.4"), result);
}

TEST_P(OddItemTest, IsAnsweredInBoundedTimeByTheFailurePathToo) {
  proves("ODD-1");
  recordHotfix("9");
  spoil();

  const RunResult result = install();

  expectLeft(expected({1, 7, "9"}, "9"), result);
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
class OddContentTest : public OddTest {};

TEST_P(OddContentTest, IsAnsweredInBoundedTime) {
  proves("ODD-1");
  spoil();

  const RunResult result = install();

  expectLeft(expected(kInstalled, std::nullopt), result);
}

INSTANTIATE_TEST_SUITE_P(
    Items, OddContentTest,
    ::testing::Combine(
        ::testing::Values(Place{"HotfixList", package().list()},
                          Place{"PackageInfo", package().folder + "/Contents/Info.plist"},
                          Place{"InstallManifest", package().deployFile("install.hotfix.xml")},
                          Place{"BundleInfo", instance().bundle + "/Contents/Info.plist"},
                          Place{"InstallInfo", instance().info()},
                          Place{"Registration",
                                "/Library/Application Support/Velna/Quillmere/framework.plist"},
                          Place{"Configuration", kConfiguration}),
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

TEST_F(BadInputTest, RepeatedKeyCountsOnce) {
  std::string text = xmlList(ListValue::dictionary(_package.preferences));
  text.insert(text.find("<key>version"), "<key>bundleName</key><string>Quillmere</string>");
  _sandbox.writeFile(_package.list(), text);

  EXPECT_EQ(0, install().status);

  EXPECT_EQ((ErrorRecord{0, {}}), errorRecord());
  EXPECT_EQ("1.5", recorded("hotfixVersion"));
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
  const auto before = _sandbox.tree(_instance.home());
  RunOptions options;
  options.limits[RLIMIT_FSIZE] = 0;

  EXPECT_EQ(1, install(options).status);

  EXPECT_EQ(before, _sandbox.tree(_instance.home()));
  EXPECT_EQ(-1, errorRecord().code) << "there is no place for one";
}

}  // namespace
}  // namespace installer::cli
