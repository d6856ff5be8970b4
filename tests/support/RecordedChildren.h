#pragma once

#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "platform/ChildProcesses.h"

namespace installer::test {

// Starts nothing: records what would have been started and lets the test play the child.
class RecordedChildren : public ChildProcesses {
 public:
  // What the child does, called in start().
  void onStart(std::function<void(const Command&)> script) { _script = std::move(script); }
  // start() of this executable answers nullopt with the reason "No such file or directory".
  void failToStart(const std::string& executable) { _missing.insert(executable); }
  // firstLine() of this executable answers this line; it answers nullopt for every other one.
  void print(const std::string& executable, const std::string& line) { _lines[executable] = line; }
  void printNothing(const std::string& executable) { _lines.erase(executable); }
  // Every further child of this executable is ended by the signal, told so.
  void endBySignal(const std::string& executable, const std::string& signal) {
    _signals[executable] = signal;
  }
  void setShellStatus(int status) { _shellStatus = status; }

  // Every call of start(), successful or not, in order.
  const std::vector<Command>& started() const { return _started; }
  // Every call of firstLine(), in order.
  const std::vector<Command>& asked() const { return _asked; }
  const std::vector<std::string>& shellLines() const { return _shellLines; }
  // Children that nobody has waited for.
  std::size_t running() const { return _running.size(); }

  std::optional<int> start(const Command& command, std::string* reason) override;
  std::optional<std::string> wait(int child) override;
  std::optional<std::string> firstLine(const Command& command) override;
  int shell(const std::string& commandLine) override;

 private:
  std::function<void(const Command&)> _script;
  std::set<std::string> _missing;
  std::map<std::string, std::string> _lines;
  std::map<std::string, std::string> _signals;
  int _shellStatus = 0;

  std::vector<Command> _started;
  std::vector<Command> _asked;
  std::vector<std::string> _shellLines;
  std::map<int, std::string> _running;  // child -> executable
};

// How a failed comparison shows a command.
void PrintTo(const Command& command, std::ostream* stream);

}  // namespace installer::test

namespace installer {
using test::PrintTo;
}
