// The services that only Linux has in this form, in the contract suites.

#include <filesystem>

#include "platform/linux/ProcProcessTable.h"
#include "platform/linux/SyslogSystemLog.h"
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

}  // namespace
}  // namespace installer::test
