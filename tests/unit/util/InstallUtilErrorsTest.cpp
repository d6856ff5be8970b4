#include <gmock/gmock.h>

#include "hotfix/util/InstallUtil.h"
#include "support/Proves.h"
#include "support/Sandbox.h"

namespace installer::test {
namespace {

using PropertyList::Array;
using PropertyList::Dictionary;

class InstallUtilErrorsTest : public ::testing::Test {
 protected:
  Sandbox _sandbox;
};

TEST_F(InstallUtilErrorsTest, InitializedPasteboardHoldsCodeZeroWithoutDetails) {
  proves("RECORD-6");
  InstallUtil::sendErrorMessage(ErrorCode::notInstalled, {"x"});

  InstallUtil::initInternalPasteboard(true);

  const Dictionary expected{{"ERROR_CODE", 0}, {"ERROR_DETAILS", Array()}};
  EXPECT_EQ(InstallUtil::getErrorMessage(), expected);
}

TEST_F(InstallUtilErrorsTest, UninitializedPasteboardIsEmpty) {
  proves("RECORD-6");
  InstallUtil::sendErrorMessage(ErrorCode::notInstalled, {"x"});

  InstallUtil::initInternalPasteboard(false);

  EXPECT_EQ(InstallUtil::getErrorMessage(), std::nullopt);
}

TEST_F(InstallUtilErrorsTest, RecordKeepsCodeAndDetailsInOrder) {
  proves("RECORD-6");
  InstallUtil::sendErrorMessage(ErrorCode::notInstalled, {"/dest", "Quillmere.app"});

  const Dictionary expected{{"ERROR_CODE", 8}, {"ERROR_DETAILS", Array{"/dest", "Quillmere.app"}}};
  EXPECT_EQ(InstallUtil::getErrorMessage(), expected);
}

TEST_F(InstallUtilErrorsTest, DetailsThatXmlCannotHoldStillMakeARecord) {
  proves("ODD-5");
  InstallUtil::sendErrorMessage(ErrorCode::notInstalled, {"/\xFF", "\x01"});

  const Dictionary expected{{"ERROR_CODE", 8},
                            {"ERROR_DETAILS", Array{"/\xC3\xBF", "\xEF\xBF\xBD"}}};
  EXPECT_EQ(InstallUtil::getErrorMessage(), expected);
}

TEST_F(InstallUtilErrorsTest, LastRecordSentWins) {
  proves("RECORD-3");
  InstallUtil::sendErrorMessage(ErrorCode::unsupportedCharacters, {});
  InstallUtil::sendErrorMessage(ErrorCode::applicationRunning, {"Quillmere"});

  ASSERT_TRUE(InstallUtil::getErrorMessage());
  EXPECT_EQ(*InstallUtil::getErrorMessage()->find("ERROR_CODE"), PropertyList::Value(6));
}

TEST_F(InstallUtilErrorsTest, AbsentRecordIsIgnored) {
  proves("RECORD-6");
  InstallUtil::sendErrorMessage(ErrorCode::applicationRunning, {"Quillmere"});
  const auto before = InstallUtil::getErrorMessage();

  InstallUtil::sendErrorMessage(std::optional<Dictionary>());

  EXPECT_EQ(InstallUtil::getErrorMessage(), before);
}

TEST_F(InstallUtilErrorsTest, NothingIsReadBeforeAnythingWasSent) {
  proves("RECORD-6");
  EXPECT_EQ(InstallUtil::getErrorMessage(), std::nullopt);
}

}  // namespace
}  // namespace installer::test
