#include "ctl/plan/ChangeTexts.h"

#include <fmt/format.h>

#include "ctl/Shown.h"
#include "ctl/plan/UnifiedDiff.h"
#include "platform/FileManager.h"

namespace installer::ctl {

namespace {

using Kind = overlay::Change::Kind;

// No text for what is no file; empty for what is not there.
std::optional<std::string> textOf(overlay::Tree& tree, const overlay::NodePtr& node) {
  if (!node) return std::string();
  if (!node->isFile()) return std::nullopt;
  return tree.read(*node, FileManager::kMaximumRead);
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

std::optional<std::string> diffOf(overlay::Tree& tree, const overlay::Change& change) {
  if (change.kind == Kind::attributes || change.kind == Kind::rewritten) return std::nullopt;
  const auto before = textOf(tree, change.old);
  const auto after = textOf(tree, change.now);
  const auto difference = before && after ? unifiedDiff(*before, *after) : std::nullopt;
  if (!difference || difference->empty()) return std::nullopt;
  const std::string name = shown(change.path);
  return fmt::format("--- {}\n+++ {}\n{}", change.old ? name : "/dev/null",
                     change.now ? name : "/dev/null", *difference);
}

}  // namespace installer::ctl
