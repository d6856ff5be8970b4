// Packages that were cut, damaged or made to do harm: each gets an answer, soon.

#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <random>

#include "ctl/lint/LintWorld.h"
#include "ctl/lint/Report.h"
#include "ctl/lint/RuleTable.h"
#include "support/Proves.h"
#include "support/TemporaryFolder.h"

namespace fs = std::filesystem;

namespace installer::ctl::lint::test {
namespace {

using installer::test::TemporaryFolder;
using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::Not;

class LintHostileTest : public ::testing::Test {
 protected:
  LintHostileTest() {
    _world.makeInstance();
    _world.instance = LintWorld::kBundle;
    _world.older = LintWorld::kOlder;
  }

  // Whether there was an answer: findings in all their forms, or why there are none.
  std::vector<std::string> look() {
    const auto answer = lint(_world.request());
    if (std::holds_alternative<CannotLook>(answer)) return {"none"};
    const auto& findings = std::get<Findings>(answer);
    EXPECT_THAT(lint::textOf(findings, {}), HasSubstr(" error"));
    EXPECT_NO_THROW((void)ctl::textOf(lint::jsonOf("p", findings)));
    std::vector<std::string> ids;
    for (const Finding& finding : findings.kept()) ids.emplace_back(finding.rule->id);
    return ids;
  }

  std::vector<std::string> files() const {
    std::vector<std::string> found;
    for (const auto& entry : fs::recursive_directory_iterator(_folder.path()))
      if (entry.is_regular_file())
        found.push_back(entry.path().string().substr(_folder.path().size()));
    std::sort(found.begin(), found.end());
    return found;
  }

  TemporaryFolder _folder;
  LintWorld _world{_folder.path()};
};

TEST_F(LintHostileTest, EachFileMayBeCutAnywhere) {
  proves("LINT-9");
  for (const std::string& file : files()) {
    const std::string whole = _world.read(file);
    const std::size_t step = std::max<std::size_t>(1, whole.size() / 25);
    for (std::size_t size = 0; size < whole.size(); size += step) {
      _world.write(file, whole.substr(0, size));
      look();
    }
    _world.write(file, whole);
  }
}

TEST_F(LintHostileTest, EachFileMayHoldAnyByteAnywhere) {
  proves("LINT-9");
  std::mt19937 random(20121115);
  for (const std::string& file : files()) {
    const std::string whole = _world.read(file);
    for (int round = 0; round < 12; ++round) {
      std::string damaged = whole;
      for (int i = 0; i < 3; ++i) damaged[random() % damaged.size()] = static_cast<char>(random());
      _world.write(file, damaged);
      look();
    }
    _world.write(file, whole);
  }
}

TEST_F(LintHostileTest, EachFileMayBeAFolderAPipeALinkToItselfOrMissing) {
  for (const std::string& file : files()) {
    const std::string whole = _world.read(file);
    _world.remove(file);
    look();
    _world.makeFolder(file);
    look();
    _world.makePipe(file);
    look();
    _world.makeLink(file, fs::path(file).filename());
    look();
    _world.write(file, whole);
  }
}

TEST_F(LintHostileTest, EntitiesThatGrowAreNoManifest) {
  proves("LINT-9");
  std::string text = "<!DOCTYPE m [<!ENTITY a0 \"aaaaaaaaaa\">";
  for (int i = 1; i < 12; ++i) {
    const std::string before = "&a" + std::to_string(i - 1) + ";";
    text += "<!ENTITY a" + std::to_string(i) + " \"";
    for (int j = 0; j < 10; ++j) text += before;
    text += "\">";
  }
  _world.write(LintWorld::deploy("install.hotfix.xml"), text + "]><m>&a11;</m>");

  look();
}

TEST_F(LintHostileTest, DeepDocumentsAreAnswered) {
  std::string deep;
  for (int i = 0; i < 100'000; ++i) deep += "<a>";
  _world.write(LintWorld::deploy("install.hotfix.xml"), deep);
  EXPECT_THAT(look(), Contains("HF301"));

  std::string list = "<plist version=\"1.0\">";
  for (int i = 0; i < 100'000; ++i) list += "<array>";
  _world.write(_world.package + "/Contents/Info.plist", list);
  EXPECT_THAT(look(), Contains("HF702"));
}

TEST_F(LintHostileTest, ALongListOfFeaturesIsAnswered) {
  std::vector<Feature> features;
  for (int i = 0; i < 3000; ++i) features.push_back({.id = "f" + std::to_string(i)});
  _world.install(features);

  EXPECT_THAT(look(), Contains("HF313"));
}

TEST_F(LintHostileTest, MoreFeaturesThanAreLookedForAreTold) {
  proves("LINT-9");
  std::vector<Feature> features(10'000);
  _world.install(features);
  EXPECT_THAT(look(), Not(Contains("HF608")));

  features.emplace_back();
  _world.install(features);

  EXPECT_THAT(look(), Contains("HF608"));
}

TEST_F(LintHostileTest, AndSoIsMoreOfFeaturesThanIsRead) {
  proves("LINT-9");
  const std::string features = std::string(LintWorld::kSite) + "/features/";
  _world.install({{}, {.id = "a"}, {.id = "b"}});
  _world.write(features + "a_1.5/feature.xml", "<feature/>");
  _world.write(features + "b_1.5/feature.xml", "<feature/>");
  EXPECT_THAT(look(), Not(Contains("HF608")));

  _world.resize(features + "a_1.5/feature.xml", std::size_t{64} << 20);

  EXPECT_THAT(look(), Contains("HF608"));
}

TEST_F(LintHostileTest, ALongListOfPluginsOnManySitesIsAnswered) {
  proves("LINT-9");
  std::string plugins;
  for (int i = 0; i < 100'000; ++i)
    plugins += "<plugin id=\"p" + std::to_string(i) + "\" version=\"1\"/>";
  _world.write(std::string(LintWorld::kSite) + "/features/com.kiv.fix_1.5/feature.xml",
               "<feature>" + plugins + "</feature>");
  std::string sites = "${package}/../../updates/platform";
  for (int i = 0; i < 99; ++i) sites += ",${package}/../../updates/platform";
  _world.text("updateSiteList", sites);

  const auto answer = lint(_world.request());

  EXPECT_EQ(100'000U, std::get<Findings>(answer).dropped().at("HF225") + Findings::kMostOfOneRule);
}

TEST_F(LintHostileTest, AHundredThousandOddLinesAreCountedAndNotKept) {
  proves("LINT-9");
  std::string settings;
  for (int i = 0; i < 110'000; ++i) settings += "x\n";
  _world.settings(settings);

  const auto answer = lint(_world.request());

  const auto& findings = std::get<Findings>(answer);
  EXPECT_EQ(100'000U + 99'999U + 1U, findings.count(Level::warning));
  EXPECT_LT(findings.kept().size(), 100U);
}

TEST_F(LintHostileTest, NamesWithControlCharactersReachNoTerminal) {
  _world.write(LintWorld::extras("a\x1B[2J\nb\x07~"), "");

  const auto answer = lint(_world.request());

  const auto& findings = std::get<Findings>(answer);
  const std::string text = lint::textOf(findings, {});
  EXPECT_THAT(ctl::textOf(sarifOf(findings)), HasSubstr("%1B%5B2J%0Ab%07~"));
  EXPECT_THAT(text, HasSubstr("HF607"));
  EXPECT_THAT(text, Not(HasSubstr("\x1B")));
}

TEST_F(LintHostileTest, KeysOfAnyLengthAreAnswered) {
  _world.text(std::string(1 << 20, 'v'), "1.5");
  _world.text("version", std::string(1 << 20, '1'));

  EXPECT_THAT(look(), Contains("HF111"));
}

TEST_F(LintHostileTest, ALongLineIsNotLookedAtAndNotTold) {
  proves("LINT-9");
  std::string lines;
  for (int i = 0; i < 3; ++i) lines += "!" + std::string((1 << 20) - 1, '\x01') + "\\\n";
  for (int i = 0; i < 3; ++i) lines += "!" + std::string((1 << 20) - 2, '\x02') + "\\\n";
  _world.settings(lines);

  const auto answer = lint(_world.request());

  const auto& findings = std::get<Findings>(answer);
  std::vector<std::size_t> tooLong;
  std::vector<std::size_t> looked;
  for (const Finding& finding : findings.kept()) {
    EXPECT_LE(finding.message.size(), Findings::kLongestText);
    if (finding.rule->id == "HF608") tooLong.push_back(finding.place.line.value_or(0));
    if (finding.rule->id == "HF409") looked.push_back(finding.place.line.value_or(0));
  }
  EXPECT_THAT(tooLong, ::testing::ElementsAre(1, 2, 3));
  EXPECT_THAT(looked, ::testing::ElementsAre(4, 5, 6));
}

// --- What cannot be looked at
// ----------------------------------------------------------------------

TEST_F(LintHostileTest, WhatIsNoPackageIsToldAndNotJudged) {
  _world.write("/file", "");
  _world.makePipe("/pipe");
  for (const char* place : {"/none", "/file", "/pipe"}) {
    _world.package = place;
    const auto answer = lint(_world.request());
    ASSERT_TRUE(std::holds_alternative<CannotLook>(answer)) << place;
    EXPECT_THAT(std::get<CannotLook>(answer).reason, HasSubstr(_folder.path() + place));
  }
}

TEST_F(LintHostileTest, NorIsAnythingWithoutTheInstanceOrTheOlderPackage) {
  _world.instance = "/none";
  EXPECT_TRUE(std::holds_alternative<CannotLook>(lint(_world.request())));
  _world.instance = std::nullopt;
  _world.older = "/none";
  EXPECT_TRUE(std::holds_alternative<CannotLook>(lint(_world.request())));
  _world.older = LintWorld::kOlder;
  _world.remove(std::string(LintWorld::kOlder) + "/Contents/Resources/hotfix.plist");
  EXPECT_TRUE(std::holds_alternative<CannotLook>(lint(_world.request())));
}

}  // namespace
}  // namespace installer::ctl::lint::test
