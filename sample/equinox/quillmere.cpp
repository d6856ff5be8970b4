// The client's main program: starts the platform's virtual machine with the client application and
// stays up as its parent, so that a running client shows as an executable inside the bundle.
//
//   Quillmere [-stay SECONDS] [-data FOLDER]
//
// Without -data the workspace is rcp/systemdata. Ends with the client's own exit status.

#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

constexpr int kCannotStart = 127;

struct Options {
  std::string stay = "0";  // seconds
  std::string data;
};

Options readOptions(const std::vector<std::string>& arguments, const fs::path& rcpHome) {
  Options options;
  options.data = rcpHome / "systemdata";
  for (size_t i = 0; i + 1 < arguments.size(); i += 2) {
    if (arguments[i] == "-stay") options.stay = arguments[i + 1];
    if (arguments[i] == "-data") options.data = arguments[i + 1];
  }
  return options;
}

// Its version is part of its name. Empty when the platform is not there.
std::string frameworkLauncher(const fs::path& rcpHome) {
  std::error_code ignored;
  for (const auto& entry : fs::directory_iterator(rcpHome / "eclipse/plugins", ignored)) {
    const std::string name = entry.path().filename();
    if (name.starts_with("org.eclipse.equinox.launcher_")) return entry.path();
  }
  return {};
}

std::string java() {
  const char* home = std::getenv("JAVA_HOME");
  return home == nullptr ? "java" : std::string(home) + "/bin/java";
}

std::vector<std::string> clientCommand(const fs::path& rcpHome, const Options& options) {
  return {java(),
          "-XX:TieredStopAtLevel=1",
          "-Drcp.home.folder=" + rcpHome.string(),
          "-jar",
          frameworkLauncher(rcpHome),
          "-nosplash",
          "-configuration",
          rcpHome / "eclipse/configuration",
          "-data",
          options.data,
          "-consoleLog",
          "-application",
          "com.kiv.rcp.base.client",
          "-stay",
          options.stay};
}

// The machine takes file names from the locale; without one that knows UTF-8 it cannot open paths
// with other letters.
void ensureUtf8Locale() {
  for (const char* name : {"LC_ALL", "LC_CTYPE", "LANG"}) {
    const char* value = std::getenv(name);
    if (value == nullptr || *value == '\0') continue;
    if (std::strstr(value, "UTF-8") != nullptr || std::strstr(value, "utf8") != nullptr) return;
    break;
  }
  setenv("LC_ALL", "C.UTF-8", 1);
}

// The client never outlives this program, not even when it is killed.
[[noreturn]] void become(std::vector<std::string> command) {
  std::vector<char*> arguments;
  for (std::string& word : command) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  execvp(arguments[0], arguments.data());
  std::perror(arguments[0]);
  _exit(kCannotStart);
}

int waitFor(pid_t child) {
  int status = 0;
  if (waitpid(child, &status, 0) != child) return kCannotStart;
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

}  // namespace

int main(int argc, char** argv) {
  const fs::path rcpHome = fs::read_symlink("/proc/self/exe").parent_path() / "rcp";
  const Options options = readOptions({argv + 1, argv + argc}, rcpHome);
  ensureUtf8Locale();
  const pid_t child = fork();
  if (child < 0) {
    std::perror("fork");
    return kCannotStart;
  }
  if (child == 0) become(clientCommand(rcpHome, options));
  return waitFor(child);
}
