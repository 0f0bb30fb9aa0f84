#include "SharedCore/Support/Colors/ColorSetManager.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/support/TemporaryDirectory.h"

namespace kestrona {
namespace {

using ID = ColorSet::ID;
using testing::ScopedEnvironment;
using testing::TemporaryDirectory;

// Every test starts from an empty configuration directory, so the standard
// user defaults start empty too.
class ColorSetManagerTest : public ::testing::Test {
 protected:
  void SetUp() override { environment_.set("XDG_CONFIG_HOME", home_.path().string()); }

  // The standard domain's file as a new process would read it.
  std::shared_ptr<UserDefaults> storedDefaults() const {
    return UserDefaults::make(UserDefaults::standardDomain(), home_.path() / "kestrona");
  }

  void storeCounter(std::int64_t counter) const {
    const auto defaults = storedDefaults();
    defaults->set(counter, ColorSetManager::kInitiationCounterKey);
    ASSERT_NO_THROW(defaults->synchronize());
  }

  TemporaryDirectory home_;
  ScopedEnvironment environment_;
};

TEST_F(ColorSetManagerTest, OffersEighteenSetsAndRotatesThroughTheSame) {
  const ColorSetManager manager;
  ASSERT_EQ(manager.colorSets().size(), 18u);
  EXPECT_EQ(manager.colorSets().front().id(), ID::violett);
  EXPECT_EQ(manager.colorSets().back().id(), ID::lightIndigo);
  std::vector<ID> offered;
  for (const ColorSet& set : manager.colorSets()) offered.push_back(set.id());
  EXPECT_EQ(std::count(offered.begin(), offered.end(), ID::white), 0);
  EXPECT_EQ(std::count(offered.begin(), offered.end(), ID::gray), 0);
  std::vector<ID> rotation = manager.initiationSorting();
  EXPECT_EQ(rotation.front(), ID::cyan);
  std::sort(offered.begin(), offered.end());
  std::sort(rotation.begin(), rotation.end());
  EXPECT_EQ(rotation, offered);
}

TEST_F(ColorSetManagerTest, RotationWrapsAfterEighteenCalls) {
  ColorSetManager manager;
  EXPECT_EQ(manager.initiationCounter(), 0);
  std::vector<ID> handedOut;
  for (int call = 1; call <= 18; ++call) handedOut.push_back(manager.nextColorSet().id());
  EXPECT_EQ(handedOut, manager.initiationSorting());
  EXPECT_EQ(handedOut[17], ID::lightIndigo);
  EXPECT_EQ(manager.initiationCounter(), 0);
  // Written through to the file at once.
  EXPECT_EQ(storedDefaults()->objectForKey(ColorSetManager::kInitiationCounterKey), PropertyValue(0));
  EXPECT_EQ(manager.nextColorSet().id(), ID::cyan);
  EXPECT_EQ(storedDefaults()->integerForKey(ColorSetManager::kInitiationCounterKey), 1);
}

TEST_F(ColorSetManagerTest, RotationContinuesAcrossARestart) {
  {
    ColorSetManager first;
    EXPECT_EQ(first.nextColorSet().id(), ID::cyan);
    EXPECT_EQ(first.nextColorSet().id(), ID::blue);
    EXPECT_EQ(first.nextColorSet().id(), ID::violett);
  }
  // A manager over defaults freshly read from the file, as after a restart.
  ColorSetManager restarted(storedDefaults());
  EXPECT_EQ(restarted.initiationCounter(), 3);
  EXPECT_EQ(restarted.nextColorSet().id(), ID::green2);
  // The shared standard defaults of this process see that write once they
  // synchronise.
  ASSERT_NO_THROW(UserDefaults::standard()->synchronize());
  ColorSetManager again;
  EXPECT_EQ(again.nextColorSet().id(), ID::pink);
}

TEST_F(ColorSetManagerTest, ManagersCacheTheCounterFromTheirFirstUse) {
  storeCounter(16);
  ColorSetManager first(storedDefaults());
  ColorSetManager second(storedDefaults());
  EXPECT_EQ(first.initiationCounter(), 16);
  EXPECT_EQ(second.initiationCounter(), 16);
  EXPECT_EQ(first.nextColorSet().id(), ID::brown);
  EXPECT_EQ(second.nextColorSet().id(), ID::brown);
}

using ColorSetManagerDeathTest = ColorSetManagerTest;

TEST_F(ColorSetManagerDeathTest, ADamagedCounterEndsTheProcess) {
  storeCounter(18);
  EXPECT_DEATH(ColorSetManager().nextColorSet(),
               "Fatal error: The colour rotation counter KSColorSetManager.initiationCounter is damaged: 18");
  storeCounter(-1);
  EXPECT_DEATH(ColorSetManager(storedDefaults()).nextColorSet(), "is damaged: -1");
}

TEST_F(ColorSetManagerTest, LooksUpSetsByIdIndexAndPosition) {
  const ColorSetManager manager;
  EXPECT_EQ(manager.colorSetAtIndex(17).id(), ID::lightIndigo);
  EXPECT_EQ(manager.colorSetAtIndex(18), ColorSetManager::defaultColorSet());
  EXPECT_EQ(manager.colorSetAtIndex(0).id(), ID::violett);

  EXPECT_EQ(manager.index(ID::gray), 0);
  EXPECT_EQ(manager.index(ID::violett), 0);
  EXPECT_EQ(manager.index(ID::lightIndigo), 17);
  EXPECT_EQ(manager.index(ID::red), 2);

  EXPECT_EQ(manager.colorSetWithId(ID::white), ColorSet::defaultSet());
  EXPECT_EQ(manager.colorSetWithId(ID::white).id(), ID::gray);
  EXPECT_EQ(manager.colorSetWithId(ID::cyan), ColorSet(ID::cyan));
  EXPECT_EQ(&ColorSetManager::defaultColorSet(), &ColorSet::defaultSet());
}

TEST_F(ColorSetManagerDeathTest, ANegativeIndexEndsTheProcess) {
  const ColorSetManager manager;
  EXPECT_DEATH(manager.colorSetAtIndex(-1), "Fatal error: A negative colour set index: -1");
}

}  // namespace
}  // namespace kestrona
