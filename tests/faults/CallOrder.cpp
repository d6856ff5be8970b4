#include "faults/CallOrder.h"

#include <sys/stat.h>
#include <sys/syscall.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <set>
#include <string>
#include <utility>

#include "faults/Paths.h"

namespace installer::faults {

namespace fs = std::filesystem;

namespace {

using Identity = std::pair<dev_t, ino_t>;

std::optional<Identity> identityAt(const std::string& path) {
  struct stat status {};
  if (lstat(path.c_str(), &status) != 0) return std::nullopt;
  return Identity(status.st_dev, status.st_ino);
}

bool renames(long number) {
  return number == SYS_rename || number == SYS_renameat || number == SYS_renameat2;
}

bool writes(long number) {
  return number == SYS_write || number == SYS_pwrite64 || number == SYS_writev ||
         number == SYS_ftruncate || number == SYS_copy_file_range || number == SYS_sendfile;
}

// What the calls of one run have left unflushed so far.
class CallOrder {
 public:
  CallOrder(const World& world, const Scenario& scenario) : _world(world), _scenario(scenario) {}

  void follow(const Tracee& program, const Call& call) {
    const long number = call.form->number;
    if (number == SYS_flock && isHome(program.pathOf(call))) _locked = true;
    if (!_locked) requireNoWork(program.pathOf(call), call.effect);
    if (writes(number)) noteWrite(program.pathOf(call));
    if (number == SYS_fsync || number == SYS_fdatasync) noteFlush(program.pathOf(call));
    if (number == SYS_syncfs) noteFlushOfAll();
    if (renames(number)) noteRename(program.pathOf(call), program.otherPathOf(call));
    if (startsChild(*call.form)) noteChild();
  }

  std::vector<Violation> end() {
    requireFlushedNames("the run ends");
    return std::move(_found);
  }

 private:
  bool isProduct(const std::string& path) const {
    return path.starts_with(_scenario.bundle) || path.starts_with(_scenario.data);
  }

  // Files under way are locked as well, which keeps nobody else out.
  bool isHome(const std::string& path) const {
    return path == _scenario.bundle + "/Contents/MacOS/rcp";
  }

  // The table of processes and the record of versions are what the checks look at.
  void requireNoWork(const std::string& path, Effect effect) {
    const bool checks = path == "/proc" || path.ends_with("/installInfo.plist");
    if (checks || (effect == Effect::changing && isProduct(path)))
      _found.push_back({"lock-first", path + " is worked on before the lock is held"});
  }

  // An item gets its bytes under a temporary name, or in a folder that has one.
  void noteWrite(const std::string& path) {
    if (isProduct(path) && path.find("/.hotfix-") == path.npos)
      _found.push_back({"in-place", path + " is written under its own name"});
    if (const auto file = identityAt(_world.host(path))) _unflushed.insert(*file);
  }

  void noteFlush(const std::string& path) {
    const auto entry = identityAt(_world.host(path));
    if (!entry) return;
    _unflushed.erase(*entry);
    _newNames.erase(*entry);
  }

  // The sandbox is one file system, as an instance is.
  void noteFlushOfAll() {
    _unflushed.clear();
    _newNames.clear();
    _childHasWritten = false;
  }

  void noteRename(const std::string& from, const std::string& to) {
    if (!isProduct(to)) return;
    requireFlushed(from, to);
    if (to.ends_with("/installInfo.plist")) requireFlushedChild(from);
    if (const auto folder = identityAt(_world.host(folderOf(to)))) _newNames[*folder] = to;
  }

  void noteChild() {
    requireFlushedNames("a child starts");
    _childHasWritten = true;
  }

  // A folder is asked for all that is in it.
  void requireFlushed(const std::string& from, const std::string& to) {
    const std::string place = _world.host(from);
    bool flushed = !isUnflushed(place);
    if (fs::is_directory(fs::symlink_status(place)))
      for (const auto& entry : fs::recursive_directory_iterator(place))
        flushed = flushed && !isUnflushed(entry.path().string());
    if (!flushed)
      _found.push_back({"flush-before", to + " gets its name before its bytes are safe"});
  }

  bool isUnflushed(const std::string& place) const {
    const auto identity = identityAt(place);
    return identity && _unflushed.contains(*identity);
  }

  void requireFlushedNames(const std::string& moment) {
    for (const auto& [folder, name] : _newNames)
      _found.push_back({"flush-after", name + " has a name that is not safe when " + moment});
    _newNames.clear();
  }

  void requireFlushedChild(const std::string& info) {
    std::ifstream stream(_world.host(info), std::ios::binary);
    const std::string content{std::istreambuf_iterator<char>(stream), {}};
    if (_childHasWritten && content.find("hotfixVersion") != std::string::npos)
      _found.push_back(
          {"flush-child", "the version is recorded before what was installed is safe"});
    _childHasWritten = false;
  }

  const World& _world;
  const Scenario& _scenario;
  std::set<Identity> _unflushed;              // files with bytes that are in memory alone
  std::map<Identity, std::string> _newNames;  // folders with such a name, and the last one
  bool _locked = false;
  bool _childHasWritten = false;  // since the last flush of everything
  std::vector<Violation> _found;
};

Outcome followRun(const Runner& runner, const Scenario& scenario, const Learned& /*learned*/,
                  long /*point*/) {
  CallOrder order(runner.world(), scenario);
  runner.prepare(scenario);
  (void)runner.run(scenario, [&](Tracee& program, const Call& call, long /*number*/) {
    order.follow(program, call);
  });
  return {order.end(), "the whole run"};
}

}  // namespace

Kind callOrderKind() {
  return {.name = "order",
          .about = "no fault: what is locked and flushed before what",
          .points = [](const Scenario&, const Learned&) { return std::vector<long>{0}; },
          .tried = followRun};
}

}  // namespace installer::faults
