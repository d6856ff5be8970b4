#pragma once

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "ctl/ControlTest.h"
#include "ctl/Schema.h"

namespace installer::cli {

inline constexpr const char* kState = "/var/lib/hotfix";

// Installations by the companion program, on a machine that keeps what they leave.
class InstallControl : public ControlTest {
 protected:
  void SetUp() override {
    ControlTest::SetUp();
    _sandbox.makeFolder("/var/lib");
  }

  std::vector<std::string> commandLine(const std::vector<std::string>& options = {}) const {
    std::vector<std::string> all = {"install", _package.folder, _destination};
    all.insert(all.end(), options.begin(), options.end());
    return all;
  }
  // The same in the shell's words.
  std::string inShell(const std::string& options = "") const {
    return "/control/hotfixctl install " + _package.folder + " " + _destination + " " + options;
  }
  RunResult installs(const std::vector<std::string>& options = {}, const RunOptions& run = {}) {
    return control(commandLine(options), run);
  }
  // The answer for programs, which keeps to its schema and tells the exit status.
  nlohmann::json told(int status, std::vector<std::string> options = {},
                      const RunOptions& run = {}) {
    options.emplace_back("--json");
    _result = installs(options, run);
    EXPECT_EQ(status, _result.status) << _result.out << _result.err;
    nlohmann::json answer = ctl::test::judged(_result.out, "install-1");
    EXPECT_EQ(status, answer.value("status", -1));
    return answer;
  }

  // The folders of the kept runs, the oldest first.
  std::vector<std::string> keptRuns() const {
    std::vector<std::string> runs;
    if (!_sandbox.isFolder(kState)) return runs;
    for (const std::string& name : _sandbox.list(kState))
      if (name != "lock") runs.push_back(std::string(kState) + "/" + name);
    return runs;
  }
  std::string kept(const std::string& name) const {
    return keptRuns().empty() ? "" : _sandbox.readFile(keptRuns().back() + "/" + name).value_or("");
  }
  nlohmann::json keptResult() const { return ctl::test::judged(kept("result.json"), "install-1"); }

  // An installer that does what the lines of the shell say.
  void playInstaller(const std::string& lines) {
    _sandbox.writeFile("/opt/Played", "#!/usr/bin/sh\n" + lines, 0755);
  }
  const std::vector<std::string> _played = {"--installer", "/opt/Played"};

  RunResult _result;
};

}  // namespace installer::cli
