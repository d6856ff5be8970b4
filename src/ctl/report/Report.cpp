#include "ctl/report/Report.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <ctime>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "ctl/CommandLine.h"
#include "ctl/QuietPlatform.h"
#include "ctl/Surroundings.h"
#include "ctl/report/Page.h"
#include "ctl/report/ReportText.h"
#include "platform/AbsolutePath.h"
#include "platform/FileManager.h"
#include "platform/Platform.h"

namespace installer::ctl {

namespace {

constexpr int kIncomplete = 1;
constexpr int kNotWritten = 2;
constexpr ExitStatus kStatuses[] = {
    {0, "the report was written, with everything that was named"},
    {kIncomplete, "it was written without what cannot be read or tells nothing; it names that"},
    {kNotWritten, "no report was written"},
};

constexpr std::string_view kStandardOutput = "-";

struct Options {
  std::vector<std::string> inputs;
  std::optional<std::string> page;
};

// The file is replaced whole. What is no file stays.
bool writePage(const std::string& path, std::string_view page) {
  FileManager& files = *Platform::current().files;
  FileError error;
  const bool isFile = files.read(path, &error) || error.code != FileError::kNoFile;
  if (isFile && files.write(path, page, ReplacedFile::takeOver, std::nullopt, &error)) return true;
  complain(isFile ? error.description : fmt::format("\"{}\" is no file", path));
  return false;
}

int misunderstood(std::string_view reason) {
  complain(fmt::format("report: {}", reason));
  return kUsageError;
}

int run(const Options& options, Surroundings& surroundings) {
  if (!options.page) return misunderstood("-o is missing");
  const bool isAside = *options.page != kStandardOutput;
  if (!isAside && surroundings.json) return misunderstood("--json and -o - exclude each other");
  const QuietPlatform quiet;
  report::Inputs inputs = report::readInputs(options.inputs);
  for (const report::LeftOut& one : inputs.leftOut)
    complain(fmt::format("\"{}\" {}", one.path, one.reason));
  const report::Fleet fleet = report::fleetOf(std::move(inputs.told));
  const std::string page = report::pageOf(fleet, inputs.leftOut, std::time(nullptr));
  const int status = inputs.leftOut.empty() ? 0 : kIncomplete;
  if (!isAside) {
    surroundings.out.write(page);
    return status;
  }
  if (!writePage(absolutePath(*options.page), page)) return kNotWritten;
  surroundings.out.write(
      surroundings.json ? textOf(report::documentOf(fleet, inputs.leftOut, *options.page, status))
                        : report::textOf(fleet, *options.page, surroundings.style));
  return status;
}

Action declare(CLI::App& line) {
  const auto options = std::make_shared<Options>();
  addTexts(line, "input", options->inputs,
           "an answer of status --json, a result of install, the folder of a kept run, or a "
           "folder with any of these")
      ->required();
  addText(line, "-o,--output", options->page, "the page; - for standard output")->type_name("FILE");
  return [options](Surroundings& surroundings) { return run(*options, surroundings); };
}

}  // namespace

constinit const Command kReport{
    "report", "tells about many machines on one page",
    "Reads what the machines told of themselves and writes an HTML page that needs nothing beside "
    "itself: how many machines have which version, the failures by cause with what to do about "
    "each, what needs attention, and each machine with the steps of its last run. A folder with "
    "the notes of a roll-out by Ansible is one of the folders that it takes.\n\n"
    "A machine is called by what a roll-out or a trace calls it, or else by its file's name; "
    "files that are called status.json and result.json, by their folder's. What was told last "
    "counts.",
    kStatuses, declare};

}  // namespace installer::ctl
