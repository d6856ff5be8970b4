#include "platform/AbsolutePath.h"

#include <unistd.h>

#include <array>
#include <climits>

#include "hotfix/base/Path.h"

namespace installer {

std::string absolutePath(const std::string& path) {
  if (path.starts_with('/')) return path;
  std::array<char, PATH_MAX> folder{};
  if (getcwd(folder.data(), folder.size()) == nullptr) return path;
  std::string_view rest = path;
  while (rest.starts_with("./")) rest.remove_prefix(2);
  return rest.empty() || rest == "." ? folder.data()
                                     : path::appendingComponent(folder.data(), rest);
}

}  // namespace installer
