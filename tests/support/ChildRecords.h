#pragma once

#include <string>
#include <vector>

namespace installer::test {

// How a child that child-helper played was started.
struct ChildRecord {
  std::string name;  // of the file that was started
  std::string executable;
  std::vector<std::string> arguments;
  std::string directory;                 // working folder
  std::vector<std::string> descriptors;  // "1 /dev/null"
  std::vector<std::string> blocked;      // signal numbers
  std::vector<std::string> ignored;      // signal numbers
  std::vector<std::string> environment;  // "NAME=value"
  std::string user;                      // effective user id
  std::string mask;                      // creation mask, octal
};

// The program that plays the children.
std::string childHelper();

// The records in the folder, in the order of the starts.
std::vector<ChildRecord> childRecords(const std::string& folder);

}  // namespace installer::test
