#include "instance/ProvisioningRun.h"

#include <gmock/gmock.h>

#include <cerrno>

#include "support/InstanceFixture.h"
#include "support/Proves.h"

namespace installer::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class ProvisioningRunTest : public InstanceFixture {
 protected:
  bool succeeded() {
    const InstanceService service(home());
    _sandbox.clearLog();
    return provisioningSucceeded(service, home(), "/data");
  }
  void answer(const std::string& text) { _sandbox.write(inHome("../.provisioning_rc"), text); }
  std::string resultFile() const {
    return _sandbox.path("Applications/Quillmere.app/Contents/MacOS/.provisioning_rc");
  }
  std::string line(const std::string& answer) const {
    return "3 The provisioning answered " + answer + "; the logs of the launcher are in " + home() +
           " and in /data/.metadata/.log.";
  }
};

TEST_F(ProvisioningRunTest, SuccessesAreNotTold) {
  for (const char* text : {"rc=0\n", "rc=2\n", "rc=abc\n"}) {
    answer(text);
    EXPECT_TRUE(succeeded()) << text;
    EXPECT_THAT(_sandbox.log(), IsEmpty()) << text;
  }
}

TEST_F(ProvisioningRunTest, OtherAnswersAreToldAsTheyAre) {
  proves("RESULT-8");
  for (const char* code : {"13", "-1", "1 of many", "99999999999999999999"}) {
    answer(std::string("rc=") + code + "\n");
    EXPECT_FALSE(succeeded()) << code;
    EXPECT_THAT(numberedLines(), ElementsAre(line(code)));
  }
}

TEST_F(ProvisioningRunTest, NoResultFileIsAFailureWithoutALine) {
  proves("RESULT-8");
  EXPECT_FALSE(succeeded());
  EXPECT_THAT(_sandbox.log(), IsEmpty());
}

TEST_F(ProvisioningRunTest, ResultFileWithoutAnAnswerIsTold) {
  proves("RESULT-8");
  answer("other=1\n");

  EXPECT_FALSE(succeeded());

  EXPECT_THAT(numberedLines(), ElementsAre("3 \"" + resultFile() +
                                           "\" holds no rc; the logs of the launcher are in " +
                                           home() + " and in /data/.metadata/.log."));
}

TEST_F(ProvisioningRunTest, ResultFileThatCannotBeReadIsTold) {
  proves("RESULT-8");
  answer("rc=0\n");
  _sandbox.files().failReading(resultFile(), EACCES);

  EXPECT_FALSE(succeeded());

  EXPECT_THAT(numberedLines(),
              ElementsAre("3 \"" + resultFile() + "\" cannot be read: Permission denied"));
}

TEST_F(ProvisioningRunTest, LauncherThatASignalEndsIsTold) {
  proves("LAUNCH-10");
  _sandbox.children().endBySignal(launcher(), "signal 9 (Killed)");

  runProvisioning(launcher(), {"-x"});

  EXPECT_THAT(numberedLines(), ElementsAre("3 " + launcher() + " was ended by signal 9 (Killed)."));
}

TEST_F(ProvisioningRunTest, LauncherThatEndsByItselfIsNotTold) {
  proves("LAUNCH-10");
  runProvisioning(launcher(), {"-x"});

  EXPECT_THAT(_sandbox.log(), IsEmpty());
  EXPECT_EQ(_sandbox.children().running(), 0U);
}

}  // namespace
}  // namespace installer::test
