#pragma once

namespace installer {

// The numbers are the system log's own.
enum class LogLevel { error = 3, warning = 4, notice = 5, info = 6 };

}  // namespace installer
