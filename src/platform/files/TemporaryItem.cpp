#include "platform/files/TemporaryItem.h"

#include <exception>

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

}  // namespace installer
