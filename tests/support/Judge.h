#pragma once

#include <string>

namespace installer::test {

struct JudgeVerdict {
  int status = -1;     // exit status; -1 when it ended otherwise
  std::string output;  // standard output and standard error
};

// The encodings that xmllint writes and reads again: what a character set lacks becomes references.
inline constexpr const char* kXmllintEncodings[] = {
    "UTF-8",        "UTF-16",     "UTF-16LE",    "UTF-16BE",    "UCS-4",  "US-ASCII",
    "ISO-8859-1",   "ISO-8859-2", "ISO-8859-5",  "ISO-8859-15", "KOI8-R", "windows-1251",
    "windows-1252", "macintosh",  "CP437",       "TIS-620",     "IBM037", "IBM1047",
    "Shift_JIS",    "EUC-JP",     "ISO-2022-JP", "EUC-KR",      "Big5",   "GB18030"};

// Runs a shell command line in the folder: a program of other makers that tells whether what is
// written here is right. One that is not installed fails the test by its status.
JudgeVerdict askJudge(const std::string& folder, const std::string& commandLine);

}  // namespace installer::test
