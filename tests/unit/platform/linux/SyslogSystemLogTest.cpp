#include "platform/linux/SyslogSystemLog.h"

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <syslog.h>

#include <cstdarg>
#include <cstdio>
#include <string>
#include <vector>

#include "platform/ProcessSetup.h"
#include "support/FakeClock.h"
#include "support/Proves.h"

// These definitions come before the C library's, so that the tests see what it would be given.
namespace {

std::vector<std::string> calls;

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

}  // extern "C"

namespace installer::test {
namespace {

using ::testing::ElementsAre;

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

}  // namespace
}  // namespace installer::test
