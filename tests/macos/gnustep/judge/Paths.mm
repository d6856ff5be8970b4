// Path components.

#import "Judge.h"
#include "hotfix/base/Path.h"
#include "hotfix/platform/HomeFolders.h"

namespace installer::judge {

namespace {

std::string randomPath() {
  static const std::vector<std::string> pieces = {
      "/", "/", "/", "//", "a", "b.app", "..", ".", "~", "Volumes", "X y", "\xc3\x9c", "U\xcc\x88",
      "c:", "-", "~root", "~nobody7", "Contents/MacOS", ""};
  std::string path;
  for (std::size_t count = below(7); count > 0; --count) path += anyOf(pieces);
  return path;
}

std::string kindOfPath(const std::string& path) {
  if (path.empty()) return "empty";
  if (path.starts_with("~")) return "~";
  if (path.find("//") != std::string::npos) return "//";
  if (path.ends_with("/")) return "trailing /";
  return "plain";
}

}  // namespace

void judgePaths() {
  const std::string path = randomPath();
  const std::string other = randomPath();
  const std::string kind = kindOfPath(path);
  NSString* text = objc(path);
  const std::string both = shown(path) + " + " + shown(other);
  compare("stringByAppendingPathComponent", kind + ", component " + kindOfPath(other), both,
          path::appendingComponent(path, other),
          cpp([text stringByAppendingPathComponent:objc(other)]));
  compare("stringByDeletingLastPathComponent", kind, shown(path), path::deletingLastComponent(path),
          cpp([text stringByDeletingLastPathComponent]));
  compare("lastPathComponent", kind, shown(path), path::lastComponent(path),
          cpp([text lastPathComponent]));
  compare("stringByExpandingTildeInPath", kind, shown(path), path::expandingTilde(path),
          cpp([text stringByExpandingTildeInPath]));
}

}  // namespace installer::judge
