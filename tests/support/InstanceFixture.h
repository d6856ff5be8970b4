#pragma once

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "hotfix/base/PropertyList.h"
#include "support/Sandbox.h"

namespace installer::test {

// A sandbox with one installed instance, Quillmere.app in Applications, whose launcher succeeds.
class InstanceFixture : public ::testing::Test {
 protected:
  InstanceFixture();

  // Paths relative to the sandbox, for its helpers.
  static constexpr const char* kBundle = "Applications/Quillmere.app";
  static constexpr const char* kHome = "Applications/Quillmere.app/Contents/MacOS/rcp";
  static std::string inHome(const std::string& relative) {
    return std::string(kHome) + "/" + relative;
  }

  // The same as whole paths, for the code.
  std::string home() const { return _sandbox.path(kHome); }
  std::string homePath(const std::string& relative) const {
    return _sandbox.path(inHome(relative));
  }
  std::string launcher() const { return homePath("rcplauncher"); }

  // What every further start of the launcher leaves in its result file; "" leaves none.
  void launcherAnswers(const std::string& resultText) { _result = resultText; }

  void writeInfo(const PropertyList::Dictionary& entries) {
    _sandbox.writePlist(inHome("installInfo.plist"), entries);
  }
  PropertyList::Dictionary info() const { return _sandbox.readPlist(inHome("installInfo.plist")); }

  // Texts of the captured log so far at one level, in order.
  std::vector<std::string> linesAt(LogLevel level) const;
  // All texts, each with its level's number before it: "6 Success".
  std::vector<std::string> numberedLines() const;

  Sandbox _sandbox;

 private:
  std::string _result = "rc=0\n";
};

}  // namespace installer::test
