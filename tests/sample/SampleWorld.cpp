#include "SampleWorld.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <fstream>
#include <iterator>

namespace fs = std::filesystem;

namespace {

const fs::path kSources = fs::path(HOTFIX_SOURCE_DIR) / "sample";
const fs::path kPrograms = fs::path(HOTFIX_BINARY_DIR) / "sample";

std::string readToEnd(int descriptor) {
  std::string text;
  std::array<char, 4096> buffer{};
  for (ssize_t got = 0; (got = read(descriptor, buffer.data(), buffer.size())) > 0;) {
    text.append(buffer.data(), static_cast<std::size_t>(got));
  }
  if (text.ends_with('\n')) text.pop_back();
  return text;
}

std::vector<std::string> joined(std::vector<std::string> first,
                                const std::vector<std::string>& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

}  // namespace

Outcome run(const std::vector<std::string>& command) {
  setenv("HOTFIXCTL", HOTFIX_BINARY_DIR "/hotfixctl", 1);  // by which the scripts make packages
  std::array<int, 2> ends{};
  if (pipe(ends.data()) != 0) return {};
  for (const int end : ends) fcntl(end, F_SETFD, FD_CLOEXEC);
  posix_spawn_file_actions_t actions{};
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
  std::vector<char*> arguments;
  for (const std::string& one : command) arguments.push_back(const_cast<char*>(one.c_str()));
  arguments.push_back(nullptr);
  pid_t child = -1;
  const int error = posix_spawn(&child, arguments[0], &actions, nullptr, arguments.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  close(ends[1]);
  Outcome outcome;
  outcome.output = readToEnd(ends[0]);
  close(ends[0]);
  int status = 0;
  if (error == 0 && waitpid(child, &status, 0) == child && WIFEXITED(status)) {
    outcome.status = WEXITSTATUS(status);
  }
  return outcome;
}

std::string contentOf(const fs::path& file) {
  std::ifstream in(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

void writeText(const fs::path& file, const std::string& text) {
  std::ofstream(file, std::ios::binary) << text;
}

std::vector<std::string> namesIn(const fs::path& folder) {
  std::vector<std::string> names;
  std::error_code error;
  for (const auto& entry : fs::directory_iterator(folder, error)) {
    names.push_back(entry.path().filename().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

std::vector<std::string> updateVector(const std::string& operation,
                                      const std::vector<std::string>& beforeMemory,
                                      const std::vector<std::string>& behindMemory) {
  const std::vector<std::string> head{"-rcpLauncherWait",
                                      "-provManifest",
                                      "-noSplash",
                                      "-provisioningOperation",
                                      operation,
                                      "-nl",
                                      "de_DE",
                                      "-vmargs",
                                      "-Dfile.encoding=UTF-8"};
  return joined(joined(joined(head, beforeMemory), {"-Xms32m", "-Xmx256m"}), behindMemory);
}

SampleWorld::SampleWorld(const std::vector<std::string>& instanceOptions,
                         const std::string& folderName)
    : _folderName(folderName) {
  std::string name = (fs::temp_directory_path() / "sample-XXXXXX").string();
  _root = mkdtemp(name.data());
  const Outcome made =
      run(joined({(kSources / "make-instance").string(), "--programs", kPrograms.string()},
                 joined(instanceOptions, {(_root / _folderName).string()})));
  EXPECT_EQ(made.status, 0);
}

SampleWorld::~SampleWorld() {
  std::error_code error;
  fs::remove_all(_root, error);
}

fs::path SampleWorld::app() const {
  return _root / _folderName / "Quillmere.app";
}

fs::path SampleWorld::makeHotfix(const std::string& folder,
                                 const std::vector<std::string>& options) const {
  const Outcome made = run(
      joined(joined({(kSources / "make-hotfix").string()}, options), {(_root / folder).string()}));
  EXPECT_EQ(made.status, 0);
  return made.output;
}

int SampleWorld::launch(const std::vector<std::string>& arguments) const {
  return run(joined({(rcpHome() / "rcplauncher").string()}, arguments)).status;
}

int SampleWorld::update(const std::string& operation) const {
  return launch(updateVector(operation, {}, {"-data", (rcpHome() / "systemdata").string()}));
}

int SampleWorld::install(const std::string& siteList) const {
  return launch(updateVector(
      "update", {"-DprovisioningOperation=update", "-DprovUpdateSiteListOverride=file:" + siteList},
      {"-data", (rcpHome() / "systemdata").string()}));
}

void SampleWorld::provide(const fs::path& package, const std::string& manifestName) const {
  fs::copy_file(package.parent_path() / "deploy" / manifestName, manifest("install.update.xml"),
                fs::copy_options::overwrite_existing);
}

void SampleWorld::provideText(const std::string& features) const {
  writeText(manifest("install.update.xml"),
            "<m><domain-object><object-data><install><installfeature><requirements>" + features +
                "</requirements></installfeature></install></object-data></domain-object></m>");
}

void SampleWorld::stamp(const std::string& version) const {
  writeText(rcpHome() / "rcplauncher.properties", "provisioning.manifest.version=" + version);
}

std::optional<std::string> SampleWorld::result() const {
  const fs::path file = rcpHome().parent_path() / ".provisioning_rc";
  if (!fs::exists(file)) return std::nullopt;
  return contentOf(file);
}

std::string SampleWorld::log() const {
  return contentOf(rcpHome() / "launcher.log");
}

std::vector<std::string> SampleWorld::features() const {
  return namesIn(eclipse() / "features");
}

std::vector<std::string> SampleWorld::plugins() const {
  return namesIn(eclipse() / "plugins");
}

std::string SampleWorld::applicationOutput() const {
  return run({(app() / "Contents/MacOS/Quillmere").string()}).output;
}
