// Plays every program that the installer starts: launcher, Java, java_home, pkgutil. It is run
// through scripts of one line ("#!/control/child"), so that each of them is an ordinary file, or
// as a copy of itself, and takes its role from that file's name. It records how it was started,
// then does what the script of its role says.
//
// Everything is below /control: scripts/<role>.<n> for the n-th start of the role, else
// scripts/<role>; records/<number>.<role>, one file a start. Fields are separated by tabs, and
// percent-encoded.

#include <dirent.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

extern char** environ;

namespace {

std::string encoded(const std::string& text) {
  static const char* digits = "0123456789ABCDEF";
  std::string result;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte > 0x20 && byte < 0x7F && byte != '%') {
      result += c;
    } else {
      result += '%';
      result += digits[byte >> 4];
      result += digits[byte & 15];
    }
  }
  return result;
}

std::string decoded(const std::string& text) {
  std::string result;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '%') {
      result += text[i];
      continue;
    }
    result += static_cast<char>(std::stoi(text.substr(i + 1, 2), nullptr, 16));
    i += 2;
  }
  return result;
}

std::string contents(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

std::string linkTarget(const std::string& path) {
  char target[4096];
  const ssize_t length = readlink(path.c_str(), target, sizeof target);
  return length < 0 ? std::string() : std::string(target, static_cast<std::size_t>(length));
}

std::vector<std::string> entries(const std::string& folder) {
  std::vector<std::string> names;
  DIR* directory = opendir(folder.c_str());
  if (directory == nullptr) return names;
  while (const dirent* entry = readdir(directory)) {
    const std::string name = entry->d_name;
    if (name != "." && name != "..") names.push_back(name);
  }
  closedir(directory);
  std::sort(names.begin(), names.end());
  return names;
}

// One letter for the kind, then what the item holds.
std::string snapshot(const std::string& path) {
  struct stat status {};
  if (lstat(path.c_str(), &status) != 0) return "A";
  if (S_ISLNK(status.st_mode)) return "L" + linkTarget(path);
  if (S_ISREG(status.st_mode)) return "F" + contents(path);
  if (!S_ISDIR(status.st_mode)) return "O";
  std::string names = "D";
  for (const std::string& name : entries(path)) names += name + "\n";
  return names;
}

class Helper {
 public:
  Helper(std::string path, std::vector<std::string> arguments)
      : _path(std::move(path)), _arguments(std::move(arguments)) {
    _role = _path.substr(_path.rfind('/') + 1);
  }

  int run() {
    describe();
    const int number = reserve();
    readScript(number);
    for (const auto& step : _steps)
      if (step[0] == "snapshot") add("snapshot", step[1], snapshot(step[1]));
    for (const auto& step : _steps)
      if (step[0] == "input") add("input", contents("/proc/self/fd/0"));
    publish();
    for (const auto& step : _steps) act(step);
    return _status;
  }

 private:
  void add(const std::string& key, const std::string& value) {
    _record += key + "\t" + encoded(value) + "\n";
  }
  void add(const std::string& key, const std::string& name, const std::string& value) {
    _record += key + "\t" + encoded(name) + "\t" + encoded(value) + "\n";
  }

  void describe() {
    add("role", _role);
    add("path", _path);
    for (const std::string& argument : _arguments) add("argument", argument);
    char directory[4096];
    add("directory", getcwd(directory, sizeof directory) == nullptr ? "" : directory);
    for (char** variable = environ; *variable != nullptr; ++variable) add("variable", *variable);
    for (const std::string& name : entries("/proc/self/fd")) {
      const std::string target = linkTarget("/proc/self/fd/" + name);
      if (!target.empty() && fcntl(std::atoi(name.c_str()), F_GETFD) >= 0)
        add("descriptor", name, target);
    }
    for (int signal = 1; signal < 32; ++signal) {
      struct sigaction action {};
      if (sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN)
        add("ignored", std::to_string(signal));
    }
    sigset_t blocked;
    sigprocmask(SIG_SETMASK, nullptr, &blocked);
    for (int signal = 1; signal < 32; ++signal)
      if (sigismember(&blocked, signal) == 1) add("blocked", std::to_string(signal));
    const mode_t mask = umask(0);
    umask(mask);
    add("mask", std::to_string(mask));
    add("user", std::to_string(geteuid()));
  }

  // Takes the next record number and counts the earlier starts of this role.
  int reserve() {
    const int lock = open("/control/lock", O_RDWR | O_CLOEXEC);
    flock(lock, LOCK_EX);
    const auto earlier = entries("/control/records");
    char number[16];
    std::snprintf(number, sizeof number, "%04zu", earlier.size() + 1);
    _target = std::string("/control/records/") + number + "." + _role;
    close(open(_target.c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0666));
    close(lock);
    return 1 + static_cast<int>(std::count_if(
                   earlier.begin(), earlier.end(),
                   [this](const std::string& name) { return name.substr(5) == _role; }));
  }

  void publish() const {
    std::ofstream file(_target, std::ios::binary);
    file << _record;
  }

  void readScript(int number) {
    const std::string common = "/control/scripts/" + _role;
    const std::string own = common + "." + std::to_string(number);
    std::istringstream lines(contents(access(own.c_str(), R_OK) == 0 ? own : common));
    for (std::string line; std::getline(lines, line);) {
      std::vector<std::string> fields;
      std::istringstream parts(line);
      for (std::string part; std::getline(parts, part, '\t');) fields.push_back(decoded(part));
      fields.resize(std::max<std::size_t>(fields.size(), 3));
      _steps.push_back(fields);
    }
  }

  void act(const std::vector<std::string>& step) {
    const std::string& what = step[0];
    if (what == "write") std::ofstream(step[1], std::ios::binary) << step[2];
    if (what == "remove") unlink(step[1].c_str());
    if (what == "folder") mkdir(step[1].c_str(), 0777);
    if (what == "print") std::fwrite(step[1].data(), 1, step[1].size(), stdout);
    if (what == "error") std::fwrite(step[1].data(), 1, step[1].size(), stderr);
    if (what == "await") await(step[1]);
    if (what == "exit") _status = std::atoi(step[1].c_str());
    if (what == "kill") kill(getpid(), std::atoi(step[1].c_str()));
    std::fflush(stdout);
  }

  static void await(const std::string& path) {
    for (int turn = 0; turn < 4000 && access(path.c_str(), F_OK) != 0; ++turn) usleep(5000);
  }

  std::string _path;
  std::vector<std::string> _arguments;
  std::string _role;
  std::string _record;
  std::string _target;
  std::vector<std::vector<std::string>> _steps;
  int _status = 0;
};

}  // namespace

int main(int argc, char** argv) {
  if (argc == 2 && std::string(argv[1]) == "--idle") {
    pause();
    return 0;
  }
  // Started for a script it is told the script's path; a copy of it is started by its own.
  char** const self = std::string(argv[0]) == "/control/child" ? argv + 1 : argv;
  if (self == argv + argc) return 2;
  return Helper(*self, {self + 1, argv + argc}).run();
}
