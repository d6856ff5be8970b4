// Calls that must not compile: nullptr where a text is taken, a text where a truth is taken.

#include <gmock/gmock.h>

#include <cstddef>
#include <cstdlib>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "hotfix/base/KeyedHash.h"
#include "hotfix/base/Path.h"
#include "hotfix/base/PropertyList.h"
#include "hotfix/driver/InstanceLock.h"
#include "hotfix/formats/Configuration.h"
#include "hotfix/formats/InstallManifest.h"
#include "hotfix/formats/JavaProperties.h"
#include "hotfix/formats/Properties.h"
#include "hotfix/formats/RegisterFile.h"
#include "hotfix/instance/InstanceService.h"
#include "hotfix/platform/HomeFolders.h"
#include "hotfix/platform/PropertyListFile.h"
#include "hotfix/util/InstallUtil.h"
#include "hotfix/util/StringUtil.h"
#include "hotfix/workflow/Hotfix.h"
#include "hotfix/workflow/HotfixPolicy.h"
#include "hotfix/workflow/HotfixUninstall.h"
#include "support/Proves.h"

namespace installer::test {
namespace {

using Text = const char*;
using Texts = const std::vector<std::string>&;
using Null = std::nullptr_t;

// A call of the operation as a type; what it is given is only compiled when it may be.
#define CALL(operation)                                                                     \
  decltype([](auto&&... arguments) -> decltype(operation(std::forward<decltype(arguments)>( \
                                       arguments)...)) { std::abort(); })
#define METHOD(type, operation) CALL(std::declval<type&>().operation)

// `Arguments` with nullptr in the place of the text at `index`; as they are at another place.
template <std::size_t index, class Sequence, class... Arguments>
struct WithNull;
template <std::size_t index, std::size_t... places, class... Arguments>
struct WithNull<index, std::index_sequence<places...>, Arguments...> {
  template <class Argument, std::size_t place>
  using At = std::conditional_t<place == index && std::is_same_v<Argument, Text>, Null, Argument>;

  static constexpr bool changes =
      std::is_same_v<std::tuple_element_t<index, std::tuple<Arguments...>>, Text>;
  template <class Call>
  static constexpr bool accepted = std::is_invocable_v<Call, At<Arguments, places>...>;
  template <class Made>
  static constexpr bool constructs = std::is_constructible_v<Made, At<Arguments, places>...>;
};
template <std::size_t index, class... Arguments>
using NullAt = WithNull<index, std::index_sequence_for<Arguments...>, Arguments...>;

// Whether the call takes the arguments, and none of them when a text among them is nullptr.
template <class Call, class... Arguments>
constexpr bool refusesNull() {
  return []<std::size_t... index>(std::index_sequence<index...>) {
    return std::is_invocable_v<Call, Arguments...> &&
           ((!NullAt<index, Arguments...>::changes ||
             !NullAt<index, Arguments...>::template accepted<Call>)&&...);
  }
  (std::index_sequence_for<Arguments...>());
}

// The same for a constructor.
template <class Made, class... Arguments>
constexpr bool isNotMadeOfNull() {
  return []<std::size_t... index>(std::index_sequence<index...>) {
    return std::is_constructible_v<Made, Arguments...> &&
           ((!NullAt<index, Arguments...>::changes ||
             !NullAt<index, Arguments...>::template constructs<Made>)&&...);
  }
  (std::index_sequence_for<Arguments...>());
}

TEST(RefusedCallsTest, NullIsNoTextForTextsAndPaths) {
  proves("LIBRARY-7");
  EXPECT_TRUE((refusesNull<CALL(StringUtil::convertNSStringTo8859_1Key), Text>()));
  EXPECT_TRUE((refusesNull<CALL(StringUtil::convertNSStringTo8859_1Value), Text>()));
  EXPECT_TRUE((refusesNull<CALL(StringUtil::convertUnicode2Characters), Text>()));
  EXPECT_TRUE((refusesNull<CALL(StringUtil::charAtIndex), long, Text>()));
  EXPECT_TRUE(
      (refusesNull<CALL(StringUtil::stringByReplacingOccurrencesOfString), Text, Text, Text>()));
  EXPECT_TRUE((refusesNull<CALL(StringUtil::addTranslationSignToString), Text>()));
  EXPECT_TRUE((refusesNull<CALL(StringUtil::addQuotesToString), Text>()));
  EXPECT_TRUE((refusesNull<CALL(StringUtil::getVolume), Text>()));
  EXPECT_TRUE((refusesNull<CALL(StringUtil::bindString), Text, Texts>()));
  EXPECT_TRUE((refusesNull<CALL(path::appendingComponent), Text, Text>()));
  EXPECT_TRUE((refusesNull<CALL(path::deletingLastComponent), Text>()));
  EXPECT_TRUE((refusesNull<CALL(path::lastComponent), Text>()));
  EXPECT_TRUE((refusesNull<CALL(path::expandingTilde), Text>()));
}

TEST(RefusedCallsTest, NullIsNoTextForUtilities) {
  proves("LIBRARY-7");
  EXPECT_TRUE((refusesNull<CALL(InstallUtil::startProvisionWithArgs), Text>()));
  EXPECT_TRUE((refusesNull<CALL(InstallUtil::getAllProcess), Text>()));
  EXPECT_TRUE((refusesNull<CALL(InstallUtil::checkBundleIsRunning), Text>()));
  EXPECT_TRUE((refusesNull<CALL(InstallUtil::checkBundleIsRunning), Text, Text>()));
  EXPECT_TRUE((refusesNull<CALL(InstallUtil::getBundlePath), Text>()));
  EXPECT_TRUE((refusesNull<CALL(InstallUtil::getBundleID), Text>()));
  EXPECT_TRUE((refusesNull<CALL(InstallUtil::getTargetNameBy), Text>()));
  EXPECT_TRUE((refusesNull<CALL(InstallUtil::copyFolderFrom), Text, Text>()));
  EXPECT_TRUE((refusesNull<CALL(InstallUtil::changeAttributesForDirectory), Text>()));
  EXPECT_TRUE((refusesNull<CALL(InstallUtil::removeReceipt), Text>()));
  EXPECT_TRUE((refusesNull<CALL(InstallUtil::replacePackageVariableWith), Text,
                           PropertyList::Dictionary&>()));
  EXPECT_TRUE((refusesNull<CALL(InstallUtil::openTraceFile), Text>()));
  EXPECT_TRUE((refusesNull<CALL(InstallUtil::containUnSupportedCharacters), Text>()));
  EXPECT_TRUE((refusesNull<CALL(InstallUtil::hasPrefixCaseInsensitive), Text, Text>()));
  EXPECT_TRUE((refusesNull<CALL(InstallUtil::processDate), Text>()));
  EXPECT_TRUE((refusesNull<CALL(InstallUtil::getPathToMPKGThrough), Text>()));
  EXPECT_TRUE((refusesNull<CALL(InstallUtil::getInstallerRootThrough), Text>()));
}

TEST(RefusedCallsTest, NullIsNoTextForPropertyLists) {
  proves("LIBRARY-7");
  using PropertyList::Dictionary;
  using PropertyList::Value;
  EXPECT_TRUE((refusesNull<CALL(PropertyList::parse), Text>()));
  EXPECT_TRUE((refusesNull<CALL(PropertyList::parseDictionary), Text>()));
  EXPECT_TRUE((refusesNull<CALL(PropertyList::textForKey), const Dictionary&, Text>()));
  EXPECT_TRUE((refusesNull<CALL(PropertyList::booleanForKey), const Dictionary&, Text>()));
  EXPECT_TRUE((refusesNull<CALL(PropertyList::readDictionary), Text>()));
  EXPECT_TRUE((refusesNull<CALL(PropertyList::readDictionary), Text, FileError&>()));
  EXPECT_TRUE((refusesNull<CALL(PropertyList::writeDictionary), const Dictionary&, Text>()));
  EXPECT_TRUE((refusesNull<CALL(PropertyList::serialize), Text>()));
  EXPECT_TRUE((refusesNull<METHOD(Dictionary, find), Text>()));
  EXPECT_TRUE((refusesNull<METHOD(Dictionary, set), Text, Text>()));
  EXPECT_TRUE((refusesNull<METHOD(Dictionary, remove), Text>()));
  EXPECT_TRUE((isNotMadeOfNull<Value, Text>()));
  EXPECT_TRUE((refusesNull<KeyedHash, Text>()));
}

TEST(RefusedCallsTest, NullIsNoTextForFormats) {
  proves("LIBRARY-7");
  EXPECT_TRUE((isNotMadeOfNull<JavaProperties, Text>()));
  EXPECT_TRUE((refusesNull<METHOD(JavaProperties, getPropertyForKey), Text>()));
  EXPECT_TRUE((refusesNull<METHOD(JavaProperties, setProperty), Text, Text>()));
  EXPECT_TRUE((refusesNull<METHOD(JavaProperties, removePropertyForKey), Text>()));
  EXPECT_TRUE((refusesNull<METHOD(JavaProperties, savePropertiesToFile), Text>()));
  EXPECT_TRUE((refusesNull<METHOD(JavaProperties, mergeWithJavaProperties), Text>()));
  EXPECT_TRUE((isNotMadeOfNull<Properties, Text>()));
  EXPECT_TRUE((refusesNull<METHOD(Properties, getPropertyForKey), Text>()));
  EXPECT_TRUE((refusesNull<METHOD(Properties, hasPropertyForKey), Text>()));
  EXPECT_TRUE((refusesNull<METHOD(Properties, setProperty), Text, Text>()));
  EXPECT_TRUE((refusesNull<METHOD(Properties, removePropertyForKey), Text>()));
  EXPECT_TRUE((refusesNull<METHOD(Properties, savePropertiesToFile), Text>()));
  EXPECT_TRUE((isNotMadeOfNull<RegisterFile, Text>()));
  EXPECT_TRUE((refusesNull<METHOD(RegisterFile, updateHotfixVersion), Text>()));
  EXPECT_TRUE((refusesNull<METHOD(Configuration, getPropertyValueForKey), Text>()));
  EXPECT_TRUE((refusesNull<METHOD(Configuration, setProperty), Text, Text>()));
  EXPECT_TRUE((isNotMadeOfNull<InstallManifest, Text>()));
  EXPECT_TRUE((refusesNull<METHOD(InstallManifest, replaceInstallerRootWith), Text>()));
  EXPECT_TRUE((refusesNull<METHOD(InstallManifest, saveInstallManifestAs), Text>()));
}

TEST(RefusedCallsTest, NullIsNoTextForInstances) {
  proves("LIBRARY-7");
  using S = InstanceService;
  EXPECT_TRUE((isNotMadeOfNull<S, Text>()));
  EXPECT_TRUE((isNotMadeOfNull<S, Text, Text>()));
  EXPECT_TRUE((refusesNull<CALL(S::existing), Text>()));
  EXPECT_TRUE((refusesNull<CALL(S::existing), Text, Text>()));
  EXPECT_TRUE((refusesNull<METHOD(S, setInstallPackage), Text>()));
  EXPECT_TRUE((refusesNull<METHOD(S, shouldProceedAfterError), const FileError&, Text, Text>()));
  EXPECT_TRUE((refusesNull<METHOD(S, setInstalledVersion), Text>()));
  EXPECT_TRUE((refusesNull<METHOD(S, updateHotfixVersion), Text>()));
  EXPECT_TRUE((refusesNull<METHOD(S, saveHotfixBundleID), Text>()));
  EXPECT_TRUE((refusesNull<METHOD(S, updateProvisionManifestVersion), Text>()));
  EXPECT_TRUE((refusesNull<METHOD(S, updateInstallID), Text>()));
  EXPECT_TRUE((refusesNull<METHOD(S, copyUpdateManifest), Text, Text>()));
  EXPECT_TRUE((refusesNull<METHOD(S, copyInstallManifest), Text, Text>()));
  EXPECT_TRUE((refusesNull<METHOD(S, copyInstallManifest), Text, Text, Text>()));
  EXPECT_TRUE((refusesNull<METHOD(S, copyManifest), Text>()));
  EXPECT_TRUE((refusesNull<METHOD(S, copyHotfixUninstallManifest), Text>()));
  EXPECT_TRUE((refusesNull<METHOD(S, startProvisioningWithUpdate), Text>()));
  EXPECT_TRUE((refusesNull<METHOD(S, startProvisioningWithCleanUp), Text>()));
  EXPECT_TRUE((refusesNull<METHOD(S, generateRcplauncherPropertiesWithTemplate), Text, Text>()));
  EXPECT_TRUE((refusesNull<METHOD(S, copyOgsiAgentProperties), Text>()));
  EXPECT_TRUE((refusesNull<METHOD(S, generateJVMPropertiesWithTemplate), Text>()));
  EXPECT_TRUE((refusesNull<METHOD(S, mergePluginCustomizationWithBase), Text>()));
  EXPECT_TRUE((refusesNull<METHOD(S, mergePluginCustomizationWithRcphome), Text>()));
  EXPECT_TRUE((refusesNull<METHOD(S, copyKeyStores), Text>()));
  EXPECT_TRUE((refusesNull<METHOD(S, copyExtras), Text>()));
  EXPECT_TRUE((refusesNull<METHOD(S, getRegistryInfoForAddon), Text>()));
  EXPECT_TRUE((refusesNull<METHOD(S, getAddonInstalledVersion), Text>()));
  EXPECT_TRUE((refusesNull<METHOD(S, getAddonInstalledBundleID), Text>()));
  EXPECT_TRUE((refusesNull<METHOD(S, removeRegistryInfoforAddon), Text>()));
  EXPECT_TRUE((refusesNull<METHOD(S, getAddonLogFile), Text, Text>()));
  EXPECT_TRUE((refusesNull<METHOD(S, collectLogFiles), Text, Text, Text>()));
  EXPECT_TRUE((refusesNull<METHOD(S, collectLogFiles), Text, Text, Text, Text>()));
}

TEST(RefusedCallsTest, NullIsNoTextForWorkflows) {
  proves("LIBRARY-7");
  EXPECT_TRUE((isNotMadeOfNull<Hotfix, Text, Text, Text>()));
  EXPECT_TRUE((isNotMadeOfNull<HotfixPolicy, Text>()));
  EXPECT_TRUE((isNotMadeOfNull<HotfixUninstall, Text, Text>()));
  EXPECT_TRUE((isNotMadeOfNull<InstanceLock, Text>()));
  EXPECT_TRUE((isNotMadeOfNull<InstanceLock, Text, Text>()));
}

// Takes a truth, and neither a text nor nullptr in its place.
template <class Call>
constexpr bool takesTruthsOnly() {
  return std::is_invocable_v<Call, bool> && !std::is_invocable_v<Call, const char(&)[6]> &&
         !std::is_invocable_v<Call, char*> && !std::is_invocable_v<Call, const std::string&> &&
         !std::is_invocable_v<Call, const unsigned char*> && !std::is_invocable_v<Call, Null>;
}

TEST(RefusedCallsTest, TextIsNoTruth) {
  proves("LIBRARY-7");
  using S = InstanceService;
  EXPECT_TRUE(takesTruthsOnly<CALL(StringUtil::boolToString)>());
  EXPECT_TRUE(takesTruthsOnly<CALL(InstallUtil::initInternalPasteboard)>());
  EXPECT_TRUE((takesTruthsOnly<METHOD(S, saveHotfixSkipRunningCheckProperty)>()));
  using UpdatePermissions = METHOD(S, updatePermissions);
  EXPECT_TRUE((std::is_invocable_v<UpdatePermissions, bool, bool>));
  EXPECT_TRUE((std::is_invocable_v<UpdatePermissions, bool, const std::string&>));
  EXPECT_FALSE((std::is_invocable_v<UpdatePermissions, bool, Text>));
  EXPECT_FALSE((std::is_invocable_v<UpdatePermissions, bool, Null>));
  EXPECT_FALSE((std::is_invocable_v<UpdatePermissions, Text, bool>));
  EXPECT_FALSE((std::is_invocable_v<UpdatePermissions, Text, const std::string&>));
}

TEST(RefusedCallsTest, PointerIsNoValueOfAPropertyList) {
  proves("LIBRARY-7");
  using PropertyList::Value;
  EXPECT_TRUE((std::is_constructible_v<Value, char*>));
  EXPECT_TRUE((std::is_constructible_v<Value, const char(&)[6]>));
  EXPECT_FALSE((std::is_constructible_v<Value, const unsigned char*>));
  EXPECT_FALSE((std::is_constructible_v<Value, const Value*>));
}

}  // namespace
}  // namespace installer::test
