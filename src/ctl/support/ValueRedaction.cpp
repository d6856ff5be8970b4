// What Redaction.h promises of property lists and JSON.

#include <utility>

#include "ctl/Json.h"
#include "ctl/support/Redaction.h"
#include "hotfix/base/PropertyList.h"

namespace installer::ctl::support {

namespace {

// What of a document's values is taken out.
class Values {
 public:
  std::size_t count() const { return _count; }

  std::string text(const std::string& text) {
    Redacted redacted = redactText(text);
    _count += redacted.count;
    return std::move(redacted.text);
  }
  std::string secret() {
    ++_count;
    return std::string(kRedacted);
  }

 private:
  std::size_t _count = 0;
};

// An argument list's option whose value is the next argument.
bool asksForSecret(std::string_view argument) {
  return argument.starts_with('-') && isSecretName(argument) &&
         argument.find('=') == std::string_view::npos;
}

// {"name": "password", "value": ...}
bool isNamingKey(std::string_view key) {
  return key == "name" || key == "key" || key == "id";
}

// --- Property lists ------------------------------------------------------------------------------

namespace list = PropertyList;

list::Value redactedValue(const list::Value& value, Values& values);

list::Array redactedArray(const list::Array& array, Values& values) {
  list::Array result;
  bool isSecret = false;
  for (const list::Value& element : array) {
    result.push_back(isSecret ? list::Value(values.secret()) : redactedValue(element, values));
    const auto* const argument = element.as<std::string>();
    isSecret = argument != nullptr && asksForSecret(*argument);
  }
  return result;
}

bool namesSecret(const list::Dictionary& dictionary) {
  for (const auto& [key, value] : dictionary) {
    const auto* const name = value.as<std::string>();
    if (isNamingKey(key) && name != nullptr && isSecretName(*name)) return true;
  }
  return false;
}

list::Dictionary redactedDictionary(const list::Dictionary& dictionary, Values& values) {
  list::Dictionary result;
  const bool isNamed = namesSecret(dictionary);
  for (const auto& [key, value] : dictionary) {
    const bool isSecret = isSecretName(key) || (isNamed && !isNamingKey(key));
    result.set(key, isSecret ? list::Value(values.secret()) : redactedValue(value, values));
  }
  return result;
}

list::Value redactedValue(const list::Value& value, Values& values) {
  if (const auto* const text = value.as<std::string>()) return values.text(*text);
  if (value.as<list::Data>() != nullptr) return values.secret();
  if (const auto* const array = value.as<list::Array>()) return redactedArray(*array, values);
  if (const auto* const dictionary = value.as<list::Dictionary>())
    return redactedDictionary(*dictionary, values);
  return value;
}

// --- JSON ----------------------------------------------------------------------------------------

Json redactedValue(const Json& value, Values& values);

Json redactedArray(const Json& array, Values& values) {
  Json result = Json::array();
  bool isSecret = false;
  for (const Json& element : array) {
    result.push_back(isSecret ? Json(values.secret()) : redactedValue(element, values));
    isSecret = element.is_string() && asksForSecret(element.get_ref<const std::string&>());
  }
  return result;
}

bool namesSecret(const Json& object) {
  for (const auto& [key, value] : object.items())
    if (isNamingKey(key) && value.is_string() && isSecretName(value.get_ref<const std::string&>()))
      return true;
  return false;
}

Json redactedObject(const Json& object, Values& values) {
  Json result = Json::object();
  const bool isNamed = namesSecret(object);
  for (const auto& [key, value] : object.items()) {
    const bool isSecret = isSecretName(key) || (isNamed && !isNamingKey(key));
    result[key] = isSecret ? Json(values.secret()) : redactedValue(value, values);
  }
  return result;
}

// Documents are gone through by calls within calls.
bool isTooDeep(std::string_view bytes) {
  constexpr int kDeepest = 200;
  int depth = 0;
  bool isText = false;
  for (std::size_t at = 0; at < bytes.size() && depth <= kDeepest; ++at) {
    const char letter = bytes[at];
    if (letter == '"') isText = !isText;
    if (isText && letter == '\\') ++at;
    if (isText) continue;
    if (letter == '[' || letter == '{') ++depth;
    if (letter == ']' || letter == '}') --depth;
  }
  return depth > kDeepest;
}

Json redactedValue(const Json& value, Values& values) {
  if (value.is_string()) return values.text(value.get_ref<const std::string&>());
  if (value.is_array()) return redactedArray(value, values);
  if (value.is_object()) return redactedObject(value, values);
  return value;
}

}  // namespace

bool redactPropertyList(std::string_view bytes, Redacted& redacted) {
  const auto value = list::parse(bytes);
  if (!value) return false;
  Values values;
  auto text = list::serialize(redactedValue(*value, values));
  if (!text) return false;
  redacted = {std::move(*text), values.count()};
  return true;
}

bool redactJson(std::string_view bytes, Redacted& redacted) {
  if (isTooDeep(bytes)) return false;
  const Json value = Json::parse(bytes, nullptr, false);
  if (value.is_discarded()) return false;
  Values values;
  redacted.text = textOf(redactedValue(value, values));
  redacted.count = values.count();
  return true;
}

}  // namespace installer::ctl::support
