#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace installer::cli {

// A second, naive reader and writer of the properties dialect, step by step from its rules, to
// judge the program's own by. Text is what the file holds: one byte a Latin-1 character.
class PropertiesModel {
 public:
  PropertiesModel() = default;
  explicit PropertiesModel(const std::string& text);

  // Keeps the place of a key that is there.
  void set(const std::string& key, const std::string& value);
  std::optional<std::string> get(const std::string& key) const;
  void merge(const PropertiesModel& other);

  // What a save writes.
  std::string saved() const;

 private:
  std::vector<std::pair<std::string, std::string>> _entries;
};

}  // namespace installer::cli
