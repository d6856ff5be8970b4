#include "faults/Sweep.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>

#include "faults/Judgement.h"
#include "faults/Points.h"
#include "faults/SweepState.h"
#include "faults/Table.h"

namespace installer::faults {

namespace {

using Clock = std::chrono::steady_clock;

double secondsSince(Clock::time_point start) {
  return std::chrono::duration<double>(Clock::now() - start).count();
}

void print(const std::string& line) {
  std::fputs((line + "\n").c_str(), stdout);
  std::fflush(stdout);
}

bool isAsked(const std::vector<std::string>& names, const std::string& name) {
  return names.empty() || std::any_of(names.begin(), names.end(), [&](const std::string& asked) {
           return name == asked || name.starts_with(asked + "-");
         });
}

// One line, whatever files hold.
std::string lineOf(const std::string& point, const Violation& violation, const std::string& call) {
  std::string line =
      fmt::format("VIOLATION {} [{}] {} -- at {}", point, violation.rule, violation.text, call);
  std::replace(line.begin(), line.end(), '\n', ' ');
  return line;
}

std::vector<std::string> linesOf(const std::string& point, const Outcome& outcome) {
  std::vector<std::string> lines;
  for (const Violation& violation : outcome.violations)
    lines.push_back(lineOf(point, violation, outcome.call));
  return lines;
}

void printAll(const std::vector<std::string>& lines) {
  for (const std::string& line : lines) print(line);
}

class Sweep {
 public:
  Sweep(const Runner& runner, const Options& options)
      : _runner(runner), _options(options), _state(options.state) {}

  int run() {
    for (const Scenario& scenario : scenarios())
      if (isAsked(_options.scenarios, scenario.name)) sweepScenario(scenario);
    if (_table.empty()) return 2;
    print(_table.text());
    for (const std::string& rule : _options.without) print("not judged: " + rule);
    return _table.violations() == 0 ? 0 : 1;
  }

 private:
  void sweepScenario(const Scenario& scenario) {
    Learned learned;
    learnScenario(scenario, learned);
    if (_options.verbose) printCalls(learned);
    for (const Kind& kind : kinds())
      if (isAsked(_options.kinds, kind.name)) sweepKind(scenario, learned, kind);
  }

  void learnScenario(const Scenario& scenario, Learned& learned) {
    const auto start = Clock::now();
    Outcome outcome{judged(learn(_runner, scenario, learned)), "no call"};
    printAll(linesOf(scenario.name + " undisturbed", outcome));
    _table.addScenario(scenario.name, learned.calls.size());
    _table.add(
        scenario.name, "undisturbed",
        {.points = 1, .violations = outcome.violations.size(), .seconds = secondsSince(start)});
  }

  // Without what breaks rules that are not asked for.
  std::vector<Violation> judged(std::vector<Violation> violations) const {
    std::erase_if(violations, [&](const Violation& violation) {
      const auto& rules = _options.without;
      return std::find(rules.begin(), rules.end(), violation.rule) != rules.end();
    });
    return violations;
  }

  void sweepKind(const Scenario& scenario, const Learned& learned, const Kind& kind) {
    if (const auto reason = kind.refused ? kind.refused(_runner) : std::nullopt)
      return print(fmt::format("skipped: {} {}: {}", scenario.name, kind.name, *reason));
    const std::vector<long> points = pointsOf(kind, scenario, learned, _options);
    Tally all;
    for (const long point : points) {
      all += sweepPoint(scenario, learned, kind, point);
      showProgress(scenario.name + " " + kind.name, all, points.size());
    }
    if (all.points > 0) _table.add(scenario.name, kind.name, all);
  }

  Tally sweepPoint(const Scenario& scenario, const Learned& learned, const Kind& kind, long point) {
    const std::string name = fmt::format("{} {}:{}", scenario.name, kind.name, point);
    if (const auto known = _state.known(name)) {
      printAll(known->violations);
      return known->tally;
    }
    const auto start = Clock::now();
    Outcome outcome = tryPoint(_runner, scenario, learned, kind, point);
    outcome.violations = judged(std::move(outcome.violations));
    const Swept swept{{1, outcome.violations.size(), outcome.exchanges, secondsSince(start)},
                      linesOf(name, outcome)};
    printAll(swept.violations);
    if (_options.verbose) print(name + " -- at " + outcome.call + "\n" + outcome.trace);
    _state.add(name, swept);
    return swept.tally;
  }

  static void printCalls(const Learned& learned) {
    std::size_t number = 0;
    for (const LoggedCall& call : learned.calls)
      print(fmt::format("{:5} {} {}", ++number,
                        call.effect == Effect::changing ? "changing" : "looking ", call.text));
  }

  // In place on a terminal, else nothing: the table tells it all. One of several processes will do.
  void showProgress(const std::string& name, const Tally& all, std::size_t points) const {
    if (isatty(STDERR_FILENO) == 0 || _options.part > 1) return;
    std::fprintf(stderr, "\r%s %zu/%zu, %zu violations \033[K", name.c_str(), all.points, points,
                 all.violations);
    if (all.points == points) std::fputs("\r\033[K", stderr);
  }

  const Runner& _runner;
  const Options& _options;
  SweepState _state;
  Table _table;
};

}  // namespace

int sweep(const Runner& runner, const Options& options) {
  return Sweep(runner, options).run();
}

}  // namespace installer::faults
