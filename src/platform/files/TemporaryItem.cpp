#include "platform/files/TemporaryItem.h"

#include <exception>
#include <utility>

#include "platform/files/Claim.h"
#include "platform/files/TreeRemoval.h"

namespace installer {

TemporaryItem::~TemporaryItem() {
  if (!exists()) return;
  try {
    (void)removeEntry(_changes, _folder, _name);  // whatever ended the making is told already
  } catch (const std::exception&) {
    // Without memory it stays, as it would if the process were killed.
  }
}

// One that others were quicker to take for a left-over is gone; its maker will meet that.
std::optional<struct stat> TemporaryItem::isMade(const Descriptor& item) {
  std::optional<struct stat> seen;
  if (_isClaimed) (void)claim(item, &seen);
  return seen;
}

void TemporaryItem::keepOpen(Descriptor item) {
  if (_isClaimed) _made = std::move(item);
}

}  // namespace installer
