#pragma once

#include <cstdio>
#include <optional>
#include <string>
#include <string_view>

namespace installer::ctl {

// Where an answer goes. What cannot be written is lost, and so is everything behind it: the first
// failure is kept, and the program ends with it.
class Output {
 public:
  // The stream must outlive the object.
  explicit Output(std::FILE* stream) : _stream(stream) {}

  void write(std::string_view text);
  // Brings what was written to whoever reads it.
  void flush();

  // The system's words for the first failure; nullopt while there is none.
  const std::optional<std::string>& failure() const { return _failure; }

 private:
  void fail();

  std::FILE* _stream;
  std::optional<std::string> _failure;
};

// One line on standard error, "hotfixctl: " and the text, without control characters. What cannot
// be told is told by the exit status.
void complain(std::string_view text);

}  // namespace installer::ctl
