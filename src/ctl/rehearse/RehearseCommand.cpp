#include "ctl/rehearse/RehearseCommand.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <memory>

#include "ctl/CommandLine.h"
#include "ctl/Output.h"
#include "ctl/Surroundings.h"
#include "ctl/rehearse/RehearseText.h"

namespace installer::ctl {

namespace {

constexpr int numberOf(RehearsalOutcome outcome) {
  return static_cast<int>(outcome);
}

constexpr ExitStatus kStatuses[] = {
    {numberOf(RehearsalOutcome::installed), "the installer installed the hotfix on the copy"},
    {numberOf(RehearsalOutcome::notInstalled), "it did not install it"},
    {numberOf(RehearsalOutcome::notPossible),
     "there can be no rehearsal: this system has none, or there is no copy to be had"},
    {numberOf(RehearsalOutcome::noInstance), "there is no instance"},
    {numberOf(RehearsalOutcome::notReadable), "the instance cannot be read"},
    {numberOf(RehearsalOutcome::atWork), "a run is at work on the instance"},
    {numberOf(RehearsalOutcome::interrupted), "a signal has ended it"},
};

struct Options {
  std::optional<std::string> package;
  std::optional<std::string> instance;
  std::optional<std::string> rcpData;
  std::optional<std::string> folder;
  bool differences = false;
  bool all = false;
};

int run(const Options& options, Surroundings& surroundings) {
  const RehearsalRequest request{*options.package, *options.instance, options.rcpData,
                                 options.folder, options.differences};
  const RehearsalReport report = rehearse(request);
  if (surroundings.json)
    surroundings.out.write(textOf(documentOf(report, request)));
  else if (report.reason.empty())
    surroundings.out.write(textOf(report, request, options.all, surroundings.style));
  else
    complain(report.reason);
  if (report.left) complain(fmt::format("the copy could not be removed: \"{}\"", *report.left));
  return numberOf(report.outcome);
}

Action declare(CLI::App& line) {
  const auto options = std::make_shared<Options>();
  addText(line, "package", options->package, "the package's folder")->required();
  addText(line, "--instance", options->instance,
          "the application bundle, or the rcp home in it, that is copied")
      ->type_name("BUNDLE")
      ->required();
  addText(line, "--rcpdata", options->rcpData, "the rcp data folder; -rcpdata means the same")
      ->type_name("FOLDER");
  addText(line, "--work", options->folder,
          "where the copy is made; on the instance's own file system it can share its blocks")
      ->type_name("FOLDER");
  line.add_flag("--diff", options->differences, "tells how texts change");
  line.add_flag("--all", options->all, "tells each owner and mode");
  return [options](Surroundings& surroundings) { return run(*options, surroundings); };
}

}  // namespace

constinit const Command kRehearse{
    "rehearse", "runs the installer on a copy of an instance",
    "Copies the instance and runs the installer on it with its own code and the real launcher, as "
    "a process that sees the copy in the instance's place, a /tmp of its own, and of everything "
    "else what is there without being able to change it. Then tells versions and features before "
    "and after, the files that have changed, the exit status and its cause.\n\n"
    "Nothing of the machine changes, and the copy is removed. There are no such runs on macOS.",
    kStatuses, declare};

}  // namespace installer::ctl
