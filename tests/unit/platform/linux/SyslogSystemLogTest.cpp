#include "platform/linux/SyslogSystemLog.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <gmock/gmock.h>
#include <syslog.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Platform.h"
#include "platform/ProcessSetup.h"
#include "platform/SystemPlatform.h"
#include "support/FakeClock.h"
#include "support/Proves.h"
#include "support/TemporaryFolder.h"

// These definitions come before the C library's, so that the tests see what it would be given.
namespace {

std::vector<std::string> calls;
bool isSystemLogMissing = false;

void note(const char* format, std::va_list values, int priority) {
  char text[256];
  std::vsnprintf(text, sizeof text, format, values);
  calls.push_back(fmt::format("{} {}", priority, text));
}

}  // namespace

extern "C" {

void openlog(const char* name, int options, int facility) {
  calls.push_back(fmt::format("open {} {} {}", name, options, facility));
}

void syslog(int priority, const char* format, ...) {
  std::va_list values;
  va_start(values, format);
  note(format, values, priority);
  va_end(values);
}

void closelog() {
  calls.emplace_back("close");
}

int access(const char* path, int mode) noexcept {
  if (!isSystemLogMissing || std::string_view(path) != _PATH_LOG)
    return faccessat(AT_FDCWD, path, mode, 0);
  errno = ENOENT;
  return -1;
}

}  // extern "C"

namespace installer::test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class SyslogSystemLogTest : public ::testing::Test {
 protected:
  SyslogSystemLogTest() { calls.clear(); }

  FakeClock _clock;
};

TEST_F(SyslogSystemLogTest, LeavesTheHostsNameAndConnectionAlone) {
  proves("LIBRARY-6");
  { SyslogSystemLog(_clock).write(LogLevel::info, "a"); }

  EXPECT_THAT(calls, ElementsAre("6 a"));
}

TEST_F(SyslogSystemLogTest, TheProgramWritesUnderItsNameWithTheProcessNumber) {
  proves("LOG-2");
  setUpProcess();

  EXPECT_THAT(calls, ElementsAre(fmt::format("open HotfixInstaller {} {}", LOG_PID, LOG_USER)));
}

TEST_F(SyslogSystemLogTest, KeepsTheLevels) {
  proves("LOG-2");
  SyslogSystemLog log(_clock);
  calls.clear();

  log.write(LogLevel::error, "a");
  log.write(LogLevel::warning, "b");
  log.write(LogLevel::notice, "c");
  log.write(LogLevel::info, "d");

  EXPECT_THAT(calls, ElementsAre("3 a", "4 b", "5 c", "6 d"));
}

TEST_F(SyslogSystemLogTest, WritesMessagesEscapedAndNeverAsFormats) {
  proves("LOG-3");
  SyslogSystemLog log(_clock);
  calls.clear();

  log.write(LogLevel::info, "100 %s %n\x1b[1m\n");

  EXPECT_THAT(calls, ElementsAre("6 100 %s %n\\x1b[1m"));
}

// A host of the library may have told the C library to show lines elsewhere, too.
TEST_F(SyslogSystemLogTest, NobodyNeedsToListenToAHostsLog) {
  proves("LIBRARY-6");
  SyslogSystemLog log(_clock);

  log.write(LogLevel::info, "a");

  EXPECT_THAT(calls, ElementsAre("6 a"));
}

TEST_F(SyslogSystemLogTest, AProcessThatIsNotTheProgramsOwnIsAHost) {
  proves("LIBRARY-6");
  if (ownsSystemLog()) GTEST_SKIP() << "a test before has made this process the program's own";

  isSystemLogMissing = true;  // which keeps the program's own quiet
  makeSystemPlatform()->log->write(LogLevel::info, "a");
  isSystemLogMissing = false;

  EXPECT_THAT(calls, ElementsAre("6 a"));
}

TEST_F(SyslogSystemLogTest, WhileNobodyListensNothingGoesOut) {
  proves("LOG-10");
  const TemporaryFolder folder;
  const std::string socket = folder.path() + "/log";
  SyslogSystemLog log(_clock, socket);
  log.write(LogLevel::info, "a");
  EXPECT_THAT(calls, IsEmpty());

  std::ofstream(socket).put('x');
  for (int line = 2; line <= 64; ++line) log.write(LogLevel::info, "b");
  EXPECT_THAT(calls, IsEmpty());

  log.write(LogLevel::info, "c");
  EXPECT_THAT(calls, ElementsAre("6 c"));

  ASSERT_TRUE(std::filesystem::remove(socket));
  for (int line = 1; line <= 64; ++line) log.write(LogLevel::info, "d");
  EXPECT_EQ(calls.size(), 65u);  // the C library knows better what becomes of a connection
}

// Where the socket cannot be looked at, somebody may listen: the C library knows better what
// becomes of a connection.
TEST_F(SyslogSystemLogTest, WhoeverMayListenFromTheBeginningHearsTheFirstLine) {
  proves("LOG-10");
  const TemporaryFolder folder;
  const std::string file = folder.makeFile("file");
  for (const std::string& socket : {file, file + "/log"}) {
    calls.clear();
    SyslogSystemLog log(_clock, socket);

    log.write(LogLevel::info, "a");

    EXPECT_THAT(calls, ElementsAre("6 a")) << socket;
  }
}

TEST_F(SyslogSystemLogTest, FilesGetTheirLinesWhoeverListens) {
  proves("LOG-10");
  const TemporaryFolder folder;
  SyslogSystemLog log(_clock, folder.path() + "/none");
  const std::string path = folder.path() + "/trace";
  const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0644);
  ASSERT_EQ(0, log.addFile(file));

  log.write(LogLevel::info, "a");
  close(file);

  std::ifstream trace(path);
  EXPECT_THAT(std::string(std::istreambuf_iterator<char>(trace), {}), HasSubstr(" <Info>: a\n"));
}

}  // namespace
}  // namespace installer::test
