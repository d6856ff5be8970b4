// hotfixctl report: what it takes, what it writes, and how it ends.

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <cstring>
#include <filesystem>

#include "ctl/install/InstallControl.h"
#include "support/Proves.h"

namespace installer::cli {
namespace {

using nlohmann::json;
using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

constexpr const char* kPage = "/tmp/report.html";
constexpr const char* kResult =
    R"({"schema": "hotfixctl/install/1", "status": 6, "cause": "application-running"})";
constexpr const char* kStatus = R"({"schema": "hotfixctl/status/1", "instances": []})";
constexpr const char* kNote =
    R"({"host": "mac1", "cause": "not-begun", "message": "no share", "answer": {}})";

class ReportTest : public InstallControl {
 protected:
  RunResult report(std::vector<std::string> inputs, const std::string& page = kPage,
                   const RunOptions& options = {}) {
    inputs.insert(inputs.begin(), {"report", "-o", page});
    return control(inputs, options);
  }
  // The answer for programs.
  json reported(int status, std::vector<std::string> inputs) {
    inputs.emplace_back("--json");
    const RunResult result = report(inputs);
    _complaints = result.err;
    EXPECT_EQ(status, result.status) << result.err;
    return ctl::test::judged(result.out, "report-1");
  }
  std::string page() const { return _sandbox.readFile(kPage).value_or(""); }
  static std::string rowOf(const std::string& name) { return "<th scope=row>" + name + "<td>"; }

  std::string _complaints;
};

// --- What it takes -------------------------------------------------------------------------------

TEST_F(ReportTest, AStatusAndAKeptRunOfOneMachineComeTogether) {
  proves("REPORT-1", "REPORT-2");
  ASSERT_EQ(0, installs().status);
  const std::string run = keptRuns().at(0);
  const RunResult status = control({"status", "--json"});
  const std::string trace = *_sandbox.readFile(kTrace);
  const std::string host = trace.substr(16, trace.find(' ', 16) - 16);
  _sandbox.writeFile("/in/" + host + ".json", status.out);

  const RunResult result = report({"/in/" + host + ".json", run});

  EXPECT_EQ(0, result.status) << result.err;
  EXPECT_EQ("", result.err);
  EXPECT_THAT(result.out, AllOf(HasSubstr("1    with hotfix 1.5\n"),
                                HasSubstr("1 machine in /tmp/report.html\n")));
  EXPECT_THAT(page(), AllOf(HasSubstr("<tr class=good><th scope=row>" + host + "<td>1.5<td>"),
                            HasSubstr("<summary>Hotfix installed</summary><p>1.5 over none"),
                            HasSubstr("Read package"), HasSubstr("Collect logs"),
                            HasSubstr(_instance.bundle + ": 1.5")));
}

TEST_F(ReportTest, AKeptRunThatFailedIsToldWithItsCause) {
  proves("REPORT-1", "REPORT-2");
  _sandbox.script("rcplauncher", ChildScript().write(_instance.result(), "rc=13\n"));
  ASSERT_EQ(2, installs().status);

  const json answer = reported(0, {kState});

  ASSERT_EQ(1u, answer["failures"].size());
  EXPECT_EQ("provisioning-failed", answer["failures"][0]["cause"]);
  EXPECT_EQ("the platform's launcher did not install the hotfix", answer["failures"][0]["meaning"]);
  EXPECT_THAT(answer["failures"][0]["remedy"].get<std::string>(),
              StartsWith("The launcher's own logs tell why"));
  EXPECT_EQ((json{{{"version", "none"}, {"machines", 1}}}), answer["versions"]);
  EXPECT_THAT(page(), AllOf(HasSubstr("<span class=error>Error</span>: "),
                            HasSubstr("<p class=faint>Kept there as /var/lib/hotfix/2")));
}

TEST_F(ReportTest, ATraceAloneTellsTheRun) {
  proves("REPORT-2");
  ASSERT_EQ(0, installs().status);
  const std::string run = keptRuns().at(0);
  _sandbox.remove(run + "/result.json");

  const json answer = reported(0, {run});

  EXPECT_EQ((json{{{"version", "1.5"}, {"machines", 1}}}), answer["versions"]);
  EXPECT_THAT(page(), HasSubstr("Provision"));
}

TEST_F(ReportTest, AResultAloneIsCalledByTheFolderAbove) {
  proves("REPORT-2");
  _sandbox.writeFile("/in/mac7/20261122T153012.045Z-Quillmere/result.json", kResult);

  EXPECT_THAT(reported(0, {"/in/mac7/20261122T153012.045Z-Quillmere"})["failures"][0]["machines"],
              ElementsAre("mac7"));
}

TEST_F(ReportTest, OfAFolderEveryFileAndRunIsTaken) {
  proves("REPORT-2");
  _sandbox.writeFile("/in/mac2.json", kResult);
  _sandbox.writeFile("/in/mac1.json", kNote);
  _sandbox.writeFile("/in/mac3/status.json", kStatus);
  _sandbox.writeFile("/in/mac4/result.json", kResult);
  _sandbox.writeFile("/in/mac5/20261122T153012.045Z-Quillmere/result.json", kResult);
  _sandbox.writeFile("/in/mac5/20261122T153012.045Z-Quillmere/plan.json", "{}");
  _sandbox.writeFile("/in/report.html", "other");
  _sandbox.makeFolder("/in/lock");

  const json answer = reported(0, {"/in"});

  EXPECT_EQ(5, answer["machines"]);
  EXPECT_THAT(answer["failures"][0]["machines"], ElementsAre("mac2", "mac4", "mac5"));
  EXPECT_EQ("not-begun", answer["failures"][1]["cause"]);
  EXPECT_THAT(answer["failures"][1]["machines"], ElementsAre("mac1"));
  EXPECT_THAT(page(), AllOf(HasSubstr(rowOf("mac3")), HasSubstr("no share")));
}

TEST_F(ReportTest, AFileThatIsNamedMayHaveAnyNameAndBeALink) {
  proves("REPORT-2");
  _sandbox.writeFile("/in/data", kResult);
  _sandbox.makeLink("/in/mac1", "data");

  EXPECT_THAT(reported(0, {"/in/mac1"})["failures"][0]["machines"], ElementsAre("mac1"));
}

TEST_F(ReportTest, RelativePathsAreTheCallers) {
  _sandbox.writeFile("/in/mac1/result.json", kResult);
  RunOptions options;
  options.directory = "/in/mac1";

  EXPECT_EQ(0, report({"result.json"}, "page.html", options).status);
  EXPECT_THAT(_sandbox.readFile("/in/mac1/page.html").value_or(""), HasSubstr(rowOf("mac1")));
  EXPECT_EQ(0, report({"."}, "page.html", options).status);
  EXPECT_THAT(_sandbox.readFile("/in/mac1/page.html").value_or(""), HasSubstr(rowOf("mac1")));
}

// --- What is left out ----------------------------------------------------------------------------

TEST_F(ReportTest, WhatTellsNothingIsNamedAndTheRestGoesOn) {
  proves("REPORT-3");
  _sandbox.writeFile("/in/a.json", "{");
  _sandbox.writeFile("/in/b.json", "{\"schema\": \"hotfixctl/plan/1\"}");
  _sandbox.writeFile("/in/c.json", kResult);
  _sandbox.makeFolder("/empty");

  const json answer = reported(1, {"/in", "/missing.json", "/empty"});

  EXPECT_EQ(1, answer["status"]);
  EXPECT_EQ(1, answer["machines"]);
  std::vector<std::string> paths;
  for (const json& one : answer["notRead"]) paths.push_back(one["path"]);
  EXPECT_THAT(paths, ElementsAre("/in/a.json", "/in/b.json", "/missing.json", "/empty"));
  EXPECT_THAT(
      _complaints,
      AllOf(StartsWith("hotfixctl: \"/in/a.json\" is no JSON document\n"
                       "hotfixctl: \"/in/b.json\" is neither a status, a result, nor a "
                       "roll-out's note of a host\n"
                       "hotfixctl: \"/missing.json\" cannot be read: "),
            HasSubstr("hotfixctl: \"/empty\" holds no status, no result and no kept run\n")));
  EXPECT_THAT(page(), AllOf(HasSubstr("<h2>Not read: 4</h2>"), HasSubstr(rowOf("c")),
                            HasSubstr("<code>/in/a.json</code> is no JSON document")));
}

TEST_F(ReportTest, WhereNothingCouldBeReadThePageSaysSo) {
  proves("REPORT-3");
  EXPECT_EQ(1, report({"/missing"}).status);
  EXPECT_THAT(page(), AllOf(HasSubstr(">0 machines, "), HasSubstr("<code>/missing</code>")));
}

TEST_F(ReportTest, AKeptRunWithoutEverythingIsNamed) {
  proves("REPORT-3");
  const std::string run = "/in/mac1/20261122T153012.045Z-Quillmere";
  _sandbox.makeFolder(run);
  EXPECT_THAT((reported(1, {run}), _complaints),
              HasSubstr("\" holds neither a result nor a trace\n"));
  _sandbox.writeFile(run + "/install_trace.log", "nothing of ours\n");
  EXPECT_THAT((reported(1, {run}), _complaints),
              HasSubstr("/install_trace.log\" holds no run of the installer\n"));
  _sandbox.writeFile(run + "/result.json", kResult);
  const json answer = reported(1, {run});
  EXPECT_THAT(answer["failures"][0]["machines"], ElementsAre("mac1"));
  EXPECT_EQ(1u, answer["notRead"].size());
}

TEST_F(ReportTest, LinksPipesAndDeepFoldersInAFolderAreNotFollowed) {
  proves("REPORT-5");
  _sandbox.writeFile("/secret/mac9.json", kResult);
  _sandbox.makeFolder("/in");
  _sandbox.makeLink("/in/link", "/secret");
  _sandbox.makeLink("/in/mac8.json", "/secret/mac9.json");
  _sandbox.makePipe("/in/pipe.json");
  _sandbox.writeFile("/in/1/2/3/4/near.json", kResult);
  _sandbox.writeFile("/in/1/2/3/4/5/far.json", kResult);
  const std::string run = "/in/20261122T153012.045Z-Quillmere";
  _sandbox.makeFolder(run);
  _sandbox.makeLink(run + "/result.json", "/secret/mac9.json");
  _sandbox.makePipe(run + "/install_trace.log");

  const json answer = reported(1, {"/in"});

  EXPECT_EQ(1, answer["machines"]);
  EXPECT_THAT(answer["failures"][0]["machines"], ElementsAre("near"));
  EXPECT_EQ(4u, answer["notRead"].size());
  EXPECT_THAT(_complaints, AllOf(HasSubstr("\"/in/mac8.json\" cannot be read: "),
                                 HasSubstr("\"/in/pipe.json\" cannot be read: "),
                                 HasSubstr(run + "/result.json\" cannot be read: "),
                                 HasSubstr(run + "/install_trace.log\" cannot be read: ")));
}

TEST_F(ReportTest, WhatIsTooLongIsNotRead) {
  proves("REPORT-5");
  _sandbox.writeFile("/in/mac1.json", std::string((std::size_t{4} << 20) + 1, ' '));
  _sandbox.writeFile("/in/mac2.json",
                     kResult + std::string((std::size_t{4} << 20) - std::strlen(kResult), ' '));
  const std::string run = "/in/20261122T153012.045Z-Quillmere";
  _sandbox.writeFile(run + "/install_trace.log", "");
  std::filesystem::resize_file(_sandbox.host(run + "/install_trace.log"),
                               (std::uintmax_t{64} << 20) + 1);

  const json answer = reported(1, {"/in"});

  EXPECT_THAT(answer["failures"][0]["machines"], ElementsAre("mac2"));
  EXPECT_THAT(_complaints, AllOf(HasSubstr("\"/in/mac1.json\" is longer than 4 MiB\n"),
                                 HasSubstr("/install_trace.log\" is longer than 64 MiB\n")));
}

TEST_F(ReportTest, NamesThatMeanHarmAreText) {
  proves("REPORT-4");
  const std::string name = "<script>alert(1)<";
  _sandbox.writeFile("/in/" + name + ".json", kResult);
  _sandbox.writeFile("/in/" + name + "2.json", "{");

  const RunResult result = report({"/in"});

  EXPECT_EQ(1, result.status);
  EXPECT_THAT(page(), AllOf(HasSubstr(rowOf("&lt;script&gt;alert(1)&lt;")),
                            HasSubstr("<code>/in/&lt;script&gt;alert(1)&lt;2.json</code>"),
                            Not(HasSubstr("<script>alert"))));
}

// --- What it writes ------------------------------------------------------------------------------

TEST_F(ReportTest, ThePageIsReplacedWhole) {
  proves("REPORT-6");
  _sandbox.writeFile("/in/mac1.json", kResult);
  _sandbox.writeFile(kPage, "before", 0640);
  _sandbox.makeLink("/tmp/link.html", "/in/mac1.json");

  EXPECT_EQ(0, report({"/in"}).status);
  EXPECT_EQ(0, report({"/in"}, "/tmp/link.html").status);

  EXPECT_THAT(page(),
              AllOf(StartsWith("<!DOCTYPE html>\n<html lang=en>\n"), HasSubstr("</html>\n")));
  EXPECT_EQ(0640u, _sandbox.ownership(kPage).mode & 0777);
  EXPECT_TRUE(_sandbox.isRegular("/tmp/link.html"));
  EXPECT_EQ(kResult, _sandbox.readFile("/in/mac1.json"));
}

TEST_F(ReportTest, WithoutRoomTheOldPageStays) {
  proves("REPORT-6");
  _sandbox.writeFile("/in/mac1.json", kResult);
  _sandbox.makeFolder("/full");
  _sandbox.limitSpace("/full", 16384);
  _sandbox.writeFile("/full/page.html", "before");
  _sandbox.fillSpace("/full");

  const RunResult result = report({"/in"}, "/full/page.html");

  EXPECT_EQ(2, result.status);
  EXPECT_EQ("", result.out);
  EXPECT_THAT(result.err, StartsWith("hotfixctl: "));
  EXPECT_EQ("before", _sandbox.readFile("/full/page.html"));
  EXPECT_THAT(_sandbox.list("/full"), ElementsAre("filler", "page.html"));
}

TEST_F(ReportTest, WhatIsNoFileStays) {
  proves("REPORT-6");
  _sandbox.writeFile("/in/mac1.json", kResult);
  _sandbox.makePipe("/tmp/pipe");
  _sandbox.makeFolder("/tmp/folder");

  for (const std::string path : {"/tmp/pipe", "/tmp/folder"}) {
    const RunResult result = report({"/in"}, path);
    EXPECT_EQ(2, result.status);
    EXPECT_EQ("hotfixctl: \"" + path + "\" is no file\n", result.err);
  }
  EXPECT_EQ(2, report({"/in"}, "/none/page.html").status);
}

TEST_F(ReportTest, ADashIsStandardOutput) {
  proves("REPORT-6");
  _sandbox.writeFile("/in/mac1.json", kResult);
  _sandbox.writeFile("/in/mac2.json", "{");

  const RunResult result = report({"/in"}, "-");

  EXPECT_EQ(1, result.status);
  EXPECT_THAT(result.out, AllOf(StartsWith("<!DOCTYPE html>\n"), HasSubstr(rowOf("mac1"))));
  EXPECT_FALSE(_sandbox.exists("/-"));
  RunOptions broken;
  broken.brokenOutput = true;
  EXPECT_EQ(74, report({"/in/mac1.json"}, "-", broken).status);
}

TEST_F(ReportTest, TheAnswerCountsVersionsAndFailures) {
  proves("REPORT-6");
  _sandbox.writeFile("/in/mac2.json", kResult);
  _sandbox.writeFile("/in/mac1.json", kNote);

  const RunResult result = report({"/in"});

  EXPECT_EQ(
      "       2    with hotfix not known\n"
      "       1    failed: application-running\n"
      "       1    failed: not-begun\n"
      "2 machines in /tmp/report.html\n",
      result.out);
}

TEST_F(ReportTest, NothingElseIsChanged) {
  proves("REPORT-6");
  _sandbox.writeFile("/in/mac1.json", kResult);
  RunOptions options;
  options.systemLog = true;

  const RunResult result = report({"/in"}, kPage, options);

  EXPECT_EQ(0, result.status);
  EXPECT_THAT(result.systemLog, IsEmpty());
  EXPECT_THAT(_sandbox.list("/tmp"), ElementsAre("report.html"));
  EXPECT_THAT(_sandbox.list("/in"), ElementsAre("mac1.json"));
}

TEST_F(ReportTest, CommandLinesThatCannotBeMeantAreRefused) {
  const auto refused = [&](const std::vector<std::string>& arguments, const std::string& line) {
    const RunResult result = control(arguments);
    EXPECT_EQ(64, result.status);
    EXPECT_EQ(line, result.err);
  };
  refused({"report", "/in"}, "hotfixctl: report: -o is missing\n");
  refused({"report", "-o", kPage}, "hotfixctl: report: input is required\n");
  refused({"report", "--json", "-o", "-", "/in"},
          "hotfixctl: report: --json and -o - exclude each other\n");
}

}  // namespace
}  // namespace installer::cli
