#include "ctl/new/Making.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <memory>
#include <string_view>
#include <utility>

#include "base/LetterCase.h"
#include "ctl/lint/Files.h"
#include "ctl/lint/Lint.h"
#include "ctl/lint/Rules.h"
#include "ctl/new/PackageTexts.h"
#include "ctl/new/Settings.h"
#include "hotfix/base/Path.h"
#include "hotfix/util/InstallUtil.h"
#include "instance/InstanceLayout.h"
#include "platform/FileEnds.h"
#include "platform/FileManager.h"
#include "platform/Interruption.h"
#include "platform/NewTree.h"
#include "platform/Platform.h"
#include "workflow/HotfixPackage.h"

namespace installer::ctl::package {

namespace {

using path::appendingComponent;

constexpr std::string_view kKeyStore = ".keystore";

// Thrown and caught in this file.
[[noreturn]] void give(std::string reason) {
  throw CannotMake{std::move(reason)};
}

std::string contentOf(const std::string& file) {
  FileError error;
  auto bytes = Platform::current().files->read(file, &error);
  if (!bytes) give(error.description);
  return *std::move(bytes);
}

std::string settingsIn(const std::string& file) {
  std::size_t line = 0;
  auto settings = plainSettings(contentOf(file), line);
  if (!settings) give(fmt::format("line {} of \"{}\" is no UTF-8", line, file));
  return *std::move(settings);
}

// --- Key stores ----------------------------------------------------------------------------------

// The instance is its user's: a link, or a second name of a file, could bring one into the package
// that is not.
std::string ownContentOf(const std::string& rcpHome, const std::string& below) {
  constexpr EndSizes kWhole{FileManager::kMaximumRead, 0};
  FileError error;
  auto file = readEnds(rcpHome, below, kWhole, error);
  if (!file) give(error.description);
  const std::string path = appendingComponent(rcpHome, below);
  if (file->hasOtherNames)
    give(fmt::format("\"{}\" has other names: it may be a file that is nobody's business", path));
  if (file->leftOut > 0) give(fmt::format("\"{}\" is longer than {} bytes", path, kWhole.head));
  return std::move(file->head);
}

// By the names under which the installer takes them.
class KeyStores {
 public:
  // Those that the instance has stay, unless the package brings another one of that name.
  void takeFrom(const std::string& rcpHome) {
    const std::string folder = InstanceLayout::deploy(rcpHome);
    const std::string below = path::lastComponent(folder);
    for (const std::string& name : lint::keyStoresIn(folder))
      if (!isThere(name)) _stores[name] = ownContentOf(rcpHome, appendingComponent(below, name));
  }
  void add(const std::string& file) {
    std::string name = path::lastComponent(file);
    if (!InstallUtil::hasPrefixCaseInsensitive(name, kKeyStore.data()))
      name = std::string(kKeyStore) + "." + name;
    if (isThere(name)) give(fmt::format("two key stores would be \"{}\"", name));
    _stores[name] = contentOf(file);
  }
  const std::map<std::string, std::string>& all() const { return _stores; }

 private:
  // As a disk that cares neither for letter case nor for the form of letters.
  bool isThere(const std::string& name) const {
    return std::any_of(_stores.begin(), _stores.end(), [&](const auto& store) {
      return letterCase::withoutCaseAndForm(store.first) == letterCase::withoutCaseAndForm(name);
    });
  }

  std::map<std::string, std::string> _stores;  // name -> bytes
};

std::string rcpHomeOf(const std::string& instance, const std::string& frameworkPath) {
  HotfixPackage package;
  package.frameworkPath = frameworkPath;
  return *package.rcpHomeIn(instance);
}

KeyStores keyStoresFor(const Wanted& wanted) {
  KeyStores stores;
  for (const std::string& file : wanted.keyStores) stores.add(file);
  if (wanted.instance) stores.takeFrom(rcpHomeOf(*wanted.instance, wanted.frameworkPath));
  return stores;
}

// --- The folder ----------------------------------------------------------------------------------

// Everything that it will hold, by the places below it.
struct Content {
  std::map<std::string, std::string> files;    // place -> bytes
  std::map<std::string, std::string> folders;  // place -> the folder that is copied there
};

std::string orGive(std::optional<std::string> text) {
  if (!text) give("a text holds a character that a property list cannot hold");
  return *std::move(text);
}

Content contentFor(const Wanted& wanted, const KeyStores& keyStores) {
  const std::string contents = wanted.package() + "/Contents/";
  const std::string deploy = wanted.deploy() + "/";
  Content content;
  content.files[contents + "Resources/hotfix.plist"] = orGive(description(wanted));
  content.files[contents + "Info.plist"] = orGive(information(wanted));
  content.files[deploy + "install.hotfix.xml"] = installManifest(wanted);
  content.files[deploy + "uninstall.hotfix.xml"] = uninstallManifest(wanted);
  if (wanted.customization)
    content.files[deploy + "plugin_customization.ini"] = settingsIn(*wanted.customization);
  for (const auto& [name, bytes] : keyStores.all()) content.files[deploy + name] = bytes;
  if (wanted.extras) content.folders[deploy + "extras"] = *wanted.extras;
  if (wanted.site) content.folders[wanted.sitePlace()] = *wanted.site;
  return content;
}

std::unique_ptr<NewTree> begun(const std::string& folder) {
  Platform::current().files->removeLeftOvers(path::deletingLastComponent(folder),
                                             LeftOvers::within);
  FileError error;
  auto tree = beginTree(folder, error);
  if (tree) return tree;
  if (error.code == FileError::kExists)
    give(fmt::format("\"{}\" is there already and no empty folder", folder));
  give(error.description);
}

void fill(NewTree& tree, const Content& content) {
  FileError error;
  const auto hasFolderFor = [&](const std::string& place) {
    const std::string folder = path::deletingLastComponent(place);
    return tree.addFolder(folder, error);
  };
  for (const auto& [place, bytes] : content.files)
    if (!hasFolderFor(place) || !tree.addFile(place, bytes, error)) give(error.description);
  for (const auto& [place, folder] : content.folders)
    if (!hasFolderFor(place) || !tree.addCopy(folder, place, error)) give(error.description);
}

// What is found in the package while it is made, told of the place that it will have.
lint::Findings findingsIn(const NewTree& tree, const Wanted& wanted) {
  const std::string package = appendingComponent(tree.place(), wanted.package());
  auto answer = lint::lint({package, wanted.instance, std::nullopt, {}});
  if (const auto* reason = std::get_if<lint::CannotLook>(&answer)) give(reason->reason);
  auto findings = std::get<lint::Findings>(std::move(answer));
  findings.move(tree.place(), wanted.folder);
  if (!InstallUtil::containUnSupportedCharacters(package))
    lint::lintPath(appendingComponent(wanted.folder, wanted.package()), findings);
  return findings;
}

bool isClean(const lint::Findings& findings) {
  return findings.count(lint::Level::error) + findings.count(lint::Level::warning) == 0;
}

Outcome made(const Wanted& wanted, Despite despite) {
  const auto tree = begun(wanted.folder);
  const KeyStores keyStores = keyStoresFor(wanted);
  fill(*tree, contentFor(wanted, keyStores));
  Outcome outcome{false, {}, findingsIn(*tree, wanted)};
  for (const auto& [name, bytes] : keyStores.all()) outcome.keyStores.push_back(name);
  if (despite == Despite::nothing && !isClean(outcome.findings)) return outcome;
  FileError error;
  outcome.isMade = tree->finish(error);
  if (!outcome.isMade) give(error.description);
  return outcome;
}

}  // namespace

std::variant<CannotMake, Outcome> make(const Wanted& wanted, Despite despite) {
  noteInterruptions();
  try {
    return made(wanted, despite);
  } catch (const CannotMake& lack) {
    return lack;
  } catch (const Interrupted& interrupted) {
    return CannotMake{"ended by " + interrupted.cause};
  }
}

}  // namespace installer::ctl::package
