#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace sample {

// The whole content of a regular file; nullopt for everything else.
std::optional<std::string> readFile(const std::filesystem::path& file);

// Replaces `file` whole, so that a reader sees the old content or the new one.
bool writeFile(const std::filesystem::path& file, const std::string& content);

// The names in a folder, sorted; none when it cannot be listed.
std::vector<std::string> namesIn(const std::filesystem::path& folder);

// The value under `key` of a Java properties file, its backslash escapes taken away; nullopt when
// the file or the key is missing. The last one of several equal keys counts.
std::optional<std::string> readProperty(const std::filesystem::path& file, const std::string& key);

// Whether an identifier or a version can be the name of a file and leads nowhere else: letters,
// digits, dots, dashes and underscores, at least one of them no dot.
bool isPlainName(const std::string& text);

// Tells two contents apart. There is nobody to be fooled here, so that 64 bits of FNV-1a, as
// sixteen hexadecimal digits, are enough.
std::string digestOf(const std::string& content);

}  // namespace sample
