#pragma once

#include <ctime>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace installer::ctl::support {

enum class ArchiveForm { tarGzip, zip };

// The form that the file's name asks for: .tar.gz, .tgz or .zip, whatever the letter case; nullopt
// for another name.
std::optional<ArchiveForm> archiveFormOf(std::string_view name);

// A file in the archive. Its owner and mode there tell nothing.
struct ArchivedFile {
  std::string path;  // relative, plain letters
  std::string_view bytes;
};

// Why archives cannot be made on this machine; empty when they can.
const std::string& archiveLack();

// The archive's bytes, where nothing lacks; nullopt, with the reason, when they cannot be made.
// `time` is every file's.
[[nodiscard]] std::optional<std::string> archiveOf(const std::vector<ArchivedFile>& files,
                                                   ArchiveForm form, std::time_t time,
                                                   std::string& reason);

}  // namespace installer::ctl::support
