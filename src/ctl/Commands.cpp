#include "ctl/Commands.h"

#include <array>

#include "ctl/lint/LintCommand.h"

namespace installer::ctl {

std::span<const Command> commands() {
  static const std::array kAll{kLint};
  return kAll;
}

}  // namespace installer::ctl
