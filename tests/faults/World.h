#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "support/TreeSnapshot.h"

namespace installer::faults {

// Everything that a run can find or leave, by absolute path as the program sees it.
using Files = test::TreeSnapshot;

// The root folder in which all runs of a sweep take place, one after the other. It is made once, in
// a mount namespace and a process list of its own, and filled anew for each run.
class World {
 public:
  // The folders whose content belongs to a run; whatever else is below the root stays.
  static const std::vector<std::string>& folders();

  // To be made in a process that is the first of its process list; the folder is an empty one in
  // memory.
  World(std::string root, const std::string& program);

  const std::string& root() const { return _root; }
  std::string host(const std::string& path) const { return _root + path; }

  // Ends whatever still runs of all runs.
  static void endOthers();

  // The same, and puts the files in place of what there was.
  void fill(const Files& files) const;
  Files files() const;

  // What children are told to do, by their role, and how many have been started. fill() forgets the
  // starts.
  void script(const std::map<std::string, std::string>& texts) const;

  // Starts a copy of sleep, which stays until the next fill().
  void startIdle(const std::string& program) const;

  // Waits for what the program left running; false when that takes longer than a launcher may.
  static bool waitForOthers();

 private:
  std::string _root;
};

}  // namespace installer::faults
