#include "ctl/install/Orphans.h"

#include "ctl/Json.h"
#include "ctl/Output.h"
#include "ctl/install/Evidence.h"
#include "ctl/install/Result.h"
#include "hotfix/base/Path.h"
#include "platform/FileManager.h"
#include "platform/Platform.h"
#include "platform/WatchedChild.h"

namespace installer::ctl::install {

namespace {

FileManager& files() {
  return *Platform::current().files;
}

std::string fileIn(const std::string& folder, const char* name) {
  return path::appendingComponent(folder, name);
}

Json memberOf(const Json& object, const char* key) {
  const auto found = object.find(key);  // of what is no object: the end
  return found == object.end() ? Json() : *found;
}

// The result, if it is one that was written before the installer's end was known.
std::optional<Json> openResult(const std::string& text) {
  Json result = Json::parse(text, nullptr, false);
  const bool isOpen = memberOf(result, "cause") == "at-work" &&
                      memberOf(result, "installer").is_object() &&
                      memberOf(result, "versions").is_object();
  return isOpen ? std::optional(std::move(result)) : std::nullopt;
}

std::optional<long> processOf(const Json& result) {
  const Json process = memberOf(memberOf(result, "installer"), "process");
  return process.is_number_integer() ? std::optional(process.get<long>()) : std::nullopt;
}

void conclude(Json& result, const std::string& folder) {
  const Evidence evidence = keepEvidence(folder, processOf(result));
  Result told;
  told.outcome = outcomeOfUnseen(evidence);
  told.take(evidence);
  const Json all = documentOf(told);
  for (const char* key :
       {"status", "cause", "meaning", "remedy", "line", "code", "details", "phases", "keptLack"})
    result[key] = all[key];
  result["installer"]["output"] = outputIn(folder);
  if (evidence.run && evidence.run->rcpHome)
    result["versions"]["after"] = jsonOf(recordedVersionOf(*evidence.run->rcpHome));
}

void settle(const std::string& folder) {
  const std::string file = fileIn(folder, kResultFile);
  FileError error;
  const auto text = files().readUnlinked(file, nullptr, &error);
  std::optional<Json> result = text ? openResult(*text) : std::nullopt;
  const bool hasResult = text || error.code != FileError::kMissing;
  const bool hasBegun = files().exists(fileIn(folder, kOutputFile));
  if (!hasResult || (result && !hasBegun)) {
    if (!files().remove(folder, &error)) complain(error.description);
    return;
  }
  if (!result) return;
  conclude(*result, folder);
  if (!files().write(file, ctl::textOf(*result), ReplacedFile::takeOver, std::nullopt, &error))
    complain(error.description);
}

}  // namespace

std::optional<std::string> settleOrphans(const KeptRuns& runs, const Deadline& deadline) {
  files().removeLeftOvers(runs.folder(), LeftOvers::below);
  for (const std::string& folder : runs.all()) {
    while (isOutputHeld(fileIn(folder, kOutputFile)))
      if (!deadline.allowsAnotherTry()) return folder;
    settle(folder);
  }
  return std::nullopt;
}

}  // namespace installer::ctl::install
