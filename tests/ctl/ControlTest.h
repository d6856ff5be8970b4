#pragma once

#include <string>
#include <utility>
#include <vector>

#include "cli/Fixtures.h"

namespace installer::cli {

// The companion program, run where the installer runs.
class ControlTest : public InstallerTest {
 protected:
  RunResult control(const std::vector<std::string>& arguments, RunOptions options = {}) {
    options.program = CliSandbox::kControl;
    return _sandbox.run(arguments, options);
  }
  // Its command line in the words of the shell.
  RunResult shell(const std::string& command, RunOptions options = {}) {
    options.program = "/bin/sh";
    return _sandbox.run({"-c", command}, options);
  }
};

}  // namespace installer::cli
