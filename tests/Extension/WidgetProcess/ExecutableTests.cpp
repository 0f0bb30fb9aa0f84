// The real kestrona-widgets program, run as a person or a script runs it.
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

TEST_F(ExecutableTest, RenderDrawsTheCurrentEntryToPNGAtItsScaleAndToSVGInPoints) {
  writeWidgetFile("timer", timerFile(true));
  const fs::path png = directory.path() / "timer.png";
  ProgramRun small = run({"render", "timer", "--now", std::to_string(kNow), "--out", png.string()});
  ASSERT_EQ(small.status, 0) << small.errors;
  EXPECT_EQ(small.output, "");
  EXPECT_EQ(pngSize(png), (std::pair{340, 340})) << "170 points at the default scale of 2";

  const fs::path scaled = directory.path() / "chart.png";
  ProgramRun chart = run({"render", "weeklyRevenueChart", "--family=systemMedium", "--scale", "3", "--out",
                          scaled.string(), "--now", std::to_string(kNow)});
  ASSERT_EQ(chart.status, 0) << chart.errors;
  EXPECT_EQ(pngSize(scaled), (std::pair{1092, 510}));

  const fs::path svg = directory.path() / "tasks.svg";
  ProgramRun vector = run({"render", "recentTasks", "--family", "systemLarge", "--out", svg.string()});
  ASSERT_EQ(vector.status, 0) << vector.errors;
  const std::string document = testing::readFile(svg);
  EXPECT_EQ(document.rfind("<?xml", 0), 0u);
  EXPECT_NE(document.find("<svg"), std::string::npos);
  EXPECT_NE(document.find(R"(width="364pt" height="382pt")"), std::string::npos);
}

TEST_F(ExecutableTest, AFileThatCannotBeWrittenExitsWithStatusOne) {
  ProgramRun render = run({"render", "timer", "--out", (directory.path() / "missing" / "timer.png").string()});
  EXPECT_EQ(render.status, 1);
  EXPECT_EQ(render.output, "");
  EXPECT_NE(render.errors.find("kestrona-widgets: "), std::string::npos);

  testing::writeFile(directory.path() / "taken", "a file, not a folder");
  ProgramRun gallery = run({"render-all", "--out", (directory.path() / "taken" / "gallery").string()});
  EXPECT_EQ(gallery.status, 1);
  EXPECT_EQ(gallery.output, "");
  EXPECT_NE(gallery.errors.find("kestrona-widgets: "), std::string::npos);
}

TEST_F(ExecutableTest, RenderAllDrawsEveryWidgetInEveryFamilyAndAPageOfThem) {
  const fs::path gallery = directory.path() / "gallery" / "nested";
  ProgramRun result = run({"render-all", "--out", gallery.string(), "--now", std::to_string(kNow)});
  ASSERT_EQ(result.status, 0) << result.errors;
  EXPECT_EQ(result.output, (gallery / "index.html").string() + "\n");
  const std::string page = testing::readFile(gallery / "index.html");
  const std::vector<std::pair<std::string, std::vector<std::string>>> widgets = {
      {"timer", {"systemSmall", "systemMedium"}},
      {"recentTasks", {"systemSmall", "systemMedium", "systemLarge"}},
      {"weeklyTimeTrackedChart", {"systemMedium", "systemSmall"}},
      {"monthlyTimeTrackedChart", {"systemMedium", "systemSmall"}},
      {"weeklyRevenueChart", {"systemMedium", "systemSmall"}},
      {"monthlyRevenueChart", {"systemMedium", "systemSmall"}},
  };
  std::size_t previousSection = 0;
  for (const auto& [kind, families] : widgets) {
    const std::size_t section = page.find("<section id=\"" + kind + "\">");
    ASSERT_NE(section, std::string::npos) << kind;
    EXPECT_GE(section, previousSection) << kind << " comes in the bundle's order";
    previousSection = section;
    for (const std::string& family : families) {
      const std::string name = kind + "-" + family + ".png";
      EXPECT_TRUE(pngSize(gallery / name).has_value()) << name;
      const std::size_t image = page.find("src=\"" + name + "\"");
      EXPECT_NE(image, std::string::npos) << name;
      EXPECT_GT(image, section) << name << " stands in its widget's section";
      EXPECT_NE(page.find(kind + " · " + family), std::string::npos) << "caption of " << name;
    }
  }
  EXPECT_EQ(std::distance(fs::directory_iterator(gallery), fs::directory_iterator()), 14);
  EXPECT_EQ(page.find("palette/index.html"), std::string::npos) << "no palette sheet, no link";

  testing::writeFile(gallery / "palette" / "index.html", "<html></html>");
  ASSERT_EQ(run({"render-all", "--out", gallery.string()}).status, 0);
  EXPECT_NE(testing::readFile(gallery / "index.html").find("href=\"palette/index.html\""), std::string::npos);
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

TEST_F(ExecutableTest, PressOnAPlateStartsItsTaskAndAFailedIntentSaysWhy) {
  // Outside an application bundle the host has nowhere to send the link.
  ProgramRun plate = run({"press", "recentTasks", "--family", "systemMedium", "--plate", "1"});
  EXPECT_EQ(plate.status, 1) << plate.errors;
  nlohmann::json pressed = nlohmann::json::parse(plate.output);
  EXPECT_EQ(pressed["pressed"], "intent");
  EXPECT_EQ(pressed["command"], "start");
  EXPECT_EQ(pressed["result"], "failed");
  EXPECT_EQ(pressed["error"]["domain"], "TimerWidgetAppIntent.AppIntentError");
  EXPECT_EQ(pressed["error"]["code"], 1) << "taskNotFound";

  ProgramRun last = run({"press", "recentTasks", "--family", "systemLarge", "--plate", "8"});
  nlohmann::json lastPressed = nlohmann::json::parse(last.output);
  EXPECT_GT(lastPressed["y"].get<double>(), 300) << "plate 8 is in the bottom row";
  EXPECT_GT(lastPressed["x"].get<double>(), 182) << "plate 8 is in the right column";
  EXPECT_NE(lastPressed["taskId"], pressed["taskId"]);
}

TEST_F(ExecutableTest, DrawingAndPressingCommandsRefuseWrongArgumentsWithStatusTwo) {
  const std::string out = (directory.path() / "picture.jpg").string();
  const struct {
    std::vector<std::string> arguments;
    std::string message;
  } cases[] = {
      {{"render", "timer", "--out", out}, "--out must name a .png or .svg file"},
      {{"render", "timer"}, "render needs --out FILE"},
      {{"render", "timer", "--out", "x.png", "--scale", "0"}, "--scale takes a number above 0"},
      {{"render", "timer", "--family", "systemLarge", "--out", "x.png"}, "has no family systemLarge"},
      {{"render-all"}, "render-all needs --out DIR"},
      {{"render-all", "timer", "--out", "x"}, "unexpected argument 'timer'"},
      {{"press", "timer"}, "press needs either --x X --y Y or --plate N"},
      {{"press", "timer", "--x", "10"}, "press needs either --x X --y Y or --plate N"},
      {{"press", "timer", "--x", "500", "--y", "10"}, "outside the widget"},
      {{"press", "timer", "--plate", "1"}, "--plate is for the recent tasks widget only"},
      {{"press", "recentTasks", "--plate", "3"}, "--plate takes a plate from 1 to 2"},
      {{"press", "recentTasks", "--plate", "0"}, "--plate takes a plate from 1 to 2"},
      {{"press", "recentTasks", "--plate", "1.5"}, "--plate takes a plate from 1 to 2"},
      {{"press", "recentTasks", "--plate", "1", "--x", "3", "--y", "4"}, "press needs either"},
  };
  for (const auto& wrong : cases) {
    ProgramRun result = run(wrong.arguments);
    EXPECT_EQ(result.status, 2) << wrong.message;
    EXPECT_EQ(result.output, "") << wrong.message;
    EXPECT_NE(result.errors.find(wrong.message), std::string::npos) << result.errors;
  }
  EXPECT_FALSE(fs::exists(out));
}

}  // namespace
}  // namespace kestrona
