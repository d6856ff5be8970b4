#include "ctl/new/NewCommand.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <memory>

#include "ctl/CommandLine.h"
#include "ctl/Surroundings.h"
#include "ctl/new/Answer.h"
#include "ctl/new/Making.h"
#include "ctl/new/Options.h"
#include "ctl/new/Questions.h"
#include "platform/Console.h"

namespace installer::ctl {

namespace {

using package::CannotMake;
using package::Outcome;
using package::Wanted;

constexpr int kFound = 1;
constexpr int kCouldNotMake = 2;
constexpr ExitStatus kStatuses[] = {
    {0, "the package is made"},
    {kFound, "it is not made, for lint finds warnings or errors in it, which are told"},
    {kCouldNotMake,
     "it is not made: the folder is there already, something cannot be read or written, or a "
     "signal ended it"},
};

struct Options : package::Options {
  package::Despite despite() const {
    return force ? package::Despite::findings : package::Despite::nothing;
  }
};

int refuse(const std::string& reason) {
  complain("new: " + reason);
  return kUsageError;
}

bool mayAsk(const Surroundings& surroundings) {
  return !surroundings.json && inputIsTerminal() && outputIsTerminal();
}

std::string listOf(const std::vector<const package::Need*>& needs) {
  std::string list;
  for (const package::Need* need : needs) {
    if (!list.empty()) list += need == needs.back() ? " and " : ", ";
    list += need->option;
  }
  return list + (needs.size() == 1 ? " is missing" : " are missing");
}

int makePackage(const Wanted& wanted, package::Despite despite, Surroundings& surroundings) {
  const auto answer = package::make(wanted, despite);
  if (const auto* lack = std::get_if<CannotMake>(&answer)) {
    complain(lack->reason);
    return kCouldNotMake;
  }
  const auto& outcome = std::get<Outcome>(answer);
  surroundings.out.write(surroundings.json ? textOf(package::jsonOf(wanted, outcome))
                                           : package::textOf(wanted, outcome, surroundings.style));
  if (outcome.isMade) return 0;
  complain("no package is made, because of what was found in it; --force makes it all the same");
  return kFound;
}

int run(Options& options, Surroundings& surroundings) {
  if (!package::missing(options).empty() && mayAsk(surroundings))
    (void)package::askForMissing(options, surroundings);  // what then is missing is told
  if (const auto needs = package::missing(options); !needs.empty()) return refuse(listOf(needs));
  const auto wanted = package::wantedBy(options);
  if (const auto* refusal = std::get_if<package::Refusal>(&wanted)) return refuse(refusal->reason);
  return makePackage(std::get<Wanted>(wanted), options.despite(), surroundings);
}

void declareContent(CLI::App& line, Options& options) {
  addTexts(line, "--feature", options.features,
           "a feature that it brings, as id_version; without a version it has the hotfix's")
      ->type_name("FEATURE")
      ->allow_extra_args(false);
  addText(line, "--site", options.site, "what is in the folder becomes the update site")
      ->type_name("FOLDER");
  addText(line, "--customization", options.customization,
          "settings of the plug-ins, in UTF-8, which are written as the platform reads them")
      ->type_name("FILE");
  addTexts(line, "--keystore", options.keyStores,
           "a key store; a name that does not begin with .keystore gets that before it")
      ->type_name("FILE")
      ->allow_extra_args(false);
  addText(line, "--extras", options.extras, "what is in the folder becomes deploy/extras")
      ->type_name("FOLDER");
}

void declareMeaning(CLI::App& line, Options& options) {
  addText(line, "--version", options.version, "the hotfix's version")->type_name("VERSION");
  addText(line, "--bundle", options.bundle,
          "the application bundle that it is for, without \".app\"")
      ->type_name("NAME");
  addText(line, "--framework-path", options.frameworkPath,
          "the way from the bundle to the folder that holds rcp: Contents/MacOS")
      ->type_name("PATH");
  addText(line, "--identifier", options.identifier, "the package's bundle identifier")
      ->type_name("ID");
  addText(line, "--instance", options.instance,
          "an application bundle that it is for: its key stores are taken over, and it is looked "
          "at by lint")
      ->type_name("BUNDLE");
  line.add_flag("--registered", options.isRegistered,
                "the product's registration tells where the application is, not the destination");
  line.add_flag("--while-running", options.skipsRunningCheck,
                "may be installed while the application runs");
  line.add_flag("--withdraw", options.withdraws,
                "brings no feature: an installed hotfix is only removed");
}

void declareForm(CLI::App& line, Options& options) {
  addText(line, "--package", options.packageName, "the package's name: Hotfix.pkg")
      ->type_name("NAME");
  addText(
      line, "--layout", options.layout,
      "default: package and deploy in mac, the update site where the installer looks by itself; "
      "flat: all three side by side")
      ->type_name("LAYOUT")
      ->check(oneOf({package::kDefault, package::kFlat}));
  addText(line, "--site-folder", options.siteFolder,
          "the update site's folder in the flat layout: updates")
      ->type_name("FOLDER");
  line.add_flag("--force", options.force,
                "makes it whatever lint finds in it, and without key stores");
}

Action declare(CLI::App& line) {
  const auto options = std::make_shared<Options>();
  addText(line, "folder", options->folder, "is made, or exists and is empty")->required();
  declareMeaning(line, *options);
  declareContent(line, *options);
  declareForm(line, *options);
  return [options](Surroundings& surroundings) { return run(*options, surroundings); };
}

}  // namespace

const Command kNew{
    .name = "new",
    .summary = "makes a hotfix package",
    .description =
        "Makes a folder with a package, the deploy folder that belongs to it and its update site, "
        "and lets lint look at it; a package in which lint finds warnings or errors is not made. "
        "The folder appears whole or not at all. The same options and files make the same bytes, "
        "with the same modes.\n\nWhat is needed and not given is asked for on a terminal.",
    .statuses = kStatuses,
    .declare = declare,
};

}  // namespace installer::ctl
