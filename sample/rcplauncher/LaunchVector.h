#pragma once

#include <optional>
#include <string>
#include <vector>

namespace sample {

enum class Operation { kUpdate, kCleanUp };

// What one start of the launcher asks for.
struct LaunchVector {
  Operation operation = Operation::kUpdate;
  std::string locale;
  std::optional<std::string>
      siteOverride;                    // without its "file:"; absent: the features name their sites
  std::optional<std::string> rcpData;  // absent: the start names no data folder
};

// Reads the arguments behind the program's name. nullopt for everything but the two vectors that
// installers start, argument for argument: a launcher that is started in another way does nothing.
std::optional<LaunchVector> readLaunchVector(const std::vector<std::string>& arguments);

}  // namespace sample
