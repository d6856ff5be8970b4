#include "faults/Kinds.h"

#include <utility>

#include "faults/AllocationKind.h"
#include "faults/Attack.h"
#include "faults/CallKinds.h"
#include "faults/CallOrder.h"
#include "faults/Planting.h"
#include "faults/PowerCut.h"

namespace installer::faults {

namespace {

std::vector<Kind> allKinds() {
  std::vector<Kind> all = callKinds();
  all.push_back(allocationKind());
  all.push_back(callOrderKind());
  all.push_back(powerCutKind());
  for (Kind& kind : plantingKinds()) all.push_back(std::move(kind));
  for (Kind& kind : attackKinds()) all.push_back(std::move(kind));
  return all;
}

}  // namespace

const std::vector<Kind>& kinds() {
  static const std::vector<Kind> all = allKinds();
  return all;
}

std::vector<long> callsThat(const Learned& learned,
                            const std::function<bool(const LoggedCall& call)>& applies) {
  std::vector<long> numbers;
  long number = 0;
  for (const LoggedCall& call : learned.calls) {
    ++number;
    if (applies(call)) numbers.push_back(number);
  }
  return numbers;
}

}  // namespace installer::faults
