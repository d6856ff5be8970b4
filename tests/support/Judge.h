#pragma once

#include <string>

namespace installer::test {

struct JudgeVerdict {
  int status = -1;     // exit status; -1 when it ended otherwise
  std::string output;  // standard output and standard error
};

// Runs a shell command line in the folder: a program of other makers that tells whether what is
// written here is right. One that is not installed fails the test by its status.
JudgeVerdict askJudge(const std::string& folder, const std::string& commandLine);

}  // namespace installer::test
