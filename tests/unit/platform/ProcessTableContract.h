#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>

#include "platform/ProcessTable.h"

namespace installer::test {

// One implementation, and the executable of a process that it has to tell.
struct ProcessTableKind {
  std::string name;
  std::function<std::string()> running;
  std::function<std::unique_ptr<ProcessTable>()> make;
};

class ProcessTableContractTest : public ::testing::TestWithParam<ProcessTableKind> {
 protected:
  const std::string _self = GetParam().running();
  std::unique_ptr<ProcessTable> _table = GetParam().make();
};

}  // namespace installer::test
