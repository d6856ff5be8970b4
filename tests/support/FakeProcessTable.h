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
  // Under its command line alone.
  void addCommandLine(const std::vector<std::string>& line) { _commandLines.push_back(line); }
  void clear() {
    _executables.clear();
    _commandLines.clear();
  }
  // From now on the table tells `path` as `reported`.
  void report(const std::string& path, const std::string& reported) { _reported[path] = reported; }

  std::vector<std::string> valuesForKey(std::string_view key) override;
  std::vector<std::vector<std::string>> commandLines() override { return _commandLines; }
  std::string asReported(const std::string& path) override;

 private:
  std::vector<std::string> _executables;
  std::vector<std::vector<std::string>> _commandLines;
  std::map<std::string, std::string> _reported;
};

}  // namespace installer::test
