#pragma once

#include <cstddef>
#include <optional>

namespace installer {

// Whether standard input and output are terminals.
bool inputIsTerminal();
bool outputIsTerminal();

// How wide that terminal is; nullopt when it is none or does not tell.
[[nodiscard]] std::optional<std::size_t> terminalColumns();

}  // namespace installer
