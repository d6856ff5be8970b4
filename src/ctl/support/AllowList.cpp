#include "ctl/support/AllowList.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <set>
#include <string_view>

#include "ctl/install/KeptRuns.h"
#include "ctl/status/Status.h"
#include "ctl/support/Listing.h"
#include "ctl/support/Machine.h"
#include "ctl/support/Redaction.h"
#include "hotfix/base/Path.h"
#include "hotfix/base/PropertyList.h"
#include "hotfix/util/InstallUtil.h"
#include "instance/InstanceLayout.h"
#include "platform/FileManager.h"
#include "platform/KeptRunsFolder.h"
#include "platform/Platform.h"

namespace installer::ctl::support {

namespace {

constexpr const char* kRegistration = "framework.plist";

std::vector<std::string> namesIn(const std::string& folder) {
  return Platform::current().files->list(folder).value_or(std::vector<std::string>());
}

// In letters that are the same everywhere. Two names can become one.
std::string plainName(std::string_view name) {
  std::string plain(name.substr(0, 100));
  for (char& letter : plain) {
    const bool isPlain = std::isalnum(static_cast<unsigned char>(letter)) != 0 || letter == '-' ||
                         letter == '_' || letter == '.';
    if (!isPlain) letter = '_';
  }
  if (plain.empty() || plain.front() == '.') plain.insert(0, 1, '_');
  return plain;
}

class List {
 public:
  void addFile(std::string entry, std::string what, WantedFile file) {
    _items.push_back({freeName(std::move(entry)), std::move(what), std::move(file), {}});
  }
  void addMade(std::string entry, std::string what, std::function<Redacted()> make) {
    _items.push_back({freeName(std::move(entry)), std::move(what), std::nullopt, std::move(make)});
  }
  std::vector<Item> taken() { return std::move(_items); }

 private:
  std::string freeName(std::string entry) {
    const std::string wanted = entry;
    for (int number = 2; !_names.insert(entry).second; ++number)
      entry = fmt::format("{}-{}", wanted, number);
    return entry;
  }

  std::vector<Item> _items;
  std::set<std::string> _names;
};

// Nothing for a text that is none of its kind, as those are that are made here.
Redacted recordAsList() {
  const auto record = InstallUtil::getErrorMessage();
  const auto bytes = record ? PropertyList::serializeDictionary(*record) : std::nullopt;
  Redacted redacted;
  return bytes && redactPropertyList(*bytes, redacted) ? redacted : Redacted();
}

Redacted withoutSecrets(const std::string& json) {
  Redacted redacted;
  return redactJson(json, redacted) ? redacted : Redacted();
}

void addLastRun(List& list) {
  const FixedPaths& paths = Platform::current().paths;
  list.addFile("last-run/install_trace.log", "the trace of the last run",
               {path::deletingLastComponent(paths.traceFile), path::lastComponent(paths.traceFile),
                Content::lines});
  list.addMade("last-run/record.plist", "the error record of the last run", recordAsList);
}

// The newest; by their names they are in the order of their times.
void addKeptRuns(List& list) {
  struct Kept {
    const char* name;
    const char* what;
    Content content;
  };
  const std::string trace = path::lastComponent(Platform::current().paths.traceFile);
  const Kept kFiles[] = {{trace.c_str(), "the trace of a kept run", Content::lines},
                         {"record.plist", "the error record of a kept run", Content::propertyList},
                         {"plan.json", "the plan of a kept run", Content::json},
                         {"result.json", "the result of a kept run", Content::json},
                         {"output.txt", "what a kept run told", Content::lines}};
  const std::string folder = keptRunsFolder();
  std::vector<std::string> runs = namesIn(folder);
  // The lock of the turn is among them, too.
  std::erase_if(runs, [](const std::string& name) { return !install::isNameOfRun(name); });
  const std::size_t first = runs.size() - std::min(runs.size(), kMostRuns);
  for (std::size_t at = first; at < runs.size(); ++at)
    for (const Kept& file : kFiles)
      list.addFile(fmt::format("kept-runs/{}/{}", runs[at], file.name), file.what,
                   {folder, path::appendingComponent(runs[at], file.name), file.content});
}

void addRegistrations(List& list) {
  const std::string& folder = Platform::current().paths.registrations;
  std::vector<std::string> products = namesIn(folder);
  products.resize(std::min(products.size(), kMostProducts));
  for (const std::string& product : products)
    list.addFile(
        fmt::format("registrations/{}/{}", plainName(redactText(product).text), kRegistration),
        "where a product is installed",
        {folder, path::appendingComponent(product, kRegistration), Content::propertyList});
}

void addInstance(List& list, const std::string& rcpHome, std::size_t number) {
  const std::string begin = fmt::format("instances/{}/", number);
  const std::string deploy = path::lastComponent(InstanceLayout::deploy(rcpHome));
  const std::string info = path::lastComponent(InstanceLayout::installInfo(rcpHome));
  list.addFile(begin + info, "what is installed in an instance",
               {rcpHome, info, Content::propertyList});
  for (const std::string_view name :
       {InstanceLayout::kInstallManifest, InstanceLayout::kUpdateManifest,
        InstanceLayout::kUninstallManifest})
    list.addFile(fmt::format("{}{}/{}", begin, deploy, name), "a manifest of an instance",
                 {rcpHome, fmt::format("{}/{}", deploy, name), Content::document});
  list.addMade(begin + "listing.json",
               "names, modes, owners, sizes and times of what is in an instance's folders",
               [rcpHome] { return withoutSecrets(listingOf(rcpHome)); });
}

}  // namespace

std::vector<Item> allowList(const std::vector<InstancePlace>& places) {
  List list;
  list.addMade("machine.json", "the versions of the program and the system",
               [] { return withoutSecrets(machineDocument()); });
  list.addMade("status.json", "what hotfixctl status --doctor tells",
               [places] { return withoutSecrets(statusDocument(places)); });
  addLastRun(list);
  addKeptRuns(list);
  addRegistrations(list);
  const std::size_t count = std::min(places.size(), kMostInstances);
  for (std::size_t number = 1; number <= count; ++number)
    addInstance(list, places[number - 1].rcpHome, number);
  return list.taken();
}

std::optional<std::string> pathOf(const Item& item) {
  if (!item.file) return std::nullopt;
  return path::appendingComponent(item.file->folder, item.file->below);
}

}  // namespace installer::ctl::support
