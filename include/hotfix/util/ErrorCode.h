#pragma once

#include <array>
#include <string_view>

namespace installer {

/// Why an installation failed: the error record's ERROR_CODE. The graphical installer has a message
/// for each, into which it puts the record's ERROR_DETAILS. A number keeps its meaning for good;
/// what each stands for is told by kErrors.
enum class ErrorCode : int {
  none = 0,                   ///< no error, or none with a code of its own
  unsupportedCharacters = 3,  ///< a path holds a character that the platform's tooling cannot take
  manifestNotCopied = 4,      ///< the hotfix's install manifest is missing or could not be copied
  applicationRunning = 6,     ///< the application is running
  higherHotfixInstalled = 7,  ///< a higher hotfix is installed
  notInstalled = 8,           ///< no instance is installed
};

/// Numbers that are retired: they are not sent, and never used again.
inline constexpr std::array kRetiredErrorCodes = {1, 2, 5};

/// What a code stands for, in the words of the documents.
struct ErrorDescription {
  ErrorCode code;            ///< the code described
  std::string_view meaning;  ///< what has gone wrong
  std::string_view sender;   ///< the step that sends it
  std::string_view details;  ///< the texts of ERROR_DETAILS, in their order
};

/// Every code that is sent, by its number.
inline constexpr std::array<ErrorDescription, 6> kErrors{{
    {ErrorCode::none, "no error, or none with a code of its own", "the start of a run", "none"},
    {ErrorCode::unsupportedCharacters,
     "the package's or the destination's path holds an unsupported character", "the first check",
     "none"},
    {ErrorCode::manifestNotCopied,
     "the hotfix's install manifest is missing or could not be copied", "the installation",
     "the path of the missing manifest, or install.hotfix.xml"},
    {ErrorCode::applicationRunning, "the application is running", "the third check",
     "the bundle's name"},
    {ErrorCode::higherHotfixInstalled, "a higher hotfix is installed", "the fourth check",
     "the bundle's path"},
    {ErrorCode::notInstalled, "no instance is installed", "the second check",
     "the destination, the bundle's file name"},
}};

}  // namespace installer
