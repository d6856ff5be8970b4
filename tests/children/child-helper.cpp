// Plays every child that a test needs: the launcher, Java, the receipt tool. It works under any
// file name, by a copy or a link.
//
// It finds its folder in the variable CHILD_HELPER_DIR or else in the file ".child-helper" beside
// itself, whose first line names it. There it leaves a record of how it was started, named by the
// number of the start and its own name ("0001.rcplauncher"): lines of a key, a tab and a value, in
// which line feeds, tabs and backslashes are escaped. Keys: executable, argument, directory,
// descriptor ("1 /dev/null"), blocked and ignored (signal numbers), environment ("NAME=value"),
// user (effective id), mask (octal).
//
// Then it does what its script says: the file "<name>.script.<n>" for the n-th start under this
// name, else "<name>.script", else nothing. One command a line, fields separated by tabs, with the
// escapes \n \t \\ \xHH and {here} for the folder that it was started from:
//   print TEXT, error TEXT          to standard output or error, nothing added
//   fill N                          N times "x" to standard output
//   drain                           until somebody has read all of standard output, a pipe
//   write PATH TEXT, append PATH TEXT, remove PATH
//   signal-parent SIGNAL TIMES      a millisecond apart
//   await PATH                      until it exists
//   sleep                           until killed
//   kill SIGNAL                     ends by this signal
//   exit STATUS
#include <dirent.h>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

extern char** environ;

namespace {

namespace fs = std::filesystem;

constexpr int kNoFolder = 97;  // exit status when there is nowhere to leave a record
constexpr int kBadScript = 98;

std::string escaped(const std::string& text) {
  std::string result;
  for (const char c : text) {
    if (c == '\n')
      result += "\\n";
    else if (c == '\t')
      result += "\\t";
    else if (c == '\\')
      result += "\\\\";
    else
      result += c;
  }
  return result;
}

std::string unescaped(const std::string& text) {
  std::string result;
  for (std::size_t place = 0; place < text.size(); ++place) {
    if (text[place] != '\\' || place + 1 == text.size()) {
      result += text[place];
      continue;
    }
    switch (text[++place]) {
      case 'n':
        result += '\n';
        break;
      case 't':
        result += '\t';
        break;
      case 'x':
        result += static_cast<char>(std::stoi(text.substr(place + 1, 2), nullptr, 16));
        place += 2;
        break;
      default:
        result += text[place];
    }
  }
  return result;
}

class Record {
 public:
  void add(const std::string& key, const std::string& value) {
    _text += key + '\t' + escaped(value) + '\n';
  }
  const std::string& text() const { return _text; }

 private:
  std::string _text;
};

void addDescriptors(Record& record) {
  DIR* folder = opendir("/proc/self/fd");
  if (folder == nullptr) return;
  while (const dirent* entry = readdir(folder)) {
    if (entry->d_name[0] == '.' || std::atoi(entry->d_name) == dirfd(folder)) continue;
    char target[4096] = {};
    const ssize_t length = readlinkat(dirfd(folder), entry->d_name, target, sizeof target - 1);
    if (length >= 0) record.add("descriptor", std::string(entry->d_name) + ' ' + target);
  }
  closedir(folder);
}

void addSignals(Record& record) {
  sigset_t blocked;
  sigprocmask(SIG_BLOCK, nullptr, &blocked);
  for (int number = 1; number < NSIG; ++number) {
    struct sigaction action {};
    if (sigismember(&blocked, number) == 1) record.add("blocked", std::to_string(number));
    if (sigaction(number, nullptr, &action) == 0 && action.sa_handler == SIG_IGN)
      record.add("ignored", std::to_string(number));
  }
}

std::string octal(unsigned number) {
  std::ostringstream text;
  text << std::oct << number;
  return text.str();
}

// Descriptors first: everything else opens some.
Record describeSelf(int count, char** arguments) {
  Record record;
  addDescriptors(record);
  record.add("executable", arguments[0]);
  for (int place = 1; place < count; ++place) record.add("argument", arguments[place]);
  record.add("directory", fs::current_path().string());
  addSignals(record);
  const mode_t mask = umask(0);
  umask(mask);
  record.add("mask", octal(mask));
  record.add("user", std::to_string(geteuid()));
  for (char** variable = environ; *variable != nullptr; ++variable)
    record.add("environment", *variable);
  return record;
}

std::string folderOf(const std::string& path) {
  const std::string folder = fs::path(path).parent_path().string();
  return folder.empty() ? "." : folder;
}

std::optional<std::string> recordFolder(const std::string& executable) {
  if (const char* folder = std::getenv("CHILD_HELPER_DIR")) return folder;
  std::error_code ignored;
  const std::string self = fs::read_symlink("/proc/self/exe", ignored).string();
  for (const std::string& place : {executable, self}) {
    std::ifstream file(folderOf(place) + "/.child-helper");
    std::string folder;
    if (std::getline(file, folder)) return folder;
  }
  return std::nullopt;
}

std::string numbered(int number, const std::string& name) {
  char digits[16];
  std::snprintf(digits, sizeof digits, "%04d", number);
  return std::string(digits) + '.' + name;
}

// How many starts under this name the folder tells of.
int countStarts(const std::string& folder, const std::string& name) {
  int count = 0;
  for (const auto& entry : fs::directory_iterator(folder)) {
    const std::string file = entry.path().filename().string();
    if (file.size() == name.size() + 5 && file.ends_with('.' + name)) ++count;
  }
  return count;
}

bool isTaken(const std::string& folder, int number) {
  for (const auto& entry : fs::directory_iterator(folder))
    if (entry.path().filename().string().starts_with(numbered(number, ""))) return true;
  return false;
}

// The record gets its name when it is whole.
void leave(const Record& record, const std::string& folder, const std::string& name) {
  const std::string draft = folder + "/.draft-" + std::to_string(getpid());
  std::ofstream(draft, std::ios::binary) << record.text();
  int number = 1;
  while (isTaken(folder, number) ||
         link(draft.c_str(), (folder + '/' + numbered(number, name)).c_str()) != 0) {
    if (++number > 9999) break;
  }
  unlink(draft.c_str());
}

std::vector<std::string> fieldsOf(const std::string& line, const std::string& here) {
  std::vector<std::string> fields;
  std::istringstream stream(line);
  for (std::string field; std::getline(stream, field, '\t');) {
    field = unescaped(field);
    for (std::size_t place; (place = field.find("{here}")) != std::string::npos;)
      field.replace(place, 6, here);
    fields.push_back(field);
  }
  fields.resize(4);
  return fields;
}

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

void store(const std::string& path, const std::string& text, std::ios::openmode mode) {
  std::ofstream(path, std::ios::binary | mode) << text;
}

[[noreturn]] void dieBy(int signal) {
  std::signal(signal, SIG_DFL);
  raise(signal);
  std::_Exit(kBadScript);
}

void obey(const std::vector<std::string>& fields) {
  const std::string& order = fields[0];
  if (order == "print") {
    put(STDOUT_FILENO, fields[1]);
  } else if (order == "error") {
    put(STDERR_FILENO, fields[1]);
  } else if (order == "fill") {
    put(STDOUT_FILENO, std::string(std::stoul(fields[1]), 'x'));
  } else if (order == "drain") {
    while (isUnread(STDOUT_FILENO)) pauseMillisecond();
  } else if (order == "write") {
    store(fields[1], fields[2], std::ios::trunc);
  } else if (order == "append") {
    store(fields[1], fields[2], std::ios::app);
  } else if (order == "remove") {
    fs::remove_all(fields[1]);
  } else if (order == "signal-parent") {
    for (int times = std::stoi(fields[2]); times > 0; --times) {
      kill(getppid(), std::stoi(fields[1]));
      pauseMillisecond();
    }
  } else if (order == "await") {
    while (!fs::exists(fields[1])) pauseMillisecond();
  } else if (order == "sleep") {
    for (;;) pause();
  } else if (order == "kill") {
    dieBy(std::stoi(fields[1]));
  } else if (order == "exit") {
    std::_Exit(std::stoi(fields[1]));
  } else if (!order.empty()) {
    std::_Exit(kBadScript);
  }
}

std::ifstream openScript(const std::string& folder, const std::string& name, int start) {
  const std::string general = folder + '/' + name + ".script";
  std::ifstream script(general + '.' + std::to_string(start));
  return script.is_open() ? std::move(script) : std::ifstream(general);
}

}  // namespace

int main(int count, char** arguments) {
  const Record record = describeSelf(count, arguments);
  const std::string executable = arguments[0];
  const std::optional<std::string> folder = recordFolder(executable);
  if (!folder) return kNoFolder;

  const std::string name = fs::path(executable).filename().string();
  const int start = countStarts(*folder, name) + 1;
  leave(record, *folder, name);

  std::ifstream script = openScript(*folder, name, start);
  for (std::string line; std::getline(script, line);) obey(fieldsOf(line, folderOf(executable)));
  return 0;
}
