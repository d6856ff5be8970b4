// Plays every program that a test needs as a child: launcher, Java, java_home, pkgutil. It is run
// by its own name, by a copy's, or through scripts of one line ("#!/control/child"), each of them
// an ordinary file. Its role is the name of the file that was started. It records how it was
// started, then does what the script of its role says.
//
// Its folder is named by the variable HOTFIX_CHILD_FOLDER, else it is /control. There it finds
// scripts/<role>.<n> for the n-th start of the role, else scripts/<role>, else nothing to do, and
// leaves records/<number>.<role>, one file a start. Fields are separated by tabs and
// percent-encoded; support/ChildScript.h writes the scripts and reads the records.

#include <dirent.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include "children/OpenDescriptors.h"
#include "children/PercentCoding.h"

extern char** environ;

namespace {

using Fields = std::vector<std::string>;

constexpr int kNoFolder = 97;  // exit status when there is nowhere to leave a record
constexpr int kBadScript = 98;

std::string contents(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

std::string standardInput() {
  std::string text;
  char buffer[65536];
  for (ssize_t length = 0; (length = read(STDIN_FILENO, buffer, sizeof buffer)) > 0;)
    text.append(buffer, static_cast<std::size_t>(length));
  return text;
}

std::vector<std::string> entries(const std::string& folder) {
  std::vector<std::string> names;
  DIR* directory = opendir(folder.c_str());
  if (directory == nullptr) return names;
  while (const dirent* entry = readdir(directory))
    if (entry->d_name != std::string(".") && entry->d_name != std::string(".."))
      names.emplace_back(entry->d_name);
  closedir(directory);
  std::sort(names.begin(), names.end());
  return names;
}

// One letter for the kind, then what the item holds.
std::string snapshot(const std::string& path) {
  struct stat status {};
  if (lstat(path.c_str(), &status) != 0) return "A";
  if (S_ISLNK(status.st_mode)) return "L" + std::filesystem::read_symlink(path).string();
  if (S_ISREG(status.st_mode)) return "F" + contents(path);
  if (!S_ISDIR(status.st_mode)) return "O";
  std::string names = "D";
  for (const std::string& name : entries(path)) names += name + "\n";
  return names;
}

// --- What is recorded ----------------------------------------------------------------------------

class Record {
 public:
  void add(const std::string& key, const std::string& value) {
    _text += key + "\t" + percentEncoded(value) + "\n";
  }
  void add(const std::string& key, const std::string& name, const std::string& value) {
    _text += key + "\t" + percentEncoded(name) + "\t" + percentEncoded(value) + "\n";
  }
  const std::string& text() const { return _text; }

 private:
  std::string _text;
};

void addSignals(Record& record) {
  sigset_t blocked;
  sigprocmask(SIG_SETMASK, nullptr, &blocked);
  for (int signal = 1; signal < NSIG; ++signal) {
    struct sigaction action {};
    if (sigismember(&blocked, signal) == 1) record.add("blocked", std::to_string(signal));
    if (sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN)
      record.add("ignored", std::to_string(signal));
  }
}

// Descriptors first: everything else opens some.
Record describeSelf(const std::string& role, const std::string& path, const Fields& arguments) {
  Record record;
  for (const auto& [number, target] : openDescriptors())
    record.add("descriptor", std::to_string(number), target);
  record.add("role", role);
  record.add("path", path);
  for (const std::string& argument : arguments) record.add("argument", argument);
  std::error_code unknown;
  record.add("directory", std::filesystem::current_path(unknown).string());
  for (char** variable = environ; *variable != nullptr; ++variable)
    record.add("variable", *variable);
  addSignals(record);
  const mode_t mask = umask(0);
  umask(mask);
  record.add("mask", std::to_string(mask));
  record.add("user", std::to_string(geteuid()));
  return record;
}

// --- The folder ----------------------------------------------------------------------------------

// Held until the process ends or the object is gone: starts are numbered one after the other.
class Turn {
 public:
  explicit Turn(const std::string& folder)
      : _lock(open((folder + "/lock").c_str(), O_RDWR | O_CLOEXEC)) {
    struct flock whole {};
    whole.l_type = F_WRLCK;
    whole.l_whence = SEEK_SET;
    _granted = _lock >= 0 && fcntl(_lock, F_SETLKW, &whole) == 0;
  }
  Turn(const Turn&) = delete;
  Turn& operator=(const Turn&) = delete;
  ~Turn() { close(_lock); }

  bool granted() const { return _granted; }

 private:
  int _lock;
  bool _granted = false;
};

bool isRecord(const std::string& name) {
  return !name.starts_with('.');
}

// The name of the next record and the number of this start among those of the role.
struct Start {
  std::string name;
  int number;
};

Start nextStart(const std::string& folder, const std::string& role) {
  std::vector<std::string> earlier = entries(folder + "/records");
  std::erase_if(earlier, [](const std::string& name) { return !isRecord(name); });
  char digits[16];
  std::snprintf(digits, sizeof digits, "%04zu", earlier.size() + 1);
  const auto own = std::count_if(earlier.begin(), earlier.end(),
                                 [&](const std::string& name) { return name.substr(5) == role; });
  return {std::string(digits) + "." + role, 1 + static_cast<int>(own)};
}

std::vector<Fields> readScript(const std::string& folder, const std::string& role, int number) {
  const std::string common = folder + "/scripts/" + role;
  const std::string own = common + "." + std::to_string(number);
  std::vector<Fields> steps;
  std::istringstream lines(contents(access(own.c_str(), R_OK) == 0 ? own : common));
  for (std::string line; std::getline(lines, line);) {
    Fields fields;
    std::istringstream parts(line);
    for (std::string part; std::getline(parts, part, '\t');) fields.push_back(percentDecoded(part));
    fields.resize(std::max<std::size_t>(fields.size(), 3));
    steps.push_back(fields);
  }
  return steps;
}

// The record gets its name when it is whole.
void leave(const Record& record, const std::string& folder, const std::string& name) {
  const std::string draft = folder + "/records/.draft";
  std::ofstream(draft, std::ios::binary) << record.text();
  std::rename(draft.c_str(), (folder + "/records/" + name).c_str());
}

// --- What a script asks for ----------------------------------------------------------------------

void pauseMillisecond() {
  const timespec millisecond{0, 1'000'000};
  nanosleep(&millisecond, nullptr);
}

void put(int descriptor, const std::string& text) {
  std::size_t done = 0;
  while (done < text.size()) {
    const ssize_t count = write(descriptor, text.data() + done, text.size() - done);
    if (count < 0) return;
    done += static_cast<std::size_t>(count);
  }
}

bool isUnread(int pipe) {
  int bytes = 0;
  return ioctl(pipe, FIONREAD, &bytes) == 0 && bytes > 0;
}

// A test that went wrong is not waited for longer than this.
void await(const std::string& path) {
  for (int turn = 0; turn < 20'000 && access(path.c_str(), F_OK) != 0; ++turn) pauseMillisecond();
}

void signalParent(int signal, int times) {
  for (; times > 0; --times) {
    kill(getppid(), signal);
    pauseMillisecond();
  }
}

[[noreturn]] void dieBy(int number) {
  signal(number, SIG_DFL);
  raise(number);
  std::_Exit(kBadScript);
}

void act(const Fields& step) {
  const std::string& what = step[0];
  if (what == "write") {
    std::ofstream(step[1], std::ios::binary) << step[2];
  } else if (what == "remove") {
    unlink(step[1].c_str());
  } else if (what == "folder") {
    mkdir(step[1].c_str(), 0777);
  } else if (what == "rename") {
    (void)rename(step[1].c_str(), step[2].c_str());  // looked for by the test
  } else if (what == "link") {
    (void)symlink(step[2].c_str(), step[1].c_str());  // looked for by the test
  } else if (what == "print") {
    put(STDOUT_FILENO, step[1]);
  } else if (what == "error") {
    put(STDERR_FILENO, step[1]);
  } else if (what == "fill") {
    put(STDOUT_FILENO, std::string(std::stoul(step[1]), 'x'));
  } else if (what == "drain") {
    while (isUnread(STDOUT_FILENO)) pauseMillisecond();
  } else if (what == "await") {
    await(step[1]);
  } else if (what == "signal-parent") {
    signalParent(std::stoi(step[1]), std::stoi(step[2]));
  } else if (what == "exit") {
    std::_Exit(std::stoi(step[1]));
  } else if (what == "kill") {
    dieBy(std::stoi(step[1]));
  } else if (what != "snapshot" && what != "input") {
    std::_Exit(kBadScript);
  }
}

int play(const std::string& path, const Fields& arguments) {
  const std::string role = path.substr(path.rfind('/') + 1);
  const char* const named = std::getenv("HOTFIX_CHILD_FOLDER");
  const std::string folder = named != nullptr ? named : "/control";

  Record record = describeSelf(role, path, arguments);
  std::vector<Fields> steps;
  {
    const Turn turn(folder);
    if (!turn.granted()) return kNoFolder;
    const Start start = nextStart(folder, role);
    steps = readScript(folder, role, start.number);
    for (const Fields& step : steps)
      if (step[0] == "snapshot") record.add("snapshot", step[1], snapshot(step[1]));
    for (const Fields& step : steps)
      if (step[0] == "input") record.add("input", standardInput());
    leave(record, folder, start.name);
  }
  for (const Fields& step : steps) act(step);
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 2 && std::string(argv[1]) == "--idle") {
    pause();
    return 0;
  }
  // Started for a script it is told the script's path; a copy of it is started by its own.
  char** const self = std::string(argv[0]) == "/control/child" ? argv + 1 : argv;
  if (self == argv + argc) return 2;
  return play(*self, {self + 1, argv + argc});
}
