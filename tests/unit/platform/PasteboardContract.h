#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>

#include "platform/Pasteboard.h"
#include "support/Sandbox.h"

namespace installer::test {

struct PasteboardKind {
  std::string name;
  std::function<std::unique_ptr<Pasteboard>(Sandbox& machine)> make;
};

class PasteboardContractTest : public ::testing::TestWithParam<PasteboardKind> {
 protected:
  Sandbox _machine;
  std::unique_ptr<Pasteboard> _pasteboard = GetParam().make(_machine);
};

}  // namespace installer::test
