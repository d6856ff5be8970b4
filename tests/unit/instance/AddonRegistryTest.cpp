#include <gmock/gmock.h>

#include "hotfix/instance/InstanceService.h"
#include "hotfix/platform/ToldOnce.h"
#include "support/BinaryListWriter.h"
#include "support/InstanceFixture.h"
#include "support/Proves.h"
#include "support/TreeSnapshot.h"

namespace installer::test {
namespace {

using PropertyList::Array;
using PropertyList::Dictionary;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class AddonRegistryTest : public InstanceFixture {
 protected:
  AddonRegistryTest()
      : _spelling{{"ID", "com.example"},
                  {"version", "1.0"},
                  {"CFBundleIdentifier", "b.one"},
                  {"more", 1}},
        _later{{"ID", "com.example"}, {"version", "2.0"}},
        _nameless{{"version", "3.0"}} {}

  void writeRegistry(const Dictionary& root) {
    _sandbox.writePlist(inHome("addonInfo.plist"), root);
  }
  void writeEntries() { writeRegistry({{"addons", Array{_nameless, _spelling, _later}}}); }
  InstanceService service() const { return InstanceService(home()); }

  Dictionary _spelling;
  Dictionary _later;
  Dictionary _nameless;
};

TEST_F(AddonRegistryTest, EntriesAreListedInOrder) {
  proves("ADDON-1");
  writeEntries();

  const auto entries = service().getAllAddonRegistryInfo();

  ASSERT_TRUE(entries);
  EXPECT_THAT(*entries, ElementsAre(_nameless, _spelling, _later));
}

TEST_F(AddonRegistryTest, BinaryRegistryIsRead) {
  proves("ADDON-1");
  const Dictionary root{{"addons", Array{_nameless, _spelling}}};
  _sandbox.write(inHome("addonInfo.plist"), BinaryListWriter(1, 1).bytes(root));

  EXPECT_EQ(service().getRegistryInfoForAddon("com.example"), _spelling);
}

TEST_F(AddonRegistryTest, RegistryThatCannotBeReadIsEmptyAndToldOnce) {
  proves("ADDON-1");
  const ToldOnce lines;
  writeEntries();
  InstanceService registry = service();
  _sandbox.files().failReading(homePath("addonInfo.plist"), EIO);
  _sandbox.clearLog();

  ASSERT_TRUE(registry.getAllAddonRegistryInfo());
  EXPECT_TRUE(registry.getAllAddonRegistryInfo()->empty());

  EXPECT_THAT(linesAt(LogLevel::error), ElementsAre("\"" + homePath("addonInfo.plist") +
                                                    "\" cannot be read: Input/output error"));
}

TEST_F(AddonRegistryTest, WithoutFileEverythingIsAbsent) {
  proves("ADDON-1");
  EXPECT_EQ(service().getAllAddonRegistryInfo(), std::nullopt);
  EXPECT_EQ(service().getRegistryInfoForAddon("com.example"), std::nullopt);
  EXPECT_EQ(service().getAddonInstalledVersion("com.example"), std::nullopt);
  EXPECT_EQ(service().getAddonInstalledBundleID("com.example"), std::nullopt);
}

TEST_F(AddonRegistryTest, WithoutHomeEverythingIsAbsent) {
  proves("ADDON-1");
  writeEntries();

  EXPECT_EQ(InstanceService(std::nullopt).getAllAddonRegistryInfo(), std::nullopt);
  EXPECT_EQ(InstanceService(std::nullopt).getRegistryInfoForAddon("com.example"), std::nullopt);
}

TEST_F(AddonRegistryTest, UnreadableRegistryOrOneWithoutAddonsIsEmpty) {
  proves("ADDON-1");
  _sandbox.write(inHome("addonInfo.plist"), "no list");
  ASSERT_TRUE(service().getAllAddonRegistryInfo());
  EXPECT_THAT(*service().getAllAddonRegistryInfo(), IsEmpty());

  writeRegistry({{"other", 1}});
  ASSERT_TRUE(service().getAllAddonRegistryInfo());
  EXPECT_THAT(*service().getAllAddonRegistryInfo(), IsEmpty());

  writeRegistry({{"addons", "no array"}});
  ASSERT_TRUE(service().getAllAddonRegistryInfo());
  EXPECT_THAT(*service().getAllAddonRegistryInfo(), IsEmpty());
}

TEST_F(AddonRegistryTest, EntriesThatAreNoDictionariesAreSkipped) {
  proves("ADDON-2");
  writeRegistry({{"addons", Array{"x", _later, 1}}});

  EXPECT_THAT(*service().getAllAddonRegistryInfo(), ElementsAre(_later));
}

TEST_F(AddonRegistryTest, FirstEntryWithTheIdWins) {
  proves("ADDON-2");
  writeEntries();

  EXPECT_EQ(service().getRegistryInfoForAddon("com.example"), _spelling);
  EXPECT_EQ(service().getAddonInstalledVersion("com.example"), "1.0");
  EXPECT_EQ(service().getAddonInstalledBundleID("com.example"), "b.one");
}

TEST_F(AddonRegistryTest, IdsAreComparedToTheLetter) {
  proves("ADDON-2");
  writeEntries();

  EXPECT_EQ(service().getRegistryInfoForAddon("Com.Example"), std::nullopt);
  EXPECT_EQ(service().getRegistryInfoForAddon("com.exampl"), std::nullopt);
  EXPECT_EQ(service().getRegistryInfoForAddon(std::nullopt), std::nullopt);
}

TEST_F(AddonRegistryTest, MissingKeysOfAnEntryAreAbsent) {
  proves("ADDON-2");
  writeRegistry({{"addons", Array{Dictionary{{"ID", "x"}}}}});

  EXPECT_EQ(service().getAddonInstalledVersion("x"), std::nullopt);
  EXPECT_EQ(service().getAddonInstalledBundleID("x"), std::nullopt);
}

TEST_F(AddonRegistryTest, ValuesThatAreNoTextAreAbsent) {
  proves("ADDON-2");
  const Dictionary entry{{"ID", "x"}, {"version", 1}, {"CFBundleIdentifier", Array{"b"}}};
  writeRegistry({{"addons", Array{Dictionary{{"ID", 5}}, entry}}});

  EXPECT_EQ(service().getRegistryInfoForAddon("5"), std::nullopt);
  EXPECT_EQ(service().getRegistryInfoForAddon("x"), entry);
  EXPECT_EQ(service().getAddonInstalledVersion("x"), std::nullopt);
  EXPECT_EQ(service().getAddonInstalledBundleID("x"), std::nullopt);
}

TEST_F(AddonRegistryTest, EmptyIdIsAnIdAndNotAnAbsentOne) {
  proves("ADDON-2");
  const Dictionary unnamed{{"ID", ""}, {"version", ""}};
  writeRegistry({{"addons", Array{_nameless, unnamed}}});

  EXPECT_EQ(service().getRegistryInfoForAddon(""), unnamed);
  EXPECT_EQ(service().getAddonInstalledVersion(""), "");
}

TEST_F(AddonRegistryTest, RemovalLeavesTheRegistryAsItIs) {
  proves("ADDON-3");
  writeEntries();
  InstanceService service(home());
  const auto before = snapshotOf(home());
  const std::size_t changes = _sandbox.files().operations().size();

  service.removeRegistryInfoforAddon("com.example");
  service.removeRegistryInfoforAddon(std::nullopt);

  EXPECT_EQ(snapshotOf(home()), before);
  EXPECT_EQ(_sandbox.files().operations().size(), changes) << "a rewritten file is no left one";
  EXPECT_EQ(service.getRegistryInfoForAddon("com.example"), _spelling);
}

}  // namespace
}  // namespace installer::test
