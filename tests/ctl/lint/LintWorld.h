#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "ctl/lint/Lint.h"

namespace installer::ctl::lint::test {

// One feature of a manifest; an empty text leaves the attribute out.
struct Feature {
  std::string id = "com.kiv.fix";
  std::string version = "1.5";
  std::string url = "${installer.root}/../../updates/platform";
  std::string action = "install";
};

// The whole way to the features.
std::string manifestOf(const std::vector<Feature>& features);

// Below a root folder, a hotfix package of which nothing is to be said, the package that came
// before it, and the instance that both are for. Paths are those below the root.
class LintWorld {
 public:
  static constexpr const char* kBundle = "/Applications/Quillmere.app";
  static constexpr const char* kHome = "/Applications/Quillmere.app/Contents/MacOS/rcp";
  static constexpr const char* kOlder = "/Volumes/Old/mac/Fix.pkg";
  static constexpr const char* kSite = "/Volumes/HF/updates/platform";

  explicit LintWorld(std::string root);

  // An instance with one key store.
  void makeInstance() const;

  // Where the package is; a spoilt one may have moved.
  std::string package = "/Volumes/HF/mac/Fix.pkg";
  std::optional<std::string> instance;  // given to lint
  std::optional<std::string> older;
  // Whole paths.
  Request request() const;
  std::string path(const std::string& below) const { return _root + below; }

  // --- The description ---------------------------------------------------------------------------

  // The value as an element of a property list.
  LintWorld& set(const std::string& key, const std::string& element);
  LintWorld& text(const std::string& key, const std::string& value) {
    return set(key, "<string>" + value + "</string>");
  }
  LintWorld& unset(const std::string& key);
  // Adds an entry, be the key there or not.
  LintWorld& add(const std::string& key, const std::string& element);

  // --- Files -------------------------------------------------------------------------------------

  static std::string deploy(const std::string& name) { return "/Volumes/HF/mac/deploy/" + name; }
  static std::string extras(const std::string& name) { return deploy("extras/" + name); }
  // In the instance.
  static std::string home(const std::string& name) { return std::string(kHome) + "/" + name; }

  void write(const std::string& below, std::string_view bytes) const;
  std::string read(const std::string& below) const;
  // Replaces the first of the words, which are there, by others.
  void replace(const std::string& below, std::string_view words, std::string_view others) const;
  void remove(const std::string& below) const;
  void move(const std::string& from, const std::string& to) const;
  void makeFolder(const std::string& below) const;
  void makeLink(const std::string& below, const std::string& target) const;
  void makePipe(const std::string& below) const;
  void resize(const std::string& below, std::size_t size) const;

  void settings(std::string_view bytes) const { write(deploy("plugin_customization.ini"), bytes); }
  void install(const std::vector<Feature>& features) const {
    write(deploy("install.hotfix.xml"), manifestOf(features));
  }
  void uninstall(const std::vector<Feature>& features) const {
    write(deploy("uninstall.hotfix.xml"), manifestOf(features));
  }

 private:
  void writePackage(const std::string& folder, const std::string& version) const;
  void writeDescription() const;

  std::string _root;
  std::vector<std::pair<std::string, std::string>> _description;
};

}  // namespace installer::ctl::lint::test
