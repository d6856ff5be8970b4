#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "hotfix/base/DeletedForNull.h"
#include "hotfix/base/PropertyList.h"
#include "hotfix/platform/ProcessKeys.h"
#include "hotfix/util/ErrorCode.h"

namespace installer {

/// Operations of the installer without state: its errors, the processes and bundles of the machine,
/// files and receipts, tracing and locale, the manifest version. None throws but std::bad_alloc,
/// and std::runtime_error where a list needs the XML library, which cannot be loaded.
class InstallUtil {
 public:
  InstallUtil() = delete;

  // --- Errors ------------------------------------------------------------------------------------

  /// Clears the pasteboard that the graphical installer reads; with `initialize` it then holds the
  /// record of code 0 without details, otherwise nothing.
  static void initInternalPasteboard(bool initialize);

  /// Replaces the record on the pasteboard; an absent record is ignored.
  static void sendErrorMessage(const std::optional<PropertyList::Dictionary>& message);
  /// Builds the record {ERROR_CODE, ERROR_DETAILS} and sends it.
  static void sendErrorMessage(ErrorCode code, const std::vector<std::string>& details);

  /// The record on the pasteboard, whoever put it there; nullopt when there is none.
  [[nodiscard]] static std::optional<PropertyList::Dictionary> getErrorMessage();

  // --- Processes and bundles ---------------------------------------------------------------------

  /// Hands a whole command line to the system's shell, waits, and answers the wait status
  /// unchanged; -1 when no shell can be started. The shell writes to our standard output and error.
  [[nodiscard]] static int startProvisionWithArgs(const std::string& args);

  /// The values that the running processes have under a key of hotfix/platform/ProcessKeys.h,
  /// in the order of the process list; those that have none are left out.
  static std::vector<std::string> getAllProcess(std::string_view key);

  /// Whether a process's executable path begins with `path`, ignoring case. No separator is looked
  /// for behind it: "/A/Q.app" matches "/A/Q.app2/x" too, and "" matches every process. Each path
  /// looked at is logged at info level.
  static bool checkBundleIsRunning(const std::string& path);
  /// The same for any key; under the executable key `path` counts with its links resolved too,
  /// where the system reports paths that way.
  static bool checkBundleIsRunning(const std::string& path, std::string_view kCFBundleKey);

  /// `path` up to the last ".app" that "/Contents/MacOS" follows (case-sensitive); else nullopt.
  [[nodiscard]] static std::optional<std::string> getBundlePath(std::string_view path);

  /// CFBundleIdentifier from the bundle's Contents/Info.plist, "~" expanded; nullopt when file or
  /// text is missing.
  [[nodiscard]] static std::optional<std::string> getBundleID(const std::string& path);

  /// The application's name above an rcp home: upward to the first component that ends in "app",
  /// its text before the first dot. Without one "/" (for a relative path "") after an error line.
  static std::string getTargetNameBy(const std::string& pathToRcphome);

  // --- Files and receipts ------------------------------------------------------------------------

  /// Copies a folder that is not there yet, whole: true when that succeeded. False for an absent
  /// path or a missing source.
  ///
  /// Into an existing destination it merges and answers false whatever came of it, by design:
  /// - a folder of the source (links to folders count) is merged the same way into an entry that
  ///   is there, and copied whole where there is none;
  /// - anything else replaces the entry of its name, a folder with all below it too; what cannot be
  ///   copied still loses its old entry;
  /// - entries that only the destination has stay;
  /// - a link in the destination that leads out of the application bundle around it, or into the
  ///   source, is replaced and not followed.
  [[nodiscard]] static bool copyFolderFrom(const std::optional<std::string>& source,
                                           const std::optional<std::string>& to);

  /// Gives everything below the folder, not the folder itself, to the console user: group "admin",
  /// mode 0775. True when every change succeeded; false for an absent or missing folder.
  [[nodiscard]] static bool changeAttributesForDirectory(
      const std::optional<std::string>& directory);

  /// Lets the system forget the package's receipt and waits for it; nothing for an absent
  /// identifier or on a system without receipts. No outcome is reported.
  static void removeReceipt(const std::optional<std::string>& packageIdentifier);

  /// Replaces "${package}" by the path in every text of the dictionary (not in nested values), as
  /// it stands, ".." and all. An absent path changes nothing.
  static void replacePackageVariableWith(const std::optional<std::string>& path,
                                         PropertyList::Dictionary& inProperties);

  // --- Tracing, locale and characters ------------------------------------------------------------

  /// True always: tracing cannot be switched off. The user's preference is read all the same.
  static bool shouldWriteTraces();

  /// Opens the trace file anew and mirrors the system log into it: 0, or -1 when it cannot be had.
  /// The descriptor stays open until the process ends; openTraceFile() is for who wants to close
  /// it.
  [[nodiscard]] static int setupTraceOutput();
  /// The opened and mirrored trace file's descriptor, the caller's to end with closeTraceFile(); -1
  /// when it cannot be had.
  [[nodiscard]] static int openTraceFile();
  /// The same with a file of the caller's own at `path`, next to the trace file or without it. What
  /// the file held is gone; one that is a link, has several names or is another user's is replaced
  /// by a new one (mode 0644).
  [[nodiscard]] static int openTraceFile(const std::string& path);
  /// Ends the mirroring into what openTraceFile() answered and closes it; nothing happens for -1.
  static void closeTraceFile(int descriptor);

  /// The console user's locale identifier, "en_US" when the user has none.
  static std::string getCurrentLocale();

  /// Whether the platform's tooling cannot take the path: it holds one of ! " ' ; \ # % | = ? or a
  /// colon. False for an absent or empty path.
  static bool containUnSupportedCharacters(const std::optional<std::string>& path);

  /// Whether the text begins with the prefix, ignoring case by Unicode's full folding ("ß" is
  /// "ss"). False for an empty prefix.
  static bool hasPrefixCaseInsensitive(std::string_view string, std::string_view prefix);

  // --- Manifest version --------------------------------------------------------------------------

  /// Ten digits of the local time, DDMMYYhhmm. Two calls within a minute give the same.
  static std::string generateNewManifestVersion();

  /// A one-character text with "0" before it; any other text as it is.
  static std::string processDate(const std::string& date);

  /// The path without its last three components: X/Suite.mpkg for
  /// X/Suite.mpkg/Contents/Packages/Part.pkg.
  static std::string getPathToMPKGThrough(const std::string& path);
  /// One component less still: X.
  static std::string getInstallerRootThrough(const std::string& path);

  /// @cond
  // A text is no truth: "false" would count as true.
  static void initInternalPasteboard(const void* text) = delete;
  // No text is nullptr; an absent one is std::nullopt.
  HOTFIX_DELETED_FOR_NULL(static void startProvisionWithArgs);
  HOTFIX_DELETED_FOR_NULL(static void getAllProcess);
  HOTFIX_DELETED_FOR_NULL(static void checkBundleIsRunning);
  HOTFIX_DELETED_FOR_NULL(static void getBundlePath);
  HOTFIX_DELETED_FOR_NULL(static void getBundleID);
  HOTFIX_DELETED_FOR_NULL(static void getTargetNameBy);
  HOTFIX_DELETED_FOR_NULL(static void copyFolderFrom);
  HOTFIX_DELETED_FOR_NULL(static void changeAttributesForDirectory);
  HOTFIX_DELETED_FOR_NULL(static void removeReceipt);
  HOTFIX_DELETED_FOR_NULL(static void replacePackageVariableWith);
  HOTFIX_DELETED_FOR_NULL(static void openTraceFile);
  HOTFIX_DELETED_FOR_NULL(static void containUnSupportedCharacters);
  HOTFIX_DELETED_FOR_NULL(static void hasPrefixCaseInsensitive);
  HOTFIX_DELETED_FOR_NULL(static void processDate);
  HOTFIX_DELETED_FOR_NULL(static void getPathToMPKGThrough);
  HOTFIX_DELETED_FOR_NULL(static void getInstallerRootThrough);
  /// @endcond
};

}  // namespace installer
