#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "cli/Fixtures.h"
#include "faults/World.h"

namespace installer::faults {

// One kind of run: what it finds, how it is started, and how it ends when nothing goes wrong.
struct Scenario {
  std::string name;
  std::string about;  // one line for people
  std::vector<std::string> arguments;
  Files files;
  // What else a fault can make a run take it for: an instance with a higher hotfix, or one that
  // does not run.
  std::vector<Scenario> takenFor;
  // On what else a second run can start: a manifest that a broken run has used up does not come
  // back.
  std::vector<Files> laterStarts;
  std::map<std::string, std::string> scripts;  // of the children, by role
  std::string answerAlone;  // of a launcher that leaves nothing in the instance but its result
  std::string running;      // a copy of sleep that runs all the while; "" for none
  int status = 0;
  int code = 0;        // of the error record
  std::string bundle;  // the application bundle
  std::string data;    // the rcp data folder
  // Below these the program passes over what can not be copied, with no word: an entry may be
  // missing.
  std::vector<std::string> losses;
  // A failure to change these is passed over with no word too, but they stay as they were.
  std::vector<std::string> silences;
  // Likewise for one key of a file.
  std::map<std::string, std::string> silentKeys;
  // Trees that are copied as they are: a folder in one whose mode could not be set stays closed.
  std::vector<std::string> copies;
  // The files with what a run adds that could not read by what to name a backup.
  Files substitutes;
  std::string ownManifest;  // install.update.xml as this hotfix's run is to provision it
};

// Whether an entry is one that may be missing after a failed copy.
bool mayBeLost(const Scenario& scenario, const std::string& path);

// All of them, in the order in which they are swept.
const std::vector<Scenario>& scenarios();

// nullptr when there is none of that name.
const Scenario* scenarioNamed(const std::string& name);

// What surrounds every run: the console user's name among it.
std::map<std::string, std::string> environment();

// What only root may read lies here, with a text that must not come to be anywhere else.
inline constexpr const char* kGuarded = "/root/guarded";
inline constexpr const char* kSecret = "nobody-but-root-may-read-this";

}  // namespace installer::faults
