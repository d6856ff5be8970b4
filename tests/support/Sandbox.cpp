#include "support/Sandbox.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "support/ListText.h"

namespace installer::test {

namespace fs = std::filesystem;

Sandbox::Sandbox() {
  for (const char* folder : {"tmp", "Library", "Applications"}) makeFolder(folder);
  addUser();
}

Platform Sandbox::services() {
  Platform platform;
  platform.files = &_files;
  platform.children = &_children;
  platform.processes = &_processes;
  platform.pasteboard = &_pasteboard;
  platform.log = &_log;
  platform.preferences = &_preferences;
  platform.users = &_users;
  platform.clock = &_clock;
  platform.paths = pathsBelowRoot();
  return platform;
}

FixedPaths Sandbox::pathsBelowRoot() const {
  FixedPaths paths;
  FixedPaths::each(paths, [&](const char*, std::string& path) { path.insert(0, root()); });
  return paths;
}

void Sandbox::addUser() {
  const std::string home = makeFolder("Users/tester");
  _users.effectiveUser = geteuid();
  _users.userList = {{.name = "tester", .uid = geteuid(), .gid = getegid(), .home = home}};
  _users.groups = {{"admin", getegid()}};
  _users.variables = {{"USER", "tester"}, {"HOME", home}};
}

std::string Sandbox::relativePath(std::string_view name) const {
  if (name == root()) return "";
  if (name.starts_with(root() + "/")) name.remove_prefix(root().size());
  if (name.starts_with('/')) name.remove_prefix(1);
  return std::string(name);
}

std::string Sandbox::path(std::string_view relative) const {
  return TemporaryFolder::path(relativePath(relative));
}

std::string Sandbox::makeFolder(std::string_view relative, mode_t mode) const {
  return TemporaryFolder::makeFolder(relativePath(relative), mode);
}

std::string Sandbox::write(std::string_view relative, std::string_view text, mode_t mode) const {
  return makeFile(relativePath(relative), text, mode);
}

std::string Sandbox::writePlist(std::string_view relative,
                                const PropertyList::Dictionary& dictionary) const {
  return write(relative, PropertyList::serialize(dictionary).value());
}

std::string Sandbox::makeLink(std::string_view relative, std::string_view target) const {
  return TemporaryFolder::makeLink(relativePath(relative), target);
}

std::string Sandbox::makePipe(std::string_view relative) const {
  return TemporaryFolder::makePipe(relativePath(relative));
}

std::string Sandbox::read(std::string_view relative) const {
  std::ifstream stream(path(relative), std::ios::binary);
  EXPECT_TRUE(stream.is_open()) << "cannot read " << path(relative);
  return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

PropertyList::Dictionary Sandbox::readPlist(std::string_view relative) const {
  const std::optional<ListValue> list = readXmlList(read(relative));
  const bool isDictionary = list && list->kind == "dict";
  EXPECT_TRUE(isDictionary) << "no property list: " << path(relative);
  if (!isDictionary) return {};
  return *propertyListOf(*list).as<PropertyList::Dictionary>();
}

bool Sandbox::exists(std::string_view relative) const {
  return fs::exists(fs::symlink_status(path(relative)));
}

mode_t Sandbox::mode(std::string_view relative) const {
  struct stat status {};
  EXPECT_EQ(lstat(path(relative).c_str(), &status), 0) << "nothing at " << path(relative);
  return status.st_mode & 07777U;
}

std::string Sandbox::linkTarget(std::string_view relative) const {
  return fs::read_symlink(path(relative)).string();
}

void Sandbox::remove(std::string_view relative) const {
  fs::remove_all(path(relative));
}

}  // namespace installer::test
