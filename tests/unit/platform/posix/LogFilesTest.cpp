#include "platform/posix/LogFiles.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "support/ChildRun.h"
#include "support/FakeClock.h"
#include "support/Proves.h"
#include "support/TemporaryFolder.h"

namespace {

// What the system tells as its name; nullopt when it refuses to.
std::optional<std::string> systemName = "quill.example";
std::size_t spaceForName = 0;

}  // namespace

// This definition comes before the C library's.
extern "C" int gethostname(char* name, std::size_t size) {
  spaceForName = size;
  if (!systemName) return -1;
  systemName->copy(name, size);
  return 0;
}

namespace installer::test {
namespace {

class LogFilesTest : public ::testing::Test {
 protected:
  ~LogFilesTest() override {
    for (const int descriptor : _opened) close(descriptor);
    std::signal(SIGPIPE, SIG_DFL);
  }

  int open(const std::string& name, int flags = O_WRONLY | O_CREAT) {
    _opened.push_back(::open(_folder.path(name).c_str(), flags, 0600));
    return _opened.back();
  }

  // Writing into it fails, as the program leaves the signal of such a write ignored.
  int pipeWithoutReader() {
    std::signal(SIGPIPE, SIG_IGN);
    int ends[2] = {-1, -1};
    EXPECT_EQ(pipe(ends), 0);
    close(ends[0]);
    _opened.push_back(ends[1]);
    return ends[1];
  }

  static std::string line(const std::string& time, const std::string& rest) {
    return time + " quill.example HotfixInstaller[" + std::to_string(getpid()) + "] " + rest + "\n";
  }

  TemporaryFolder _folder;
  FakeClock _clock;
  LogFiles _files{_clock};
  std::vector<int> _opened;
};

TEST_F(LogFilesTest, EachLineTellsTheTimeOfItsWriting) {
  proves("LOG-4");
  ASSERT_EQ(_files.add(open("log")), 0);

  _clock.set(2024, 3, 9, 14, 5, 7);
  _files.write(LogLevel::info, "first");
  _clock.set(2025, 12, 31, 23, 59, 59);
  _files.write(LogLevel::error, "second");

  EXPECT_EQ(_folder.content("log"),
            line("Mar  9 14:05:07", "<Info>: first") + line("Dec 31 23:59:59", "<Error>: second"));
}

TEST_F(LogFilesTest, AForkedProcessTellsItsOwnNumber) {
  ASSERT_EQ(_files.add(open("log")), 0);
  _files.write(LogLevel::info, "first");
  const std::string first = line("Mar  9 14:05:07", "<Info>: first");

  EXPECT_TRUE(inChild([&] {
    _files.write(LogLevel::info, "second");
    return _folder.content("log") == first + line("Mar  9 14:05:07", "<Info>: second");
  }));
}

TEST_F(LogFilesTest, EveryFileGetsEveryLine) {
  EXPECT_EQ(_files.add(open("one")), 0);
  _files.write(LogLevel::info, "first");
  EXPECT_EQ(_files.add(open("two")), 0);
  _files.write(LogLevel::info, "second");

  EXPECT_EQ(_folder.content("one"),
            line("Mar  9 14:05:07", "<Info>: first") + line("Mar  9 14:05:07", "<Info>: second"));
  EXPECT_EQ(_folder.content("two"), line("Mar  9 14:05:07", "<Info>: second"));
}

TEST_F(LogFilesTest, ARemovedFileGetsNothingMoreAndStaysOpen) {
  proves("LOG-9");
  const int one = open("one");
  const int two = open("two");
  EXPECT_EQ(_files.add(one), 0);
  EXPECT_EQ(_files.add(two), 0);

  _files.remove(one);
  _files.write(LogLevel::info, "text");

  EXPECT_EQ(_folder.content("one"), "");
  EXPECT_NE(_folder.content("two"), "");
  EXPECT_GE(fcntl(one, F_GETFD), 0);
}

TEST_F(LogFilesTest, RemovingWhatWasNeverAddedChangesNothing) {
  EXPECT_EQ(_files.add(open("log")), 0);

  _files.remove(12345);
  _files.write(LogLevel::info, "text");

  EXPECT_EQ(_folder.content("log"), line("Mar  9 14:05:07", "<Info>: text"));
}

TEST_F(LogFilesTest, AFileAddedTwiceGetsEachLineOnce) {
  proves("LOG-4");
  const int file = open("log");

  EXPECT_EQ(_files.add(file), 0);
  EXPECT_EQ(_files.add(file), 0);
  _files.write(LogLevel::info, "text");

  EXPECT_EQ(_folder.content("log"), line("Mar  9 14:05:07", "<Info>: text"));
}

TEST_F(LogFilesTest, AClosedDescriptorIsRefused) {
  EXPECT_EQ(_files.add(12345), -1);
  EXPECT_EQ(_files.add(-1), -1);
}

TEST_F(LogFilesTest, AFileThatCannotBeWrittenLosesItsLinesOnly) {
  proves("LOG-4");
  open("readable");
  EXPECT_EQ(_files.add(open("readable", O_RDONLY)), 0);
  EXPECT_EQ(_files.add(open("full", O_WRONLY | O_CREAT)), 0);
  ASSERT_EQ(_files.add(pipeWithoutReader()), 0);
  EXPECT_EQ(_files.add(open("log")), 0);

  _files.write(LogLevel::info, "text");

  EXPECT_EQ(_folder.content("log"), line("Mar  9 14:05:07", "<Info>: text"));
}

// A pair of datagram sockets keeps writes apart: a second write of a line would be a second
// message.
TEST_F(LogFilesTest, ALineIsOneWrite) {
  proves("LOG-4");
  int ends[2] = {-1, -1};
  ASSERT_EQ(socketpair(AF_UNIX, SOCK_DGRAM, 0, ends), 0);
  EXPECT_EQ(_files.add(ends[1]), 0);

  _files.write(LogLevel::notice, "a long enough text");
  char message[512] = {};
  const ssize_t length = read(ends[0], message, sizeof message);
  close(ends[0]);
  close(ends[1]);

  EXPECT_EQ(std::string(message, static_cast<std::size_t>(length)),
            line("Mar  9 14:05:07", "<Notice>: a long enough text"));
}

void passOver(int) {}

// In a process of its own: lets the writer block, interrupts it, and only then makes room. Answers
// the process's number; what it read is in `file` when it has ended.
pid_t interruptThenRead(int readEnd, int writeEnd, const std::string& file) {
  const pid_t reader = fork();
  if (reader != 0) return reader;
  close(writeEnd);
  for (int times = 0; times < 20; ++times) {
    kill(getppid(), SIGUSR1);
    usleep(1000);
  }
  const int copy = ::open(file.c_str(), O_WRONLY | O_CREAT, 0600);
  char bytes[4096];
  for (ssize_t count; (count = read(readEnd, bytes, sizeof bytes)) > 0;)
    if (write(copy, bytes, static_cast<std::size_t>(count)) < 0) break;
  _exit(0);
}

void fill(int pipe) {
  const std::string block(4096, 'x');
  fcntl(pipe, F_SETFL, O_NONBLOCK);
  while (write(pipe, block.data(), block.size()) > 0) {
  }
  fcntl(pipe, F_SETFL, 0);
}

TEST_F(LogFilesTest, ASignalLosesNoLine) {
  proves("LOG-4");
  struct sigaction action {};
  struct sigaction previous {};
  action.sa_handler = passOver;  // without SA_RESTART: a blocked write is cut short
  sigaction(SIGUSR1, &action, &previous);
  int ends[2] = {-1, -1};
  ASSERT_EQ(pipe(ends), 0);
  fill(ends[1]);
  EXPECT_EQ(_files.add(ends[1]), 0);

  const pid_t reader = interruptThenRead(ends[0], ends[1], _folder.path("read"));
  _files.write(LogLevel::info, "text");
  close(ends[0]);
  close(ends[1]);
  while (waitpid(reader, nullptr, 0) < 0 && errno == EINTR) {
  }
  sigaction(SIGUSR1, &previous, nullptr);

  EXPECT_THAT(_folder.content("read"),
              ::testing::EndsWith(line("Mar  9 14:05:07", "<Info>: text")));
}

class HostNameTest : public LogFilesTest {
 protected:
  ~HostNameTest() override { systemName = "quill.example"; }

  // The host as a line tells it.
  std::string hostToldFor(const std::optional<std::string>& name) {
    systemName = name;
    LogFiles files(_clock);
    EXPECT_EQ(files.add(open("log", O_WRONLY | O_CREAT | O_TRUNC)), 0);
    files.write(LogLevel::info, "text");
    const std::string line = _folder.content("log").substr(std::string("Mar  9 14:05:07 ").size());
    return line.substr(0, line.find(' '));
  }
};

TEST_F(HostNameTest, IsTheSystemsOwn) {
  proves("LOG-1");
  EXPECT_EQ(hostToldFor("q"), "q");
  EXPECT_EQ(hostToldFor(std::string(255, 'q')), std::string(255, 'q'));
  EXPECT_EQ(spaceForName, 255U) << "a zero must follow";
}

TEST_F(HostNameTest, IsLocalhostWhenTheSystemHasNone) {
  EXPECT_EQ(hostToldFor(""), "localhost");
  EXPECT_EQ(hostToldFor(std::nullopt), "localhost");
}

}  // namespace
}  // namespace installer::test
