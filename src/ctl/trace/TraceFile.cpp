#include "ctl/trace/TraceFile.h"

#include <array>

#include "ctl/trace/RunReader.h"
#include "platform/LockLook.h"
#include "platform/Platform.h"

namespace installer::ctl {

namespace {

// A run whose end is not told may still be at work.
void lookForItsEnd(std::optional<Run>& run) {
  const bool isOpen = run && run->ending == Ending::brokenOff && run->rcpHome;
  if (isOpen && isAtWorkOn(*run->rcpHome)) run->ending = Ending::atWork;
}

}  // namespace

std::optional<Trace> readTrace(const std::string& path, FinalLink link, FileError& error) {
  const std::unique_ptr<LineFile> file = openLineFile(path, link, error);
  if (!file) return std::nullopt;
  Trace trace{path, file->modified(), 0, 0, std::nullopt};
  RunReader reader(yearOf(trace.modified));
  while (const auto line = file->next()) reader.add(*line);
  if (const std::string rest = file->rest(); !rest.empty()) reader.add(rest);
  if (file->readError()) {
    error = *file->readError();
    return std::nullopt;
  }
  trace.run = reader.run();
  trace.lines = reader.lines();
  trace.otherLines = reader.otherLines();
  lookForItsEnd(trace.run);
  return trace;
}

std::optional<Trace> readLastTrace(FileError& error) {
  return readTrace(Platform::current().paths.traceFile, FinalLink::refuse, error);
}

bool isAtWorkOn(const std::string& rcpHome) {
  return isFolderLocked(rcpHome);
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
  return {text.data(), length};
}

}  // namespace installer::ctl
