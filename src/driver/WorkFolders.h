#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace installer {

// The folders that a run works in. Each is opened once and held until the end of the run, so that
// nobody who exchanges a folder on the way to a file, or plants a link there, turns the run to a
// file of another place.
class WorkFolders {
 public:
  // The package, and the manifests' usual place beside it.
  void holdPackage(const std::string& package);
  // The bundle around the rcp home, or the home itself where there is none.
  void holdInstance(const std::string& rcpHome);
  void holdData(const std::string& rcpData);

 private:
  void hold(const std::string& folder, const std::optional<std::string>& newOwner);

  std::vector<std::shared_ptr<const void>> _holds;
};

}  // namespace installer
