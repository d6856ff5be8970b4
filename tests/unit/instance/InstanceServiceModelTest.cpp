#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "hotfix/instance/InstanceService.h"
#include "support/Proves.h"
#include "support/RandomText.h"
#include "support/Sandbox.h"
#include "support/StubFileManager.h"
#include "support/models/BaseVersionModel.h"
#include "support/models/PropertiesReaderModel.h"
#include "support/models/ResultFileModel.h"

namespace installer {
namespace {

using test::forRandomCases;
using test::RandomSource;

class InstanceServiceModelTest : public ::testing::Test {
 protected:
  InstanceServiceModelTest() { _sandbox.platform().files = &_files; }

  test::Sandbox _sandbox;
  test::StubFileManager _files;
};

std::optional<std::string> returnCodeIn(const std::string& text) {
  for (const auto& [key, value] : model::readProperties(text))
    if (key == "rc") return value;
  return std::nullopt;
}

TEST_F(InstanceServiceModelTest, RandomResultFilesAreJudgedAsTheModelSays) {
  proves("RESULT-2");
  const std::vector<std::string> pieces = {"0", "1", "2",   "2", "3",  "00", "+",  "-",
                                           " ", "x", "abc", ".", "\\", "=",  "\t", "99999999999"};
  const std::vector<std::string> begins = {"rc=", "rc=", "rc = ",         "rc:",      "rc",
                                           "RC=", "",    "-Xa=1\nrc=\\ ", "rc=2\nrc="};
  const InstanceService service("/Q.app/Contents/MacOS/rcp");
  forRandomCases([&](RandomSource& random) {
    const std::string text = random.oneOf(begins) + random.textOf(pieces, 4);
    _files.contents["/Q.app/Contents/MacOS/.provisioning_rc"] = text;

    EXPECT_EQ(service.getProvisioningResult(), model::provisioningResult(returnCodeIn(text)))
        << text;
  });
}

TEST_F(InstanceServiceModelTest, RandomPlugInsGiveTheModelsVersion) {
  proves("INSTANCE-10");
  const std::vector<std::string> begins = {"com.kiv.rcp.base_",
                                           "com.kiv.rcp.base_",
                                           "com.kiv.rcp.base",
                                           "com.kiv.rcp.base.nl_",
                                           "COM.kiv.rcp.base_",
                                           "x.com.kiv.rcp.base_",
                                           ""};
  const std::vector<std::string> pieces = {"6", "10", "9", ".", "_", "-", "v", "jar", "\u00e9"};
  const InstanceService service("/Q.app/Contents/MacOS/rcp");
  forRandomCases([&](RandomSource& random) {
    _files.names.clear();
    for (std::size_t left = random.below(5); left > 0; --left)
      _files.names.push_back(random.oneOf(begins) + random.textOf(pieces, 5));

    EXPECT_EQ(service.getBaseVersion(), model::baseVersion(_files.names))
        << ::testing::PrintToString(_files.names);
  });
}

}  // namespace
}  // namespace installer
