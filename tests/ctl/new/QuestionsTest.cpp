// What is asked for on a terminal.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

#include "support/Proves.h"
#include "support/TemporaryFolder.h"

namespace installer::ctl {
namespace {

using test::TemporaryFolder;
using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;

class QuestionsTest : public ::testing::Test {
 protected:
  QuestionsTest() {
    _folder.makeFile("site/features/a.b_1.5/feature.xml", "<feature/>");
    _folder.makeFile(".keystore", "keys");
  }

  // What is shown on a terminal where these lines are typed, whatever is asked.
  std::string dialogue(const std::vector<std::string>& options, const std::string& typed) {
    int terminal = -1;
    const pid_t child = forkpty(&terminal, nullptr, nullptr, nullptr);
    if (child == 0) {
      const std::string folder = _folder.path("new");
      std::vector<const char*> words = {"hotfixctl", "new", folder.c_str()};
      for (const std::string& option : options) words.push_back(option.c_str());
      words.push_back(nullptr);
      setenv("TERM", "dumb", 1);
      execv(HOTFIX_BINARY_DIR "/hotfixctl", const_cast<char**>(words.data()));
      _exit(127);
    }
    EXPECT_EQ(static_cast<ssize_t>(typed.size()), write(terminal, typed.data(), typed.size()));
    std::string text;
    char part[4096];
    for (ssize_t length = 0; (length = read(terminal, part, sizeof part)) > 0;)
      text.append(part, static_cast<std::size_t>(length));
    int status = -1;
    waitpid(child, &status, 0);
    close(terminal);
    _status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    std::erase(text, '\r');
    return text;
  }

  bool isMade() const { return std::filesystem::exists(_folder.path("new/mac/Hotfix.pkg")); }

  TemporaryFolder _folder;
  int _status = -1;
};

TEST_F(QuestionsTest, EverythingThatIsNeededIsAskedFor) {
  proves("NEW-7");
  const std::string text =
      dialogue({}, "1.5\nQuillmere\n\n  com.quillmere.fix \na.b\n" + _folder.path("site") + "\n" +
                       _folder.path(".keystore") + "\n\n\n");

  EXPECT_EQ(0, _status) << text;
  EXPECT_TRUE(isMade());
  EXPECT_THAT(text, AllOf(HasSubstr("Version of the hotfix: "),
                          HasSubstr("Identifier of the package: Identifier of the package: "),
                          HasSubstr("File of settings"), HasSubstr("Folder of extra files")));
  EXPECT_THAT(_folder.content("new/mac/Hotfix.pkg/Contents/Info.plist"),
              HasSubstr("<string>com.quillmere.fix</string>"));
}

TEST_F(QuestionsTest, OnlyWhatIsMissingIsAskedFor) {
  _folder.makeFile("settings", "a/b=c\n");
  const std::string text =
      dialogue({"--version", "1.5", "--bundle", "Quillmere", "--feature", "a.b", "--site",
                _folder.path("site"), "--keystore", _folder.path(".keystore")},
               "com.quillmere.fix\n" + _folder.path("settings") + "\n\n");

  EXPECT_EQ(0, _status) << text;
  EXPECT_THAT(text, Not(HasSubstr("Version of the hotfix")));
  EXPECT_EQ("a/b=c\n", _folder.content("new/mac/deploy/plugin_customization.ini"));
}

TEST_F(QuestionsTest, NothingIsAskedWhereNothingIsMissing) {
  const std::string text =
      dialogue({"--version", "1.5", "--bundle", "Quillmere", "--feature", "a.b", "--site",
                _folder.path("site"), "--keystore", _folder.path(".keystore"), "--identifier", "x"},
               "");

  EXPECT_EQ(0, _status) << text;
  EXPECT_THAT(text, Not(HasSubstr("File of settings")));
}

TEST_F(QuestionsTest, TheEndOfTheAnswersIsTheEnd) {
  proves("NEW-7");
  const std::string text = dialogue({}, "1.5\nQuillmere\n\x04");

  EXPECT_EQ(64, _status);
  EXPECT_THAT(text, HasSubstr("hotfixctl: new: --identifier, --feature, --site and --keystore are "
                              "missing\n"));
  EXPECT_FALSE(isMade());
}

TEST_F(QuestionsTest, ProgramsAreNotAsked) {
  const std::string text = dialogue({"--json"}, "");

  EXPECT_EQ(64, _status);
  EXPECT_THAT(text, Not(HasSubstr("Version of the hotfix")));
}

}  // namespace
}  // namespace installer::ctl
