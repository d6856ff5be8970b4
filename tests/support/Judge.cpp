#include "support/Judge.h"

#include <sys/wait.h>

#include <array>
#include <cstdio>

namespace installer::test {

JudgeVerdict askJudge(const std::string& folder, const std::string& commandLine) {
  JudgeVerdict verdict;
  FILE* pipe = popen(("exec 2>&1; cd '" + folder + "' && " + commandLine).c_str(), "r");
  if (pipe == nullptr) return verdict;
  std::array<char, 4096> part{};
  while (const std::size_t size = fread(part.data(), 1, part.size(), pipe))
    verdict.output.append(part.data(), size);
  const int status = pclose(pipe);
  if (WIFEXITED(status)) verdict.status = WEXITSTATUS(status);
  return verdict;
}

}  // namespace installer::test
