#include "ctl/explain/Explain.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <memory>
#include <optional>
#include <string>

#include "ctl/CommandLine.h"
#include "ctl/QuietPlatform.h"
#include "ctl/Surroundings.h"
#include "ctl/explain/Follower.h"
#include "ctl/explain/RunText.h"
#include "hotfix/base/Path.h"
#include "platform/FileManager.h"

namespace installer::ctl {

namespace {

enum Status { kInstalled = 0, kNotInstalled = 1, kNotEnded = 2, kNoRun = 3, kNotReadable = 4 };

constexpr ExitStatus kStatuses[] = {
    {kInstalled, "the run installed its hotfix"},
    {kNotInstalled, "it did not, and has ended"},
    {kNotEnded, "it is at work, or was broken off"},
    {kNoRun, "there is no trace, or no run in it"},
    {kNotReadable, "the trace cannot be read, or the other file not written"},
};

struct Options {
  std::optional<std::string> trace;
  std::optional<std::string> chromeTrace;
  bool follow = false;
};

// A kept run is a folder that holds the trace under its usual name.
LineSource sourceOf(const Options& options) {
  if (!options.trace) return lastTrace();
  const Platform& platform = Platform::current();
  if (!platform.files->isDirectory(*options.trace)) return {*options.trace, FinalLink::follow, {}};
  const std::string name = path::lastComponent(platform.paths.traceFile);
  return {path::appendingComponent(*options.trace, name), FinalLink::follow, {}};
}

int statusOf(Ending ending) {
  if (ending == Ending::installed) return kInstalled;
  const bool isOpen = ending == Ending::atWork || ending == Ending::brokenOff;
  return isOpen ? kNotEnded : kNotInstalled;
}

// The file is replaced whole. What is no file stays: nobody means a device or a pipe to be
// replaced.
bool writeChromeTrace(const std::string& path, const Run& run) {
  FileManager& files = *Platform::current().files;
  FileError error;
  const bool isFile = files.read(path, &error) || error.code != FileError::kNoFile;
  if (isFile &&
      files.write(path, textOf(chromeTraceOf(run)), ReplacedFile::takeOver, std::nullopt, &error))
    return true;
  complain(isFile ? error.description : fmt::format("\"{}\" is no file", path));
  return false;
}

int noTrace(const FileError& error) {
  if (error.code == FileError::kMissing) {
    complain(fmt::format("there is no trace: {}", error.description));
    return kNoRun;
  }
  complain(error.description);
  return kNotReadable;
}

int answer(const Trace& trace, Surroundings& surroundings) {
  if (surroundings.json) surroundings.out.write(textOf(documentOf(trace)));
  if (!trace.run) {
    if (!surroundings.json)
      complain(fmt::format("\"{}\" holds no run of the installer", trace.path));
    return kNoRun;
  }
  if (!surroundings.json) surroundings.out.write(screenOf(trace, *trace.run, surroundings.style));
  return statusOf(trace.run->ending);
}

int explain(const Options& options, Surroundings& surroundings) {
  const QuietPlatform quiet;
  const LineSource source = sourceOf(options);
  FileError error;
  const std::optional<Trace> trace =
      options.follow ? Follower(source).follow(surroundings, error) : readTrace(source, error);
  if (!trace) return noTrace(error);
  if (trace->run && options.chromeTrace && !writeChromeTrace(*options.chromeTrace, *trace->run))
    return kNotReadable;
  return answer(*trace, surroundings);
}

Action declare(CLI::App& line) {
  const auto options = std::make_shared<Options>();
  addText(line, "trace", options->trace,
          "a trace file, or a folder that holds one; without it the trace of the last run on this "
          "machine");
  line.add_flag("--follow", options->follow,
                "tells each step of a run that is at work, until its end");
  addText(line, "--chrome-trace", options->chromeTrace,
          "writes the steps to this file as trace events, for Perfetto and its like")
      ->type_name("FILE");
  return [options](Surroundings& surroundings) { return explain(*options, surroundings); };
}

}  // namespace

constinit const Command kExplain{
    "explain", "tells what a run did, and why it ended as it did",
    "Reads the trace of a run and tells on one screen its steps with their durations, its errors "
    "and warnings, its result with the line that is the cause, and what to do now.\n\n"
    "The trace has whole seconds of local time. Lines of other programs and of other runs are "
    "passed over; of several runs in one file the last one counts.",
    kStatuses, declare};

}  // namespace installer::ctl
