#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>

#include "ctl/Surroundings.h"
#include "ctl/install/KeptRuns.h"
#include "ctl/install/Progress.h"
#include "ctl/install/Result.h"
#include "ctl/install/Supervisor.h"
#include "ctl/plan/Plan.h"

namespace installer::ctl::install {

struct Settings {
  PlanRequest request;
  std::optional<std::string> installer;  // nullopt for the one that belongs to this program
  bool lint = false;
  Progress::Form progress = Progress::Form::none;
  TimeLimits limits;
  std::chrono::seconds wait{0};
  Retention retention;
};

// One installation with all that is kept of it.
class Installation {
 public:
  // What the progress needs goes to `out`.
  Installation(const Settings& settings, Output& out, std::size_t columns)
      : _settings(settings), _out(out), _columns(columns) {}

  // Comes back when it is over, with everything kept. A refusal has been told by a line.
  Result run();

 private:
  bool mayBegin();
  bool hasPackage();
  bool passesLint();
  bool takeTurn(const std::string& folder);
  void install();
  bool begin(Plan& plan);
  bool keep(const char* name, std::string_view text);
  void work(Plan& plan);
  bool keepBeginning();
  void watch(WatchedChild& child, std::size_t phases);
  void conclude(const WatchedEnd& end);
  bool refuse(const Outcome& outcome, std::string reason);

  const Settings& _settings;
  Output& _out;
  const std::size_t _columns;
  std::string _program;
  std::unique_ptr<KeptRuns> _runs;
  Result _result;
};

}  // namespace installer::ctl::install
