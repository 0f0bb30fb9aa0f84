#include <gtest/gtest.h>

#include <random>

#include "Platform/Time/Clock.h"
#include "tests/SharedCore/Model/ModelTestSupport.h"

namespace kestrona {
namespace {

using testing::makeSession;
using OptionalDate = std::optional<Date>;

// 2023-11-14T22:13:20Z, a whole second.
constexpr double kT = 1'700'000'000;

OptionalDate at(std::optional<double> seconds) { return seconds ? OptionalDate(Date(*seconds)) : std::nullopt; }

class SessionTest : public ::testing::Test {
 protected:
  testing::ModelStore store;
  std::shared_ptr<Task> task = testing::makeTask(store, "Design");
  ManualClock clock{Date(kT + 3'600.7)};
  ScopedClock scopedClock{clock};
};

TEST_F(SessionTest, DurationsAreWholeSecondsBetweenFlooredDates) {
  const std::tuple<double, std::optional<double>, double> cases[] = {
      {kT + 0.9, kT + 2.1, 2},          // 10:00:00 to 10:00:02, not 1.2 rounded
      {kT, kT + 59.999, 59},            // cut down, never rounded up
      {kT + 5, kT + 2, 0},              // an end before the begin
      {kT + 0.2, std::nullopt, 3'600},  // running: up to the present, floored too
  };
  for (const auto& [begin, end, duration] : cases) {
    auto session = makeSession(store, task, begin, end);
    EXPECT_EQ(session->effectiveDuration(), duration) << begin;
    EXPECT_EQ(session->effectiveDuration(std::nullopt, std::nullopt), duration) << begin;
  }
}

TEST_F(SessionTest, ARangeCutsTheEntryAtBothEnds) {
  auto session = makeSession(store, task, kT + 0.5, kT + 100.5);
  const std::tuple<std::optional<double>, std::optional<double>, double> cases[] = {
      {kT + 100.5, std::nullopt, 0},  // from at the end
      {std::nullopt, kT + 0.5, 0},    // to at the begin
      {kT + 10.7, kT + 50.2, 40},     {kT - 10, kT + 1'000, 100},
      {kT + 50, std::nullopt, 50},    {std::nullopt, kT + 50, 50},
  };
  for (const auto& [from, to, duration] : cases) {
    EXPECT_EQ(session->effectiveDuration(at(from), at(to)), duration) << from.value_or(0) << " " << to.value_or(0);
  }
}

// Cut anywhere, the two parts of an entry add up to the whole, also for
// running entries and entries whose end is before their begin.
TEST_F(SessionTest, TheTwoPartsOfAnEntryCutAnywhereAddUpToTheWhole) {
  std::mt19937 random(12);
  std::uniform_real_distribution<double> offset(-50, 50);
  for (int round = 0; round < 500; ++round) {
    const double begin = kT + 3'000 + offset(random);
    const std::optional<double> end = round % 5 == 0 ? std::nullopt : std::optional(begin + offset(random) + 20);
    const Date cut(begin + offset(random) * 1.5);
    auto session = makeSession(store, task, begin, end);
    EXPECT_EQ(session->effectiveDuration(std::nullopt, cut) + session->effectiveDuration(cut, std::nullopt),
              session->effectiveDuration())
        << begin << " " << end.value_or(-1) << " " << cut.timeIntervalSince1970();
  }
}

TEST_F(SessionTest, AFinishedEntryKeepsItsConfirmedRevenueWhileTheRangedOneIsComputedAfresh) {
  auto session = makeSession(store, task, kT, kT + 1'800);
  session->setIsBillable(true);
  session->setConfirmedRevenue(45);
  session->setHourlyRate(120);
  EXPECT_EQ(session->effectiveRevenue(), 45);
  EXPECT_EQ(session->effectiveRevenue(std::nullopt, std::nullopt), 60);
  EXPECT_EQ(session->effectiveRevenue(Date(kT + 900), std::nullopt), 30);
  EXPECT_EQ(session->effectiveHourlyRate(), 120);

  auto running = makeSession(store, task, kT + 0.4, std::nullopt);
  running->setIsBillable(true);
  running->setHourlyRate(100);
  running->setConfirmedRevenue(7);
  EXPECT_EQ(running->effectiveRevenue(), 100);
  clock.advance(40);  // 3,640 s: 101.111… rounds to cents
  EXPECT_DOUBLE_EQ(running->effectiveRevenue(), 101.11);

  session->setIsBillable(false);
  EXPECT_EQ(session->effectiveRevenue() + session->effectiveRevenue(std::nullopt, std::nullopt), 0);
  EXPECT_EQ(session->effectiveHourlyRate(), std::nullopt);
}

TEST_F(SessionTest, AnUnknownStoredBillingStatusReadsAsUnbilled) {
  const std::pair<std::int16_t, BillingStatus> cases[] = {
      {0, BillingStatus::unbilled}, {1, BillingStatus::billed},    {2, BillingStatus::paid},
      {7, BillingStatus::unbilled}, {-1, BillingStatus::unbilled}};
  auto session = makeSession(store, task, kT, kT + 1);
  for (const auto& [stored, status] : cases) {
    session->setBillingStatusValue(stored);
    EXPECT_EQ(session->billingStatus(), status) << stored;
  }
  EXPECT_EQ(fromRawValue<BillingStatus>(7), std::nullopt);
}

TEST_F(SessionTest, DerivedValuesOfAFaultAnswerWithoutLoadingIt) {
  makeSession(store, task, kT, kT + 60);
  store.context->save();
  auto reader = ManagedObjectContext::make(ManagedObjectContextConcurrencyType::privateQueueConcurrencyType);
  reader->setPersistentStoreCoordinator(store.coordinator);
  FetchRequest request = Session::fetchRequest();
  request.includesPropertyValues = false;
  auto fault = std::dynamic_pointer_cast<Session>(reader->fetch(request).at(0));
  ASSERT_TRUE(fault && fault->isFault());
  EXPECT_EQ(fault->effectiveDuration() + fault->effectiveDuration(Date(kT), Date(kT + 30)), 0);
  EXPECT_TRUE(fault->isFault());

  reader->deleteObject(fault);
  reader->save();
  EXPECT_EQ(fault->faultingState(), ManagedObject::FaultingState::unusable);
  EXPECT_EQ(fault->effectiveDuration(), 0);
  EXPECT_EQ(fault->effectiveDateIterval(), DateInterval());
  EXPECT_EQ(fault->dayString(), "");
}

TEST_F(SessionTest, TheIntervalNeverRunsBackwardsTheDayIsLocalAndTheEndPersistedUntilChanged) {
  testing::ScopedEnvironment environment;
  environment.set("TZ", "Asia/Tokyo");
  EXPECT_EQ(makeSession(store, task, kT + 5, kT + 2)->effectiveDateIterval(), DateInterval(Date(kT + 5), 0.0));
  auto running = makeSession(store, task, kT, std::nullopt);
  EXPECT_EQ(running->effectiveDateIterval(), DateInterval(Date(kT), Date(kT + 3'600.7)));
  EXPECT_EQ(running->dayString(), "2023-11-15");

  store.context->save();
  running->setNotes("edited");
  EXPECT_TRUE(running->isEndPersisted());
  running->setEnd(Date(kT + 120));
  EXPECT_FALSE(running->isEndPersisted());

  EXPECT_EQ(running->folder(), nullptr);
  auto folder = testing::makeFolder(store, "Clients");
  task->setParent(folder);
  EXPECT_EQ(running->folder(), folder);
}

}  // namespace
}  // namespace kestrona
