// Any bytes are read as a property list or refused; what was read is written and read again.

#include "ReadAgain.h"

namespace installer::fuzz {

void tryInput(std::string_view input) {
  if (const auto value = PropertyList::parse(input)) readAgain(*value);
}

}  // namespace installer::fuzz
