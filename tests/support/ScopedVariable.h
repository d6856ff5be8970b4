#pragma once

#include <stdlib.h>

#include <optional>
#include <string>

namespace installer::test {

// A variable of this process's environment, set (or unset, for nullopt) and put back at the end.
class ScopedVariable {
 public:
  ScopedVariable(std::string name, const std::optional<std::string>& value)
      : _name(std::move(name)), _previous(get(_name)) {
    put(_name, value);
  }
  ScopedVariable(const ScopedVariable&) = delete;
  ScopedVariable& operator=(const ScopedVariable&) = delete;
  ~ScopedVariable() { put(_name, _previous); }

 private:
  static std::optional<std::string> get(const std::string& name) {
    const char* value = getenv(name.c_str());
    return value != nullptr ? std::optional<std::string>(value) : std::nullopt;
  }
  static void put(const std::string& name, const std::optional<std::string>& value) {
    if (value)
      setenv(name.c_str(), value->c_str(), 1);
    else
      unsetenv(name.c_str());
  }

  const std::string _name;
  const std::optional<std::string> _previous;
};

}  // namespace installer::test
