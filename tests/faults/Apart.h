#pragma once

#include <functional>
#include <string>

namespace installer::faults {

// Exit statuses of the programs that follow the installer.
constexpr int kTrouble = 2;
constexpr int kSkipped = 77;

// Runs the steps in a process of their own, the first one of its process list, so that what else
// runs on the machine is not seen and all that they started ends with them. They get a new folder
// in memory, where files can be given to other users. Answers their exit status: kTrouble when they
// did not end by themselves, kSkipped after a line where the machine does not allow this.
int runApart(const std::function<int(const std::string& folder)>& steps);

}  // namespace installer::faults
