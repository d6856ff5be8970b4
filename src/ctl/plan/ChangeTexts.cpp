#include "ctl/plan/ChangeTexts.h"

#include <fmt/format.h>

#include <cerrno>

#include "ctl/Shown.h"
#include "ctl/plan/UnifiedDiff.h"
#include "platform/FileManager.h"

namespace installer::ctl {

namespace {

using Kind = overlay::Change::Kind;

constexpr std::string_view kTooLong = "too long to compare";

// The file's bytes, empty for what is not there. Where there are none that can be compared `reason`
// tells why, but for what is no file.
std::optional<std::string> textOf(overlay::Tree& tree, const overlay::NodePtr& node,
                                  std::string_view& reason) {
  if (!node) return std::string();
  if (!node->isFile()) return std::nullopt;
  auto bytes = tree.read(*node, FileManager::kMaximumRead);
  if (bytes && isText(*bytes)) return bytes;
  if (bytes)
    reason = "no text";
  else
    reason = errno == EFBIG ? kTooLong : "cannot be read";
  return std::nullopt;
}

}  // namespace

std::string_view nameOf(Kind kind) {
  switch (kind) {
    case Kind::created:
      return "created";
    case Kind::removed:
      return "removed";
    case Kind::replaced:
      return "replaced";
    case Kind::attributes:
      return "attributes";
    case Kind::rewritten:
      break;
  }
  return "rewritten";
}

std::string_view nameOf(EntryKind kind) {
  switch (kind) {
    case EntryKind::file:
      return "file";
    case EntryKind::folder:
      return "folder";
    case EntryKind::link:
      return "link";
    case EntryKind::other:
    case EntryKind::unknown:
      break;
  }
  return "other";
}

std::string_view markOf(Kind kind) {
  if (kind == Kind::created) return "+";
  if (kind == Kind::removed) return "-";
  return kind == Kind::replaced ? "~" : "=";
}

std::string statusText(const overlay::Status& status) {
  return fmt::format("{} {} {}:{}", nameOf(status.kind), modeText(status), status.owner,
                     status.group);
}

std::string modeText(const overlay::Status& status) {
  return fmt::format("{:04o}", status.mode);
}

std::optional<std::string> sourceOf(const overlay::Change& change) {
  const bool isNew = change.kind == Kind::created || change.kind == Kind::replaced;
  if (!isNew || !change.now->isFile() || change.now->content.bytes) return std::nullopt;
  return change.now->content.realPath();
}

Difference differenceOf(overlay::Tree& tree, const overlay::Change& change) {
  Difference difference;
  if (change.kind == Kind::attributes || change.kind == Kind::rewritten) return difference;
  if (!change.isForeseen()) return {std::nullopt, "what is logged is not foreseen"};
  const auto before = textOf(tree, change.old, difference.reason);
  const auto after = textOf(tree, change.now, difference.reason);
  if (!before || !after) return difference;
  const auto lines = unifiedDiff(*before, *after);
  if (!lines) return {std::nullopt, kTooLong};
  if (lines->empty()) return difference;
  const std::string name = shown(change.path);
  difference.text = fmt::format("--- {}\n+++ {}\n{}", change.old ? name : "/dev/null",
                                change.now ? name : "/dev/null", *lines);
  return difference;
}

}  // namespace installer::ctl
