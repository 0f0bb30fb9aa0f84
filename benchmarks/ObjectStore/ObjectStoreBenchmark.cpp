// The store on 100,000 time entries over two years and 50 tasks: the
// queries the reports run, each beside the bare SQL it compiles to (run on a
// connection of its own to the same file), and one save and one open.
#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include <functional>
#include <map>
#include <optional>
#include <string>

#include "benchmarks/ObjectStore/TimesheetStore.h"

namespace kestrona {
namespace {

using benchmarks::TimesheetStore;

constexpr int kSessions = 100'000;
constexpr double kStart = TimesheetStore::kStart;
constexpr double kYear = TimesheetStore::kYear;

struct Fixture {
  Fixture() : store(kSessions) {
    for (int i = 0; i < 10; ++i) taskSet.emplace_back(store.taskIDs[static_cast<std::size_t>(i * 3)]);
    sqlite3_open_v2(store.url.c_str(), &bare, SQLITE_OPEN_READONLY, nullptr);
  }
  ~Fixture() { sqlite3_close(bare); }

  std::shared_ptr<ManagedObjectContext> newContext() const { return store.newContext(); }

  // Hand-written SQL: one statement prepared once, bound with numbers, and
  // stepped through; row is called for each result row.
  void runBare(const std::string& sql, const std::vector<double>& bindings,
               const std::function<void(sqlite3_stmt*)>& row) {
    sqlite3_stmt*& statement = statements[sql];
    if (!statement) sqlite3_prepare_v2(bare, sql.c_str(), -1, &statement, nullptr);
    for (std::size_t i = 0; i < bindings.size(); ++i) {
      sqlite3_bind_double(statement, static_cast<int>(i + 1), bindings[i]);
    }
    while (sqlite3_step(statement) == SQLITE_ROW) row(statement);
    sqlite3_reset(statement);
  }

  TimesheetStore store;
  Value::Array taskSet;
  sqlite3* bare = nullptr;
  std::map<std::string, sqlite3_stmt*> statements;
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
  std::vector<double> bindings{kFrom.timeIntervalSince1970(), kTo.timeIntervalSince1970()};
  std::string list;
  for (const auto& id : f.taskSet) {
    list += list.empty() ? "?" : ", ?";
    bindings.push_back(static_cast<double>(id.objectID()->primaryKey()));
  }
  std::string sql = "SELECT SUM(\"confirmedDuration\") FROM \"Session\" WHERE \"begin\" >= ? AND \"begin\" < ? "
                    "AND \"task\" IN (" + list + ")";
  double total = 0;
  for (auto _ : state) {
    f.runBare(sql, bindings, [&total](sqlite3_stmt* row) { total = sqlite3_column_double(row, 0); });
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
  std::vector<double> bindings{kFrom.timeIntervalSince1970(), kTo.timeIntervalSince1970()};
  std::size_t groups = 0;
  for (auto _ : state) {
    groups = 0;
    f.runBare(sql, bindings, [&groups](sqlite3_stmt* row) {
      benchmark::DoNotOptimize(sqlite3_column_double(row, 1));
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
  std::vector<double> bindings{kFrom.timeIntervalSince1970(), kTo.timeIntervalSince1970(), 0};
  std::size_t groups = 0;
  for (auto _ : state) {
    groups = 0;
    std::vector<std::int64_t> keys;
    f.runBare("SELECT pk, ent FROM \"Node\"", {},
              [&keys](sqlite3_stmt* row) { keys.push_back(sqlite3_column_int64(row, 0)); });
    for (auto key : keys) {
      bindings.back() = static_cast<double>(key);
      f.runBare(perTask, bindings, [&groups](sqlite3_stmt* row) {
        benchmark::DoNotOptimize(sqlite3_column_double(row, 1));
        if (sqlite3_column_int64(row, 0) > 0) ++groups;
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
  std::vector<double> bindings{kWeekFrom.timeIntervalSince1970(), kWeekTo.timeIntervalSince1970()};
  std::size_t count = 0;
  for (auto _ : state) {
    count = 0;
    // Reading every column is the least a caller of the bare SQL does.
    f.runBare(sql, bindings, [&count](sqlite3_stmt* row) {
      for (int column = 0; column < sqlite3_column_count(row); ++column) {
        benchmark::DoNotOptimize(sqlite3_column_double(row, column));
      }
      ++count;
    });
  }
  state.counters["objects"] = static_cast<double>(count);
}
BENCHMARK(BM_FetchThousandObjectsByDate_BareSQL)->Unit(benchmark::kMillisecond);

void BM_InsertAndSaveOneObject(benchmark::State& state) {
  auto& f = fixture();
  auto context = f.newContext();
  auto task = context->existingObjectWithID(f.store.taskIDs.front());
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
    auto coordinator = PersistentStoreCoordinator::make(TimesheetStore::model());
    coordinator->addPersistentStore(f.store.url);
    benchmark::DoNotOptimize(coordinator->storeIdentifier());
  }
}
BENCHMARK(BM_OpenStore)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace kestrona
