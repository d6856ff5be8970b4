// Any manifest is changed and saved, or left as it is; what was saved is saved the same once more.

#include "Fuzzed.h"
#include "Machine.h"
#include "hotfix/formats/InstallManifest.h"

namespace installer::fuzz {

namespace {

constexpr const char* kFile = "/install.xml";

// Whether the manifest was changed and saved.
bool replaceAndSave() {
  InstallManifest manifest(kFile);
  return manifest.replaceInstallerRootWith("/a & <b>") &&
         manifest.saveInstallManifestAs(std::nullopt);
}

}  // namespace

void tryInput(std::string_view input) {
  static Machine machine;
  std::string& file = machine.files()[kFile];
  file = input;
  if (!replaceAndSave()) {
    require(file == input, "what can not be changed and saved stays as it is");
    return;
  }
  const std::string saved = file;
  require(replaceAndSave(), "what was saved can be read and saved");
  require(file == saved, "what was saved is saved the same");
}

}  // namespace installer::fuzz
