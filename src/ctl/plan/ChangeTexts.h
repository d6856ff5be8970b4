#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/overlay/Changes.h"

namespace installer::ctl {

// "created", "removed", "replaced", "attributes" or "rewritten".
std::string_view nameOf(overlay::Change::Kind kind);
// "file", "folder", "link" or "other".
std::string_view nameOf(EntryKind kind);

// Whether the change is one of owners and modes alone, of which a run makes many.
inline bool isOfAttributes(const overlay::Change& change) {
  return change.kind == overlay::Change::Kind::attributes;
}

// Of one column: "+", "-", "~" for new content, "=" for the same.
std::string_view markOf(overlay::Change::Kind kind);

// Four octal digits.
std::string modeText(const overlay::Status& status);
// Kind, mode, owner and group.
std::string statusText(const overlay::Status& status);

// The file that the new bytes come from; nullopt when the run has made them.
std::optional<std::string> sourceOf(const overlay::Change& change);

// How a file's text changes.
struct Difference {
  std::optional<std::string> text;  // with the two lines that name the file
  std::string_view reason;          // why there is none; empty where none is to be expected
};
Difference differenceOf(overlay::Tree& tree, const overlay::Change& change);

}  // namespace installer::ctl
