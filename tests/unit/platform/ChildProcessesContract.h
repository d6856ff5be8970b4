#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/ChildProcesses.h"

namespace installer::test {

// One implementation with the means to play its children.
class ChildProcessesSubject {
 public:
  virtual ~ChildProcessesSubject() = default;
  virtual ChildProcesses& children() = 0;
  virtual std::string executable() = 0;
  virtual void letItPrint(const std::string& line) = 0;
  virtual std::vector<std::vector<std::string>> startedWith() = 0;
};

struct ChildProcessesKind {
  std::string name;
  std::function<std::unique_ptr<ChildProcessesSubject>()> make;
};

class ChildProcessesContractTest : public ::testing::TestWithParam<ChildProcessesKind> {
 protected:
  std::unique_ptr<ChildProcessesSubject> _subject = GetParam().make();
};

}  // namespace installer::test
