#include <gmock/gmock.h>

#include "hotfix/util/InstallUtil.h"
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
  InstallUtil::sendErrorMessage(8, {"x"});

  InstallUtil::initInternalPasteboard(true);

  const Dictionary expected{{"ERROR_CODE", 0}, {"ERROR_DETAILS", Array()}};
  EXPECT_EQ(InstallUtil::getErrorMessage(), expected);
}

TEST_F(InstallUtilErrorsTest, UninitializedPasteboardIsEmpty) {
  InstallUtil::sendErrorMessage(8, {"x"});

  InstallUtil::initInternalPasteboard(false);

  EXPECT_EQ(InstallUtil::getErrorMessage(), std::nullopt);
}

TEST_F(InstallUtilErrorsTest, RecordKeepsCodeAndDetailsInOrder) {
  InstallUtil::sendErrorMessage(8, {"/dest", "Quillmere.app"});

  const Dictionary expected{{"ERROR_CODE", 8}, {"ERROR_DETAILS", Array{"/dest", "Quillmere.app"}}};
  EXPECT_EQ(InstallUtil::getErrorMessage(), expected);
}

TEST_F(InstallUtilErrorsTest, DetailsThatXmlCannotHoldStillMakeARecord) {
  InstallUtil::sendErrorMessage(8, {"/\xFF", "\x01"});

  const Dictionary expected{{"ERROR_CODE", 8},
                            {"ERROR_DETAILS", Array{"/\xC3\xBF", "\xEF\xBF\xBD"}}};
  EXPECT_EQ(InstallUtil::getErrorMessage(), expected);
}

TEST_F(InstallUtilErrorsTest, LastRecordSentWins) {
  InstallUtil::sendErrorMessage(3, {});
  InstallUtil::sendErrorMessage(6, {"Quillmere"});

  ASSERT_TRUE(InstallUtil::getErrorMessage());
  EXPECT_EQ(*InstallUtil::getErrorMessage()->find("ERROR_CODE"), PropertyList::Value(6));
}

TEST_F(InstallUtilErrorsTest, AbsentRecordIsIgnored) {
  InstallUtil::sendErrorMessage(6, {"Quillmere"});
  const auto before = InstallUtil::getErrorMessage();

  InstallUtil::sendErrorMessage(std::optional<Dictionary>());

  EXPECT_EQ(InstallUtil::getErrorMessage(), before);
}

TEST_F(InstallUtilErrorsTest, NothingIsReadBeforeAnythingWasSent) {
  EXPECT_EQ(InstallUtil::getErrorMessage(), std::nullopt);
}

}  // namespace
}  // namespace installer::test
