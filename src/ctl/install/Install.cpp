#include "ctl/install/Install.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <memory>

#include "ctl/CommandLine.h"
#include "ctl/Surroundings.h"
#include "ctl/install/Installation.h"
#include "ctl/plan/PlanCommand.h"
#include "ctl/plan/PlanText.h"
#include "platform/Console.h"

namespace installer::ctl {

namespace {

constexpr std::uint64_t kMostSeconds = std::uint64_t{7} * 24 * 60 * 60;
constexpr std::uint64_t kMostRuns = 10'000;
constexpr std::uint64_t kMostDays = 36'500;

struct Options {
  std::optional<std::string> package;
  std::optional<std::string> destination;
  std::optional<std::string> rcpData;
  std::optional<std::string> installer;
  bool dryRun = false;
  bool lint = false;
  bool progress = false;
  bool output = false;
  std::uint64_t timeLimit = 0;  // seconds; 0 for none
  std::uint64_t grace = 30;
  std::uint64_t wait = 0;
  std::uint64_t keep = install::Retention().runs;
  std::uint64_t keepDays = install::Retention().days;
};

install::Progress::Form formOf(const Options& options, const Surroundings& surroundings) {
  if (options.progress) return install::Progress::Form::lines;
  return outputIsTerminal() && !surroundings.json ? install::Progress::Form::line
                                                  : install::Progress::Form::none;
}

install::Settings settingsOf(const Options& options, const Surroundings& surroundings) {
  install::Settings settings;
  settings.request = {*options.package, *options.destination, options.rcpData};
  settings.installer = options.installer;
  settings.lint = options.lint;
  settings.progress = formOf(options, surroundings);
  if (options.timeLimit > 0) settings.limits.run = std::chrono::seconds(options.timeLimit);
  settings.limits.grace = std::chrono::seconds(options.grace);
  settings.wait = std::chrono::seconds(options.wait);
  settings.retention = {options.keep, static_cast<unsigned>(options.keepDays)};
  return settings;
}

// Of a refusal the line says all.
void tell(const install::Result& result, const Options& options, Surroundings& surroundings) {
  if (surroundings.json) return surroundings.out.write(textOf(documentOf(result)));
  if (!result.installer) return;
  if (options.output) surroundings.out.write(result.installer->output);
  surroundings.out.write(textOf(result, surroundings.style));
}

int run(const Options& options, Surroundings& surroundings) {
  const install::Settings settings = settingsOf(options, surroundings);
  if (options.dryRun) return tellPlan(settings.request, {}, surroundings);
  Output aside(stderr);  // so that the answer stays one document
  Output& out = surroundings.json ? aside : surroundings.out;
  const std::size_t columns = surroundings.style.textWidth();
  const install::Result result = install::Installation(settings, out, columns).run();
  tell(result, options, surroundings);
  return result.outcome.status;
}

void declareNumber(CLI::App& line, const std::string& name, std::uint64_t& number,
                   std::uint64_t least, std::uint64_t most, const std::string& description,
                   const std::string& unit) {
  line.add_option(name, number, description)
      ->type_name(unit)
      ->check(CLI::Range(least, most).description(""));
}

void declareLimits(CLI::App& line, Options& options) {
  declareNumber(line, "--time-limit", options.timeLimit, 1, kMostSeconds,
                "asks the installer to end when it has run so long", "SECONDS");
  declareNumber(line, "--grace", options.grace, 0, kMostSeconds,
                "how long it may take to end then before it is killed; 30", "SECONDS");
  declareNumber(line, "--wait", options.wait, 0, kMostSeconds,
                "how long to wait for another installation's end; 0", "SECONDS");
  declareNumber(line, "--keep", options.keep, 1, kMostRuns,
                "how many runs are kept, this one among them; 20", "NUMBER");
  declareNumber(line, "--keep-days", options.keepDays, 1, kMostDays, "how long a run is kept; 180",
                "DAYS");
}

Action declare(CLI::App& line) {
  const auto options = std::make_shared<Options>();
  addText(line, "package", options->package, "the package's folder")->required();
  addText(line, "destination", options->destination, "where the application is")->required();
  addText(line, "--rcpdata", options->rcpData, "the rcp data folder; -rcpdata means the same")
      ->type_name("FOLDER");
  line.add_flag("--dry-run", options->dryRun, "does what plan does, with its exit statuses");
  line.add_flag("--lint", options->lint, "refuses a package in which lint finds errors");
  line.add_flag(
      "--progress", options->progress,
      "tells each phase and the part that is done in lines for front ends; with --json on "
      "standard error");
  line.add_flag("--output", options->output, "shows what the installer itself wrote");
  addText(line, "--installer", options->installer,
          "an installer other than the one that belongs "
          "to this program")
      ->type_name("PROGRAM");
  declareLimits(line, *options);
  return [options](Surroundings& surroundings) { return run(*options, surroundings); };
}

}  // namespace

const Command kInstall{
    "install",
    "runs the installer, and tells and keeps what came of it",
    "Plans the run, starts the installer, and waits for its end; one at a time on a machine. "
    "Signals that ask this program to end are passed on to it.\n\nOf each run trace, error record, "
    "plan, output and result are kept in a folder of its own below /var/lib/hotfix (on macOS it is "
    "/var/db/hotfix instead), which hotfixctl explain reads. Only root can install.",
    install::statuses(),
    declare,
};

}  // namespace installer::ctl
