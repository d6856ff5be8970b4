#pragma once

#include <string>
#include <vector>

#include "faults/Tracee.h"

namespace installer::calls {

// One whole run of the installer on the sample, the same each time.
struct SampleRun {
  std::string name;
  std::string installed;     // the hotfix that is there already; "" for none
  std::string hotfix;        // the one of the run
  bool isHandedOver = true;  // whether everything has the attributes that a run leaves
  int status = 0;
};

const std::vector<SampleRun>& sampleRuns();

// The root folder in which the runs take place, each on an application made anew. To be made in a
// process that is the first of its process list; the folder is an empty one in memory.
class SampleRoot {
 public:
  SampleRoot(std::string root, const std::string& program);

  // Puts everything in place for the run.
  void prepare(const SampleRun& run) const;
  faults::Start start(const SampleRun& run) const;

 private:
  // Each runs to its end; the process ends when it fails.
  void command(const std::vector<std::string>& words) const;
  void script(const std::string& name, const std::vector<std::string>& arguments) const;
  void install(const std::string& hotfix) const;

  std::string _root;
};

}  // namespace installer::calls
