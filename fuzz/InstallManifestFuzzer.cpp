// Any manifest is changed and saved, or left as it is.

#include <unistd.h>

#include <cstdint>
#include <string>
#include <string_view>

#include "hotfix/formats/InstallManifest.h"
#include "platform/FileManager.h"
#include "platform/Platform.h"

using namespace installer;

namespace {

const std::string& manifestFile() {
  static const std::string file =
      "/dev/shm/hotfix-fuzzed-manifest." + std::to_string(getpid()) + ".xml";
  return file;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FileManager& files = *Platform::current().files;
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  if (!files.write(manifestFile(), bytes)) return 0;
  InstallManifest manifest(manifestFile());
  if (manifest.replaceInstallerRootWith("/a & <b>"))
    (void)manifest.saveInstallManifestAs(std::nullopt);  // must not crash, may fail
  return 0;
}
