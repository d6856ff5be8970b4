// Any result file is judged as the model judges it.

#include "Fuzzed.h"
#include "Machine.h"
#include "hotfix/formats/JavaProperties.h"
#include "hotfix/instance/InstanceService.h"
#include "support/models/ResultFileModel.h"

namespace installer::fuzz {

void tryInput(std::string_view input) {
  static Machine machine;
  machine.files()["/a/rcp"];
  machine.files()["/a/.provisioning_rc"] = input;
  const std::optional<std::string> code =
      JavaProperties("/a/.provisioning_rc").getPropertyForKey("rc");
  require(InstanceService(std::string("/a/rcp")).getProvisioningResult() ==
              model::provisioningResult(code),
          "the result is the model's");
}

}  // namespace installer::fuzz
