#include "faults/Reports.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <optional>
#include <sstream>
#include <utility>

#include "cli/Fixtures.h"
#include "faults/Normal.h"
#include "faults/Paths.h"
#include "support/ListText.h"

namespace installer::faults {

namespace {

// Level and text of a trace line; nothing for a line of another form.
std::optional<std::pair<std::string, std::string>> traceLine(const std::string& line) {
  const std::string name = " HotfixInstaller[";
  const std::size_t start = line.find(name);
  const std::size_t level = line.find("] <", start);
  const std::size_t text = line.find(">: ", level);
  if (start == std::string::npos || level == std::string::npos || text == std::string::npos)
    return std::nullopt;
  return std::pair(line.substr(level + 3, text - level - 3), line.substr(text + 3));
}

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

// The record's code; nothing when it is no record.
std::optional<int> codeIn(const std::string& record) {
  const auto list = test::readXmlList(record);
  if (!list) return std::nullopt;
  const test::ListValue* code = list->find("ERROR_CODE");
  const test::ListValue* details = list->find("ERROR_DETAILS");
  if (code == nullptr || code->kind != "integer" || details == nullptr || details->kind != "array")
    return std::nullopt;
  return std::stoi(code->text);
}

bool provisionedItself(const Scenario& scenario, const Run& run) {
  const std::string result =
      contentOf(run.files, scenario.bundle + "/Contents/MacOS/.provisioning_rc");
  if (run.launches.empty() || (result != "rc=0\n" && result != "rc=2\n")) return false;
  const auto& snapshots = run.launches.back().snapshots;
  return std::any_of(snapshots.begin(), snapshots.end(), [&](const auto& snapshot) {
    return snapshot.second == "F" + scenario.ownManifest;
  });
}

}  // namespace

std::string contentOf(const Files& files, const std::string& path) {
  const auto found = files.find(path);
  return found == files.end() ? std::string() : found->second.content;
}

std::set<std::string> complaintsIn(const std::string& trace) {
  std::set<std::string> complaints;
  for (const std::string& line : linesOf(trace)) {
    const auto parts = traceLine(line);
    if (parts && (parts->first == "Error" || parts->first == "Warning"))
      complaints.insert(parts->second);
  }
  return complaints;
}

std::vector<Violation> judgeTrace(const Files& files) {
  const std::string trace = contentOf(files, cli::kTrace);
  if (!trace.empty() && trace.back() != '\n') return {{"trace", "ends within a line"}};
  for (const std::string& line : linesOf(trace))
    if (!traceLine(line)) return {{"trace", "holds the line: " + line}};
  return {};
}

std::vector<Violation> judgeRecord(const Files& files) {
  constexpr std::array kCodes{0, 3, 4, 6, 7, 8};
  if (!files.contains(cli::kPasteboard)) return {};
  const std::string record = contentOf(files, cli::kPasteboard);
  const auto code = codeIn(record);
  if (!code) return {{"record", "can not be read: " + record}};
  if (std::find(kCodes.begin(), kCodes.end(), *code) == kCodes.end())
    return {{"record", fmt::format("has the code {}", *code)}};
  return {};
}

std::vector<Violation> judgeEnd(const Run& run) {
  if (run.end.late || !run.othersEnded) return {{"hang", "does not end by itself"}};
  if (run.end.signal != 0) return {{"status", fmt::format("ended by signal {}", run.end.signal)}};
  if (run.end.status != 0 && run.end.status != 1)
    return {{"status", fmt::format("is {}", run.end.status)}};
  return {};
}

std::vector<Violation> judgeStatus(const Scenario& scenario, const Run& run) {
  if (auto found = judgeEnd(run); !found.empty()) return found;
  if (run.end.status == 0 && !provisionedItself(scenario, run))
    return {{"false-success", "status 0, but this hotfix's manifest was not provisioned"}};
  return {};
}

std::vector<Violation> judgeLeftOvers(const Files& files, const Files& before) {
  std::vector<Violation> found;
  for (const auto& [path, entry] : files) {
    const bool isInOther = isTemporary(folderOf(path));
    if (isTemporary(path) && !isInOther && !before.contains(path))
      found.push_back({"left-over", path});
  }
  return found;
}

std::vector<Violation> endsAsExpected(const Scenario& scenario, const Run& run) {
  std::vector<Violation> found = judgeStatus(scenario, run);
  for (Violation& violation : judgeLeftOvers(run.files, {})) found.push_back(std::move(violation));
  if (run.end.status != scenario.status)
    found.push_back(
        {"scenario", fmt::format("status {} instead of {}", run.end.status, scenario.status)});
  const auto code = codeIn(contentOf(run.files, cli::kPasteboard));
  if (code != scenario.code)
    found.push_back(
        {"scenario", fmt::format("code {} instead of {}", code.value_or(-1), scenario.code)});
  return found;
}

}  // namespace installer::faults
