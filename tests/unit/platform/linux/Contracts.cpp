// The services that only Linux has in this form, in the contract suites.

#include <filesystem>

#include "platform/linux/FilePasteboard.h"
#include "platform/linux/ProcProcessTable.h"
#include "platform/linux/SyslogSystemLog.h"
#include "platform/linux/UserPreferences.h"
#include "unit/platform/PasteboardContract.h"
#include "unit/platform/PreferencesContract.h"
#include "unit/platform/ProcessTableContract.h"
#include "unit/platform/SystemLogContract.h"

namespace installer::test {
namespace {

INSTANTIATE_TEST_SUITE_P(
    Linux, SystemLogContractTest,
    ::testing::Values(SystemLogKind{
        "Real", [](Clock& clock) { return std::make_unique<SyslogSystemLog>(clock); }}),
    [](const auto& given) { return given.param.name; });

INSTANTIATE_TEST_SUITE_P(
    Linux, ProcessTableContractTest,
    ::testing::Values(ProcessTableKind{
        "Real", [] { return std::filesystem::read_symlink("/proc/self/exe").string(); },
        [] { return std::make_unique<ProcProcessTable>(); }}),
    [](const auto& given) { return given.param.name; });

INSTANTIATE_TEST_SUITE_P(Linux, PasteboardContractTest,
                         ::testing::Values(PasteboardKind{"Real",
                                                          [](Sandbox& machine) {
                                                            return std::make_unique<FilePasteboard>(
                                                                machine.files(),
                                                                machine.paths().pasteboard);
                                                          }}),
                         [](const auto& given) { return given.param.name; });

class PreferenceFiles : public PreferencesSubject {
 public:
  Preferences& preferences() override { return _preferences; }
  void store(const std::string& domain, const PropertyList::Dictionary& values) override {
    _machine.writePlist("Users/tester/Library/Preferences/" + domain + ".plist", values);
  }

 private:
  Sandbox _machine;
  UserPreferences _preferences{_machine.files(), _machine.users()};
};

INSTANTIATE_TEST_SUITE_P(Linux, PreferencesContractTest,
                         ::testing::Values(PreferencesKind{
                             "Real", [] { return std::make_unique<PreferenceFiles>(); }}),
                         [](const auto& given) { return given.param.name; });

}  // namespace
}  // namespace installer::test
