#include "support/TemporaryFolder.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>

namespace installer::test {

namespace fs = std::filesystem;

namespace {

void require(bool succeeded, const std::string& what) {
  if (succeeded) return;
  std::fprintf(stderr, "test fixture: %s: %s\n", what.c_str(), std::strerror(errno));
  std::abort();
}

std::string systemFolder() {
  const char* folder = std::getenv("TMPDIR");
  return folder != nullptr && *folder != '\0' ? folder : "/tmp";
}

}  // namespace

std::string memoryFolder() {
  const std::string folder = "/dev/shm";
  return ::access(folder.c_str(), W_OK | X_OK) == 0 ? folder : systemFolder();
}

TemporaryFolder::TemporaryFolder() : TemporaryFolder(systemFolder()) {}

TemporaryFolder::TemporaryFolder(const std::string& parent)
    : _path(parent + "/hotfix-test-XXXXXX") {
  require(::mkdtemp(_path.data()) != nullptr, _path);
  // Others have to get in when a test becomes one of them.
  require(::chmod(_path.c_str(), 0755) == 0, _path);
  _path = fs::canonical(_path).string();
}

TemporaryFolder::~TemporaryFolder() {
  removeTree(_path);
}

std::string TemporaryFolder::path(std::string_view relative) const {
  return relative.empty() ? _path : _path + "/" + std::string(relative);
}

std::string TemporaryFolder::makeFolder(std::string_view relative, mode_t mode) const {
  const std::string folder = path(relative);
  fs::create_directories(folder);
  require(::chmod(folder.c_str(), mode) == 0, folder);
  return folder;
}

std::string TemporaryFolder::makeFile(std::string_view relative, std::string_view bytes,
                                      mode_t mode) const {
  const std::string file = path(relative);
  fs::create_directories(fs::path(file).parent_path());
  std::ofstream stream(file, std::ios::binary | std::ios::trunc);
  stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  stream.close();
  require(!stream.fail(), file);
  require(::chmod(file.c_str(), mode) == 0, file);
  return file;
}

std::string TemporaryFolder::makeLink(std::string_view relative, std::string_view target) const {
  const std::string link = path(relative);
  fs::create_directories(fs::path(link).parent_path());
  require(::symlink(std::string(target).c_str(), link.c_str()) == 0, link);
  return link;
}

std::string TemporaryFolder::makePipe(std::string_view relative) const {
  const std::string pipe = path(relative);
  fs::create_directories(fs::path(pipe).parent_path());
  require(::mkfifo(pipe.c_str(), 0644) == 0, pipe);
  return pipe;
}

std::string TemporaryFolder::makeSocket(std::string_view relative) const {
  const std::string place = path(relative);
  fs::create_directories(fs::path(place).parent_path());
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  require(place.size() < sizeof address.sun_path, place);
  place.copy(address.sun_path, place.size());
  const int number = ::socket(AF_UNIX, SOCK_STREAM, 0);
  require(::bind(number, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0, place);
  ::close(number);
  return place;
}

std::string TemporaryFolder::makeHardLink(std::string_view relative,
                                          std::string_view existing) const {
  const std::string link = path(relative);
  require(::link(path(existing).c_str(), link.c_str()) == 0, link);
  return link;
}

std::string TemporaryFolder::content(std::string_view relative) const {
  std::ifstream stream(path(relative), std::ios::binary);
  require(stream.is_open(), path(relative));
  return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

void removeTree(const std::string& path) {
  // The system's own tool copes with any depth; modes that bar an ordinary user are lifted first.
  const std::string name = "'" + path + "'";
  std::string command = "rm -rf -- " + name;
  if (::geteuid() != 0) command = "chmod -R u+rwX -- " + name + " 2>/dev/null; " + command;
  if (std::system(command.c_str()) != 0) std::fprintf(stderr, "left behind: %s\n", path.c_str());
}

}  // namespace installer::test
