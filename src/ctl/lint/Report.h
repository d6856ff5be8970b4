#pragma once

#include <string>

#include "ctl/Json.h"
#include "ctl/Style.h"
#include "ctl/lint/Finding.h"

// What was found, in the forms in which it is told.
namespace installer::ctl::lint {

std::string_view wordOf(Level level);

// For people: "<file>:<line>: <level>: <message> [HF101]" with what to do below it, errors as
// compilers tell them, and how many there were of each level.
std::string textOf(const Findings& findings, const Style& style);

// For programs: schema hotfixctl/lint/1.
Json jsonOf(const std::string& package, const Findings& findings);

// For programs that collect what linters find: SARIF 2.1.0.
Json sarifOf(const Findings& findings);

// The rules themselves.
std::string listOfRules(const Style& style);
Json jsonOfRules();
std::string explanationOf(const Rule& rule, const Style& style);

}  // namespace installer::ctl::lint
