#include "ctl/report/Page.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ctl/report/Html.h"
#include "ctl/report/MachineRow.h"
#include "ctl/report/PageParts.h"
#include "support/Judge.h"
#include "support/Proves.h"
#include "support/TemporaryFolder.h"

namespace installer::ctl::report {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;

constexpr std::int64_t kNow = 1'795'347'302;

ToldRun run(const std::string& cause) {
  ToldRun told;
  told.cause = cause;
  return told;
}
Told machine(const std::string& name, std::optional<ToldRun> last = std::nullopt,
             const std::optional<std::string>& version = "1.5") {
  const auto state = version ? InstanceState::hotfixInstalled : InstanceState::noHotfix;
  return {name, 1, {{"/A/Q.app", state, version, {}}}, std::move(last)};
}
std::string page(std::vector<Told> told, const std::vector<LeftOut>& leftOut = {}) {
  return pageOf(fleetOf(std::move(told)), leftOut, kNow);
}
std::string row(Told told) {
  std::string text;
  appendRow(fleetOf({std::move(told)}).machines.at(0), 17, text);
  return text;
}
std::string hashOf(std::string_view text) {
  const test::TemporaryFolder folder;
  folder.makeFile("part", std::string(text));
  const auto verdict = test::askJudge(
      folder.path(),
      "python3 -c 'import base64, hashlib\n"
      "print(\"sha256-\" + base64.b64encode(hashlib.sha256(open(\"part\", \"rb\").read()).digest())"
      ".decode(), end=\"\")'");
  return verdict.output;
}

TEST(ReportPageTest, NothingInATextBeginsOrEndsMarkup) {
  proves("REPORT-4");
  EXPECT_EQ("&lt;b a=&quot;&#39;&quot;&gt;&amp;amp;", html("<b a=\"'\">&amp;"));
  EXPECT_EQ("\\x1b[31m a\\u202e\\xff", html("\x1b[31m a\u202e\xff"));
}

TEST(ReportPageTest, ItAllowsItsOwnStyleAndScriptAlone) {
  proves("REPORT-4");
  // After a change of either these tell the new hashes.
  EXPECT_EQ(hashOf(kPageStyle), kPageStyleHash);
  EXPECT_EQ(hashOf(kPageScript), kPageScriptHash);

  const std::string text = page({machine("a")});

  EXPECT_THAT(text,
              HasSubstr("content=\"default-src 'none'; style-src '" + std::string(kPageStyleHash) +
                        "'; script-src '" + std::string(kPageScriptHash) +
                        "'; base-uri 'none'; form-action 'none'\""));
  EXPECT_THAT(text, HasSubstr("<style>" + std::string(kPageStyle) + "</style>"));
  EXPECT_THAT(text, HasSubstr("<script>" + std::string(kPageScript) + "</script>"));
  // Nothing is fetched: all links are within the page.
  EXPECT_THAT(text, AllOf(Not(HasSubstr("src=")), Not(HasSubstr("http:")), Not(HasSubstr("https:")),
                          Not(HasSubstr("url("))));
}

TEST(ReportPageTest, EveryTextOfAFileIsEscaped) {
  proves("REPORT-4");
  const std::string harm = "<i>\"'&";
  ToldRun last = run(harm);
  last.line = harm;
  last.packageVersion = harm;
  last.versionBefore = harm;
  last.keptRun = harm;
  last.problems = {{LogLevel::error, harm, harm, 1}};
  Told told{harm, 1, {{harm, InstanceState::needsAttention, harm, {{harm, harm, harm}}}}, last};

  const std::string text = page({told}, {{harm, harm}});

  EXPECT_THAT(text, Not(HasSubstr("<i>")));
  EXPECT_THAT(text, HasSubstr("<th scope=row>&lt;i&gt;&quot;&#39;&amp;<td>"));
}

TEST(ReportPageTest, VersionsAreCountedWithTheirShare) {
  proves("REPORT-1");
  const std::string text =
      page({machine("a"), machine("b"), machine("c", {}, "1.6"), machine("d", {}, std::nullopt)});

  EXPECT_THAT(text, HasSubstr("<p class=faint>4 machines, 2026-11-22 11:35:02 UTC, hotfixctl "));
  EXPECT_THAT(text, HasSubstr("<tr><th scope=row>1.5<td class=number>2<td><svg class=bar viewBox="
                              "\"0 0 1000 1\" preserveAspectRatio=none role=img aria-label=\"50%\">"
                              "<path d=M0,0h500v1h-500 /></svg>\n"
                              "<tr><th scope=row>1.6<td class=number>1<"));
  EXPECT_THAT(text, HasSubstr("<li class=none><b>1</b> without a hotfix\n"
                              "<li class=good><b>3</b> with a hotfix, all well\n"));
}

TEST(ReportPageTest, AFailureIsToldWithItsRemedyAndItsMachines) {
  proves("REPORT-1");
  const std::string text =
      page({machine("b", run("application-running")), machine("a", run("application-running")),
            machine("c", run("unheard-of")), machine("d")});

  EXPECT_THAT(text, HasSubstr("<li class=failed><b>3</b> failed\n"));
  EXPECT_THAT(text, HasSubstr("<tr><th scope=row>Application running<p class=faint>the application "
                              "is running<td class=number>2<td>Quit the application, of every "
                              "user, and run it again.<td><a href=#m0>a</a>, <a href=#m1>b</a>\n"));
  EXPECT_THAT(text,
              HasSubstr("<tr><th scope=row>Unheard of<p class=faint>a cause that this version "
                        "does not know<td class=number>1<td>"));
  EXPECT_THAT(text, HasSubstr("<tr class=failed id=m0><th scope=row>a<td>"));
  EXPECT_THAT(text, HasSubstr("<tr class=good><th scope=row>d<td>"));
}

TEST(ReportPageTest, OfManyMachinesTheFirstAreNamedBesideACause) {
  proves("REPORT-5");
  std::vector<Told> all;
  for (int i = 100; i < 150; ++i)
    all.push_back(machine("m" + std::to_string(i), run("interrupted")));

  const std::string text = page(std::move(all));

  EXPECT_THAT(text, HasSubstr("<a href=#m19>m119</a> and 30 more\n"));
  EXPECT_THAT(text, HasSubstr(" id=m49><th scope=row>m149<td>"));
}

TEST(ReportPageTest, FindingsAreCountedAndToldInTheRow) {
  proves("REPORT-1");
  Told told = machine("a");
  told.instances[0].state = InstanceState::needsAttention;
  told.instances[0].findings = {{"left-over-item", "Something was left.", "Wait."}};

  const std::string text = page({told});

  EXPECT_THAT(text, HasSubstr("<tr><th scope=row>Left over item<td class=number>1<td>"
                              "<a href=#m0>a</a>\n"));
  EXPECT_THAT(text, HasSubstr("<summary>Needs attention</summary>"));
  EXPECT_THAT(text, HasSubstr("<p class=faint>/A/Q.app: 1.5<ul><li>Something was left. <span "
                              "class=faint>Wait.</span></ul>"));
}

TEST(ReportPageTest, WhatIsNotThereHasNoTable) {
  const std::string text = page({machine("a")});

  EXPECT_THAT(text, AllOf(Not(HasSubstr("Failures by cause")), Not(HasSubstr("What needs")),
                          Not(HasSubstr("Not read"))));
  EXPECT_THAT(page({}), AllOf(HasSubstr("<p class=faint>0 machines, "), HasSubstr("id=machines")));
  EXPECT_THAT(page({machine("a")}), HasSubstr("<p class=faint>1 machine, "));
}

TEST(ReportPageTest, WhatWasNotReadIsNamed) {
  proves("REPORT-3");
  EXPECT_THAT(page({}, {{"/a", "is no JSON document"}}),
              HasSubstr("<h2>Not read: 1</h2>\n<ul>\n<li><code>/a</code> is no JSON document\n"));
  const std::string text = page({}, std::vector<LeftOut>(1002, {"/b", "is none"}));
  EXPECT_THAT(text, HasSubstr("<h2>Not read: 1002</h2>"));
  EXPECT_THAT(text, HasSubstr("<li><code>/b</code> is none\n<li>and 2 more\n</ul>"));
  EXPECT_THAT(page({}, std::vector<LeftOut>(1000, {"/b", "is none"})), Not(HasSubstr(" more\n")));
}

TEST(ReportPageTest, ARunIsATimelineOfItsSteps) {
  proves("REPORT-1");
  ToldRun last = run("installed");
  last.ended = kNow;
  last.seconds = 33;
  last.packageVersion = "1.6";
  last.versionBefore = "1.5";
  last.steps = {{StepKind::readPackage, 0, 0}, {StepKind::waitForInstaller, 0, 4},
                {StepKind::checkPaths, 4, 0},  {StepKind::checkInstance, 4, 0},
                {StepKind::removeOlder, 4, 6}, {StepKind::bringFiles, 10, 1},
                {StepKind::provision, 11, 19}, {StepKind::record, 30, 0},
                {StepKind::collectLogs, 31, 2}};

  EXPECT_EQ(
      "<tr class=good><th scope=row>a<td>1.6<td>2026-11-22 11:35:02<td class=number>33 s<td>"
      "<details><summary>Hotfix installed</summary><p>1.6 over 1.5"
      "<svg class=timeline viewBox=\"0 0 33 1\" preserveAspectRatio=none aria-hidden=true>"
      "<path class=wait d=M0,0h4v1h-4 /><path class=launcher d=M4,0h6v1h-6M11,0h19v1h-19 />"
      "<path class=files d=M10,0h1v1h-1 /><path class=recover d=M31,0h2v1h-2 /></svg>"
      "<p class=lines>+0 s Read package\n+0 s Wait for installer: 4 s\n"
      "+4 s Check paths, Check instance\n+4 s Remove older: 6 s\n+10 s Bring files: 1 s\n"
      "+11 s Provision: 19 s\n+30 s Record\n+31 s Collect logs: 2 s"
      "<p class=faint>/A/Q.app: 1.6</details>\n",
      row(machine("a", last, "1.6")));
}

TEST(ReportPageTest, AFailedRunTellsItsLineAndWhereItIsKept) {
  proves("REPORT-1");
  ToldRun last = run("provisioning-failed");
  last.line = "rc 13";
  last.packageVersion = "1.6";
  last.keptRun = "/var/lib/hotfix/one";
  last.problems = {{LogLevel::warning, "", "first", 1}, {LogLevel::error, "", "second", 2}};
  last.problemsLeftOut = 3;

  EXPECT_EQ(
      "<tr class=failed id=m17><th scope=row>a<td>none<td><td class=number><td>"
      "<details><summary>Provisioning failed</summary>"
      "<p>the platform&#39;s launcher did not install the hotfix<p>rc 13<p>1.6 over none"
      "<p class=faint>The steps of its last run were not told."
      "<ul><li>+1 s <span>Warning</span>: first<li>+2 s <span class=error>Error</span>: second"
      "<li>and 3 more</ul><p class=faint>Kept there as /var/lib/hotfix/one"
      "<p class=faint>/A/Q.app: none</details>\n",
      row(machine("a", last, std::nullopt)));
}

TEST(ReportPageTest, OnlyWhatIsWrongIsToldAtLength) {
  ToldRun last = run("installed");
  last.keptRun = "/kept";

  EXPECT_THAT(row(machine("a", last)),
              AllOf(Not(HasSubstr("/kept")), Not(HasSubstr("was installed"))));
}

TEST(ReportPageTest, EachStandingHasItsClass) {
  EXPECT_THAT(row(machine("a", run("at-work"))), HasSubstr("<tr class=work><"));
  EXPECT_THAT(row(machine("a", {}, std::nullopt)), HasSubstr("<tr class=none><"));
  Told told = machine("a");
  told.instances[0].state = InstanceState::notReadable;
  EXPECT_THAT(row(told), HasSubstr("<tr class=attention id=m17><th scope=row>a<td>not known<td>"));
  EXPECT_THAT(row(told), HasSubstr("/A/Q.app: not known"));
}

TEST(ReportPageTest, TheRowsComeInBodiesOfAHundred) {
  std::vector<Told> all;
  for (int i = 100; i < 301; ++i) all.push_back(machine(std::to_string(i)));

  const std::string text = page(std::move(all));

  std::size_t bodies = 0;
  const std::size_t begin = text.find("id=machines");
  for (std::size_t at = begin; (at = text.find("<tbody>", at)) != std::string::npos; ++at) ++bodies;
  EXPECT_EQ(3u, bodies);
  EXPECT_THAT(text, HasSubstr("<tbody>\n<tr class=good><th scope=row>200<td>"));
  EXPECT_THAT(std::string(kPageScript), HasSubstr("const together = 100;"));
}

TEST(ReportPageTest, TenThousandMachinesTakeAKilobyteEachAtMost) {
  proves("REPORT-7");
  std::vector<Told> all;
  for (int i = 0; i < 10'000; ++i) {
    ToldRun last = run(i % 10 == 0 ? "provisioning-failed" : "installed");
    last.line = "The launcher answered 13.";
    all.push_back(machine("host" + std::to_string(i) + ".example.test", std::move(last)));
  }

  EXPECT_LE(page(std::move(all)).size(), 10'000u * 1000u);
}

TEST(ReportPageTest, ItSaysInMarkupAndStyleWhatScreensAndReadersNeed) {
  proves("REPORT-7");
  const std::string text = page({machine("a", run("provisioning-failed"))});

  EXPECT_THAT(text, AllOf(HasSubstr("<html lang=en>"), HasSubstr("<meta name=viewport "),
                          HasSubstr("<meta name=color-scheme content=\"light dark\">"),
                          HasSubstr("<th scope=row>a<"), HasSubstr("<details>")));
  const std::string style(kPageStyle);
  EXPECT_THAT(style, AllOf(HasSubstr("(prefers-color-scheme: dark)"), HasSubstr("@media print"),
                           HasSubstr("(max-width: 600px)")));
}

TEST(ReportPageTest, TheKeyNamesEachStep) {
  std::string text;
  appendKey(text);

  for (int kind = 0; kind <= static_cast<int>(StepKind::collectLogs); ++kind) {
    const auto step = static_cast<StepKind>(kind);
    EXPECT_THAT(text,
                HasSubstr("<dt>" + labelOf(nameOf(step)) + "<dd>" + std::string(wordsOf(step))));
  }
  EXPECT_THAT(text, HasSubstr("<path class=launcher d=M0,0h1v1h-1 /></svg>the platform's launcher "
                              "at work"));
}

}  // namespace
}  // namespace installer::ctl::report
