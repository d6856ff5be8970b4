#include "faults/CallKinds.h"

#include <algorithm>
#include <cerrno>
#include <utility>

namespace installer::faults {

namespace {

bool canFailWith(const std::vector<int>& errors, int error) {
  return std::find(errors.begin(), errors.end(), error) != errors.end();
}

std::function<std::vector<long>(const Scenario&, const Learned&)> where(
    std::function<bool(const LoggedCall&)> applies) {
  return [applies = std::move(applies)](const Scenario&, const Learned& learned) {
    return callsThat(learned, applies);
  };
}

// Acts on the call of the point alone; the rest of the run is nobody's business.
Kind acting(const std::string& name, const std::string& about,
            std::function<bool(const LoggedCall&)> applies,
            const std::function<void(Tracee&, const Call&)>& act) {
  const auto action = [act](const Runner&, const Scenario&, long point) -> Action {
    return [=](Tracee& program, const Call& call, long number) {
      if (number != point) return;
      act(program, call);
      program.letGo();
    };
  };
  return {name, about, where(std::move(applies)), action};
}

Kind failing(int error) {
  const std::string name = nameOfError(error);
  return acting(
      "fail-" + name, "the call answers " + name,
      [error](const LoggedCall& call) { return canFailWith(call.errors, error); },
      [error](Tracee& program, const Call&) { program.fail(error); });
}

Kind shortened() {
  return acting(
      "short", "half of the bytes are written",
      [](const LoggedCall& call) { return call.size > 1; },
      [](Tracee& program, const Call& call) { program.shorten(call); });
}

Kind killed() {
  Kind kind = acting(
      "kill", "the program is killed before the call, then run again",
      [](const LoggedCall&) { return true; }, [](Tracee& program, const Call&) { program.kill(); });
  kind.judging = Judging::again;
  return kind;
}

Kind filled() {
  const auto action = [](const Runner&, const Scenario&, long point) -> Action {
    return [=](Tracee& program, const Call& call, long number) {
      if (number >= point && canFailWith(call.errors, ENOSPC)) program.fail(ENOSPC);
    };
  };
  const auto takesSpace = [](const LoggedCall& call) { return canFailWith(call.errors, ENOSPC); };
  return {"full", "from the call on nothing finds space on the disk", where(takesSpace), action,
          Judging::silent};
}

}  // namespace

std::vector<Kind> callKinds() {
  std::vector<Kind> all;
  for (const int error : {EIO, ENOSPC, EACCES, EMFILE, ENOMEM, EROFS})
    all.push_back(failing(error));
  all.push_back(shortened());
  all.push_back(filled());
  all.push_back(killed());
  return all;
}

}  // namespace installer::faults
