#include "support/TreeSnapshot.h"

#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>

namespace installer::test {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kShown = 60;  // bytes of a content in a line for people

std::string kindOf(mode_t mode) {
  if (S_ISREG(mode)) return "file";
  if (S_ISDIR(mode)) return "folder";
  if (S_ISLNK(mode)) return "link";
  if (S_ISFIFO(mode)) return "pipe";
  return S_ISSOCK(mode) ? "socket" : "device";
}

std::string contentOf(const std::string& path, mode_t mode) {
  if (S_ISLNK(mode)) return fs::read_symlink(path).string();
  if (!S_ISREG(mode)) return {};
  std::ifstream stream(path, std::ios::binary);
  if (!stream.is_open()) return "(unreadable)";
  return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

TreeEntry entryOf(const std::string& path, const struct stat& status) {
  const mode_t mode = S_ISLNK(status.st_mode) ? 0 : status.st_mode & 07777;
  return {kindOf(status.st_mode), mode, status.st_uid, status.st_gid,
          contentOf(path, status.st_mode)};
}

void collect(const std::string& path, const std::string& relative, TreeSnapshot& snapshot) {
  struct stat status {};
  if (::lstat(path.c_str(), &status) != 0) return;
  snapshot.emplace(relative, entryOf(path, status));
  if (!S_ISDIR(status.st_mode)) return;
  std::error_code unreadable;
  for (const auto& entry : fs::directory_iterator(path, unreadable)) {
    const std::string name = entry.path().filename().string();
    collect(entry.path().string(), relative == "." ? name : relative + "/" + name, snapshot);
  }
}

std::string shown(const std::string& content) {
  std::string text = "\"";
  for (const char character : content.substr(0, kShown)) {
    const auto byte = static_cast<unsigned char>(character);
    text += byte < 0x20 || byte > 0x7e ? fmt::format("\\x{:02x}", byte) : std::string(1, character);
  }
  return text + (content.size() > kShown ? fmt::format("\"... ({} bytes)", content.size()) : "\"");
}

}  // namespace

std::ostream& operator<<(std::ostream& stream, const TreeEntry& entry) {
  return stream << fmt::format("{} {:04o} {}:{} {}", entry.kind, entry.mode, entry.owner,
                               entry.group, shown(entry.content));
}

TreeSnapshot snapshotOf(const std::string& path) {
  TreeSnapshot snapshot;
  collect(path, ".", snapshot);
  return snapshot;
}

std::vector<std::string> pathsIn(const TreeSnapshot& snapshot) {
  std::vector<std::string> paths;
  for (const auto& [path, entry] : snapshot) {
    if (path != ".") paths.push_back(path);
  }
  return paths;
}

TreeDiff::TreeDiff(const TreeSnapshot& before, const TreeSnapshot& after) {
  for (const auto& [path, entry] : before) {
    const auto other = after.find(path);
    if (other == after.end()) {
      _lines.push_back("removed " + path);
    } else {
      compare(path, entry, other->second);
    }
  }
  for (const auto& [path, entry] : after) {
    if (!before.contains(path)) _lines.push_back("added " + path);
  }
}

void TreeDiff::compare(const std::string& path, const TreeEntry& before, const TreeEntry& after) {
  const auto note = [&](bool same, const std::string& what, const std::string& old,
                        const std::string& fresh) {
    if (!same) _lines.push_back(fmt::format("changed {}: {} {} -> {}", path, what, old, fresh));
  };
  note(before.kind == after.kind, "kind", before.kind, after.kind);
  note(before.mode == after.mode, "mode", fmt::format("{:04o}", before.mode),
       fmt::format("{:04o}", after.mode));
  note(before.owner == after.owner, "owner", std::to_string(before.owner),
       std::to_string(after.owner));
  note(before.group == after.group, "group", std::to_string(before.group),
       std::to_string(after.group));
  note(before.content == after.content, "content", shown(before.content), shown(after.content));
}

std::ostream& operator<<(std::ostream& stream, const TreeDiff& diff) {
  for (const std::string& line : diff.lines()) stream << line << '\n';
  return stream;
}

}  // namespace installer::test
