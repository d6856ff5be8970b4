#pragma once

#include <string>
#include <vector>

namespace installer {

/// One run of the installer. `arguments` is the whole command line, the program's own path first:
/// ~~~
///   program <pathToInstallPackage> <pathToInstallDestination> [-rcpdata <pathToRcpData>]
/// ~~~
/// The answer is the exit status: 0 when the hotfix was installed, 1 in every other case. It
/// resets error record and trace, and knows nothing of an earlier run in the process; one at a
/// time.
[[nodiscard]] int runInstaller(const std::vector<std::string>& arguments);

}  // namespace installer
