#include "ctl/trace/TraceFile.h"

#include <array>
#include <string_view>

#include "ctl/trace/RunReader.h"
#include "platform/LockLook.h"
#include "platform/Platform.h"
#include "platform/ProgramName.h"
#include "platform/UserContext.h"

namespace installer::ctl {

namespace {

// As the system tells it, whose names may end here.
constexpr std::string_view kInstaller = "HotfixInstaller";

void readOn(LineFile& file, RunReader& reader) {
  while (const auto line = file.next()) reader.add(*line);
}

}  // namespace

std::optional<Trace> readTrace(const LineSource& source, FileError& error) {
  const std::unique_ptr<LineFile> file = openLineFile(source, error);
  if (!file) return std::nullopt;
  Trace trace{source.path, file->modified(), 0, 0, std::nullopt};
  RunReader reader(yearOf(trace.modified));
  readOn(*file, reader);
  const auto known = reader.run();
  const bool atWork = mayBeAtWork(known) && isAtWork(*known);
  readOn(*file, reader);  // the run may have ended between the last line and the question
  if (const std::string rest = file->rest(); !rest.empty()) reader.add(rest);
  if (file->readError()) {
    error = *file->readError();
    return std::nullopt;
  }
  trace.run = reader.run();
  trace.lines = reader.lines();
  trace.otherLines = reader.otherLines();
  if (atWork && mayBeAtWork(trace.run)) trace.run->ending = Ending::atWork;
  return trace;
}

LineSource lastTrace() {
  return {Platform::current().paths.traceFile, FinalLink::refuse,
          [](uid_t owner) { return Platform::current().users->isOwn(owner); }};
}

bool mayBeAtWork(const std::optional<Run>& run) {
  return run && (run->ending == Ending::brokenOff || run->ending == Ending::argumentsMissing);
}

bool isAtWork(const Run& run) {
  FileError lack;
  if (run.rcpHome && run.rcpHome->starts_with('/')) {
    if (isFolderLocked(*run.rcpHome, &lack)) return true;
    if (lack.description.empty()) return false;
  }
  return programOf(run.process) == kInstaller;
}

int yearOf(std::time_t time) {
  constexpr int kFirstYear = 1900;
  const std::tm* const local = std::localtime(&time);
  return local == nullptr ? kFirstYear : kFirstYear + local->tm_year;
}

std::string isoTime(std::time_t time) {
  std::array<char, 64> text{};
  const std::tm* const local = std::localtime(&time);
  if (local == nullptr) return "";
  const std::size_t length = std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%S%z", local);
  std::string written(text.data(), length);
  return written.insert(written.size() - 2, ":");  // of the zone
}

}  // namespace installer::ctl
