#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/posix/PosixProcessTable.h"

namespace installer {

// The process table as the kernel tells it in a folder with one folder a process, whose link "exe"
// leads to the executable. Processes that have none (the kernel's own) or do not let this user look
// are left out, for root with one error line for all of them; any other failure is an error line.
class ProcProcessTable : public PosixProcessTable {
 public:
  explicit ProcProcessTable(std::string folder = "/proc") : _folder(std::move(folder)) {}

  bool seesAll() override;
  std::vector<std::vector<std::string>> commandLines(uid_t user) override;

 private:
  std::vector<std::string> executables() const override;
  std::optional<std::string> executableOf(int table, const std::string& process,
                                          bool& isRefusalTold) const;
  std::string_view commandLineOf(int table, const std::string& process,
                                 std::vector<char>& space) const;
  // Calls visit(the open folder, name) for each process.
  template <class Visit>
  void eachProcess(Visit visit) const;

  const std::string _folder;
};

}  // namespace installer
