#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "Extension/WidgetProcess/CommandLine.h"
#include "WidgetData/Records/RecordCoding.h"
#include "WidgetData/Records/RevenueWidgetDataVO.h"
#include "WidgetData/Records/TimerStateVO.h"
#include "WidgetData/TimerIntent/TimerWidgetIntentHost.h"
#include "tests/support/TemporaryDirectory.h"

namespace kestrona {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;

// Wednesday 11 March 2026, 10:00 in Berlin.
constexpr double kNow = 1773219600;
constexpr double kTuesday10 = 1773097200;
constexpr double kWednesday11 = 1773183600;

struct CommandRun {
  int status;
  std::string output;
  std::string errors;
  json parsed() const { return json::parse(output); }
};

class CommandLineTest : public ::testing::Test {
 protected:
  CommandLineTest() {
    environment.set("XDG_DATA_HOME", data.path().string());
    environment.set("TZ", "Europe/Berlin");
    environment.set("LC_ALL", "en_US.UTF-8");
  }

  CommandRun run(std::vector<std::string> arguments) {
    std::ostringstream output;
    std::ostringstream errors;
    int status = runWidgetProcess(bundle, arguments, output, errors);
    return CommandRun{status, output.str(), errors.str()};
  }

  void writeWidgetFile(std::string_view kind, const std::string& content) {
    testing::writeFile(data.path() / "Q7RM4XW2KD.app.kestrona.group" / "widgetData" / kind, content);
  }

  testing::TemporaryDirectory data;
  testing::ScopedEnvironment environment;
  KestronaWidgets bundle;
};

TEST_F(CommandLineTest, MakingTheBundleInstallsTheDeepLinkHost) {
  EXPECT_NE(TimerWidgetIntentHost::current(), nullptr);
  auto first = TimerWidgetIntentHost::current();
  KestronaWidgets again;
  EXPECT_NE(TimerWidgetIntentHost::current(), first) << "a new bundle releases the earlier host";
  EXPECT_EQ(again.appGroupName, "Q7RM4XW2KD.app.kestrona.group");
}

TEST_F(CommandLineTest, ListGivesTheSixWidgetsInBundleOrder) {
  CommandRun list = run({"list"});
  ASSERT_EQ(list.status, 0) << list.errors;
  std::vector<std::string> kinds;
  for (const json& widget : list.parsed()) kinds.push_back(widget["kind"]);
  EXPECT_EQ(kinds, (std::vector<std::string>{"timer", "recentTasks", "weeklyTimeTrackedChart",
                                             "monthlyTimeTrackedChart", "weeklyRevenueChart", "monthlyRevenueChart"}));
  EXPECT_EQ(list.parsed()[2]["families"], json::parse(R"(["systemMedium","systemSmall"])"));
}

TEST_F(CommandLineTest, TimerTimelineOfARunningEntry) {
  TimerStateVO state;
  state.taskName = "Write";
  state.taskColor = ColorTransferable{0.5, 0.25, 0.125, 1};
  state.timeEntryBeginTimestamp = kNow - 600;
  writeWidgetFile("timer", encodeWidgetRecord(state));
  CommandRun timeline = run({"timeline", "timer", "--now", std::to_string(kNow)});
  ASSERT_EQ(timeline.status, 0) << timeline.errors;
  json result = timeline.parsed();
  EXPECT_EQ(result["kind"], "timer");
  EXPECT_EQ(result["family"], "systemSmall") << "the widget's first family";
  ASSERT_EQ(result["entries"].size(), 1u);
  const json& entry = result["entries"][0];
  EXPECT_EQ(entry["date"], kNow);
  EXPECT_EQ(entry["taskName"], "Write");
  EXPECT_EQ(entry["timeEntryBegin"], kNow - 600);
  EXPECT_FALSE(entry.contains("timeEntryEnd")) << "absent optionals are left out";
  EXPECT_FALSE(entry.contains("taskId"));
  EXPECT_EQ(entry["isTimerRunning"], true);
  EXPECT_EQ(entry["taskColor"], json::parse(R"({"redComponent":0.5,"greenComponent":0.25,"blueComponent":0.125,"alphaComponent":1.0})"));
  EXPECT_EQ(entry["taskBackgroundColorOptimizedForLightContent"]["greenComponent"], 1.0) << "white when absent";
  EXPECT_EQ(result["policy"], json::parse(R"({"type":"after","date":)" + std::to_string(kNow + 3000) + "}"));
}

TEST_F(CommandLineTest, PlaceholderAndSnapshotHaveOneEntryAndNoPolicy) {
  CommandRun placeholder = run({"placeholder", "--now=1000", "timer", "--family", "systemMedium"});
  ASSERT_EQ(placeholder.status, 0) << placeholder.errors;
  json result = placeholder.parsed();
  EXPECT_EQ(result["family"], "systemMedium");
  EXPECT_FALSE(result.contains("policy"));
  EXPECT_EQ(result["entries"][0]["taskId"], "123");
  EXPECT_EQ(result["entries"][0]["date"], 1000.0) << "--now holds for the placeholder's moment of creation";
  EXPECT_FALSE(result["entries"][0].contains("timeEntryBegin"));

  CommandRun snapshot = run({"snapshot", "recentTasks", "--family", "systemLarge"});
  ASSERT_EQ(snapshot.status, 0) << snapshot.errors;
  EXPECT_EQ(snapshot.parsed()["entries"].size(), 1u);
  EXPECT_EQ(snapshot.parsed()["entries"][0]["tasks"].size(), 8u) << "no file: the sample";
}

TEST_F(CommandLineTest, RevenueTimelineMergesTheRunningEntryAndEndsAtTheQuarterHour) {
  RevenueWidgetDataVO record;
  record.bars = {ChartBarVO{.date = kTuesday10, .timeEntryCount = 0, .segments = {}, .totalValue = 0},
                 ChartBarVO{.date = kWednesday11, .timeEntryCount = 0, .segments = {}, .totalValue = 12.5}};
  record.currentTimeEntry = CurrentTimeEntryVO{"x-kestrona://S/Task/p1", kNow - 1800, ColorTransferable{1, 0, 0, 1}};
  record.currentTimeEntryHourRate = 60;
  record.currencyLocalIdentifier = "de_DE";
  record.firstDayOfWeek = 2;
  writeWidgetFile("weeklyRevenueChart", encodeWidgetRecord(record));
  CommandRun timeline = run({"timeline", "weeklyRevenueChart", "--now", std::to_string(kNow)});
  ASSERT_EQ(timeline.status, 0) << timeline.errors;
  json result = timeline.parsed();
  EXPECT_EQ(result["family"], "systemMedium");
  ASSERT_EQ(result["entries"].size(), 2u);
  EXPECT_EQ(result["entries"][1]["date"], kNow + 900);
  const json& today = result["entries"][0]["chartBars"][1];
  EXPECT_EQ(today["totalValue"], 42.5) << "half an hour at 60 an hour";
  EXPECT_EQ(today["segments"][0]["taskId"], "x-kestrona://S/Task/p1");
  EXPECT_EQ(today["segments"][0]["color"]["redComponent"], 1.0);
  EXPECT_EQ(result["entries"][0]["currencyLocalIdentifier"], "de_DE");
  EXPECT_EQ(result["policy"], json::parse(R"({"type":"atEnd"})"));
}

TEST_F(CommandLineTest, WrongCommandLinesExitWithStatusTwoAndSayWhy) {
  struct Case {
    std::vector<std::string> arguments;
    std::string message;
  };
  for (const Case& wrong : std::vector<Case>{
           {{}, "no command given"},
           {{"draw", "timer"}, "unknown command 'draw'"},
           {{"timeline"}, "a widget kind is needed"},
           {{"timeline", "clock"}, "unknown widget kind 'clock'"},
           {{"timeline", "Timer"}, "unknown widget kind 'Timer'"},
           {{"timeline", "timer", "--family", "small"}, "unknown family 'small'"},
           {{"timeline", "timer", "--family", "systemLarge"}, "has no family systemLarge"},
           {{"snapshot", "timer", "--family"}, "--family needs a value"},
           {{"timeline", "timer", "--now", "soon"}, "--now takes seconds since 1970"},
           {{"timeline", "timer", "--now", "12x"}, "--now takes seconds since 1970"},
           {{"timeline", "timer", "--now", "inf"}, "--now takes seconds since 1970"},
           {{"placeholder", "timer", "recentTasks"}, "unexpected argument 'recentTasks'"},
           {{"timeline", "timer", "--colour", "red"}, "unknown option --colour"},
           {{"list", "extra"}, "list takes no arguments"},
       }) {
    CommandRun result = run(wrong.arguments);
    EXPECT_EQ(result.status, 2) << wrong.message;
    EXPECT_EQ(result.output, "") << wrong.message;
    EXPECT_NE(result.errors.find(wrong.message), std::string::npos) << result.errors;
  }
}

}  // namespace
}  // namespace kestrona
