// The launcher of the sample instance: it is started as <rcp home>/rcplauncher with the argument
// list of a provisioning run, installs or removes the features of the manifest in "deploy", and
// leaves its result in ".provisioning_rc" beside the rcp home.

#include <cstdio>
#include <filesystem>

#include "LaunchVector.h"
#include "ProvisioningRun.h"

int main(int argc, char** argv) {
  std::error_code error;
  const std::filesystem::path self = std::filesystem::read_symlink("/proc/self/exe", error);
  if (error) {
    std::fprintf(stderr, "rcplauncher: cannot find its own path: %s\n", error.message().c_str());
    return static_cast<int>(sample::ResultCode::kUnusable);
  }
  const sample::ProvisioningRun run(self.parent_path());
  const auto launch = sample::readLaunchVector({argv + 1, argv + argc});
  const sample::ResultCode code = launch ? run.perform(*launch) : run.refuse(argc - 1);
  if (!run.leaveResult(code)) {
    std::fprintf(stderr, "rcplauncher: cannot write its result file\n");
  }
  return static_cast<int>(code);
}
