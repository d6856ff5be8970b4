#pragma once

#include <optional>
#include <string>

namespace installer {

// The Java home that the host's own conventions tell, beyond the two places of macOS: JAVA_HOME
// when it is set, else the folder of the first "java" on PATH (links resolved, "bin/java" removed).
// One that others than root and the effective user could exchange is passed over with one warning
// line. nullopt when neither tells one, and always on macOS.
[[nodiscard]] std::optional<std::string> hostJavaHome();

}  // namespace installer
