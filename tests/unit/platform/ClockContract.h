#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>

#include "platform/Clock.h"

namespace installer::test {

struct ClockKind {
  std::string name;
  std::function<std::unique_ptr<Clock>()> make;
};

class ClockContractTest : public ::testing::TestWithParam<ClockKind> {
 protected:
  std::unique_ptr<Clock> _clock = GetParam().make();
};

}  // namespace installer::test
