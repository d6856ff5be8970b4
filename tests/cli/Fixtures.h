#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "cli/CliSandbox.h"
#include "support/ListText.h"

namespace installer::cli {

using test::ListValue;
using test::readXmlList;

// A product's application bundle with its platform runtime folder, as its installer leaves it.
struct Instance {
  std::string bundle = "/Applications/Quillmere.app";

  std::string home() const { return bundle + "/Contents/MacOS/rcp"; }
  std::string data() const { return home() + "/systemdata"; }
  std::string shared() const { return bundle + "/Contents/MacOS/shared"; }
  std::string deploy(const std::string& name) const { return home() + "/deploy/" + name; }
  std::string launcher() const { return home() + "/rcplauncher"; }
  std::string launcherProperties() const { return home() + "/rcplauncher.properties"; }
  std::string installProperties() const { return data() + "/.config/rcpinstall.properties"; }
  std::string customization() const { return home() + "/plugin_customization.ini"; }
  std::string info() const { return home() + "/installInfo.plist"; }
  std::string result() const { return bundle + "/Contents/MacOS/.provisioning_rc"; }
  std::string tool() const { return home() + "/collectionutility.jar"; }
};

// A hotfix package with its deploy folder beside it.
struct Package {
  std::string folder = "/Volumes/HF/install/Fix.pkg";
  std::vector<std::pair<std::string, ListValue>> preferences = {
      {"bundleName", ListValue::string("Quillmere")},
      {"allowMultiInstance", ListValue::boolean(true)},
      {"frameworkPath", ListValue::string("Contents/MacOS")},
      {"version", ListValue::string("1.5")}};

  std::string list() const { return folder + "/Contents/Resources/hotfix.plist"; }
  // The default folder of the package's files, spelled as the program spells it.
  std::string deploy(const std::string& name) const { return folder + "/../deploy/" + name; }
  // The same place without "..", for writing.
  std::string deployFile(const std::string& name) const {
    return folder.substr(0, folder.rfind('/')) + "/deploy/" + name;
  }

  Package& set(const std::string& key, ListValue value);
  Package& set(const std::string& key, const std::string& text) {
    return set(key, ListValue::string(text));
  }
  Package& unset(const std::string& key);
};

inline constexpr const char* kSimpleManifest =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<install-document>\n"
    "  <domain-object>\n"
    "    <object-data>\n"
    "      <install>\n"
    "        <installfeature>\n"
    "          <requirements>\n"
    "            <feature id=\"com.kiv.fix\" url=\"${installer.root}/updates\" version=\"1\"/>\n"
    "          </requirements>\n"
    "        </installfeature>\n"
    "      </install>\n"
    "    </object-data>\n"
    "  </domain-object>\n"
    "</install-document>\n";
inline constexpr const char* kUninstallManifest = "<uninstall what=\"${installer.root}\"/>\n";
inline constexpr const char* kInstanceManifest = "<instance-manifest/>\n";

inline constexpr const char* kPasteboard = "/tmp/INSTALLATION_INTERNAL_PASTEBOARD";
inline constexpr const char* kMarker = "/tmp/quillmere.hotfix.error";
inline constexpr const char* kTrace = "/tmp/install_trace.log";
inline constexpr const char* kConfiguration = "/tmp/com.kiv.rcp.platform.internal.configuration";

struct ErrorRecord {
  int code = -1;  // -1 when there is no record
  std::vector<std::string> details;
  friend bool operator==(const ErrorRecord&, const ErrorRecord&) = default;
};
void PrintTo(const ErrorRecord& record, std::ostream* stream);

// A sandbox with one instance and one package on which a plain run succeeds; tests change what
// they are about and run. The launcher writes "rc=0" at each start.
class InstallerTest : public ::testing::Test {
 protected:
  void SetUp() override;

  // Writes the instance's files. The workspace flag is there.
  void buildInstance(const Instance& instance);
  // Writes the package's files: list, manifests, customization, key store, extras.
  void buildPackage(const Package& package);
  // Writes the package's list again after a change of its preferences.
  void writePreferences();
  // Records an installed hotfix, with all that an earlier run leaves.
  void recordHotfix(const std::string& version);
  void writeInfo(std::vector<std::pair<std::string, ListValue>> entries);
  // Puts a Java runtime at /java and lets java_home tell it.
  void installJava();
  void registerProduct(const std::string& name, const ListValue& list);

  // Runs the package on /Applications.
  RunResult install(const RunOptions& options = {});
  RunResult installWithData(const std::string& data, const RunOptions& options = {});

  ErrorRecord errorRecord() const;
  // A property-list file of the sandbox; an empty value when it is none.
  ListValue listAt(const std::string& path) const;
  std::optional<std::string> recorded(const std::string& key) const {
    return listAt(_instance.info()).stringAt(key);
  }

  // Looks until it is so, for what others do meanwhile; false when that takes longer than a run
  // may.
  static bool comesTrue(const std::function<bool()>& condition);

  // The lines that the making of a service writes, home and staging.
  std::vector<TraceLine> serviceLines() const;

  CliSandbox _sandbox;
  Instance _instance;
  Package _package;
  std::string _destination = "/Applications";
};

// The name of a case of a parameterised test.
struct CaseName {
  template <class Case>
  std::string operator()(const ::testing::TestParamInfo<Case>& given) const {
    return given.param.name;
  }
};

// The stamp of now and, when the minute changes meanwhile, of then.
std::string stampOf(std::time_t time);
class StampWatch {
 public:
  StampWatch();
  // Whether the text is a stamp of the time since this object was made.
  bool covers(const std::string& stamp) const;

 private:
  std::time_t _start;
};

// key=value lines without regard to order, without unescaping.
std::vector<std::string> sortedLines(const std::string& text);

std::vector<TraceLine> operator+(std::vector<TraceLine> left, const std::vector<TraceLine>& right);

}  // namespace installer::cli
