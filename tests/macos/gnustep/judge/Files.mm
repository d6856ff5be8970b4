// Files: copies, merges, removal, folders, new files, enumeration, attributes.

#import "Judge.h"

#include <sys/stat.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>

#include "hotfix/util/InstallUtil.h"
#include "platform/FileManager.h"
#include "platform/Platform.h"

namespace installer::judge {

namespace {

namespace fs = std::filesystem;

using Snapshot = std::map<std::string, std::string>;

Snapshot snapshotOf(const fs::path& root) {
  Snapshot entries;
  struct stat status {};
  if (lstat(root.c_str(), &status) != 0) return entries;
  const auto add = [&](const fs::path& path, const std::string& name) {
    lstat(path.c_str(), &status);
    std::string what = S_ISLNK(status.st_mode)   ? "link to " + fs::read_symlink(path).string()
                       : S_ISDIR(status.st_mode) ? "folder"
                                                 : "file";
    if (S_ISREG(status.st_mode)) {
      std::ifstream file(path);
      what += " of " + std::string(std::istreambuf_iterator<char>(file), {});
    }
    char mode[8];
    std::snprintf(mode, sizeof mode, " %04o", status.st_mode & 07777);
    entries[name] = S_ISLNK(status.st_mode) ? what : what + mode;
  };
  add(root, ".");
  if (entries["."].starts_with("folder"))
    for (const auto& entry : fs::recursive_directory_iterator(root))
      add(entry.path(), entry.path().lexically_relative(root));
  return entries;
}

// GNUstep gives the mode of a link that it copies (0777) to what the link leads to.
bool differsByLinkMode(const std::string& ours, const std::string& theirs) {
  return theirs.ends_with(" 0777") && ours.size() == theirs.size() &&
         ours.substr(0, ours.size() - 4) == theirs.substr(0, theirs.size() - 4);
}

std::string firstDifference(const Snapshot& ours, const Snapshot& theirs) {
  for (const auto& [name, what] : theirs)
    if (!ours.contains(name) || (ours.at(name) != what && !differsByLinkMode(ours.at(name), what)))
      return name + ": ours " + (ours.contains(name) ? ours.at(name) : "nothing") + ", Foundation " + what;
  for (const auto& [name, what] : ours)
    if (!theirs.contains(name)) return name + ": ours " + what + ", Foundation nothing";
  return "";
}

void makeRandomTree(const fs::path& folder, int depth) {
  static const std::vector<std::string> names = {"a", "b", "C", ".keystore", "\xc3\x9c", "x y"};
  static const std::vector<mode_t> modes = {0644, 0755, 0600, 0444, 0775};
  fs::create_directory(folder);
  for (std::size_t count = below(4); count > 0; --count) {
    const fs::path entry = folder / anyOf(names);
    if (fs::symlink_status(entry).type() != fs::file_type::not_found) continue;
    switch (below(depth > 0 ? 5 : 3)) {
      case 0:
      case 1:
        std::ofstream(entry) << "bytes " << below(5);
        chmod(entry.c_str(), anyOf(modes));
        break;
      case 2:
        fs::create_symlink(below(2) == 0 ? "a" : "missing", entry);
        break;
      default:
        makeRandomTree(entry, depth - 1);
    }
  }
  chmod(folder.c_str(), below(2) == 0 ? 0755 : 0700);
}

// Something at the place, or nothing.
void makeRandomItem(const fs::path& place) {
  switch (below(6)) {
    case 0: break;
    case 1: std::ofstream(place) << "old"; break;
    case 2: fs::create_symlink("nowhere", place); break;
    case 3: fs::create_symlink("beside", place); break;
    default: makeRandomTree(place, 2);
  }
}

// copyFolderFrom:to:, with Foundation's own operations.
bool copyFolder(NSFileManager* manager, NSString* from, NSString* to) {
  if (![manager fileExistsAtPath:from]) return false;
  if (![manager fileExistsAtPath:to]) return [manager copyPath:from toPath:to handler:nil];
  for (NSString* name in [manager directoryContentsAtPath:from]) {
    NSString* source = [from stringByAppendingPathComponent:name];
    NSString* destination = [to stringByAppendingPathComponent:name];
    BOOL isFolder = NO;
    if ([manager fileExistsAtPath:source isDirectory:&isFolder] && isFolder) {
      copyFolder(manager, source, destination);
    } else {
      [manager removeFileAtPath:destination handler:nil];
      [manager copyPath:source toPath:destination handler:nil];
    }
  }
  return false;
}

struct Sides {
  fs::path ours, theirs;
};

// Two equal places for one experiment.
Sides equalSides(const fs::path& root) {
  fs::remove_all(root);
  fs::create_directories(root / "ours" / "beside" / "a");
  std::ofstream(root / "ours" / "beside" / "C") << "beside";
  makeRandomItem(root / "ours" / "from");
  makeRandomItem(root / "ours" / "to");
  fs::copy(root / "ours", root / "theirs",
           fs::copy_options::recursive | fs::copy_options::copy_symlinks);
  return {root / "ours", root / "theirs"};
}

std::string kindOf(const fs::path& place) {
  std::error_code none;
  const auto entry = fs::symlink_status(place, none).type();
  if (entry == fs::file_type::not_found) return "nothing";
  if (entry == fs::file_type::symlink) return fs::exists(place, none) ? "link to a folder" : "dangling link";
  return entry == fs::file_type::directory ? "folder" : "file";
}

FileManager& ours() {
  return *Platform::current().files;
}

NSFileManager* theirs() {
  return [NSFileManager defaultManager];
}

NSDictionary* modeAttribute(unsigned long mode) {
  return [NSDictionary dictionaryWithObject:[NSNumber numberWithUnsignedLong:mode]
                                     forKey:NSFilePosixPermissions];
}

// One experiment: two equal places, and what was done to each.
class Experiment {
 public:
  explicit Experiment(const fs::path& root) : _sides(equalSides(root)) {}

  fs::path from() const { return _sides.ours / "from"; }
  fs::path to() const { return _sides.ours / "to"; }
  NSString* theirFrom() const { return objc(_sides.theirs / "from"); }
  NSString* theirTo() const { return objc(_sides.theirs / "to"); }
  std::string kindOfTo() const { return kindOf(to()); }
  std::string kindOfBoth() const { return kindOf(from()) + " to " + kindOf(to()); }

  // Compares the answers, and what is there now.
  void check(const std::string& what, const std::string& kind, bool our, bool their) const {
    compare(what + ", answer", kind, kind, tell(our), tell(their));
    const std::string difference =
        firstDifference(snapshotOf(_sides.ours), snapshotOf(_sides.theirs));
    compare(what + ", result", kind, kind + " -> " + difference, difference, "");
  }

 private:
  Sides _sides;
};

void judgeCopy(const fs::path& root) {
  const Experiment experiment(root);
  const std::string kind = experiment.kindOfBoth();

  const bool our = ours().copy(experiment.from().string(), experiment.to(), ExistingItem::fail);
  const bool their = [theirs() copyItemAtPath:experiment.theirFrom()
                                       toPath:experiment.theirTo()
                                        error:nil];

  // GNUstep's codes are the system's, macOS's its own: there is nothing to compare.
  experiment.check("copyItemAtPath:toPath:", kind, our, their);
}

void judgeMerge(const fs::path& root) {
  const Experiment experiment(root);
  const std::string kind = experiment.kindOfBoth();

  const bool our = InstallUtil::copyFolderFrom(experiment.from().string(), experiment.to().string());
  const bool their = copyFolder(theirs(), experiment.theirFrom(), experiment.theirTo());

  experiment.check("copyFolderFrom:to:", kind, our, their);
}

void judgeRemoval(const fs::path& root) {
  const Experiment experiment(root);
  const std::string kind = experiment.kindOfTo();

  const bool our = ours().remove(experiment.to());
  const bool their = [theirs() removeItemAtPath:experiment.theirTo() error:nullptr];

  experiment.check("removeItemAtPath:", kind, our, their);
}

void judgeNewFolder(const fs::path& root) {
  const Experiment experiment(root);
  const std::string tail = below(2) == 0 ? "" : "/new";
  const bool above = below(2) == 0;
  const std::string kind =
      experiment.kindOfTo() + (above ? ", intermediates, to" : ", to") + tail;

  const bool our = ours().createDirectory(experiment.to().string() + tail,
                                          above ? Intermediates::create : Intermediates::refuse);
  const bool their =
      [theirs() createDirectoryAtPath:[experiment.theirTo() stringByAppendingString:objc(tail)]
          withIntermediateDirectories:above
                           attributes:nil
                                error:nullptr];

  experiment.check("createDirectoryAtPath:", kind, our, their);
}

void judgeNewFile(const fs::path& root) {
  const Experiment experiment(root);
  const std::string kind = experiment.kindOfTo();

  const bool our = ours().createFile(experiment.to(), "new", {"root", "root", 0640});
  const bool their = [theirs() createFileAtPath:experiment.theirTo()
                                       contents:[NSData dataWithBytes:"new" length:3]
                                     attributes:modeAttribute(0640)];

  experiment.check("createFileAtPath:", kind, our, their);
}

void judgeLooks(const fs::path& root) {
  const Experiment experiment(root);
  const std::string kind = experiment.kindOfTo();
  BOOL isFolder = NO;

  const bool exists = [theirs() fileExistsAtPath:experiment.theirTo() isDirectory:&isFolder];
  const auto names = ours().list(experiment.to());
  NSArray* listed = [theirs() contentsOfDirectoryAtPath:experiment.theirTo() error:nullptr];

  compare("fileExistsAtPath:isDirectory:", kind, kind,
          tell(ours().exists(experiment.to())) + tell(ours().isDirectory(experiment.to())),
          tell(exists) + tell(exists && isFolder));
  compare("contentsOfDirectoryAtPath:", kind, kind, names ? joined(*names) : "(nil)",
          listed ? joined(sorted(listed)) : "(nil)");
}

// Every entry at any depth is changed, the folder itself is not, nor is what a link leads to.
void changeModesBelow(NSString* folder, NSDictionary* mode) {
  NSDirectoryEnumerator* walk = [theirs() enumeratorAtPath:folder];
  while (NSString* name = [walk nextObject]) {
    NSString* entry = [folder stringByAppendingPathComponent:name];
    if (!fs::is_symlink(cpp(entry))) [theirs() changeFileAttributes:mode atPath:entry];
  }
}

void judgeAttributes(const fs::path& root) {
  const Experiment experiment(root);
  const std::string kind = experiment.kindOfTo();

  const bool our = ours().changeAttributesBelow(experiment.to(), {"root", "root", 0775});
  const bool their = [theirs() fileExistsAtPath:experiment.theirTo()];
  changeModesBelow(experiment.theirTo(), modeAttribute(0775));

  experiment.check("enumeratorAtPath: with changeFileAttributes:", kind, our, their);
}

}  // namespace

void judgeFiles(const std::string& folder) {
  for (const auto judge : {judgeCopy, judgeMerge, judgeRemoval, judgeNewFolder, judgeNewFile,
                           judgeLooks, judgeAttributes})
    judge(folder);
}

}  // namespace installer::judge
