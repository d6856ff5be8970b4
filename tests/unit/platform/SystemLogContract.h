#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <functional>
#include <memory>
#include <string>

#include "platform/SystemLog.h"
#include "support/FakeClock.h"
#include "support/TemporaryFolder.h"

namespace installer::test {

struct SystemLogKind {
  std::string name;
  std::function<std::unique_ptr<SystemLog>(Clock&)> make;
};

class SystemLogContractTest : public ::testing::TestWithParam<SystemLogKind> {
 protected:
  ~SystemLogContractTest() override { close(_file); }

  TemporaryFolder _folder;
  FakeClock _clock;
  std::unique_ptr<SystemLog> _log = GetParam().make(_clock);
  const int _file = open(_folder.path("log").c_str(), O_WRONLY | O_CREAT, 0600);
};

}  // namespace installer::test
