#include "ctl/status/Status.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "ctl/CommandLine.h"
#include "ctl/QuietPlatform.h"
#include "ctl/Surroundings.h"
#include "ctl/status/InstanceReport.h"
#include "ctl/status/LastRun.h"
#include "ctl/status/Places.h"
#include "ctl/status/StatusText.h"

namespace installer::ctl {

namespace {

constexpr int numberOf(InstanceState state) {
  return static_cast<int>(state);
}

constexpr ExitStatus kStatuses[] = {
    {numberOf(InstanceState::hotfixInstalled), "a hotfix is installed, and all is well"},
    {numberOf(InstanceState::noHotfix), "no hotfix is installed"},
    {numberOf(InstanceState::needsAttention), "something needs attention"},
    {numberOf(InstanceState::noInstance), "there is no instance"},
    {numberOf(InstanceState::notReadable), "an instance cannot be read"},
};

struct Options {
  std::vector<std::string> places;
  bool doctor = false;
  bool brief = false;
  std::optional<std::string> atLeast;  // a hotfix's version; then only that is judged
};

void addLastRun(const LastRun& last, InstanceReport& report) {
  if (report.isAtWork || !last.failedOn(report.place.rcpHome)) return;
  if (report.state > InstanceState::needsAttention) return;
  const EndingDescription& ending = descriptionOf(last.trace->run->ending);
  report.findings.push_back(
      {"last-run-failed",
       "The last run did not install its hotfix: " + std::string(ending.meaning) + ".",
       std::string(ending.remedy)});
  report.state = InstanceState::needsAttention;
}

// What the state is once it does not matter what needs attention, but which hotfix is recorded.
// Versions compare as the installer compares them.
InstanceState stateFor(const std::string& atLeast, const InstanceReport& report) {
  if (report.state > InstanceState::needsAttention) return report.state;
  const bool has = report.hotfix && report.hotfix->version >= atLeast;
  return has ? InstanceState::hotfixInstalled : InstanceState::noHotfix;
}

int statusOf(const std::vector<InstanceReport>& reports,
             const std::optional<std::string>& atLeast = std::nullopt) {
  if (reports.empty()) return numberOf(InstanceState::noInstance);
  int status = 0;
  for (const InstanceReport& report : reports)
    status = std::max(status, numberOf(atLeast ? stateFor(*atLeast, report) : report.state));
  return status;
}

void answer(const std::vector<InstanceReport>& reports, const LastRun& last,
            Surroundings& surroundings) {
  if (reports.empty())
    surroundings.out.write(
        "No instance is registered, and none is in the applications folder.\n\n");
  for (const InstanceReport& report : reports)
    surroundings.out.write(textOf(report, surroundings.style) + "\n");
  surroundings.out.write(textOf(last, surroundings.style));
}

std::vector<InstanceReport> reportsOn(const std::vector<InstancePlace>& places, bool doctor,
                                      const LastRun& last, QuietPlatform& quiet) {
  std::vector<InstanceReport> reports;
  for (const InstancePlace& place : places) {
    reports.push_back(reportOn(place, doctor, quiet));
    addLastRun(last, reports.back());
  }
  return reports;
}

int status(const Options& options, Surroundings& surroundings) {
  QuietPlatform quiet;
  const LastRun last = lastRun();
  const auto reports = reportsOn(placesOf(options.places), options.doctor, last, quiet);
  const int number = statusOf(reports, options.atLeast);
  if (surroundings.json)
    surroundings.out.write(textOf(documentOf(reports, last, number)));
  else if (options.brief)
    surroundings.out.write(briefTextOf(reports));
  else
    answer(reports, last, surroundings);
  return number;
}

Action declare(CLI::App& line) {
  const auto options = std::make_shared<Options>();
  addTexts(
      line, "instance", options->places,
      "an application bundle or an rcp home; without any all that are registered, and those in "
      "the applications folder");
  line.add_flag("--doctor", options->doctor, "looks for signs of something half done, too");
  line.add_flag(
      "--brief", options->brief,
      "answers with one line for each instance: the hotfix's version or \"none\", and what "
      "needs attention");
  addText(
      line, "--at-least", options->atLeast,
      "judges the hotfix's version only: the exit status is 0 where it is that or higher, and 1 "
      "where it is lower or there is none")
      ->type_name("VERSION")
      ->check(whyNoText);
  return [options](Surroundings& surroundings) { return status(*options, surroundings); };
}

}  // namespace

std::vector<InstancePlace> placesOf(const std::vector<std::string>& arguments) {
  if (arguments.empty()) return knownPlaces();
  std::vector<InstancePlace> places;
  places.reserve(arguments.size());
  for (const std::string& place : arguments) places.push_back({rcpHomeOf(place), "argument"});
  return places;
}

std::string statusDocument(const std::vector<InstancePlace>& places) {
  QuietPlatform quiet;
  const LastRun last = lastRun();
  const auto reports = reportsOn(places, true, last, quiet);
  return textOf(documentOf(reports, last, statusOf(reports)));
}

constinit const Command kStatus{
    "status", "tells which hotfix the instances have, and whether all is well",
    "Tells for each instance its versions, the installed hotfix, what the platform's launcher "
    "answered last and what needs attention, and what the last run on this machine left: its "
    "trace, its result with the cause, the error record and the marker.\n\n"
    "It changes nothing and waits for nobody; it says when an installation is at work. Of several "
    "instances the one with the highest number decides the exit status.",
    kStatuses, declare};

}  // namespace installer::ctl
