#pragma once

#include <cstdio>
#include <string>

#include "ctl/Output.h"

namespace installer::ctl::test {

// An output that keeps what is written.
class Answers {
 public:
  Answers() = default;
  Answers(const Answers&) = delete;
  Answers& operator=(const Answers&) = delete;
  ~Answers() { std::fclose(_file); }

  Output& output() { return _output; }

  std::string text() {
    _output.flush();
    std::string all(static_cast<std::size_t>(std::ftell(_file)), '\0');
    std::rewind(_file);
    all.resize(std::fread(all.data(), 1, all.size(), _file));
    return all;
  }

 private:
  std::FILE* _file = std::tmpfile();
  Output _output{_file};
};

}  // namespace installer::ctl::test
