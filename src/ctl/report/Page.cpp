#include "ctl/report/Page.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <utility>

#include "ctl/report/Html.h"
#include "ctl/report/MachineRow.h"
#include "ctl/report/Moment.h"
#include "ctl/report/PageParts.h"
#include "hotfix/Version.h"

namespace installer::ctl::report {

namespace {

// Beside a cause; all of them are in the table of the machines.
constexpr std::size_t kMostNamed = 20;
constexpr std::size_t kMostLeftOut = 1000;
constexpr std::int64_t kBar = 1000;  // its whole length
// Of the machines' table; the script knows the number, too.
constexpr std::size_t kRowsTogether = 100;

class Page {
 public:
  Page(const Fleet& fleet, const std::vector<LeftOut>& leftOut)
      : _fleet(fleet), _leftOut(leftOut) {}

  std::string made(std::int64_t now) {
    head();
    append("<h1>Hotfix report</h1>\n<p class=faint>{}, {} UTC, hotfixctl {}\n",
           counted(_fleet.machines.size()), utcText(now), kVersion);
    sums();
    leftOut();
    versions();
    failures();
    findings();
    machines();
    appendKey(_page);
    append("</main>\n<script>{}</script>\n</html>\n", kPageScript);
    return std::move(_page);
  }

 private:
  template <typename... Values>
  void append(fmt::format_string<Values...> form, Values&&... values) {
    fmt::format_to(std::back_inserter(_page), form, std::forward<Values>(values)...);
  }

  static std::string counted(std::size_t number) {
    return fmt::format("{} {}", number, number == 1 ? "machine" : "machines");
  }

  void head() {
    append(
        "<!DOCTYPE html>\n<html lang=en>\n<head>\n<meta charset=utf-8>\n"
        "<meta http-equiv=Content-Security-Policy content=\"default-src 'none'; style-src '{}'; "
        "script-src '{}'; base-uri 'none'; form-action 'none'\">\n"
        "<meta name=viewport content=\"width=device-width, initial-scale=1\">\n"
        "<meta name=color-scheme content=\"light dark\">\n"
        "<title>Hotfix report</title>\n<style>{}</style>\n</head>\n<body>\n<main>\n",
        kPageStyleHash, kPageScriptHash, kPageStyle);
  }

  void sums() {
    constexpr std::array kSums{std::pair(Standing::failed, "failed"),
                               std::pair(Standing::needsAttention, "need attention"),
                               std::pair(Standing::atWork, "at work"),
                               std::pair(Standing::noHotfix, "without a hotfix"),
                               std::pair(Standing::good, "with a hotfix, all well")};
    _page += "<ul class=sums>\n";
    for (const auto& [standing, words] : kSums) {
      const auto count = std::count_if(
          _fleet.machines.begin(), _fleet.machines.end(),
          [&, wanted = standing](const Machine& one) { return one.standing == wanted; });
      append("<li class={}><b>{}</b> {}\n", classOf(standing), count, words);
    }
    _page += "</ul>\n";
  }

  void leftOut() {
    if (_leftOut.empty()) return;
    append("<h2>Not read: {}</h2>\n<ul>\n", _leftOut.size());
    for (std::size_t i = 0; i < std::min(_leftOut.size(), kMostLeftOut); ++i)
      append("<li><code>{}</code> {}\n", html(_leftOut[i].path), html(_leftOut[i].reason));
    if (_leftOut.size() > kMostLeftOut) append("<li>and {} more\n", _leftOut.size() - kMostLeftOut);
    _page += "</ul>\n";
  }

  void versions() {
    _page +=
        "<h2>Hotfix versions</h2>\n<table id=versions><thead><tr><th scope=col>Hotfix"
        "<th scope=col class=number>Machines<th scope=col>Share</thead><tbody>\n";
    const std::size_t all = std::max<std::size_t>(1, _fleet.machines.size());
    for (const Group& group : _fleet.versions) {
      const std::size_t share = group.machines.size() * kBar / all;
      append(
          "<tr><th scope=row>{}<td class=number>{}<td><svg class=bar viewBox=\"0 0 {} 1\" "
          "preserveAspectRatio=none role=img aria-label=\"{}%\"><path d=M0,0h{}v1h-{} /></svg>\n",
          html(group.name), group.machines.size(), kBar, share * 100 / kBar, share, share);
    }
    _page += "</table>\n";
  }

  // The first of them, with links to their rows.
  void names(const Group& group) {
    for (std::size_t i = 0; i < std::min(group.machines.size(), kMostNamed); ++i) {
      const std::size_t number = group.machines[i];
      append("{}<a href=#m{}>{}</a>", i > 0 ? ", " : "", number,
             html(_fleet.machines[number].name));
    }
    if (group.machines.size() > kMostNamed)
      append(" and {} more", group.machines.size() - kMostNamed);
  }

  void failures() {
    if (_fleet.failures.empty()) return;
    _page +=
        "<h2>Failures by cause</h2>\n<table class=wide id=failures><thead><tr><th scope=col>Cause"
        "<th scope=col class=number>Machines<th scope=col>What to do<th scope=col>Where"
        "</thead><tbody>\n";
    for (const Group& group : _fleet.failures) {
      const CauseWords words = wordsOf(group.name);
      append("<tr><th scope=row>{}<p class=faint>{}<td class=number>{}<td>{}<td>",
             html(labelOf(group.name)), html(words.meaning), group.machines.size(),
             html(words.remedy));
      names(group);
      _page += "\n";
    }
    _page += "</table>\n";
  }

  // What to do differs from one to the next; the machines' rows tell.
  void findings() {
    if (_fleet.findings.empty()) return;
    _page +=
        "<h2>What needs attention</h2>\n<table class=wide id=findings><thead><tr><th scope=col>"
        "Finding<th scope=col class=number>Machines<th scope=col>Where</thead><tbody>\n";
    for (const Group& group : _fleet.findings) {
      append("<tr><th scope=row>{}<td class=number>{}<td>", html(labelOf(group.name)),
             group.machines.size());
      names(group);
      _page += "\n";
    }
    _page += "</table>\n";
  }

  void machines() {
    _page +=
        "<h2>Machines</h2>\n<form id=filter hidden>"
        "<label><span>Name, version or result</span><input name=text type=search></label>"
        "<label><span>Result</span><select name=result><option value=\"\">All</option></select>"
        "</label><output></output></form>\n"
        "<table class=wide id=machines><thead><tr><th scope=col>Machine<th scope=col>Hotfix"
        "<th scope=col>Last run, UTC<th scope=col class=number>Took<th scope=col>Result"
        "</thead>";
    for (std::size_t i = 0; i < _fleet.machines.size(); ++i) {
      if (i % kRowsTogether == 0) _page += "<tbody>\n";
      appendRow(_fleet.machines[i], i, _page);
    }
    _page += "</table>\n";
  }

  const Fleet& _fleet;
  const std::vector<LeftOut>& _leftOut;
  std::string _page;
};

}  // namespace

std::string pageOf(const Fleet& fleet, const std::vector<LeftOut>& leftOut, std::int64_t made) {
  return Page(fleet, leftOut).made(made);
}

}  // namespace installer::ctl::report
