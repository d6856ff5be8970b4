// Uses something of every public header, the way another installer of the platform does.

#include <cstdio>
#include <string>

#include <hotfix/Version.h>
#include <hotfix/base/DeletedForNull.h>
#include <hotfix/base/KeyedHash.h>
#include <hotfix/base/OrderedDictionary.h>
#include <hotfix/base/Path.h>
#include <hotfix/base/PlaceIndex.h>
#include <hotfix/base/PropertyList.h>
#include <hotfix/base/XmlDocument.h>
#include <hotfix/driver/Installer.h>
#include <hotfix/driver/InstanceLock.h>
#include <hotfix/formats/Configuration.h>
#include <hotfix/formats/InstallManifest.h>
#include <hotfix/formats/JavaProperties.h>
#include <hotfix/formats/Properties.h>
#include <hotfix/formats/RegisterFile.h>
#include <hotfix/instance/InstanceService.h>
#include <hotfix/platform/FileError.h>
#include <hotfix/platform/HomeFolders.h>
#include <hotfix/platform/ProcessKeys.h>
#include <hotfix/platform/PropertyListFile.h>
#include <hotfix/platform/ToldOnce.h>
#include <hotfix/util/ErrorCode.h>
#include <hotfix/util/InstallUtil.h>
#include <hotfix/util/StringUtil.h>
#include <hotfix/workflow/Hotfix.h>
#include <hotfix/workflow/HotfixPolicy.h>
#include <hotfix/workflow/HotfixUninstall.h>

using namespace installer;

namespace {

void show(const char* what, const std::string& value) {
  std::printf("%s: %s\n", what, value.c_str());
}

void show(const char* what, bool value) {
  show(what, StringUtil::boolToString(value));
}

// Refuses nullptr by the library's own means.
struct Greeting {
  static std::string to(const std::string& name) { return "hello " + name; }
  HOTFIX_DELETED_FOR_NULL(static void to);
};

void useBase() {
  show("hash", KeyedHash()("a") == KeyedHash()("a"));
  show("no document", xml::Document() == nullptr);
  show("text", Greeting::to("you"));
}

void useFormats(const std::string& folder) {
  const std::string file = path::appendingComponent(folder, "a.properties");
  JavaProperties properties(file);
  if (!properties.setProperty("value", "key")) return;
  show("saved properties", properties.savePropertiesToFile(std::nullopt));
  show("read properties", JavaProperties(file).getPropertyForKey("key").value_or("nothing"));

  Properties store;
  show("stored", store.setProperty("1", "a"));
  show("manifest", InstallManifest(folder + "/none.xml").replaceInstallerRootWith("/x"));
  show("register", RegisterFile("NoSuchProduct").getProductPath().has_value());
  show("configuration", Configuration().getPropertyValueForKey("no such key").has_value());
}

void usePropertyLists() {
  PropertyList::Dictionary dictionary{{"name", "Quillmere"}, {"count", 3}};
  const auto bytes = PropertyList::serialize(dictionary);
  const auto again = PropertyList::parse(bytes.value_or(""));
  show("property list", again && *again == PropertyList::Value(dictionary));
}

void useWorkflows(const std::string& folder) {
  const ToldOnce lines;
  show("locked before there is anything", InstanceLock(folder + "/rcp").isHeld());
  show("asked", InstanceService::existing(folder + "/rcp").has_value());
  InstanceService service(folder + "/rcp");
  show("locked", InstanceLock(folder + "/rcp").isHeld());
  show("exists", InstanceService::existing(folder + "/rcp").has_value());
  show("installed", service.hasInstanceInstalled());
  const FileError error{FileError::kExists, "there already"};
  show("goes on", service.shouldProceedAfterError(error, "from", "to"));
  show("skip", HotfixPolicy(folder).isSkipRunningCheck());
  show("uninstalled", HotfixUninstall(folder + "/rcp", folder + "/data").uninstallOldHotfix());
  Hotfix hotfix(folder, folder, folder + "/data");
  (void)hotfix;  // made, not run
  show("driver", reinterpret_cast<void*>(&runInstaller) != nullptr);
}

}  // namespace

int main(int, char** arguments) {
  const std::string folder = arguments[1];
  show("version", std::string(kVersion));
  show("quoted", StringUtil::addQuotesToString("text"));
  show("running", InstallUtil::checkBundleIsRunning("outside", processKey::kName));
  show("stamp", InstallUtil::generateNewManifestVersion().size() == 10);
  show("no error", std::string(kErrors.front().meaning));
  useBase();
  useFormats(folder);
  usePropertyLists();
  useWorkflows(folder);
  return 0;
}
