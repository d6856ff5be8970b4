#pragma once

#include <unistd.h>

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "platform/ProcessTable.h"

namespace installer::test {

// Runs what the test adds, in that order.
class FakeProcessTable : public ProcessTable {
 public:
  bool isOpen = true;  // what seesAll() answers

  void add(const std::string& executable) { _executables.push_back(executable); }
  // Under its command line alone, as one of that user's.
  void addCommandLine(const std::vector<std::string>& line, uid_t user = geteuid()) {
    _commandLines.emplace_back(user, line);
  }
  void clear() {
    _executables.clear();
    _commandLines.clear();
  }
  // From now on the table tells `path` as `reported`.
  void report(const std::string& path, const std::string& reported) { _reported[path] = reported; }

  std::vector<std::string> valuesForKey(std::string_view key) override;
  bool seesAll() override { return isOpen; }
  std::vector<std::vector<std::string>> commandLines(uid_t user) override;
  std::string asReported(const std::string& path) override;

 private:
  std::vector<std::string> _executables;
  std::vector<std::pair<uid_t, std::vector<std::string>>> _commandLines;
  std::map<std::string, std::string> _reported;
};

}  // namespace installer::test
