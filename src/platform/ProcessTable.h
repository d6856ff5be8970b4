#pragma once

#include <sys/types.h>

#include <string>
#include <string_view>
#include <vector>

namespace installer {

// The running processes, this one among them.
class ProcessTable {
 public:
  ProcessTable() = default;
  ProcessTable(const ProcessTable&) = delete;
  ProcessTable& operator=(const ProcessTable&) = delete;
  virtual ~ProcessTable() = default;

  // One value for each process that has one, in the order of the process list; empty for a key that
  // is none of processKey's. No consistent snapshot: processes that end meanwhile are left out, and
  // so are those that this process may not look at.
  virtual std::vector<std::string> valuesForKey(std::string_view key) = 0;

  // Whether there are none that it may not look at. Tells nothing of it when it cannot be found
  // out.
  virtual bool seesAll() = 0;

  // The command line of each process whose effective user this is, the name of the program first;
  // what lies behind the first 64 KiB of one is left out. As above no snapshot.
  virtual std::vector<std::vector<std::string>> commandLines(uid_t user) = 0;

  // `path` in the form in which the table tells executable paths: with links resolved where the
  // system resolves them, unchanged where it does not or nothing is there. A slash at the end
  // stays.
  virtual std::string asReported(const std::string& path) = 0;
};

}  // namespace installer
