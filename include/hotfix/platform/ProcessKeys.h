#pragma once

#include <string_view>

/// The keys under which InstallUtil's questions about running processes find values. Under any
/// other key no process has one.
namespace installer::processKey {

/// The full path of the process's executable.
inline constexpr std::string_view kExecutable = "CFBundleExecutable";
/// The file name of that executable.
inline constexpr std::string_view kName = "CFBundleName";

}  // namespace installer::processKey
