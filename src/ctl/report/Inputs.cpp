#include "ctl/report/Inputs.h"

#include <fmt/format.h>

#include <memory>
#include <optional>

#include "ctl/install/KeptRuns.h"
#include "ctl/report/Documents.h"
#include "ctl/trace/RunReader.h"
#include "ctl/trace/TraceFile.h"
#include "hotfix/base/Path.h"
#include "platform/AbsolutePath.h"
#include "platform/EntryFacts.h"
#include "platform/FileEnds.h"
#include "platform/FileManager.h"
#include "platform/Platform.h"

namespace installer::ctl::report {

namespace {

constexpr std::string_view kDocumentEnd = ".json";
constexpr std::string_view kStatusFile = "status.json";

FileManager& files() {
  return *Platform::current().files;
}

std::string traceName() {
  return path::lastComponent(Platform::current().paths.traceFile);
}

std::string folderName(const std::string& path) {
  return path::lastComponent(path::deletingLastComponent(path));
}

// Files that have the same name on every machine are told apart by their folders.
std::string machineOfFile(const std::string& path) {
  const std::string name = path::lastComponent(path);
  if (name == kStatusFile || name == install::kResultFile) return folderName(path);
  return name.ends_with(kDocumentEnd) ? name.substr(0, name.size() - kDocumentEnd.size()) : name;
}

std::int64_t modifiedAt(const std::string& path) {
  const auto entry = entryAt(path);
  return entry ? static_cast<std::int64_t>(entry->modified) : 0;
}

class Reader {
 public:
  void take(const std::string& named) {
    const std::string path = absolutePath(named);
    if (!files().isDirectory(path)) return takeFile(path, FinalLink::follow);
    const std::size_t before = _inputs.told.size() + _inputs.leftOut.size();
    takeFolder(path, 0);
    if (_inputs.told.size() + _inputs.leftOut.size() == before)
      leaveOut(path, "holds no status, no result and no kept run");
  }

  Inputs all() { return std::move(_inputs); }

 private:
  void leaveOut(const std::string& path, std::string reason) {
    _inputs.leftOut.push_back({path, std::move(reason)});
  }

  static bool isKeptRun(const std::string& folder) {
    return install::isNameOfRun(path::lastComponent(folder)) ||
           entryAt(path::appendingComponent(folder, traceName()));
  }

  void takeFolder(const std::string& folder, int depth) {
    if (isKeptRun(folder)) return takeKeptRun(folder);
    const auto names = files().list(folder);
    if (!names) return leaveOut(folder, "cannot be listed");
    for (const std::string& name : *names) {
      const std::string path = path::appendingComponent(folder, name);
      const auto entry = entryAt(path);
      if (entry && entry->isFolder && depth < kDeepestFolder)
        takeFolder(path, depth + 1);
      else if (entry && !entry->isFolder && name.ends_with(kDocumentEnd))
        takeFile(path, FinalLink::refuse);
    }
  }

  // nullopt, having told why, for what cannot be read.
  std::optional<Told> toldByFile(const std::string& path, FinalLink link) {
    FileError error;
    const auto text = link == FinalLink::follow ? files().read(path, &error)
                                                : files().readUnlinked(path, nullptr, &error);
    std::string reason;
    std::optional<Told> told;
    if (!text)
      reason = fmt::format("cannot be read: {}", error.description);
    else if (text->size() > kLongestDocument)
      reason = fmt::format("is longer than {} MiB", kLongestDocument >> 20U);
    else
      told = toldBy(*text, modifiedAt(path), reason);
    if (!told) leaveOut(path, std::move(reason));
    return told;
  }

  void takeFile(const std::string& path, FinalLink link) {
    auto told = toldByFile(path, link);
    if (told) add(std::move(*told), machineOfFile(path));
  }

  // The trace tells more of the steps, the result more of the end.
  void takeKeptRun(const std::string& folder) {
    const std::string resultPath = path::appendingComponent(folder, install::kResultFile);
    const std::string tracePath = path::appendingComponent(folder, traceName());
    const bool hasResult = entryAt(resultPath).has_value();
    const bool hasTrace = entryAt(tracePath).has_value();
    if (!hasResult && !hasTrace) return leaveOut(folder, "holds neither a result nor a trace");
    auto result = hasResult ? toldByFile(resultPath, FinalLink::refuse) : std::nullopt;
    auto trace = hasTrace ? toldByTrace(folder) : std::nullopt;
    if (result && trace) {
      result->machine = trace->machine;
      result->run->problems = std::move(trace->run->problems);
      result->run->problemsLeftOut = trace->run->problemsLeftOut;
    }
    auto& told = result ? result : trace;
    if (told) add(std::move(*told), folderName(folder));
  }

  std::optional<Told> toldByTrace(const std::string& folder) {
    const std::string path = path::appendingComponent(folder, traceName());
    FileError error;
    const auto ends = readEnds(folder, traceName(), {}, error);
    const bool isLong = ends && ends->size > kLongestTrace;
    const auto file =
        ends && !isLong ? openLineFile({path, FinalLink::refuse, {}}, error) : nullptr;
    const auto run = file ? runIn(*file) : std::nullopt;
    if (run) return toldBy(*run, path::lastComponent(folder), file->modified());
    if (isLong)
      leaveOut(path, fmt::format("is longer than {} MiB", kLongestTrace >> 20U));
    else if (!file || file->readError())
      leaveOut(path, fmt::format("cannot be read: {}",
                                 file ? file->readError()->description : error.description));
    else
      leaveOut(path, "holds no run of the installer");
    return std::nullopt;
  }

  // Whether a run is at work nobody can tell of another machine's.
  static std::optional<Run> runIn(LineFile& file) {
    RunReader reader(yearOf(file.modified()));
    while (const auto line = file.next()) reader.add(*line);
    if (const std::string rest = file.rest(); !rest.empty()) reader.add(rest);
    return file.readError() ? std::nullopt : reader.run();
  }

  void add(Told told, const std::string& machine) {
    if (told.machine.empty()) told.machine = machine;
    _inputs.told.push_back(std::move(told));
  }

  Inputs _inputs;
};

}  // namespace

Inputs readInputs(const std::vector<std::string>& paths) {
  Reader reader;
  for (const std::string& path : paths) reader.take(path);
  return reader.all();
}

}  // namespace installer::ctl::report
