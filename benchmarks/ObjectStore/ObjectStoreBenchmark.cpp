// The store on 100,000 time entries over two years and 50 tasks: the
// queries the reports run, each beside the bare SQL it compiles to, and one
// save and one open.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <unistd.h>
#include <filesystem>
#include <optional>
#include <random>
#include <string>

#include "Platform/ObjectStore/ManagedObjectContext.h"
#include "Platform/ObjectStore/SQLiteDatabase.h"

namespace kestrona {
namespace {

constexpr int kTasks = 50;
constexpr int kSessions = 100'000;
constexpr double kStart = 1'700'000'000;  // November 2023
constexpr double kYear = 365 * 86'400.0;
constexpr double kSpacing = 2 * kYear / kSessions;

std::shared_ptr<const ManagedObjectModel> model() {
  return ManagedObjectModel::loadNamed("Timesheet", KESTRONA_OBJECTSTORE_BENCHMARK_MODELS);
}

struct Fixture {
  Fixture() {
    // On the build tree's disk, not /tmp: a save's flush must reach a disk.
    directory = std::filesystem::path(KESTRONA_OBJECTSTORE_BENCHMARK_SCRATCH) /
                ("store-benchmark-" + std::to_string(::getpid()));
    std::filesystem::create_directories(directory);
    url = directory / "Store.sqlite";
    coordinator = PersistentStoreCoordinator::make(model());
    coordinator->addPersistentStore(url);
    auto context = newContext();
    std::mt19937 random(7);
    for (int i = 0; i < kTasks; ++i) {
      auto task = context->insertNewObject("Task");
      task->setValue("Task " + std::to_string(i), "name");
      task->setValue(i % 10 == 9, "archived");
      tasks.push_back(task);
    }
    for (int i = 0; i < kSessions; ++i) {
      auto session = context->insertNewObject("Session");
      double begin = kStart + i * kSpacing;
      double duration = 600 + static_cast<double>(random() % 3000);
      session->setValue(Date(begin), "begin");
      session->setValue(Date(begin + duration), "end");
      session->setValue(duration, "confirmedDuration");
      session->setValue(duration / 36, "confirmedRevenue");
      session->setValue(Value(tasks[random() % kTasks]), "task");
      if (i % 10'000 == 9'999) {
        context->save();
        context->reset();
        for (auto& task : tasks) task = context->existingObjectWithID(task->objectID());
      }
    }
    context->save();
    std::vector<ManagedObjectID> taskIDs;
    for (const auto& task : tasks) taskIDs.push_back(task->objectID());
    tasks.clear();
    context.reset();
    // Measure a store as the application meets it: opened again, filled.
    coordinator.reset();
    coordinator = PersistentStoreCoordinator::make(model());
    coordinator->addPersistentStore(url);
    for (int i = 0; i < 10; ++i) taskSet.emplace_back(taskIDs[static_cast<std::size_t>(i * 3)]);
    firstTask = taskIDs.front();
  }
  ~Fixture() {
    coordinator.reset();
    std::filesystem::remove_all(directory);
  }

  std::shared_ptr<ManagedObjectContext> newContext() const {
    auto context = ManagedObjectContext::make(ManagedObjectContextConcurrencyType::privateQueueConcurrencyType);
    context->setPersistentStoreCoordinator(coordinator);
    return context;
  }

  std::filesystem::path directory;
  std::filesystem::path url;
  std::shared_ptr<PersistentStoreCoordinator> coordinator;
  std::vector<std::shared_ptr<ManagedObject>> tasks;
  Value::Array taskSet;
  std::optional<ManagedObjectID> firstTask;
};

Fixture& fixture() {
  static Fixture instance;
  return instance;
}

// One year in the middle of the two.
const Date kFrom(kStart + kYear / 2);
const Date kTo(kStart + kYear * 3 / 2);

ExpressionDescription sumOf(const std::string& name, const std::string& keyPath) {
  return {name, Expression::expressionForFunction("sum:", {Expression::expressionForKeyPath(keyPath)}),
          AttributeType::doubleAttributeType};
}

void BM_SumOverYearWithTaskSet(benchmark::State& state) {
  auto& f = fixture();
  auto context = f.newContext();
  FetchRequest request("Session");
  request.resultType = FetchRequestResultType::dictionaryResultType;
  request.predicate = Predicate::withFormat("begin >= %@ AND begin < %@ AND task IN %@", {kFrom, kTo, f.taskSet});
  request.propertiesToFetch = {sumOf("SumDuration", "confirmedDuration")};
  double total = 0;
  for (auto _ : state) {
    auto rows = context->fetchDictionaries(request);
    total = *rows.front().at("SumDuration").get<double>();
    benchmark::DoNotOptimize(total);
  }
  state.counters["hours"] = total / 3600;
}
BENCHMARK(BM_SumOverYearWithTaskSet)->Unit(benchmark::kMillisecond);

void BM_SumOverYearWithTaskSet_BareSQL(benchmark::State& state) {
  auto& f = fixture();
  std::vector<Value> bindings{Value(kFrom.timeIntervalSince1970()), Value(kTo.timeIntervalSince1970())};
  std::string list;
  for (const auto& id : f.taskSet) {
    list += list.empty() ? "?" : ", ?";
    bindings.emplace_back(id.objectID()->primaryKey());
  }
  std::string sql = "SELECT SUM(\"confirmedDuration\") FROM \"Session\" WHERE \"begin\" >= ? AND \"begin\" < ? "
                    "AND \"task\" IN (" + list + ")";
  double total = 0;
  for (auto _ : state) {
    f.coordinator->query(sql, bindings, [&total](const SQLiteStatement& row) { total = row.real(0); });
    benchmark::DoNotOptimize(total);
  }
  state.counters["hours"] = total / 3600;
}
BENCHMARK(BM_SumOverYearWithTaskSet_BareSQL)->Unit(benchmark::kMillisecond);

void BM_GroupedSumByTaskOverYear(benchmark::State& state) {
  auto& f = fixture();
  auto context = f.newContext();
  FetchRequest request("Session");
  request.resultType = FetchRequestResultType::dictionaryResultType;
  request.predicate = Predicate::withFormat("begin >= %@ AND begin < %@", {kFrom, kTo});
  request.propertiesToFetch = {std::string("task"), sumOf("totalConfirmedDuration", "confirmedDuration")};
  request.propertiesToGroupBy = {"task"};
  std::size_t groups = 0;
  for (auto _ : state) {
    groups = context->fetchDictionaries(request).size();
    benchmark::DoNotOptimize(groups);
  }
  state.counters["groups"] = static_cast<double>(groups);
}
BENCHMARK(BM_GroupedSumByTaskOverYear)->Unit(benchmark::kMillisecond);

void BM_GroupedSumByTaskOverYear_BareSQL(benchmark::State& state) {
  auto& f = fixture();
  std::string sql =
      "SELECT \"task\", SUM(\"confirmedDuration\") FROM \"Session\" WHERE \"begin\" >= ? AND \"begin\" < ? "
      "GROUP BY \"task\"";
  std::vector<Value> bindings{Value(kFrom.timeIntervalSince1970()), Value(kTo.timeIntervalSince1970())};
  std::size_t groups = 0;
  for (auto _ : state) {
    groups = 0;
    f.coordinator->query(sql, bindings, [&groups](const SQLiteStatement& row) {
      benchmark::DoNotOptimize(row.real(1));
      ++groups;
    });
  }
  state.counters["groups"] = static_cast<double>(groups);
}
BENCHMARK(BM_GroupedSumByTaskOverYear_BareSQL)->Unit(benchmark::kMillisecond);

// What the grouped fetch compiles to: the tasks, then one range sum per task.
void BM_GroupedSumByTaskOverYear_BareSQLPerTask(benchmark::State& state) {
  auto& f = fixture();
  std::string perTask =
      "SELECT COUNT(*), SUM(\"confirmedDuration\") FROM \"Session\" WHERE \"begin\" >= ? AND \"begin\" < ? "
      "AND \"task\" = ?";
  std::vector<Value> bindings{Value(kFrom.timeIntervalSince1970()), Value(kTo.timeIntervalSince1970()), Value()};
  std::size_t groups = 0;
  for (auto _ : state) {
    groups = 0;
    std::vector<std::int64_t> keys;
    f.coordinator->query("SELECT pk, ent FROM \"Node\"", {},
                         [&keys](const SQLiteStatement& row) { keys.push_back(row.int64(0)); });
    for (auto key : keys) {
      bindings.back() = Value(key);
      f.coordinator->query(perTask, bindings, [&groups](const SQLiteStatement& row) {
        benchmark::DoNotOptimize(row.real(1));
        if (row.int64(0) > 0) ++groups;
      });
    }
  }
  state.counters["groups"] = static_cast<double>(groups);
}
BENCHMARK(BM_GroupedSumByTaskOverYear_BareSQLPerTask)->Unit(benchmark::kMillisecond);

// About 1,000 entries: a week's worth at this density is ~960.
const Date kWeekFrom(kStart + kYear / 2);
const Date kWeekTo(kStart + kYear / 2 + 7.3 * 86'400);

void BM_FetchThousandObjectsByDate(benchmark::State& state) {
  auto& f = fixture();
  FetchRequest request("Session");
  request.predicate = Predicate::withFormat("begin >= %@ AND begin < %@", {kWeekFrom, kWeekTo});
  request.returnsObjectsAsFaults = false;
  std::size_t count = 0;
  for (auto _ : state) {
    auto context = f.newContext();
    count = context->fetch(request).size();
    benchmark::DoNotOptimize(count);
  }
  state.counters["objects"] = static_cast<double>(count);
}
BENCHMARK(BM_FetchThousandObjectsByDate)->Unit(benchmark::kMillisecond);

void BM_FetchThousandObjectsByDate_BareSQL(benchmark::State& state) {
  auto& f = fixture();
  std::string sql =
      "SELECT pk, ent, \"identifier\", \"begin\", \"end\", \"confirmedDuration\", \"confirmedRevenue\", "
      "\"isBillable\", \"billingStatusValue\", \"task\", \"task_ent\" FROM \"Session\" "
      "WHERE \"begin\" >= ? AND \"begin\" < ?";
  std::vector<Value> bindings{Value(kWeekFrom.timeIntervalSince1970()), Value(kWeekTo.timeIntervalSince1970())};
  std::size_t count = 0;
  for (auto _ : state) {
    count = 0;
    // Reading every column is the least a caller of the bare SQL does.
    f.coordinator->query(sql, bindings, [&count](const SQLiteStatement& row) {
      for (int column = 0; column < row.columnCount(); ++column) benchmark::DoNotOptimize(row.value(column));
      ++count;
    });
  }
  state.counters["objects"] = static_cast<double>(count);
}
BENCHMARK(BM_FetchThousandObjectsByDate_BareSQL)->Unit(benchmark::kMillisecond);

void BM_InsertAndSaveOneObject(benchmark::State& state) {
  auto& f = fixture();
  auto context = f.newContext();
  auto task = context->existingObjectWithID(*f.firstTask);
  double begin = kStart + 3 * kYear;
  for (auto _ : state) {
    auto session = context->insertNewObject("Session");
    session->setValue(Date(begin), "begin");
    session->setValue(Date(begin + 60), "end");
    session->setValue(60.0, "confirmedDuration");
    session->setValue(Value(task), "task");
    context->save();
    begin += 60;
  }
}
BENCHMARK(BM_InsertAndSaveOneObject)->Unit(benchmark::kMillisecond);

void BM_OpenStore(benchmark::State& state) {
  auto& f = fixture();
  for (auto _ : state) {
    auto coordinator = PersistentStoreCoordinator::make(model());
    coordinator->addPersistentStore(f.url);
    benchmark::DoNotOptimize(coordinator->storeIdentifier());
  }
}
BENCHMARK(BM_OpenStore)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace kestrona
