#pragma once

#include <string_view>

// What every page holds inline, letter by letter. Browsers take both for the page's own by these
// hashes, and nothing else: no script or style that a text smuggled in would count.
namespace installer::ctl::report {

extern const std::string_view kPageStyle;
extern const std::string_view kPageScript;

// SHA-256 of each, as a Content-Security-Policy names it.
extern const std::string_view kPageStyleHash;
extern const std::string_view kPageScriptHash;

}  // namespace installer::ctl::report
