#include "calls/SampleRuns.h"

#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <utility>

#include "support/linux/PrivateRoot.h"

namespace installer::calls {

namespace fs = std::filesystem;

namespace {

constexpr const char* kSample = "/control/sample";      // its scripts, in the root
constexpr const char* kPrograms = "/control/programs";  // and what was built of it
constexpr const char* kApplications = "/Applications";

// Where the scripts find what a run must not: more commands than the shell.
constexpr const char* kCommands = "/control/bin";

std::string folderOf(const std::string& hotfix) {
  return "/Users/bob/" + hotfix;
}

std::vector<std::string> argumentsFor(const std::string& hotfix) {
  return {folderOf(hotfix) + "/mac/HF.pkg", kApplications};
}

void bindFolder(const std::string& source, const std::string& target) {
  fs::create_directories(target);
  if (mount(source.c_str(), target.c_str(), nullptr, MS_BIND | MS_REC, nullptr) != 0)
    test::giveUp("bind " + source);
}

std::vector<char*> pointers(const std::vector<std::string>& texts) {
  std::vector<char*> result;
  for (const std::string& text : texts) result.push_back(const_cast<char*>(text.c_str()));
  result.push_back(nullptr);
  return result;
}

[[noreturn]] void become(const std::string& root, const std::vector<std::string>& words) {
  const std::vector<std::string> variables{std::string("PATH=") + kCommands, "USER=alice", "TZ=UTC",
                                           "HOME=/Users/alice",
                                           std::string("HOTFIXCTL=") + test::kControlInRoot};
  umask(022);
  if (chroot(root.c_str()) == 0 && chdir("/") == 0 && freopen("/dev/null", "w", stdout) != nullptr)
    execve(words[0].c_str(), pointers(words).data(), pointers(variables).data());
  test::giveUp("start " + words[0]);
}

// As the end of a run leaves it.
void handOver(const std::string& folder) {
  for (const auto& entry : fs::recursive_directory_iterator(folder)) {
    const char* const path = entry.path().c_str();
    if (lchown(path, test::kAlice, test::kAdmin) != 0)
      test::giveUp("give away " + entry.path().string());
    if (!entry.is_symlink() && chmod(path, 0775) != 0)
      test::giveUp("change " + entry.path().string());
  }
}

}  // namespace

const std::vector<SampleRun>& sampleRuns() {
  static const std::vector<SampleRun> all{
      {.name = "install", .installed = "", .hotfix = "1.5"},
      {.name = "upgrade", .installed = "1.4", .hotfix = "1.5"},
      {.name = "refusal", .installed = "1.5", .hotfix = "1.4", .status = 1},
      {.name = "wrong-attributes", .installed = "", .hotfix = "1.5", .isHandedOver = false},
  };
  return all;
}

SampleRoot::SampleRoot(std::string root, const std::string& program) : _root(std::move(root)) {
  umask(022);
  test::makeRootFolders(_root);
  test::writeUserDatabase(_root, true);
  fs::create_directory(_root + "/tmp");
  test::mountRoot(_root, program);
  bindFolder(HOTFIX_SOURCE_DIR "/sample", _root + kSample);
  bindFolder(HOTFIX_BINARY_DIR "/sample", _root + kPrograms);
  bindFolder("/usr/bin", _root + kCommands);
  for (const char* hotfix : {"1.4", "1.5"})
    script("make-hotfix", {"--version", hotfix, folderOf(hotfix)});
}

void SampleRoot::prepare(const SampleRun& run) const {
  for (const std::string& folder : {_root + kApplications, _root + "/tmp"})
    for (const auto& entry : fs::directory_iterator(folder)) fs::remove_all(entry.path());
  script("make-instance", {"--programs", kPrograms, kApplications});
  if (!run.installed.empty()) install(run.installed);
  if (run.isHandedOver) handOver(_root + kApplications);
}

faults::Start SampleRoot::start(const SampleRun& run) const {
  return {_root,
          test::kProgramInRoot,
          argumentsFor(run.hotfix),
          {{"HOME", "/Users/alice"}, {"USER", "alice"}, {"PATH", "/usr/bin"}, {"TZ", "UTC"}}};
}

void SampleRoot::script(const std::string& name, const std::vector<std::string>& arguments) const {
  std::vector<std::string> words{std::string(kCommands) + "/bash",
                                 std::string(kSample) + "/" + name};
  words.insert(words.end(), arguments.begin(), arguments.end());
  command(words);
}

void SampleRoot::install(const std::string& hotfix) const {
  std::vector<std::string> words{test::kProgramInRoot};
  const auto arguments = argumentsFor(hotfix);
  words.insert(words.end(), arguments.begin(), arguments.end());
  command(words);
}

void SampleRoot::command(const std::vector<std::string>& words) const {
  fflush(stdout);  // or the child would write what waits once more
  const pid_t child = fork();
  if (child == 0) become(_root, words);
  int status = -1;
  waitpid(child, &status, 0);
  if (WIFEXITED(status) && WEXITSTATUS(status) == 0) return;
  fprintf(stderr, "%s failed\n", words.back().c_str());
  _exit(2);
}

}  // namespace installer::calls
