#pragma once

#include <span>
#include <string>
#include <vector>

#include "ctl/Command.h"

namespace installer::ctl {

// What can stand where a command line goes on.
enum class NextWord { oneOfThese, file, folder };

struct Choice {
  std::string word;     // the whole word, with the part that is there already
  std::string meaning;  // in one line
};

struct Choices {
  NextWord kind = NextWord::oneOfThese;
  std::vector<Choice> words;  // whether or not they begin as the word does: shells differ in that
};

// `words` is the command line without the program's name; its last word, which may be empty, is the
// one that is being written. Where nothing can follow, the answer is one of no words.
Choices choicesFor(const std::vector<std::string>& words, std::span<const Command> commands);

// For the shells' scripts in packaging/completions: the kind's name in the first line, then a line
// for each word, with a tab before its meaning.
std::string textOf(const Choices& choices);

}  // namespace installer::ctl
