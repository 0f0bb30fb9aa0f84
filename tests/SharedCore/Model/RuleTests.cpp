#include <gtest/gtest.h>

#include "Platform/UserDefaults/KeyedArchive.h"
#include "SharedCore/Model/Rules/Rule.h"
#include "SharedCore/Model/Rules/RuleSet.h"
#include "tests/SharedCore/Model/ModelTestSupport.h"

namespace kestrona {
namespace {

using StartDelay = RuleSet::StartDelay;
using PauseDelay = RuleSet::PauseDelay;

class RuleTest : public ::testing::Test {
 protected:
  testing::ModelStore store;
  std::shared_ptr<Rule> rule = store.insert<Rule>("Rule");
  std::shared_ptr<RuleSet> set = store.insert<RuleSet>("RuleSet");
};

TEST_F(RuleTest, StoredValuesWithoutACaseReadAsTheirDefaults) {
  const std::tuple<std::int16_t, RuleType, TextMatchRelation, FileMatchRelation> rules[] = {
      {3, RuleType::kind3, TextMatchRelation::endsWith, FileMatchRelation::nameMatchesRegex},
      {4, RuleType::kind4, TextMatchRelation::contains, FileMatchRelation::pathMatchesRegex},
      {9, RuleType::kind6, TextMatchRelation::contains, FileMatchRelation::pathIs},
      {-1, RuleType::kind6, TextMatchRelation::contains, FileMatchRelation::pathIs}};
  for (const auto& [stored, type, text, file] : rules) {
    rule->setTypeValue(stored);
    rule->setRelationValue(stored);
    EXPECT_EQ(rule->type(), type) << stored;
    EXPECT_EQ(rule->textMatchRelation(), text) << stored;
    EXPECT_EQ(rule->fileMatchRelation(), file) << stored;
  }
  const std::tuple<int, StartDelay, PauseDelay, RuleSet::StartType, RuleSet::PauseType> sets[] = {
      {0, StartDelay::for30sec, PauseDelay::for30sec, RuleSet::StartType::notify, RuleSet::PauseType::none},
      {1, StartDelay::for1min, PauseDelay::for1min, RuleSet::StartType::active, RuleSet::PauseType::notify},
      {4, StartDelay::immediately, PauseDelay::for10sec, RuleSet::StartType::active, RuleSet::PauseType::active},
      {5, StartDelay::for10sec, PauseDelay::for10sec, RuleSet::StartType::active, RuleSet::PauseType::active},
      {-1, StartDelay::for10sec, PauseDelay::for10sec, RuleSet::StartType::active, RuleSet::PauseType::active}};
  for (const auto& [index, start, pause, startType, pauseType] : sets) {
    for (const char* key : {"startDelayIndex", "pauseDelayIndex", "startTypeIndex", "pauseTypeIndex"}) {
      set->setValue(Value(index), key);
    }
    EXPECT_EQ(set->startDelay(), start) << index;
    EXPECT_EQ(set->pauseDelay(), pause) << index;
    EXPECT_EQ(set->startType(), startType) << index;
    EXPECT_EQ(set->pauseType(), pauseType) << index;
  }
  set->setStartDelay(StartDelay::immediately);
  EXPECT_EQ(set->integerForKey("startDelayIndex"), 4);
}

TEST(RuleSetDelays, IntervalsAndLabelsFollowTheCaseNotTheRawValue) {
  EXPECT_EQ(allCases<StartDelay>.front(), StartDelay::immediately);
  EXPECT_EQ(interval(StartDelay::for30sec), 30);
  EXPECT_EQ(intervalInMinutes(PauseDelay::for30sec), 0);
  EXPECT_EQ(localizedLabel(StartDelay::for10sec), "for 10 seconds");
  EXPECT_EQ(localizedLabel(PauseDelay::for3min), "for 3 minutes");
  EXPECT_EQ(localizedLabel(StartDelay::for1min), "for 1 minute");
}

TEST_F(RuleTest, TheBundleIdentifierComesFromTheToolboxTableOrTheBundleOnDisk) {
  const std::pair<std::optional<std::string>, std::optional<std::string>> cases[] = {
      {"/Applications/JetBrains Toolbox/IntelliJ IDEA Community.app", "com.jetbrains.intellij.ce"},
      {"/Applications/JetBrains Toolbox/IntelliJ IDEA Ultimate.app", "com.jetbrains.intellij"},
      {"/Applications/JetBrains Toolbox/PyCharm Community Edition.app", "com.jetbrains.pycharm.ce"},
      {"/Applications/JetBrains Toolbox/Projector.app", "com.electron.projector"},
      {"/Applications/IntelliJ IDEA.app", std::nullopt},  // outside the toolbox, and no bundle there
      {std::nullopt, std::nullopt}};
  for (const auto& [path, identifier] : cases) {
    rule->setApplicationPath(path);
    EXPECT_EQ(rule->bundleId(), identifier) << path.value_or("nil");
  }
  testing::TemporaryDirectory directory;
  const auto application = directory.path() / "JetBrains Toolbox" / "Notes.app";
  testing::writeFile(application / "Info.json", R"({"identifier": "app.example.notes"})");
  rule->setApplicationPath(application.string());
  EXPECT_EQ(rule->bundleId(), "app.example.notes");
}

TEST_F(RuleTest, SettingAUserInfoKeyKeepsTheOthersAndReplacesDataOfAnotherKind) {
  rule->setUserInfo(PropertyValue("x"), "a");
  rule->setUserInfo(PropertyValue(2), "b");
  rule->setUserInfo(std::nullopt, "a");
  EXPECT_EQ(rule->userInfoDict(), (PropertyValue::Dictionary{{"b", PropertyValue(2)}}));
  for (const Data& other : {Data{KeyedArchive::archivedData(PropertyValue("u"), "URL")}, Data{{1, 2, 3}}}) {
    rule->setValue(Value(other), "userInfo");
    EXPECT_EQ(rule->userInfoDict(), std::nullopt);
  }
  rule->setUserInfo(PropertyValue(true), "c");
  EXPECT_EQ(rule->userInfoDict(), (PropertyValue::Dictionary{{"c", PropertyValue(true)}}));
}

}  // namespace
}  // namespace kestrona
