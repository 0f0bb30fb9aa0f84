#include <gtest/gtest.h>

#include <set>

#include "Platform/ObjectStore/Predicate.h"
#include "Platform/ObjectStore/StoreError.h"
#include "tests/Platform/ObjectStore/StoreTestSupport.h"

namespace kestrona {
namespace {

using testing::makeSession;
using testing::makeTask;
using testing::TestStore;
using Names = std::set<std::string>;

// Five time entries over three tasks (B archived) and one without a task;
// s2 is running (no end).
class PredicateAgreement : public ::testing::Test {
 protected:
  void SetUp() override {
    auto& context = *store.context;
    a = makeTask(context, "A");
    b = makeTask(context, "B", true);
    c = makeTask(context, "C");
    struct Row {
      const char* name;
      std::shared_ptr<ManagedObject> task;
      double begin;
      std::optional<double> end;
      double duration;
      bool billable;
      int status;
    };
    for (const auto& row : std::vector<Row>{{"s1", a, 100, 200, 100, true, 1},
                                            {"s2", a, 300, std::nullopt, 0, false, 0},
                                            {"s3", b, 150, 400, 250, true, 2},
                                            {"s4", nullptr, 500, 600, 100, false, 0},
                                            {"s5", c, 50, 120, 70, true, 0}}) {
      auto session = makeSession(context, row.task, row.begin, row.end, row.duration);
      session->setValue(row.name, "identifier");
      session->setValue(row.billable, "isBillable");
      session->setValue(row.status, "billingStatusValue");
    }
    context.save();
  }

  // The names the store's SQL finds, from a context with no pending changes.
  Names inStore(const Predicate& predicate) {
    auto reader = store.newContext();
    FetchRequest request("Session");
    request.predicate = predicate;
    Names names;
    for (const auto& session : reader->fetch(request)) names.insert(*session->stringForKey("identifier"));
    EXPECT_EQ(reader->count(request), names.size());
    return names;
  }

  // The names the in-memory evaluation accepts.
  Names inMemory(const Predicate& predicate) {
    Names names;
    for (const auto& session : store.context->fetch(FetchRequest("Session"))) {
      if (predicate.evaluateWithObject(*session)) names.insert(*session->stringForKey("identifier"));
    }
    return names;
  }

  TestStore store;
  std::shared_ptr<ManagedObject> a, b, c;
};

TEST_F(PredicateAgreement, SQLAndMemoryAgreeOnEveryClauseForm) {
  struct Case {
    const char* format;
    std::vector<Value> arguments;
    Names expected;
  };
  const std::vector<Case> cases = {
      {"end >= %@", {Date(200)}, {"s1", "s3", "s4"}},
      {"end != nil", {}, {"s1", "s3", "s4", "s5"}},
      {"end = nil", {}, {"s2"}},
      {"end == nil OR end > %@", {Date(500)}, {"s2", "s4"}},
      {"NOT (end >= %@)", {Date(200)}, {"s2", "s5"}},
      {"!(billingStatusValue IN %@)", {Value::Array{Value(1), Value(2)}}, {"s2", "s4", "s5"}},
      {"task IN %@", {Value::Array{Value(a->objectID()), Value(c->objectID())}}, {"s1", "s2", "s5"}},
      {"task in %@", {Value::Array{Value(a), Value(b)}}, {"s1", "s2", "s3"}},
      {"task IN %@", {Value::Array{}}, {}},
      {"task == %@", {Value(a)}, {"s1", "s2"}},
      {"task != %@", {Value(a->objectID())}, {"s3", "s4", "s5"}},
      {"task == nil", {}, {"s4"}},
      {"task.archived == false", {}, {"s1", "s2", "s5"}},
      {"task.archived != YES", {}, {"s1", "s2", "s4", "s5"}},
      {"task.name == %@", {"B"}, {"s3"}},
      {"(begin >= %@ AND begin < %@) OR (end > %@ AND end <= %@)",
       {Date(100), Date(300), Date(100), Date(300)},
       {"s1", "s3", "s5"}},
      {"isBillable == true AND billingStatusValue IN %@", {Value::Array{Value(1), Value(2)}}, {"s1", "s3"}},
      {"isBillable == NO", {}, {"s2", "s4"}},
      {"confirmedDuration > 99.5 && confirmedDuration <= 100", {}, {"s1", "s4"}},
      {"begin < end", {}, {"s1", "s3", "s4", "s5"}},
      {"%@ <= begin", {Date(300)}, {"s2", "s4"}},
      {"identifier = 's3' || identifier == \"s5\"", {}, {"s3", "s5"}},
      {"end < %@", {Value()}, {}},
      {"TRUEPREDICATE AND NOT FALSEPREDICATE", {}, {"s1", "s2", "s3", "s4", "s5"}},
  };
  for (const auto& testCase : cases) {
    auto predicate = Predicate::withFormat(testCase.format, testCase.arguments);
    EXPECT_EQ(inStore(predicate), testCase.expected) << testCase.format;
    EXPECT_EQ(inMemory(predicate), testCase.expected) << testCase.format;
  }
}

TEST_F(PredicateAgreement, AConstantOfTheWrongTypeIsRefusedNamingTheKey) {
  struct Case {
    const char* format;
    std::vector<Value> arguments;
    const char* key;
  };
  for (const auto& testCase : std::vector<Case>{{"begin >= %@", {Value(5)}, "begin"},
                                                {"begin < \"x\"", {}, "begin"},
                                                {"confirmedDuration > \"100\"", {}, "confirmedDuration"},
                                                {"identifier == 3", {}, "identifier"},
                                                {"billingStatusValue IN %@", {Value::Array{Value(1), Value("2")}}, "billingStatusValue"},
                                                {"task == 42", {}, "task"},
                                                {"task < %@", {Value(a)}, "task"},
                                                {"begin < identifier", {}, "begin"},
                                                {"task.name == %@", {Date(1)}, "task.name"}}) {
    auto predicate = Predicate::withFormat(testCase.format, testCase.arguments);
    try {
      auto names = inStore(predicate);
      ADD_FAILURE() << testCase.format << " ran";
    } catch (const StoreError& error) {
      EXPECT_EQ(error.kind(), StoreErrorCode::managedObjectValidation) << testCase.format;
      auto key = error.userInfoValue<std::string>(StoreError::kKeyKey);
      EXPECT_EQ(key ? *key : "", testCase.key) << testCase.format;
    }
  }
}

TEST_F(PredicateAgreement, CompoundPredicatesCombineTheirParts) {
  auto running = Predicate::withFormat("end = nil");
  auto ofA = Predicate::withFormat("task = %@", {Value(a)});
  auto both = Predicate::andPredicateWithSubpredicates({running, ofA});
  EXPECT_EQ(inStore(both), Names{"s2"});
  EXPECT_EQ(inMemory(both), Names{"s2"});
  auto either = Predicate::orPredicateWithSubpredicates({running, Predicate::withFormat("task = nil")});
  EXPECT_EQ(inStore(either), (Names{"s2", "s4"}));
  EXPECT_EQ(inMemory(either), (Names{"s2", "s4"}));
  auto none = Predicate::notPredicateWithSubpredicate(Predicate::andPredicateWithSubpredicates({}));
  EXPECT_TRUE(inStore(none).empty());
  EXPECT_TRUE(inMemory(none).empty());
}

TEST(Predicate, RejectsFormatsItCannotParse) {
  for (const auto& [format, count] : std::vector<std::pair<const char*, int>>{{"begin >=", 0},
                                                                               {"(end = nil", 0},
                                                                               {"end = %@", 0},
                                                                               {"end = nil", 1},
                                                                               {"begin ~ 3", 0},
                                                                               {"name == 'open", 0},
                                                                               {"AND end = nil", 0},
                                                                               {"end = nil OR", 0},
                                                                               {"name == %d", 1}}) {
    std::vector<Value> arguments(static_cast<std::size_t>(count), Value(1));
    EXPECT_THROW(Predicate::withFormat(format, arguments), PredicateFormatError) << format;
  }
}

TEST(Predicate, PrintsItselfWithItsArguments) {
  auto predicate = Predicate::withFormat("task.archived == NO AND (end >= %@ OR end = nil)", {Date(5)});
  EXPECT_EQ(predicate.predicateFormat(), "(task.archived == false AND (end >= date(5.000000) OR end == nil))");
}

}  // namespace
}  // namespace kestrona
