#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/UserContext.h"

namespace installer::test {

// The variable that the suite sets and unsets.
inline constexpr const char* kContractVariable = "HOTFIX_TEST_VARIABLE";

// One implementation with the means to set a variable, and what it has to tell of root.
class UserContextSubject {
 public:
  virtual ~UserContextSubject() = default;
  virtual UserContext& users() = 0;
  virtual std::string homeOfRoot() = 0;
  virtual std::string groupOfRoot() = 0;
  virtual void setVariable(const std::optional<std::string>& value) = 0;
};

struct UserContextKind {
  std::string name;
  std::function<std::unique_ptr<UserContextSubject>()> make;
};

class UserContextContractTest : public ::testing::TestWithParam<UserContextKind> {
 protected:
  std::unique_ptr<UserContextSubject> _subject = GetParam().make();
  UserContext& _users = _subject->users();
};

}  // namespace installer::test
