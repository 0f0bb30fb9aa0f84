// The real kestrona-widgets program, run as a person or a script runs it.
#include <sys/stat.h>
#include <sys/wait.h>

#include <cstdlib>
#include <iterator>
#include <map>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tests/Platform/Workspace/ProgramFixtures.h"
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

  ProgramRun run(const std::vector<std::string>& arguments, const fs::path& program = KESTRONA_WIDGETS_EXECUTABLE) {
    std::string command = quoted(program.string());
    for (const std::string& argument : arguments) command += " " + quoted(argument);
    fs::path output = directory.path() / "stdout";
    fs::path errors = directory.path() / "stderr";
    command += " >" + quoted(output.string()) + " 2>" + quoted(errors.string());
    int status = std::system(command.c_str());
    return ProgramRun{WIFEXITED(status) ? WEXITSTATUS(status) : -1, testing::readFile(output),
                      testing::readFile(errors)};
  }

  void writeWidgetFile(std::string_view kind, const std::string& content) {
    testing::writeFile(directory.path() / "data" / "Q7RM4XW2KD.app.kestrona.group" / "widgetData" / kind, content);
  }

  testing::TemporaryDirectory directory;
  testing::ScopedEnvironment environment;
};

// The pixel size of a PNG file; none when the file is not a PNG.
std::optional<std::pair<int, int>> pngSize(const fs::path& file) {
  const std::string bytes = testing::readFile(file);
  if (bytes.size() < 24 || bytes.compare(0, 8, "\x89PNG\r\n\x1a\n") != 0) return std::nullopt;
  auto number = [&bytes](std::size_t at) {
    int value = 0;
    for (std::size_t index = at; index < at + 4; ++index)
      value = value * 256 + static_cast<unsigned char>(bytes[index]);
    return value;
  };
  return std::pair{number(16), number(20)};
}

// 1 December 2026, 10:00 UTC.
constexpr double kNow = 1796119200;
constexpr const char* kTaskId = "x-kestrona://4F0C7A38/Task/p7";

std::string timerFile(bool running) {
  nlohmann::json state = {
      {"taskId", kTaskId},
      {"taskName", "Concept sketches"},
      {"taskColor", {{"redComponent", 0.37}, {"greenComponent", 0.36}, {"blueComponent", 0.9}, {"alphaComponent", 1}}},
      {"startButtonBackgroundOpacity", 0.2},
      {"folderName", "Client Work"},
      {"timeEntryBeginTimestamp", kNow - 8280},
  };
  if (!running) state["timeEntryEndTimestamp"] = kNow - 600;
  return state.dump();
}

TEST_F(ExecutableTest, ExitStatusesAndTheGroupContainerOfXdgDataHome) {
  writeWidgetFile("timer",
                  R"({"taskName":"From the app","timeEntryBeginTimestamp":1000,"timeEntryEndTimestamp":1500})");
  ProgramRun result = run({"timeline", "timer", "--now", "2000"});
  ASSERT_EQ(result.status, 0) << result.errors;
  nlohmann::json timeline = nlohmann::json::parse(result.output);
  EXPECT_EQ(timeline["entries"][0]["taskName"], "From the app");
  EXPECT_EQ(timeline["policy"]["date"], 4600.0);

  ProgramRun wrong = run({"timeline", "stopwatch"});
  EXPECT_EQ(wrong.status, 2);
  EXPECT_EQ(wrong.output, "");
  EXPECT_NE(wrong.errors.find("unknown widget kind 'stopwatch'"), std::string::npos);
  ProgramRun unwritable = run({"render", "timer", "--out", (directory.path() / "missing" / "timer.png").string()});
  EXPECT_EQ(unwritable.status, 1);
  EXPECT_NE(unwritable.errors.find("No such file or directory"), std::string::npos) << unwritable.errors;
  EXPECT_EQ(run({"render", "--help"}).status, 0);

  const fs::path png = directory.path() / "chart.png";
  ProgramRun chart = run({"render", "weeklyRevenueChart", "--scale=3", "--out", png.string()});
  ASSERT_EQ(chart.status, 0) << chart.errors;
  EXPECT_EQ(pngSize(png), (std::pair{1092, 510})) << "364 x 170 points at 3 pixels per point";
}

// The live host never waits on a widget file: a FIFO at the timer's path,
// or a link to an endless device, is refused at once.
TEST_F(ExecutableTest, RunPlacesEveryWidgetInEveryFamilyAndNeverBlocksOnAFile) {
  fs::create_directories(directory.path() / "data" / "Q7RM4XW2KD.app.kestrona.group" / "widgetData");
  ASSERT_EQ(::mkfifo((directory.path() / "data" / "Q7RM4XW2KD.app.kestrona.group" / "widgetData" / "timer").c_str(),
                     0600),
            0);
  fs::create_symlink("/dev/zero", directory.path() / "data" / "Q7RM4XW2KD.app.kestrona.group" / "widgetData" /
                                      "recentTasks");
  ProgramRun result = run({"run", "--for", "0"});
  ASSERT_EQ(result.status, 0) << result.errors;
  std::istringstream lines(result.output);
  std::map<std::string, int> reloadsByKind;
  for (std::string line; std::getline(lines, line);) {
    nlohmann::json event = nlohmann::json::parse(line);
    if (event["event"] == "timelineReloaded") ++reloadsByKind[event["kind"]];
  }
  EXPECT_EQ(reloadsByKind, (std::map<std::string, int>{{"timer", 2},
                                                       {"recentTasks", 3},
                                                       {"weeklyTimeTrackedChart", 2},
                                                       {"monthlyTimeTrackedChart", 2},
                                                       {"weeklyRevenueChart", 2},
                                                       {"monthlyRevenueChart", 2}}));
  EXPECT_NE(result.errors.find("timer\" could not be read: it is not a regular file"), std::string::npos)
      << result.errors;
  const std::string once = "; the timer widget shows its placeholder";
  EXPECT_EQ(result.errors.find(once), result.errors.rfind(once)) << "one warning per widget, not one per family";
}

// The program copied into a fake application whose program records the deep
// links it is asked to open; the press runs the intent through the bundle's
// deep-link host, as a press on the desktop does.
TEST_F(ExecutableTest, PressOnTheButtonOpensTheTimerDeepLinkAndElsewhereFollowsTheWidgetsLink) {
  const fs::path application = testing::layOutApplication(
      directory.path(), R"(printf '%s|%s|%s\n' "$#" "$1" "$2" >> "$(dirname "$0")/../recorded")");
  const fs::path program = testing::widgetBundleIn(application) / "bin/kestrona-widgets";
  fs::copy_file(KESTRONA_WIDGETS_EXECUTABLE, program, fs::copy_options::overwrite_existing);
  const fs::path recorded = application / "Contents/recorded";
  const std::string now = std::to_string(kNow);

  writeWidgetFile("timer", timerFile(false));
  ProgramRun start = run({"press", "timer", "--x", "136", "--y", "31", "--now", now}, program);
  ASSERT_EQ(start.status, 0) << start.errors << start.output;
  nlohmann::json pressed = nlohmann::json::parse(start.output);
  EXPECT_EQ(pressed["pressed"], "intent");
  EXPECT_EQ(pressed["command"], "start");
  EXPECT_EQ(pressed["taskId"], kTaskId);
  EXPECT_EQ(pressed["deepLink"], std::string("deeplink-startTimer://?taskId=") + kTaskId);
  EXPECT_EQ(pressed["result"], "performed");
  EXPECT_EQ(testing::readFile(recorded), std::string("2|open-url|deeplink-startTimer://?taskId=") + kTaskId + "\n");
  fs::remove(recorded);

  writeWidgetFile("timer", timerFile(true));
  ProgramRun pause =
      run({"press", "timer", "--family", "systemMedium", "--x", "322", "--y", "31", "--now", now}, program);
  ASSERT_EQ(pause.status, 0) << pause.errors << pause.output;
  EXPECT_EQ(nlohmann::json::parse(pause.output)["command"], "pause");
  EXPECT_FALSE(nlohmann::json::parse(pause.output).contains("taskId"));
  EXPECT_EQ(testing::readFile(recorded), "2|open-url|deeplink-pauseTimer://\n");
  fs::remove(recorded);

  ProgramRun elsewhere = run({"press", "timer", "--x", "40", "--y", "120", "--now", now}, program);
  ASSERT_EQ(elsewhere.status, 0) << elsewhere.errors;
  pressed = nlohmann::json::parse(elsewhere.output);
  EXPECT_EQ(pressed["pressed"], "link");
  EXPECT_EQ(pressed["url"], "deeplink-openApp://");
  EXPECT_EQ(pressed["isWidgetURL"], true);
  EXPECT_FALSE(fs::exists(recorded));
}

}  // namespace
}  // namespace kestrona
