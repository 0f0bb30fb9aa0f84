#include "Platform/Intents/AppIntent.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "Platform/Intents/AppIntentsPackage.h"
#include "Platform/RunLoop/Async.h"
#include "tests/Platform/Workspace/ProgramFixtures.h"

namespace kestrona {
namespace {

// Counts into a shared tally, suspends once on the loop, and fails on demand.
struct CountingIntent {
  static std::string_view title() { return "Count"; }
  static std::string_view description() { return "Counts its runs"; }

  asio::awaitable<IntentResult> perform() const { return performCounting(*this); }

  static asio::awaitable<IntentResult> performCounting(CountingIntent intent) {
    co_await asio::post(co_await asio::this_coro::executor, asio::use_awaitable);
    *intent.tally += intent.step.value().value_or(0);
    if (intent.fails) throw std::runtime_error("refused");
    co_return IntentResult::result();
  }

  std::shared_ptr<int> tally = std::make_shared<int>(0);
  IntentParameter<int> step{"Step"};
  bool fails = false;
};

static_assert(AppIntent<CountingIntent>);

struct NotAnIntent {
  static std::string_view title() { return "No"; }
};
static_assert(!AppIntent<NotAnIntent>);

std::exception_ptr runToEnd(MainLoop& loop, const AnyAppIntent& intent) {
  bool done = false;
  std::exception_ptr error;
  intent.run(loop, [&](std::exception_ptr thrown) {
    error = thrown;
    done = true;
  });
  EXPECT_FALSE(done) << "run() must not finish inline";
  testing::runUntil(loop, [&] { return done; });
  return error;
}

TEST(AnyAppIntentTest, CarriesACopyOfTheIntentAndRunsItOnTheLoop) {
  MainLoop loop;
  CountingIntent intent;
  intent.step = 2;
  AnyAppIntent target(intent);
  intent.step = 100;  // the target keeps the value it was given

  EXPECT_EQ(target.title(), "Count");
  EXPECT_EQ(runToEnd(loop, target), nullptr);
  EXPECT_EQ(runToEnd(loop, target), nullptr);
  EXPECT_EQ(*intent.tally, 4);
}

TEST(AnyAppIntentTest, DeliversTheErrorTheIntentThrew) {
  MainLoop loop;
  CountingIntent intent;
  intent.step = 1;
  intent.fails = true;
  std::exception_ptr error = runToEnd(loop, AnyAppIntent(intent));
  ASSERT_NE(error, nullptr);
  EXPECT_THROW(std::rethrow_exception(error), std::runtime_error);
  EXPECT_EQ(*intent.tally, 1);
}

TEST(IntentParameterTest, StartsEmptyAndTakesOrClearsAValue) {
  IntentParameter<std::string> parameter("Task ID");
  EXPECT_EQ(parameter.title(), "Task ID");
  EXPECT_FALSE(parameter.value().has_value());
  parameter = "";
  EXPECT_EQ(parameter.value(), "");
  parameter = std::nullopt;
  EXPECT_FALSE((*parameter).has_value());
}

struct Leaf {
  using includedPackages = IncludedPackages<>;
};
struct Middle {
  using includedPackages = IncludedPackages<Leaf>;
};
struct Top {
  using includedPackages = IncludedPackages<Middle>;
};
struct Unrelated {
  using includedPackages = IncludedPackages<>;
};
static_assert(includesPackage<Top, Leaf>);
static_assert(includesPackage<Top, Top>);
static_assert(!includesPackage<Leaf, Top>);
static_assert(!includesPackage<Top, Unrelated>);

}  // namespace
}  // namespace kestrona
