#include "ctl/install/InstallerProgram.h"

#include "hotfix/base/Path.h"
#include "platform/FileManager.h"
#include "platform/OwnProgram.h"
#include "platform/Platform.h"

namespace installer::ctl::install {

std::optional<std::string> installerProgram() {
  const std::optional<std::string> own = ownProgram();
  if (!own) return std::nullopt;
  const std::string folder = path::deletingLastComponent(*own);
  const std::string above = path::deletingLastComponent(folder);
  for (const std::string& place : {folder, path::appendingComponent(above, "sbin")})
    if (std::string program = path::appendingComponent(place, "HotfixInstaller");
        isProgram(program))
      return program;
  return std::nullopt;
}

bool isProgram(const std::string& path) {
  FileManager& files = *Platform::current().files;
  return files.exists(path) && !files.isDirectory(path);
}

}  // namespace installer::ctl::install
