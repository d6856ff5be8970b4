#include "ctl/QuietPlatform.h"

#include <algorithm>

namespace installer::ctl {

void QuietPlatform::Log::write(LogLevel level, std::string_view message) {
  const bool isKnown = std::find(errors.begin(), errors.end(), message) != errors.end();
  if (level == LogLevel::error && !isKnown) errors.emplace_back(message);
}

}  // namespace installer::ctl
