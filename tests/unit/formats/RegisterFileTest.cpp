#include "hotfix/formats/RegisterFile.h"

#include <gmock/gmock.h>

#include <cerrno>

#include "support/Proves.h"
#include "support/Sandbox.h"

namespace installer {
namespace {

using PropertyList::Dictionary;
using test::Says;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr const char* kFile = "Library/Application Support/Velna/Quillmere/framework.plist";

class RegisterFileTest : public ::testing::Test {
 protected:
  test::Sandbox _sandbox;
};

TEST_F(RegisterFileTest, EveryProductHasItsOwnFolder) {
  proves("REGISTER-1");
  EXPECT_EQ(RegisterFile("Quillmere").getRegisterDirectory(),
            _sandbox.path("Library/Application Support/Velna/Quillmere"));
  EXPECT_EQ(RegisterFile("Two Words.app").getRegisterDirectory(),
            _sandbox.path("Library/Application Support/Velna/Two Words.app"));
}

TEST_F(RegisterFileTest, RecordedValuesAreAnswered) {
  proves("REGISTER-1");
  _sandbox.writePlist(kFile, {{"oldInstallLocation", "/Applications/Quillmere.app/Contents/MacOS"},
                              {"hotfixVersion", "1.2"},
                              {"pathToProduct", "/Applications/Quillmere.app"}});

  const RegisterFile file("Quillmere");

  EXPECT_EQ(file.getOldInstallLocation(), "/Applications/Quillmere.app/Contents/MacOS");
  EXPECT_EQ(file.getHotfixVersion(), "1.2");
  EXPECT_EQ(file.getPathToRcpHome(), "/Applications/Quillmere.app/Contents/MacOS/rcp");
  EXPECT_EQ(file.getProductPath(), "/Applications/Quillmere.app");
}

TEST_F(RegisterFileTest, RcpHomeFollowsThePathRules) {
  proves("REGISTER-1");
  _sandbox.writePlist(kFile, {{"oldInstallLocation", "/Applications//Q.app/"}});

  EXPECT_EQ(RegisterFile("Quillmere").getPathToRcpHome(), "/Applications/Q.app/rcp");
}

TEST_F(RegisterFileTest, UnrecordedValuesAreAbsent) {
  proves("REGISTER-1");
  _sandbox.writePlist(kFile, {{"other", "x"}, {"hotfixVersion", 1}});

  const RegisterFile file("Quillmere");

  EXPECT_EQ(file.getOldInstallLocation(), std::nullopt);
  EXPECT_EQ(file.getHotfixVersion(), std::nullopt);
  EXPECT_EQ(file.getPathToRcpHome(), std::nullopt);
  EXPECT_EQ(file.getProductPath(), std::nullopt);
}

TEST_F(RegisterFileTest, MissingFileAnswersNothing) {
  proves("REGISTER-1");
  const RegisterFile file("Quillmere");

  EXPECT_EQ(file.getOldInstallLocation(), std::nullopt);
  EXPECT_EQ(file.getHotfixVersion(), std::nullopt);
  EXPECT_EQ(file.getPathToRcpHome(), std::nullopt);
  EXPECT_EQ(file.getProductPath(), std::nullopt);
  EXPECT_THAT(_sandbox.log(), IsEmpty());
}

TEST_F(RegisterFileTest, UpdateRecordsTheVersionAndKeepsTheRest) {
  proves("REGISTER-2");
  _sandbox.writePlist(kFile, {{"pathToProduct", "/A"}, {"hotfixVersion", "1.0"}, {"n", 5}});
  RegisterFile file("Quillmere");

  file.updateHotfixVersion("2.0");

  EXPECT_THAT(_sandbox.log(),
              ElementsAre(Says(LogLevel::info, "Update CURRENT_HOTFIX_VERSION to 2.0.")));
  EXPECT_EQ(_sandbox.readPlist(kFile),
            (Dictionary{{"pathToProduct", "/A"}, {"hotfixVersion", "2.0"}, {"n", 5}}));
  EXPECT_EQ(file.getHotfixVersion(), "2.0");
}

TEST_F(RegisterFileTest, UpdateToNoVersionRemovesIt) {
  proves("REGISTER-2");
  _sandbox.writePlist(kFile, {{"hotfixVersion", "1.0"}});

  RegisterFile("Quillmere").updateHotfixVersion(std::nullopt);

  EXPECT_THAT(_sandbox.log(),
              ElementsAre(Says(LogLevel::info, "Update CURRENT_HOTFIX_VERSION to (null).")));
  EXPECT_EQ(_sandbox.readPlist(kFile), Dictionary());
}

TEST_F(RegisterFileTest, UpdateOfAMissingFileWarnsTwiceAndCreatesNothing) {
  proves("REGISTER-3");
  RegisterFile("Quillmere").updateHotfixVersion("2.0");

  EXPECT_THAT(_sandbox.log(),
              ElementsAre(Says(LogLevel::warning, "Fail to update CURRENT_HOTFIX_VERSION."),
                          Says(LogLevel::warning, "Fail to save CURRENT_HOTFIX_VERSION.")));
  EXPECT_FALSE(_sandbox.exists("Library/Application Support"));
}

TEST_F(RegisterFileTest, UpdateOfADamagedFileWarnsTwiceAndKeepsIt) {
  proves("REGISTER-3");
  _sandbox.write(kFile, "<plist><dict>");

  RegisterFile("Quillmere").updateHotfixVersion("2.0");

  EXPECT_THAT(_sandbox.log(),
              ElementsAre(Says(LogLevel::warning, "Fail to update CURRENT_HOTFIX_VERSION."),
                          Says(LogLevel::warning, "Fail to save CURRENT_HOTFIX_VERSION.")));
  EXPECT_EQ(_sandbox.read(kFile), "<plist><dict>");
}

TEST_F(RegisterFileTest, RefusingDiskFailsNeitherStepAndIsTold) {
  proves("REGISTER-4");
  _sandbox.writePlist(kFile, {{"hotfixVersion", "1.0"}});
  RegisterFile file("Quillmere");
  _sandbox.files().failAt(1, EROFS);

  file.updateHotfixVersion("2.0");

  EXPECT_THAT(
      _sandbox.log(),
      ElementsAre(Says(LogLevel::info, "Update CURRENT_HOTFIX_VERSION to 2.0."),
                  Says(LogLevel::error, "\"" + _sandbox.path(kFile) +
                                            "\" cannot be written: Read-only file system")));
  EXPECT_EQ(_sandbox.readPlist(kFile), (Dictionary{{"hotfixVersion", "1.0"}}));
}

TEST_F(RegisterFileTest, FileThatCannotBeReadKeepsAllKeys) {
  proves("REGISTER-3");
  _sandbox.writePlist(kFile, {{"hotfixVersion", "1.0"}, {"pathToProduct", "/P.app"}});
  _sandbox.files().failReading(_sandbox.path(kFile), EIO);
  RegisterFile file("Quillmere");

  file.updateHotfixVersion("2.0");

  EXPECT_EQ(file.getProductPath(), std::nullopt);
  EXPECT_THAT(_sandbox.log(),
              ElementsAre(Says(LogLevel::warning, "Fail to update CURRENT_HOTFIX_VERSION."),
                          Says(LogLevel::warning, "Fail to save CURRENT_HOTFIX_VERSION.")));
  _sandbox.files().stopFailing();
  EXPECT_EQ(_sandbox.readPlist(kFile),
            (Dictionary{{"hotfixVersion", "1.0"}, {"pathToProduct", "/P.app"}}));
}

}  // namespace
}  // namespace installer
