#include "platform/files/TemporaryItem.h"

#include <exception>
#include <utility>

#include "platform/files/Claim.h"
#include "platform/files/TreeRemoval.h"

namespace installer {

TemporaryItem::~TemporaryItem() {
  if (!exists()) return;
  try {
    // Whatever ended the making is told already.
    (void)(_ownFolder ? removeFolder(_changes, _folder, _name, *_ownFolder)
                      : _changes.unlink(_folder, _name));
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

// Only entries below this very folder are ours to remove: where others can write, they can give the
// name to another one, which they could not empty themselves.
void TemporaryItem::isMadeAsFolder(const Descriptor& item) {
  _ownFolder = identityOf(item.get());
  (void)isMade(item);
}

void TemporaryItem::keepOpen(Descriptor item) {
  if (_isClaimed) _made = std::move(item);
}

}  // namespace installer
