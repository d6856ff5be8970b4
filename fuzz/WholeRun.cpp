#include "WholeRun.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <optional>
#include <vector>

#include "Fuzzed.h"
#include "PrivateRoot.h"
#include "base/Characters.h"
#include "base/TraceLine.h"
#include "hotfix/driver/Installer.h"
#include "platform/ChildProcesses.h"
#include "platform/Platform.h"
#include "platform/files/PosixFileManager.h"
#include "platform/posix/FilePasteboard.h"
#include "platform/posix/LogFiles.h"
#include "platform/posix/UserPreferences.h"
#include "support/FakeClock.h"
#include "support/FakeProcessTable.h"
#include "support/FakeUserContext.h"

namespace installer::fuzz {

namespace fs = std::filesystem;

namespace {

constexpr const char* kPackage = "/HF/HF.pkg";
constexpr const char* kDestination = "/Applications";
constexpr const char* kData = "/data";
constexpr const char* kTemporary = ".hotfix-";  // begins the names of unfinished files

// --- The files -----------------------------------------------------------------------------------

struct Entry {
  std::string name;
  std::string content;
};

constexpr const char* kDescription =
    "<plist version=\"1.0\"><dict><key>bundleName</key><string>Quillmere</string>"
    "<key>frameworkPath</key><string>Contents/MacOS</string>"
    "<key>version</key><string>6.2.3.1</string>"
    "<key>allowMultiInstance</key><true/></dict></plist>";
constexpr const char* kIdentity =
    "<plist "
    "version=\"1.0\"><dict><key>CFBundleIdentifier</key><string>com.quillmere.hotfix</string>"
    "</dict></plist>";
constexpr const char* kManifest =
    "<manifest><domain-object><object-data><install><installfeature><requirements>"
    "<feature id=\"f\" url=\"${installer.root}/site\"/>"
    "</requirements></installfeature></install></object-data></domain-object></manifest>";

const std::vector<Entry>& soundPackage() {
  static const std::vector<Entry> entries = {
      {"HF/HF.pkg/Contents/Resources/hotfix.plist", kDescription},
      {"HF/HF.pkg/Contents/Info.plist", kIdentity},
      {"HF/deploy/install.hotfix.xml", kManifest},
      {"HF/deploy/uninstall.hotfix.xml", kManifest},
      {"HF/deploy/plugin_customization.ini", "new=1\n"},
      {"HF/deploy/.keystore", "new store"},
      {"HF/deploy/extras/extra", "extra"}};
  return entries;
}

const std::vector<Entry>& soundInstance() {
  static const std::vector<Entry> entries = {
      {"Applications/Quillmere.app/Contents/MacOS/rcp/deploy/install.xml", kManifest},
      {"Applications/Quillmere.app/Contents/MacOS/rcp/rcplauncher.properties",
       "provisioning.manifest.version=0101130000\nrcp.install.id=0101130000\n"},
      {"Applications/Quillmere.app/Contents/MacOS/rcp/plugin_customization.ini", "old=1\n"},
      {"Applications/Quillmere.app/Contents/MacOS/rcp/eclipse/plugins/", ""},
      {"data/.config/rcpinstall.properties", "rcp.install.id=1\n"}};
  return entries;
}

// The input's entries, in their order.
std::vector<Entry> entriesOf(std::string_view input) {
  constexpr std::string_view kBegin = "--- ";
  constexpr std::string_view kNext = "\n--- ";
  std::vector<Entry> entries;
  while (input.starts_with(kBegin)) {
    input.remove_prefix(kBegin.size());
    const std::size_t end = std::min(input.find(kNext), input.size());
    const std::string_view entry = input.substr(0, end);
    const std::size_t line = std::min(entry.find('\n'), entry.size());
    entries.push_back({std::string(entry.substr(0, line)),
                       std::string(entry.substr(std::min(line + 1, entry.size())))});
    input.remove_prefix(std::min(end + 1, input.size()));
  }
  return entries;
}

void makeFoldersAbove(const std::string& path) {
  for (std::size_t at = path.find('/', 1); at != std::string::npos; at = path.find('/', at + 1))
    mkdir(path.substr(0, at).c_str(), 0755);
}

void makeFile(const std::string& path, const std::string& content) {
  const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, 0644);
  if (file < 0) return;
  (void)!write(file, content.data(), content.size());
  close(file);
}

// What cannot be made is not there.
void make(const Entry& entry) {
  const std::size_t link = entry.name.find(" -> ");
  const std::size_t hardLink = entry.name.find(" => ");
  const std::string path = "/" + entry.name.substr(0, std::min(link, hardLink));
  makeFoldersAbove(path);
  if (link != std::string::npos)
    (void)!symlink(entry.name.substr(link + 4).c_str(), path.c_str());
  else if (hardLink != std::string::npos)
    (void)!::link(("/" + entry.name.substr(hardLink + 4)).c_str(), path.c_str());
  else if (!path.ends_with('/'))
    makeFile(path, entry.content);
}

std::string contentOf(const std::string& path) {
  struct stat status {};
  if (lstat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) return "";
  std::ifstream stream(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

// --- The machine ---------------------------------------------------------------------------------

// Starts nothing; the launcher leaves its answer.
class PlayedChildren : public ChildProcesses {
 public:
  explicit PlayedChildren(std::string answer) : _answer(std::move(answer)) {}

  // Whether the last child before the log collection was asked for the hotfix.
  bool wasAskedForHotfix() const { return _wasAskedForHotfix; }
  int running() const { return _running; }

  std::optional<int> start(const Command& command, std::string* /*reason*/) override {
    ++_running;
    if (command.executable.ends_with("/rcplauncher")) play(command);
    return 1;
  }
  std::optional<std::string> wait(int) override {
    --_running;
    return std::nullopt;
  }
  std::optional<std::string> firstLine(const Command&) override { return "/java"; }
  int shell(const std::string&) override { return 0; }

 private:
  void play(const Command& command) {
    _wasAskedForHotfix = std::ranges::find(command.arguments, "-DprovisioningOperation=update") !=
                         command.arguments.end();
    makeFile(fs::path(command.executable).parent_path().parent_path() / ".provisioning_rc",
             _answer);
  }

  std::string _answer;
  bool _wasAskedForHotfix = false;
  int _running = 0;
};

// The lines go to the trace alone.
class TraceLog : public SystemLog {
 public:
  explicit TraceLog(Clock& clock) : _files(clock) {}

  void write(LogLevel level, std::string_view message) override {
    LineText text;
    appendEscaped(message, text);
    _files.write(level, viewOf(text));
  }
  int addFile(int descriptor) override { return _files.add(descriptor); }
  void removeFile(int descriptor) override { _files.remove(descriptor); }

 private:
  LogFiles _files;
};

// Files, record and preferences are the real ones.
struct RunMachine {
  explicit RunMachine(const std::string& answer) : children(answer) {
    users.userList = {{.name = "tester", .uid = 0, .gid = 0, .home = "/Users/tester"}};
    users.groups = {{"admin", 0}};
    users.variables = {{"USER", "tester"}, {"HOME", "/Users/tester"}};
    platform.files = &files;
    platform.children = &children;
    platform.processes = &processes;
    platform.pasteboard = &pasteboard;
    platform.log = &log;
    platform.preferences = &preferences;
    platform.users = &users;
    platform.clock = &clock;
  }

  test::FakeClock clock;
  test::FakeUserContext users;
  PosixFileManager files{users};
  PlayedChildren children;
  test::FakeProcessTable processes;
  TraceLog log{clock};
  FilePasteboard pasteboard{files, FixedPaths().pasteboard};
  UserPreferences preferences{files, users};
  Platform platform;
  ScopedPlatform scope{platform};
};

// --- What must be --------------------------------------------------------------------------------

void requireTrace() {
  const std::string trace = contentOf(FixedPaths().traceFile);
  require(trace.empty() || trace.ends_with('\n'), "a trace is made of whole lines");
  for (std::size_t at = 0; at < trace.size();) {
    const std::optional<DecodedCharacter> decoded = decodeUtf8(trace, at);
    require(decoded && (decoded->character >= ' ' || trace[at] == '\n'), "a trace is text");
    at += decoded->length;
  }
}

void requireRecord() {
  const std::string record = contentOf(FixedPaths().pasteboard);
  if (record.empty()) return;
  const auto entries = PropertyList::parseDictionary(record);
  require(entries && entries->find("ERROR_CODE") != nullptr, "the record can be read");
}

// The next descriptor that the system would give.
int nextDescriptor() {
  const int descriptor = open("/", O_PATH | O_CLOEXEC);
  close(descriptor);
  return descriptor;
}

void run(std::map<std::string, std::string>& played) {
  RunMachine machine(played["launcher"]);
  Lines processes(played["processes"]);
  for (std::string line = processes.next(); !line.empty(); line = processes.next())
    machine.processes.add(line);
  const int descriptor = nextDescriptor();
  const int status = runInstaller({"HotfixInstaller", kPackage, kDestination, "-rcpdata", kData});
  require(status == 0 || status == 1, "the status is 0 or 1");
  require(status == 1 || machine.children.wasAskedForHotfix(), "success comes from the launcher");
  require(machine.children.running() == 0, "every child is waited for");
  require(nextDescriptor() == descriptor, "no descriptor stays open");
  requireTrace();
  requireRecord();
}

}  // namespace

void tryRun(std::string_view input, Given given) {
  static PrivateRoot root;
  leaveMemoryUnwatched();
  root.enter();
  std::map<std::string, std::string> played = {{"launcher", "rc=0\n"}};
  for (const char* folder : {"/tmp", "/Library", "/Users"}) mkdir(folder, 0755);
  for (const Entry& entry : given == Given::package ? soundInstance() : soundPackage()) make(entry);
  for (Entry& entry : entriesOf(input)) {
    if (entry.name == "launcher" || entry.name == "processes")
      played[entry.name] = std::move(entry.content);
    else
      make(entry);
  }
  run(played);
  const bool isLeft = root.leave(kTemporary);
  require(!isLeft || input.find(kTemporary) != std::string_view::npos,
          "no unfinished file is left");
}

}  // namespace installer::fuzz
