#include "unit/platform/PasteboardContract.h"

#include <gmock/gmock.h>

#include "support/RecordingPasteboard.h"

namespace installer::test {
namespace {

using PropertyList::Array;
using PropertyList::Dictionary;
using ::testing::Optional;

Dictionary recordOf(int code) {
  return {{"ERROR_CODE", code}, {"ERROR_DETAILS", Array{"/A & B", "M\xC3\xBCller.app"}}};
}

TEST_P(PasteboardContractTest, HasNoRecordAtFirst) {
  EXPECT_EQ(_pasteboard->record(), std::nullopt);
}

TEST_P(PasteboardContractTest, HoldsTheRecordThatWasSetLast) {
  _pasteboard->setRecord(recordOf(7));
  _pasteboard->setRecord(recordOf(8));

  EXPECT_THAT(_pasteboard->record(), Optional(recordOf(8)));
}

TEST_P(PasteboardContractTest, HoldsNothingWhenCleared) {
  _pasteboard->setRecord(recordOf(7));

  _pasteboard->clear();
  _pasteboard->clear();

  EXPECT_EQ(_pasteboard->record(), std::nullopt);
}

TEST_P(PasteboardContractTest, TakesARecordAfterItWasCleared) {
  _pasteboard->clear();

  _pasteboard->setRecord(recordOf(0));

  EXPECT_THAT(_pasteboard->record(), Optional(recordOf(0)));
}

INSTANTIATE_TEST_SUITE_P(Recording, PasteboardContractTest,
                         ::testing::Values(PasteboardKind{
                             "Fake",
                             [](Sandbox&) { return std::make_unique<RecordingPasteboard>(); }}),
                         [](const auto& given) { return given.param.name; });

}  // namespace
}  // namespace installer::test
