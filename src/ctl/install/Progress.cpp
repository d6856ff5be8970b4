#include "ctl/install/Progress.h"

#include <fmt/format.h>

#include <algorithm>

#include "ctl/trace/RunReader.h"

namespace installer::ctl::install {

namespace {

constexpr std::size_t kWhole = 100;  // per cent

}  // namespace

void Progress::show(const Run& run, std::chrono::seconds running) {
  if (_form == Form::lines) showLines(run);
  if (_form != Form::line) return;
  const std::size_t count = run.steps.size();
  writeOver(fmt::format("{} of {}  {} s  {}", count, std::max(count, _phases), running.count(),
                        wordsOf(run.steps.back().kind)));
  _out.flush();
}

// What has begun is not done yet. More phases than planned make no part smaller that was told.
void Progress::showLines(const Run& run) {
  for (; _told < run.steps.size(); ++_told) {
    const std::size_t all = std::max(_phases, run.steps.size());
    _part = std::max(_part, kWhole * _told / all);
    _out.write(
        fmt::format("installer:PHASE:{}\ninstaller:%{}\n", wordsOf(run.steps[_told].kind), _part));
  }
  _out.flush();
}

// The last column stays free: some terminals begin a new line behind it.
void Progress::writeOver(std::string text) {
  text.resize(std::min(text.size(), _columns - 1));
  if (text == _shown) return;
  const std::size_t rest = _shown.size() - std::min(_shown.size(), text.size());
  _out.write(fmt::format("\r{}{}", text, std::string(rest, ' ')));
  _shown = std::move(text);
}

void Progress::end(const Outcome& outcome) {
  if (_form == Form::lines) {
    _out.write(fmt::format("installer:PHASE:{}\n", outcome.meaning));
    if (outcome.status == 0) _out.write(fmt::format("installer:%{}\n", kWhole));
  }
  if (_form == Form::line) {
    writeOver("");
    _out.write("\r");
  }
  _out.flush();
}

// Its lines are those of a trace but for what stands before them.
std::size_t phasesOf(const Plan& plan) {
  constexpr int kAnyYear = 2000;
  RunReader reader(kAnyYear);
  for (const overlay::PlannedLine& line : plan.log)
    reader.add(fmt::format("Jan  1 00:00:00 plan HotfixInstaller[1] <{}>: {}", nameOf(line.level),
                           line.text));
  const std::optional<Run> run = reader.run();
  return run ? run->steps.size() : 0;
}

}  // namespace installer::ctl::install
