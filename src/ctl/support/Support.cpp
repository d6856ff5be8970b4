#include "ctl/support/Support.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <ctime>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "ctl/CommandLine.h"
#include "ctl/QuietPlatform.h"
#include "ctl/Surroundings.h"
#include "ctl/status/Status.h"
#include "ctl/support/AllowList.h"
#include "ctl/support/Archive.h"
#include "ctl/support/Collection.h"
#include "ctl/support/Redaction.h"
#include "ctl/support/SupportText.h"
#include "hotfix/base/Path.h"
#include "platform/AbsolutePath.h"
#include "platform/EntryFacts.h"
#include "platform/FileManager.h"
#include "platform/Interruption.h"
#include "platform/Platform.h"

namespace installer::ctl {

namespace {

using support::Collected;
using support::Fate;

constexpr int kIncomplete = 1;
constexpr int kNotWritten = 2;
constexpr ExitStatus kStatuses[] = {
    {0, "the archive was written, or the list shown"},
    {kIncomplete, "it was written without something that is there; its index tells what"},
    {kNotWritten, "no archive was written"},
};

// The archive's folder of everything, so that nothing is unpacked beside other things.
constexpr const char* kTop = "hotfix-support/";
constexpr const char* kIndex = "index.json";

struct Options {
  std::optional<std::string> archive;
  std::vector<std::string> places;
  bool list = false;
  bool force = false;
};

int refuse(const std::string& reason) {
  complain(reason);
  return kNotWritten;
}

// Why nothing may be written to the path; nullopt when it may.
std::optional<std::string> obstacleAt(const std::string& archive, bool force) {
  const auto entry = entryAt(absolutePath(archive));
  if (!entry) return std::nullopt;
  if (!entry->isFile) return fmt::format("\"{}\" is no file; it stays as it is", archive);
  if (!force) return fmt::format("\"{}\" is there already; --force replaces it", archive);
  return std::nullopt;
}

std::vector<Collected> onlyListed(const std::vector<support::Item>& items) {
  std::vector<Collected> listed;
  listed.reserve(items.size());
  for (const support::Item& item : items) listed.push_back({item, Fate::listed, "", 0, 0, ""});
  return listed;
}

int list(const std::vector<support::Item>& items, Surroundings& surroundings) {
  surroundings.out.write(surroundings.json ? textOf(documentOf(onlyListed(items), std::nullopt, 0))
                                           : listText(items, surroundings.style));
  return 0;
}

int statusOf(const std::vector<Collected>& collected) {
  const bool isWhole = std::none_of(collected.begin(), collected.end(),
                                    [](const Collected& one) { return one.fate == Fate::leftOut; });
  return isWhole ? 0 : kIncomplete;
}

// nullopt, with the reason, when it cannot be made.
std::optional<std::string> bytesOf(const std::vector<Collected>& collected,
                                   const std::string& index, support::ArchiveForm form,
                                   std::string& reason) {
  std::vector<support::ArchivedFile> files{{std::string(kTop) + kIndex, index}};
  for (const Collected& one : collected)
    if (one.fate == Fate::taken || one.fate == Fate::cut)
      files.push_back({kTop + one.item.entry, one.bytes});
  return archiveOf(files, form, std::time(nullptr), reason);
}

int writeArchive(const Options& options, support::ArchiveForm form,
                 const std::vector<support::Item>& items, Surroundings& surroundings) {
  constexpr mode_t kOwnersOnly = 0600;
  const std::string& archive = *options.archive;
  if (!surroundings.json) surroundings.out.write(listText(items, surroundings.style) + "\n");
  surroundings.out.flush();
  const std::vector<Collected> collected = support::collect(items, support::kMostBytes);
  const int status = statusOf(collected);
  support::Redacted index;
  if (!support::redactJson(textOf(documentOf(collected, archive, status)), index))
    return refuse("the archive has no index");
  std::string reason;
  const auto bytes = bytesOf(collected, index.text, form, reason);
  if (!bytes) return refuse(fmt::format("the archive cannot be made: {}", reason));
  if (const auto obstacle = obstacleAt(archive, options.force)) return refuse(*obstacle);
  FileError error;
  FileManager& files = *Platform::current().files;
  files.removeLeftOvers(path::deletingLastComponent(absolutePath(archive)), LeftOvers::within);
  if (!files.write(archive, *bytes, ReplacedFile::forget, kOwnersOnly, &error))
    return refuse(error.description);
  surroundings.out.write(surroundings.json ? index.text
                                           : resultText(collected, archive, surroundings.style));
  return status;
}

int write(const Options& options, support::ArchiveForm form,
          const std::vector<support::Item>& items, Surroundings& surroundings) {
  noteInterruptions();
  try {
    return writeArchive(options, form, items, surroundings);
  } catch (const Interrupted& interrupted) {
    return refuse("ended by " + interrupted.cause);
  }
}

int misunderstood(const std::string& reason) {
  complain("support: " + reason);
  return kUsageError;
}

int run(const Options& options, Surroundings& surroundings) {
  if (!options.list && !options.archive) return misunderstood("-o is missing, or --list");
  const auto form = support::archiveFormOf(options.archive.value_or(".zip"));
  if (!form)
    return misunderstood(
        fmt::format("\"{}\" ends with none of .tar.gz, .tgz and .zip", *options.archive));
  QuietPlatform quiet;
  if (options.list) return list(support::allowList(placesOf(options.places)), surroundings);
  if (const auto obstacle = obstacleAt(*options.archive, options.force)) return refuse(*obstacle);
  if (!support::archiveLack().empty()) {
    complain(support::archiveLack());
    return kInternalError;
  }
  return write(options, *form, support::allowList(placesOf(options.places)), surroundings);
}

Action declare(CLI::App& line) {
  const auto options = std::make_shared<Options>();
  addTexts(line, "instance", options->places,
           "an application bundle or an rcp home; without any all that are registered, and those "
           "in the applications folder");
  addText(line, "-o,--output", options->archive, "the archive: .tar.gz, .tgz or .zip")
      ->type_name("FILE");
  line.add_flag("--list", options->list, "shows what would go into it, and writes nothing");
  line.add_flag("--force", options->force, "replaces a file that is there");
  return [options](Surroundings& surroundings) { return run(*options, surroundings); };
}

}  // namespace

constinit const Command kSupport{
    "support", "collects what a supporter needs, without secrets",
    "Writes an archive with the trace of the last run and those of kept runs, the error records, "
    "the registrations, the manifests and records of the instances, a listing of their folders, "
    "what status --doctor tells, and the versions of program and system. The list of all this is "
    "shown first; nothing else is opened.\n\n"
    "User names and passwords in addresses, values of keys, options and elements that are called "
    "password, token, secret and the like, private keys and bearer tokens are taken out of all "
    "texts. Settings and key stores are not collected at all. Long texts are cut in their middle. "
    "index.json in the archive tells what became of each file.\n\n"
    "The archive can be read by its owner only. It is written whole or not at all.",
    kStatuses, declare};

}  // namespace installer::ctl
