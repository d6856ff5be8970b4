#include "faults/Kinds.h"

#include <algorithm>
#include <cerrno>

namespace installer::faults {

namespace {

bool canFailWith(const std::vector<int>& errors, int error) {
  return std::find(errors.begin(), errors.end(), error) != errors.end();
}

Kind failing(int error) {
  const std::string name = nameOfError(error);
  return {"fail-" + name, "the call answers " + name,
          [error](const LoggedCall& call) { return canFailWith(call.errors, error); },
          [error](long point) -> Action {
            return [=](Tracee& program, const Call&, long number) {
              if (number != point) return;
              program.fail(error);
              program.letGo();
            };
          }};
}

Kind shortened() {
  return {"short", "half of the bytes are written",
          [](const LoggedCall& call) { return call.size > 1; },
          [](long point) -> Action {
            return [=](Tracee& program, const Call& call, long number) {
              if (number != point) return;
              program.shorten(call);
              program.letGo();
            };
          }};
}

Kind filled() {
  return {.name = "full",
          .about = "from the call on nothing finds space on the disk",
          .applies = [](const LoggedCall& call) { return canFailWith(call.errors, ENOSPC); },
          .action = [](long point) -> Action {
            return [=](Tracee& program, const Call& call, long number) {
              if (number >= point && canFailWith(call.errors, ENOSPC)) program.fail(ENOSPC);
            };
          },
          .silences = true};
}

Kind killed() {
  return {.name = "kill",
          .about = "the program is killed before the call, then run again",
          .applies = [](const LoggedCall&) { return true; },
          .action = [](long point) -> Action {
            return [=](Tracee& program, const Call&, long number) {
              if (number == point) program.kill();
            };
          },
          .ends = true};
}

std::vector<Kind> allKinds() {
  std::vector<Kind> all;
  for (const int error : {EIO, ENOSPC, EACCES, EMFILE, ENOMEM, EROFS})
    all.push_back(failing(error));
  all.push_back(shortened());
  all.push_back(filled());
  all.push_back(killed());
  return all;
}

}  // namespace

const std::vector<Kind>& kinds() {
  static const std::vector<Kind> all = allKinds();
  return all;
}

const Kind* kindNamed(const std::string& name) {
  const auto& all = kinds();
  const auto found =
      std::find_if(all.begin(), all.end(), [&](const Kind& kind) { return kind.name == name; });
  return found == all.end() ? nullptr : &*found;
}

}  // namespace installer::faults
