#include "ctl/report/Documents.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "ctl/report/Moment.h"
#include "ctl/status/StatusText.h"
#include "hotfix/util/InstallUtil.h"

namespace installer::ctl::report {

namespace {

// Not the house's own, whose objects look through all of their keys for each that is added.
using Document = nlohmann::json;

constexpr int kDeepest = 32;
constexpr std::string_view kInstallSchema = "hotfixctl/install/1";
constexpr std::string_view kStatusSchema = "hotfixctl/status/1";

std::string cut(std::string text) {
  if (text.size() <= kLongestText) return text;
  std::size_t end = kLongestText;
  while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U) --end;
  return text.substr(0, end) + "...";
}

const Document& at(const Document& object, const char* key) {
  static const Document kNothing;
  if (!object.is_object()) return kNothing;
  const auto found = object.find(key);
  return found == object.end() ? kNothing : *found;
}

std::optional<std::string> textAt(const Document& object, const char* key) {
  const Document& value = at(object, key);
  if (!value.is_string()) return std::nullopt;
  return cut(value.get<std::string>());
}

std::optional<std::int64_t> secondsAt(const Document& object, const char* key) {
  const Document& value = at(object, key);
  if (!value.is_number()) return std::nullopt;
  const auto bounded = std::clamp(value.get<double>(), 0.0, static_cast<double>(kMostSeconds));
  return static_cast<std::int64_t>(bounded);
}

std::optional<std::int64_t> momentAt(const Document& object, const char* key) {
  const auto text = textAt(object, key);
  return text ? momentOf(*text) : std::nullopt;
}

bool hasSchema(const Document& document, std::string_view schema) {
  const Document& value = at(document, "schema");
  return value.is_string() && value.get_ref<const std::string&>() == schema;
}

// --- status --------------------------------------------------------------------------------------

std::optional<InstanceState> stateNamed(const std::optional<std::string>& name) {
  for (int number = 0; number <= static_cast<int>(InstanceState::notReadable); ++number)
    if (name == nameOf(static_cast<InstanceState>(number)))
      return static_cast<InstanceState>(number);
  return std::nullopt;
}

std::vector<ToldFinding> findingsOf(const Document& instance) {
  std::vector<ToldFinding> findings;
  for (const Document& finding : at(instance, "findings")) {
    const auto name = textAt(finding, "name");
    if (!name || findings.size() == kMostFindings) continue;
    findings.push_back(
        {*name, textAt(finding, "text").value_or(""), textAt(finding, "remedy").value_or("")});
  }
  return findings;
}

std::optional<ToldInstance> instanceOf(const Document& instance) {
  const auto state = stateNamed(textAt(instance, "state"));
  const auto home = textAt(instance, "rcpHome");
  if (!state || !home) return std::nullopt;
  return ToldInstance{textAt(instance, "bundle").value_or(*home), *state,
                      textAt(at(instance, "hotfix"), "version"), findingsOf(instance)};
}

// A trace that is left from a run that nobody kept: it tells the end, and no steps.
std::optional<ToldRun> lastRunOf(const Document& last) {
  const Document& run = at(last, "run");
  const auto ending = textAt(run, "ending");
  if (!ending) return std::nullopt;
  ToldRun told;
  told.cause = *ending;
  told.line = textAt(run, "cause");
  if (!told.line) told.line = textAt(run, "firstError");
  told.ended = momentAt(last, "modified");
  return told;
}

std::optional<Told> toldByStatus(const Document& document, std::int64_t modified) {
  const Document& instances = at(document, "instances");
  if (!instances.is_array()) return std::nullopt;
  Told told;
  for (const Document& each : instances) {
    const auto instance = instanceOf(each);
    if (!instance) return std::nullopt;
    if (told.instances.size() < kMostInstances) told.instances.push_back(*instance);
  }
  const Document& last = at(document, "lastRun");
  told.run = lastRunOf(last);
  const auto traced = momentAt(last, "modified");
  told.at = traced ? *traced + secondsAt(last, "ageSeconds").value_or(0) : modified;
  return told;
}

// --- install -------------------------------------------------------------------------------------

std::vector<Step> stepsOf(const Document& phases) {
  std::vector<Step> steps;
  for (const Document& phase : phases) {
    const auto kind = stepNamed(textAt(phase, "phase").value_or(""));
    if (!kind || steps.size() == Run::kMostSteps) continue;
    steps.push_back(
        {*kind, secondsAt(phase, "at").value_or(0), secondsAt(phase, "seconds").value_or(0)});
  }
  return steps;
}

std::optional<std::string> placeIn(const Document& instance) {
  const auto bundle = textAt(instance, "bundle");
  return bundle ? bundle : textAt(instance, "rcpHome");
}

void addInstance(const std::optional<std::string>& place, std::optional<std::string> version,
                 Told& told) {
  if (!place) return;
  const auto state = version ? InstanceState::hotfixInstalled : InstanceState::noHotfix;
  told.instances.push_back({*place, state, std::move(version), {}});
}

std::optional<Told> toldByInstall(const Document& document, std::int64_t modified) {
  const auto cause = textAt(document, "cause");
  if (!cause) return std::nullopt;
  const Document& versions = at(document, "versions");
  ToldRun run;
  run.cause = *cause;
  run.line = textAt(document, "line");
  run.seconds = secondsAt(document, "seconds");
  run.ended = momentAt(document, "began");
  if (run.ended) *run.ended += run.seconds.value_or(0);
  run.packageVersion = textAt(versions, "package");
  run.versionBefore = textAt(versions, "before");
  run.keptRun = textAt(document, "keptRun");
  run.steps = stepsOf(at(document, "phases"));
  Told told;
  told.at = run.ended.value_or(modified);
  const bool isOver = at(document, "status").is_number_integer();
  if (isOver) addInstance(placeIn(at(document, "instance")), textAt(versions, "after"), told);
  told.run = std::move(run);
  return told;
}

// --- What a roll-out notes of a host -------------------------------------------------------------

bool isNote(const Document& document) {
  return at(document, "host").is_string() && at(document, "cause").is_string() &&
         at(document, "answer").is_object();
}

// Of a host on which nothing was begun, the answer is its status, or the plan, or there is none.
Told toldByPlan(const Document& plan, std::int64_t modified) {
  const Document& versions = at(plan, "versions");
  Told told;
  told.at = modified;
  addInstance(placeIn(at(plan, "instance")), textAt(versions, "before"), told);
  told.run = ToldRun();
  told.run->packageVersion = textAt(versions, "package");
  told.run->versionBefore = textAt(versions, "before");
  return told;
}

std::optional<Told> toldByNote(const Document& document, std::int64_t modified) {
  const Document& answer = at(document, "answer");
  const bool isBegun = hasSchema(answer, kInstallSchema);
  std::optional<Told> told = isBegun                            ? toldByInstall(answer, modified)
                             : hasSchema(answer, kStatusSchema) ? toldByStatus(answer, modified)
                                                                : toldByPlan(answer, modified);
  if (!told) return std::nullopt;
  if (hasSchema(answer, kStatusSchema)) told->run = ToldRun();
  if (!isBegun) told->run->ended = modified;
  told->machine = *textAt(document, "host");
  told->run->cause = *textAt(document, "cause");
  const auto message = textAt(document, "message");
  if (!told->run->line && message && !message->empty()) told->run->line = message;
  return told;
}

// What is deeper is left out, whatever it holds; so nothing here calls itself for each level.
Document parsed(std::string_view text) {
  const auto isWanted = [](int depth, Document::parse_event_t, Document&) {
    return depth <= kDeepest;
  };
  return Document::parse(text, isWanted, false);
}

// --- Traces --------------------------------------------------------------------------------------

// As status names it.
std::optional<std::string> placeOf(const Run& run) {
  if (!run.rcpHome) return std::nullopt;
  const auto bundle = InstallUtil::getBundlePath(*run.rcpHome);
  return cut(bundle.value_or(*run.rcpHome));
}

void takeProblems(const Run& run, ToldRun& told) {
  for (const Problem& problem : run.problems) {
    if (told.problems.size() == kMostProblems) break;
    told.problems.push_back({problem.level, problem.time, cut(problem.text), problem.at});
  }
  told.problemsLeftOut = run.problems.size() - told.problems.size() + run.problemsLeftOut;
}

}  // namespace

std::optional<Told> toldBy(std::string_view text, std::int64_t modified, std::string& reason) {
  const Document document = parsed(text);
  if (document.is_discarded()) {
    reason = "is no JSON document";
    return std::nullopt;
  }
  std::optional<Told> told;
  if (hasSchema(document, kStatusSchema))
    told = toldByStatus(document, modified);
  else if (hasSchema(document, kInstallSchema))
    told = toldByInstall(document, modified);
  else if (isNote(document))
    told = toldByNote(document, modified);
  else
    reason = "is neither a status, a result, nor a roll-out's note of a host";
  if (!told && reason.empty()) reason = "is not as its schema wants it";
  return told;
}

Told toldBy(const Run& run, std::string_view name, std::int64_t modified) {
  ToldRun told;
  told.cause = descriptionOf(run.ending).name;
  if (run.cause) told.line = cut(run.cause->text);
  told.seconds = std::min(run.seconds, kMostSeconds);
  const auto began = momentOfRun(name);
  told.ended = began ? *began + *told.seconds : modified;
  told.packageVersion = run.packageVersion;
  told.versionBefore = run.installedVersion;
  told.steps = run.steps;
  takeProblems(run, told);
  Told all;
  all.machine = cut(run.host);
  all.at = *told.ended;
  if (run.ending == Ending::installed) addInstance(placeOf(run), run.packageVersion, all);
  all.run = std::move(told);
  return all;
}

}  // namespace installer::ctl::report
