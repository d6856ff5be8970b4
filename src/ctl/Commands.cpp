#include "ctl/Commands.h"

namespace installer::ctl {

std::span<const Command> commands() {
  return {};
}

}  // namespace installer::ctl
