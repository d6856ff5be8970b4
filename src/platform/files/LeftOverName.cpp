#include "platform/LeftOverName.h"

#include "platform/files/TemporaryNames.h"

namespace installer {

bool canBeLeftOver(std::string_view name) {
  return TemporaryNames::canBeOne(name);
}

}  // namespace installer
