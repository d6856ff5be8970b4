#pragma once

#include <string>
#include <string_view>

namespace installer::ctl::report {

// The text as HTML shows it, in an element or in an attribute between quotes: nothing in it can
// begin or end either. What would do something to a reader's lines is spelled out, as shown() does.
std::string html(std::string_view text);

}  // namespace installer::ctl::report
