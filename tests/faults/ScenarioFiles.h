#pragma once

#include <string>

#include "faults/Scenario.h"

namespace installer::faults {

// Lays out what a scenario finds: at first an instance without a hotfix, with everything that a run
// can change in it, and a package that brings everything that one can bring.
class ScenarioFiles {
 public:
  explicit ScenarioFiles(cli::Instance instance = {});

  // --- What a scenario changes -------------------------------------------------------------------

  void useData(const std::string& folder);
  void recordHotfix(const std::string& version);
  void addOldExtras();
  void addStaging(const std::string& destination);
  // What a merge leaves that was killed long ago: some of the new extras, and temporary names.
  void addBrokenMerge();
  void launcherAnswers(const std::string& result) { _result = result; }

  void put(const std::string& path, const std::string& content, mode_t mode = 0644);
  void remove(const std::string& path);

  const cli::Instance& instance() const { return _instance; }
  const cli::Package& package() const { return _package; }
  std::string data() const { return _data; }

  // A run into the folder that holds the bundle, ending with that status and code.
  Scenario scenario(const std::string& name, const std::string& about, int status = 0,
                    int code = 0) const;

 private:
  void add(const std::string& path, test::TreeEntry entry);
  void addSurroundings();
  void addInstance();
  void addData(const std::string& folder);
  void addPackage();
  void addTools();
  std::string launcherScript() const;

  cli::Instance _instance;
  cli::Package _package;
  std::string _data;
  std::string _result = "rc=0\n";
  Files _files;
};

}  // namespace installer::faults
