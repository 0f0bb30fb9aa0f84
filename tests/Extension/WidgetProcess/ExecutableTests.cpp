// The real kestrona-widgets program, run as a person or a script runs it.
#include <sys/wait.h>

#include <cstdlib>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tests/support/TemporaryDirectory.h"

namespace kestrona {
namespace {

namespace fs = std::filesystem;

struct ProgramRun {
  int status;
  std::string output;
  std::string errors;
};

std::string quoted(const std::string& text) {
  std::string result = "'";
  for (char character : text) result += character == '\'' ? std::string("'\\''") : std::string(1, character);
  return result + "'";
}

class ExecutableTest : public ::testing::Test {
 protected:
  ExecutableTest() {
    environment.set("XDG_DATA_HOME", (directory.path() / "data").string());
    environment.set("TZ", "UTC");
  }

  ProgramRun run(const std::vector<std::string>& arguments) {
    std::string command = quoted(KESTRONA_WIDGETS_EXECUTABLE);
    for (const std::string& argument : arguments) command += " " + quoted(argument);
    fs::path output = directory.path() / "stdout";
    fs::path errors = directory.path() / "stderr";
    command += " >" + quoted(output.string()) + " 2>" + quoted(errors.string());
    int status = std::system(command.c_str());
    return ProgramRun{WIFEXITED(status) ? WEXITSTATUS(status) : -1, testing::readFile(output),
                      testing::readFile(errors)};
  }

  testing::TemporaryDirectory directory;
  testing::ScopedEnvironment environment;
};

TEST_F(ExecutableTest, PrintsATimelineFromTheGroupContainerOfXdgDataHome) {
  testing::writeFile(directory.path() / "data" / "Q7RM4XW2KD.app.kestrona.group" / "widgetData" / "timer",
                     R"({"taskName":"From the app","timeEntryBeginTimestamp":1000,"timeEntryEndTimestamp":1500})");
  ProgramRun result = run({"timeline", "timer", "--now", "2000"});
  ASSERT_EQ(result.status, 0) << result.errors;
  nlohmann::json timeline = nlohmann::json::parse(result.output);
  EXPECT_EQ(timeline["entries"][0]["taskName"], "From the app");
  EXPECT_EQ(timeline["entries"][0]["date"], 2000.0);
  EXPECT_EQ(timeline["entries"][0]["isTimerRunning"], false);
  EXPECT_EQ(timeline["policy"]["type"], "after");
  EXPECT_EQ(timeline["policy"]["date"], 4600.0);
}

TEST_F(ExecutableTest, WithoutAGroupContainerTheWidgetsFallBack) {
  environment.set("XDG_DATA_HOME", std::nullopt);
  environment.set("HOME", std::nullopt);
  ProgramRun timer = run({"snapshot", "timer"});
  ASSERT_EQ(timer.status, 0) << timer.errors;
  EXPECT_EQ(nlohmann::json::parse(timer.output)["entries"][0]["taskName"], "Task");
  ProgramRun chart = run({"timeline", "monthlyTimeTrackedChart", "--now", "1773219600"});
  ASSERT_EQ(chart.status, 0) << chart.errors;
  EXPECT_TRUE(nlohmann::json::parse(chart.output)["entries"][0]["chartBars"].empty());
  EXPECT_EQ(nlohmann::json::parse(chart.output)["entries"][0]["firstDayOfWeek"], 0);
}

TEST_F(ExecutableTest, BadArgumentsExitWithStatusTwo) {
  ProgramRun unknownKind = run({"timeline", "stopwatch"});
  EXPECT_EQ(unknownKind.status, 2);
  EXPECT_NE(unknownKind.errors.find("unknown widget kind 'stopwatch'"), std::string::npos);
  EXPECT_EQ(unknownKind.output, "");
  EXPECT_EQ(run({"timeline", "recentTasks", "--family", "systemHuge"}).status, 2);
  EXPECT_EQ(run({}).status, 2);
  EXPECT_EQ(run({"--help"}).status, 0);
}

TEST_F(ExecutableTest, RunPlacesEveryWidgetInEveryFamilyOnTheHost) {
  ProgramRun result = run({"run", "--for", "0"});
  ASSERT_EQ(result.status, 0) << result.errors;
  std::istringstream lines(result.output);
  std::map<std::string, int> reloadsByKind;
  int placeholders = 0;
  for (std::string line; std::getline(lines, line);) {
    nlohmann::json event = nlohmann::json::parse(line);
    if (event["event"] == "timelineReloaded") ++reloadsByKind[event["kind"]];
    if (event["event"] == "entryChanged" && event["reason"] == "start") ++placeholders;
  }
  EXPECT_EQ(reloadsByKind, (std::map<std::string, int>{{"timer", 2},
                                                       {"recentTasks", 3},
                                                       {"weeklyTimeTrackedChart", 2},
                                                       {"monthlyTimeTrackedChart", 2},
                                                       {"weeklyRevenueChart", 2},
                                                       {"monthlyRevenueChart", 2}}));
  EXPECT_GE(placeholders, 13) << "each of the 13 instances shows its placeholder first";
  EXPECT_EQ(run({"run", "--for", "-1"}).status, 2);
}

}  // namespace
}  // namespace kestrona
