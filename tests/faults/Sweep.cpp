#include "faults/Sweep.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>

#include "faults/Judgement.h"
#include "faults/Points.h"
#include "faults/SweepState.h"

namespace installer::faults {

namespace {

using Clock = std::chrono::steady_clock;

// One line of the table at the end.
struct Row {
  std::string scenario;
  std::string kind;
  std::size_t calls = 0;
  std::size_t points = 0;
  std::size_t violations = 0;
  double seconds = 0;
};

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

void printViolations(const std::string& point, const Outcome& outcome) {
  for (const Violation& violation : outcome.violations)
    print(fmt::format("VIOLATION {} [{}] {} -- at {}", point, violation.rule, violation.text,
                      outcome.call));
}

class Sweep {
 public:
  Sweep(const Runner& runner, const Options& options)
      : _runner(runner), _options(options), _state(options.state) {}

  int run() {
    for (const Scenario& scenario : scenarios())
      if (isAsked(_options.scenarios, scenario.name)) sweepScenario(scenario);
    printTable();
    for (const std::string& rule : _options.without) print("not judged: " + rule);
    if (_rows.empty()) return 2;
    return std::all_of(_rows.begin(), _rows.end(),
                       [](const Row& row) { return row.violations == 0; })
               ? 0
               : 1;
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
    printViolations(scenario.name + " undisturbed", outcome);
    _rows.push_back({scenario.name, "undisturbed", learned.calls.size(), 1,
                     outcome.violations.size(), secondsSince(start)});
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
    Row row{scenario.name, kind.name, learned.calls.size()};
    const auto start = Clock::now();
    if (const auto reason = kind.refused ? kind.refused(_runner) : std::nullopt)
      return print(fmt::format("skipped: {} {}: {}", scenario.name, kind.name, *reason));
    const std::vector<long> points = pointsOf(kind, scenario, learned, _options);
    for (const long point : points) {
      row.violations += sweepPoint(scenario, learned, kind, point);
      ++row.points;
      showProgress(row, points.size());
    }
    row.seconds = secondsSince(start);
    _rows.push_back(row);
  }

  std::size_t sweepPoint(const Scenario& scenario, const Learned& learned, const Kind& kind,
                         long point) {
    const std::string name = fmt::format("{} {}:{}", scenario.name, kind.name, point);
    if (const auto known = _state.known(name)) return *known;
    Outcome outcome = tryPoint(_runner, scenario, learned, kind, point);
    outcome.violations = judged(std::move(outcome.violations));
    printViolations(name, outcome);
    if (_options.verbose) print(name + " -- at " + outcome.call);
    _state.add(name, outcome.violations.size());
    return outcome.violations.size();
  }

  static void printCalls(const Learned& learned) {
    std::size_t number = 0;
    for (const LoggedCall& call : learned.calls)
      print(fmt::format("{:5} {} {}", ++number,
                        call.effect == Effect::changing ? "changing" : "looking ", call.text));
  }

  // In place on a terminal, else nothing: the table tells it all.
  static void showProgress(const Row& row, std::size_t points) {
    if (isatty(STDERR_FILENO) == 0) return;
    std::fprintf(stderr, "\r%s %s %zu/%zu, %zu violations \033[K", row.scenario.c_str(),
                 row.kind.c_str(), row.points, points, row.violations);
    if (row.points == points) std::fputs("\r\033[K", stderr);
  }

  void printTable() const {
    print(fmt::format("{:<16} {:<12} {:>6} {:>7} {:>10} {:>8}", "scenario", "kind", "calls",
                      "points", "violations", "seconds"));
    for (const Row& row : _rows)
      print(fmt::format("{:<16} {:<12} {:>6} {:>7} {:>10} {:>8.1f}", row.scenario, row.kind,
                        row.calls, row.points, row.violations, row.seconds));
  }

  const Runner& _runner;
  const Options& _options;
  SweepState _state;
  std::vector<Row> _rows;
};

}  // namespace

int sweep(const Runner& runner, const Options& options) {
  return Sweep(runner, options).run();
}

}  // namespace installer::faults
