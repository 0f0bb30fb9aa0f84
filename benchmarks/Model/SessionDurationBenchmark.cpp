// Reading the derived durations of 100,000 time entries that a list or a
// chart has loaded: whole-second durations, the part inside a range, the
// date interval and the revenue. None of it touches the store; the reads go
// to the loaded values only. One fault-only run shows what the faulting
// test costs on entries that were never loaded.
#include <benchmark/benchmark.h>

#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "Platform/ObjectStore/ManagedObjectContext.h"
#include "SharedCore/Model/Tracking/Session.h"
#include "SharedCore/Model/Tracking/Task.h"
#include "SharedCore/Model/TrackingModel.h"

namespace kestrona {
namespace {

constexpr int kSessions = 100'000;
constexpr double kStart = 1'700'000'000.25;  // November 2023, a quarter second in
constexpr double kSpacing = 3'600;

struct Fixture {
  Fixture() {
    registerTrackingModelClasses();
    directory = std::filesystem::path(KESTRONA_MODEL_BENCHMARK_SCRATCH) /
                ("session-duration-" + std::to_string(::getpid()));
    std::filesystem::create_directories(directory);
    coordinator = PersistentStoreCoordinator::make(ManagedObjectModel::fromURL(KESTRONA_MODEL_BENCHMARK_MODEL));
    coordinator->addPersistentStore(directory / "Store.sqlite");
    auto writer = ManagedObjectContext::make(ManagedObjectContextConcurrencyType::privateQueueConcurrencyType);
    writer->setPersistentStoreCoordinator(coordinator);
    writer->performAndWait([&] {
      auto task = std::static_pointer_cast<Task>(writer->insertNewObject("Task"));
      task->setName("Benchmark");
      for (int i = 0; i < kSessions; ++i) {
        auto session = std::static_pointer_cast<Session>(writer->insertNewObject("Session"));
        const double begin = kStart + i * kSpacing;
        session->setBegin(Date(begin));
        session->setEnd(Date(begin + 1'800.5));
        session->setIsBillable(i % 2 == 0);
        session->setHourlyRate(90);
        session->setConfirmedRevenue(45);
        session->setTask(task);
      }
      writer->save();
    });
    context = ManagedObjectContext::make(ManagedObjectContextConcurrencyType::privateQueueConcurrencyType);
    context->setPersistentStoreCoordinator(coordinator);
    context->performAndWait([&] {
      FetchRequest loaded = Session::fetchRequest();
      loaded.returnsObjectsAsFaults = false;
      for (auto& object : context->fetch(loaded)) sessions.push_back(std::static_pointer_cast<Session>(object));
    });
    faultContext = ManagedObjectContext::make(ManagedObjectContextConcurrencyType::privateQueueConcurrencyType);
    faultContext->setPersistentStoreCoordinator(coordinator);
    faultContext->performAndWait([&] {
      FetchRequest faults = Session::fetchRequest();
      faults.includesPropertyValues = false;
      for (auto& object : faultContext->fetch(faults)) faultSessions.push_back(std::static_pointer_cast<Session>(object));
    });
  }
  ~Fixture() {
    sessions.clear();
    faultSessions.clear();
    context.reset();
    faultContext.reset();
    coordinator.reset();
    std::filesystem::remove_all(directory);
  }

  std::filesystem::path directory;
  std::shared_ptr<PersistentStoreCoordinator> coordinator;
  std::shared_ptr<ManagedObjectContext> context;
  std::shared_ptr<ManagedObjectContext> faultContext;
  std::vector<std::shared_ptr<Session>> sessions;
  std::vector<std::shared_ptr<Session>> faultSessions;
};

Fixture& fixture() {
  static Fixture made;
  return made;
}

// Sums read(session) over sessions once per iteration.
template <typename Read>
void readAll(benchmark::State& state, const std::vector<std::shared_ptr<Session>>& sessions, Read read) {
  for (auto _ : state) {
    double total = 0;
    for (const auto& session : sessions) total += read(*session);
    benchmark::DoNotOptimize(total);
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(sessions.size()));
}

void BM_EffectiveDurationOf100000LoadedSessions(benchmark::State& state) {
  readAll(state, fixture().sessions, [](Session& session) { return session.effectiveDuration(); });
}
BENCHMARK(BM_EffectiveDurationOf100000LoadedSessions)->Unit(benchmark::kMillisecond);

void BM_EffectiveDurationInRangeOf100000LoadedSessions(benchmark::State& state) {
  const Date from(kStart + kSessions * kSpacing / 4);
  const Date to(kStart + kSessions * kSpacing * 3 / 4);
  readAll(state, fixture().sessions, [&](Session& session) { return session.effectiveDuration(from, to); });
}
BENCHMARK(BM_EffectiveDurationInRangeOf100000LoadedSessions)->Unit(benchmark::kMillisecond);

void BM_EffectiveDateIntervalOf100000LoadedSessions(benchmark::State& state) {
  readAll(state, fixture().sessions, [](Session& session) { return session.effectiveDateIterval().duration(); });
}
BENCHMARK(BM_EffectiveDateIntervalOf100000LoadedSessions)->Unit(benchmark::kMillisecond);

void BM_EffectiveRevenueOf100000LoadedSessions(benchmark::State& state) {
  readAll(state, fixture().sessions, [](Session& session) { return session.effectiveRevenue(); });
}
BENCHMARK(BM_EffectiveRevenueOf100000LoadedSessions)->Unit(benchmark::kMillisecond);

void BM_EffectiveDurationOf100000Faults(benchmark::State& state) {
  readAll(state, fixture().faultSessions, [](Session& session) { return session.effectiveDuration(); });
}
BENCHMARK(BM_EffectiveDurationOf100000Faults)->Unit(benchmark::kMillisecond);

// The baseline: the store's own reads of the two dates that a duration
// needs, without any arithmetic.
void BM_StoreReadsOfBeginAndEndOf100000LoadedSessions(benchmark::State& state) {
  readAll(state, fixture().sessions, [](Session& session) {
    return session.valueForKey("begin").get<Date>()->timeIntervalSince1970() +
           session.valueForKey("end").get<Date>()->timeIntervalSince1970();
  });
}
BENCHMARK(BM_StoreReadsOfBeginAndEndOf100000LoadedSessions)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace kestrona
