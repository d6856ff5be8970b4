#pragma once

#include <chrono>
#include <ctime>
#include <string>
#include <thread>
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
  // Names and versions hold the minute: what is compared must not fall into two of them.
  static void awaitRoomInTheMinute() {
    while (std::time(nullptr) % 60 >= 50)
      std::this_thread::sleep_for(std::chrono::milliseconds(100));
  }
};

}  // namespace installer::cli
