#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "ctl/new/Wanted.h"

namespace installer::ctl::package {

// The layouts' names.
inline constexpr const char* kDefault = "default";
inline constexpr const char* kFlat = "flat";

// What is said of a package on the command line, and by the answers to questions.
struct Options {
  std::optional<std::string> folder;
  std::optional<std::string> version;
  std::optional<std::string> bundle;
  std::optional<std::string> frameworkPath;
  std::optional<std::string> identifier;
  std::optional<std::string> packageName;
  std::optional<std::string> layout;
  std::optional<std::string> siteFolder;
  std::optional<std::string> site;
  std::optional<std::string> customization;
  std::optional<std::string> extras;
  std::optional<std::string> instance;
  std::vector<std::string> features;  // "id_version", or "id" for the hotfix's version
  std::vector<std::string> keyStores;
  bool isRegistered = false;
  bool skipsRunningCheck = false;
  bool withdraws = false;
  bool force = false;
};

// Something that no package can be made without.
struct Need {
  std::string_view option;    // by which it is told
  std::string_view question;  // to somebody at a terminal
  bool (*isMet)(const Options&);
  void (*answer)(Options&, std::string);
};

// What is still missing, in the order in which it is asked for.
std::vector<const Need*> missing(const Options& options);

// Why the options cannot be meant.
struct Refusal {
  std::string reason;
};

// The options as wishes, once nothing is missing.
std::variant<Refusal, Wanted> wantedBy(const Options& options);

}  // namespace installer::ctl::package
