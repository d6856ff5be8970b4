#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace installer::ctl::support {

// Stands where something was taken out.
inline constexpr std::string_view kRedacted = "[redacted]";

// A text without what may be nobody else's business, with how often something was taken out.
struct Redacted {
  std::string text;
  std::size_t count = 0;
};

// Whether a key, an option or an element of that name may hold a secret: "db.password",
// "authToken".
bool isSecretName(std::string_view name);

// Whether a value goes on in the next line: this one ends with a backslash that is none itself.
bool goesOn(std::string_view line);

// Takes out of a text, whatever its format: user and password of addresses, what stands behind a
// secret name to the end of its value or of its line, what an element or attribute of a secret name
// holds, private keys, and what shows itself as a token by its form. Takes too much rather than too
// little. The text has one byte for each letter of ASCII.
Redacted redactText(std::string_view text);
// The same for a document whose elements are all closed: all that one of a secret name holds goes.
Redacted redactDocument(std::string_view text);

// The same for a property list, in either form, and for JSON, by their values: what a secret name
// holds goes as a whole, every other text is looked at by redactText(), and bytes without a meaning
// go. False, with nothing of it in `redacted`, for what cannot be read as one.
[[nodiscard]] bool redactPropertyList(std::string_view bytes, Redacted& redacted);
[[nodiscard]] bool redactJson(std::string_view bytes, Redacted& redacted);

}  // namespace installer::ctl::support
