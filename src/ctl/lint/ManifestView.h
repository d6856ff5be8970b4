#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "hotfix/base/XmlDocument.h"

namespace installer::ctl::lint {

// A feature that the installer finds in a manifest. An absent attribute is an absent text.
struct FeatureView {
  std::optional<std::string> id;
  std::optional<std::string> version;
  std::optional<std::string> url;
  std::optional<std::string> action;
  std::optional<std::size_t> line;  // where its id stands

  // What has no action is installed.
  bool isInstalled() const { return action.value_or("") != "uninstall"; }
  std::string name() const { return id.value_or("") + " " + version.value_or(""); }
};

// A manifest as the installer reads it.
struct ManifestView {
  std::string file;
  std::string bytes = {};
  std::string whyUnread = {};  // of something that is there and is no folder
  bool isThere = false;        // a regular file that can be read
  bool isWellFormed = false;   // and that has been parsed
  std::string lack = {};       // the line that tells which element is missing on the way; empty
  std::vector<FeatureView> features = {};

  // Features to install.
  std::vector<FeatureView> installed() const;
};

ManifestView readManifest(const std::string& file);

// Of one element of an XML file by its name: the attributes as the installer's parser reads them.
struct ElementAttributes {
  std::optional<std::string> id;
  std::optional<std::string> version;
  bool isForSomeSystems = false;  // by an attribute os, ws or arch
};
// The children of that name of the root of the document; nullopt when it is not well-formed.
[[nodiscard]] std::optional<std::vector<ElementAttributes>> childrenOfRoot(std::string bytes,
                                                                           std::string_view name);

// The lines on which "${installer.root}" stands where it is not replaced, outside of comments; 0
// for a line that is not known.
std::vector<std::size_t> linesOfRootsThatStay(const ManifestView& manifest);

// Whether the text stands in the document outside of comments.
bool standsIn(std::string_view document, std::string_view text);

}  // namespace installer::ctl::lint
