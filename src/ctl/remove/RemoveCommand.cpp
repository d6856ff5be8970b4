#include "ctl/remove/RemoveCommand.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <memory>

#include "ctl/CommandLine.h"
#include "ctl/Output.h"
#include "ctl/Surroundings.h"
#include "ctl/remove/RemoveText.h"
#include "hotfix/util/InstallUtil.h"
#include "platform/AbsolutePath.h"

namespace installer::ctl {

namespace {

constexpr int numberOf(RemovalOutcome outcome) {
  return outcome == RemovalOutcome::forgotten ? 0 : static_cast<int>(outcome);
}

constexpr ExitStatus kStatuses[] = {
    {numberOf(RemovalOutcome::removed),
     "the hotfix was removed, or with --force the record of one whose manifest is gone"},
    {numberOf(RemovalOutcome::nothingInstalled), "no hotfix is installed"},
    {numberOf(RemovalOutcome::refused),
     "record and instance disagree, and --force was not given; nothing was changed"},
    {numberOf(RemovalOutcome::noInstance), "there is no instance"},
    {numberOf(RemovalOutcome::notReadable), "the instance cannot be read, or not locked"},
    {numberOf(RemovalOutcome::applicationRunning),
     "the application is running; nothing was changed"},
    {numberOf(RemovalOutcome::atWork), "a run is at work on the instance; nothing was changed"},
    {numberOf(RemovalOutcome::failed), "the removal failed; the answer tells what is recorded now"},
    {numberOf(RemovalOutcome::interrupted), "a signal has ended it"},
    {numberOf(RemovalOutcome::notAllowed),
     "the caller is neither root nor the instance's owner; nothing was changed"},
};

struct Options {
  std::optional<std::string> instance;
  std::optional<std::string> rcpData;
  std::optional<std::string> trace;
  bool force = false;
};

// The log's lines in a file, for this object's lifetime.
class TraceFile {
 public:
  explicit TraceFile(const std::optional<std::string>& file) {
    if (file) _descriptor = InstallUtil::openTraceFile(absolutePath(*file));
  }
  TraceFile(const TraceFile&) = delete;
  TraceFile& operator=(const TraceFile&) = delete;
  ~TraceFile() {
    if (_descriptor) InstallUtil::closeTraceFile(*_descriptor);
  }

  bool isMissing() const { return _descriptor == -1; }

 private:
  std::optional<int> _descriptor;  // nullopt when none is wanted, -1 when it cannot be had
};

bool hasBegun(const RemovalReport& report) {
  return report.after || report.outcome == RemovalOutcome::interrupted;
}

int remove(const Options& options, Surroundings& surroundings) {
  const TraceFile trace(options.trace);
  if (trace.isMissing()) {
    complain(fmt::format("\"{}\" cannot be written; nothing was changed", *options.trace));
    return kOutputError;
  }
  const RemovalReport report = removeHotfix({*options.instance, options.rcpData, options.force});
  const int status = numberOf(report.outcome);
  if (surroundings.json)
    surroundings.out.write(textOf(documentOf(report, status)));
  else if (hasBegun(report))
    surroundings.out.write(textOf(report, surroundings.style));
  else
    complain(lineOf(report));
  return status;
}

Action declare(CLI::App& line) {
  const auto options = std::make_shared<Options>();
  addText(line, "instance", options->instance, "the application bundle, or the rcp home in it")
      ->required();
  addText(line, "--rcpdata", options->rcpData, "the rcp data folder; -rcpdata means the same")
      ->type_name("FOLDER");
  addText(line, "--trace", options->trace, "writes what the system log receives to a file, too")
      ->type_name("FILE");
  line.add_flag("--force", options->force, "goes on although record and instance disagree");
  return [options](Surroundings& surroundings) { return remove(*options, surroundings); };
}

}  // namespace

constinit const Command kRemove{
    "remove", "takes the installed hotfix out of an instance",
    "Removes the recorded hotfix as the installer removes an older one: the launcher takes its "
    "features out, then the record of it is deleted and the files are handed to the user again. "
    "Nothing is begun while another run is at work on the instance or its application is "
    "running.\n\n"
    "Tells what stays (extras, merged settings, key stores) and what to do. Where the record and "
    "the instance disagree it says so and changes nothing, unless --force is given.",
    kStatuses, declare};

}  // namespace installer::ctl
