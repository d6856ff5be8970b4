#include "ctl/plan/PlanCommand.h"

#include <CLI/CLI.hpp>
#include <memory>

#include "ctl/CommandLine.h"
#include "ctl/Output.h"
#include "ctl/Surroundings.h"
#include "ctl/plan/PlanJson.h"
#include "ctl/plan/PlanText.h"

namespace installer::ctl {

namespace {

constexpr int kWouldNotInstall = 1;
constexpr int kIncomplete = 2;
constexpr ExitStatus kStatuses[] = {
    {0, "the hotfix would be installed"},
    {kWouldNotInstall, "it would not be installed"},
    {kIncomplete, "there is no telling: this user may not look everywhere"},
};

struct Options {
  std::optional<std::string> package;
  std::optional<std::string> destination;
  std::optional<std::string> rcpData;
  int assumed = 0;
  PlanDetail detail;
};

int statusOf(const Plan& plan) {
  if (!plan.unknown().empty()) return kIncomplete;
  return plan.status == 0 ? 0 : kWouldNotInstall;
}

Action declarePlan(CLI::App& line) {
  auto options = std::make_shared<Options>();
  addText(line, "package", options->package, "the package's folder")->required();
  addText(line, "destination", options->destination, "where the application is")->required();
  addText(line, "--rcpdata", options->rcpData, "the rcp data folder; -rcpdata means the same")
      ->type_name("FOLDER");
  line.add_option("--assume", options->assumed, "what the launcher answers")->type_name("CODE");
  line.add_flag("--diff", options->detail.differences, "tells how texts change");
  line.add_flag("--all", options->detail.all,
                "tells each owner and mode, and what is written again as it was");
  return [options](Surroundings& surroundings) {
    return tellPlan({*options->package, *options->destination, options->rcpData, options->assumed},
                    options->detail, surroundings);
  };
}

}  // namespace

int tellPlan(const PlanRequest& request, const PlanDetail& detail, Surroundings& surroundings) {
  Plan plan(request, overlay::rootAsMaker());
  surroundings.out.write(surroundings.json ? textOf(planJson(plan, detail.differences))
                                           : planText(plan, detail, surroundings.style));
  return statusOf(plan);
}

const Command kPlan{
    "plan",
    "tells what the installer would do, without doing it",
    "Plays a run of the installer as root's, with its own code: what it reads is real, what it "
    "changes stays in memory, and children are noted and not started. The launcher is taken to "
    "answer 0; what it changes in the instance itself is not foreseen.\n\nTells which instance is "
    "meant and why, the checks with what they looked at, the error that the user would see, the "
    "files that would change, the children's arguments, and the exit status.",
    kStatuses,
    declarePlan,
};

}  // namespace installer::ctl
