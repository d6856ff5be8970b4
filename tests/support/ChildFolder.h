#pragma once

#include <string>
#include <vector>

#include "support/ChildScript.h"

namespace installer::test {

// The program that plays the children, children/RecordedChild.cpp.
std::string recordedChild();

// The folder in which played children find their scripts and leave their records. A child's role is
// the name of the file that was started.
class ChildFolder {
 public:
  static constexpr const char* kVariable = "HOTFIX_CHILD_FOLDER";  // tells a child of it

  // Makes what children need in the folder, for children of any user.
  explicit ChildFolder(std::string path);

  // What each start of the role does, unless that start has a script of its own.
  void script(const std::string& role, const std::string& text) const;
  void script(const std::string& role, int start, const std::string& text) const;

  // In the order of the starts.
  std::vector<ChildRecord> records() const;
  std::vector<ChildRecord> records(const std::string& role) const;
  void forget() const;

 private:
  std::vector<std::string> recordFiles() const;

  std::string _path;
};

}  // namespace installer::test
