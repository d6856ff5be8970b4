#pragma once

#include <map>
#include <string>
#include <vector>

#include "platform/ProcessTable.h"

namespace installer::test {

// Runs what the test adds, in that order.
class FakeProcessTable : public ProcessTable {
 public:
  void add(const std::string& executable) { _executables.push_back(executable); }
  void clear() { _executables.clear(); }
  // From now on the table tells `path` as `reported`.
  void report(const std::string& path, const std::string& reported) { _reported[path] = reported; }

  std::vector<std::string> valuesForKey(std::string_view key) override;
  std::string asReported(const std::string& path) override;

 private:
  std::vector<std::string> _executables;
  std::map<std::string, std::string> _reported;
};

}  // namespace installer::test
