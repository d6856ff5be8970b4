#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>

#include "platform/Preferences.h"
#include "support/Sandbox.h"

namespace installer::test {

// One implementation with the means to store what the user prefers.
class PreferencesSubject {
 public:
  virtual ~PreferencesSubject() = default;
  virtual Preferences& preferences() = 0;
  virtual void store(const std::string& domain, const PropertyList::Dictionary& values) = 0;
};

struct PreferencesKind {
  std::string name;
  std::function<std::unique_ptr<PreferencesSubject>()> make;
};

class PreferencesContractTest : public ::testing::TestWithParam<PreferencesKind> {
 protected:
  std::unique_ptr<PreferencesSubject> _subject = GetParam().make();
  Preferences& _preferences = _subject->preferences();
};

}  // namespace installer::test
