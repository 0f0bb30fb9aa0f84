// The widget process's command line, run in this process.
#include <sys/stat.h>

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
const std::string kNowText = "1773219600";

struct CommandRun {
  int status;
  std::string output;
  std::string errors;
  json parsed() const { return json::parse(output); }
};

class CommandLineTest : public ::testing::Test {
 protected:
  CommandLineTest() {
    environment.set("XDG_DATA_HOME", (directory.path() / "data").string());
    environment.set("TZ", "Europe/Berlin");
    environment.set("LC_ALL", "en_US.UTF-8");
  }

  CommandRun run(std::vector<std::string> arguments) {
    std::ostringstream output;
    std::ostringstream errors;
    int status = runWidgetProcess(bundle, arguments, output, errors);
    return CommandRun{status, output.str(), errors.str()};
  }

  fs::path widgetFile(std::string_view kind) const {
    return directory.path() / "data" / KestronaWidgets::kAppGroupName / "widgetData" / kind;
  }

  testing::TemporaryDirectory directory;
  testing::ScopedEnvironment environment;
  KestronaWidgets bundle;
};

TEST_F(CommandLineTest, MakingTheBundleInstallsTheDeepLinkHostAndListsSixWidgets) {
  auto first = TimerWidgetIntentHost::current();
  ASSERT_NE(first, nullptr);
  KestronaWidgets again;
  EXPECT_NE(TimerWidgetIntentHost::current(), first) << "a new bundle releases the earlier host";

  CommandRun list = run({"list"});
  ASSERT_EQ(list.status, 0) << list.errors;
  json kindsAndFamilies = json::array();
  for (const json& widget : list.parsed()) kindsAndFamilies.push_back({widget["kind"], widget["families"]});
  EXPECT_EQ(kindsAndFamilies, json::parse(R"([["timer", ["systemSmall", "systemMedium"]],
      ["recentTasks", ["systemSmall", "systemMedium", "systemLarge"]],
      ["weeklyTimeTrackedChart", ["systemMedium", "systemSmall"]],
      ["monthlyTimeTrackedChart", ["systemMedium", "systemSmall"]],
      ["weeklyRevenueChart", ["systemMedium", "systemSmall"]],
      ["monthlyRevenueChart", ["systemMedium", "systemSmall"]]])"));
}

TEST_F(CommandLineTest, TimelineSnapshotAndPlaceholderPrintTheWidgetsEntries) {
  TimerStateVO state;
  state.taskName = "Write";
  state.taskColor = ColorTransferable{0.5, 0.25, 0.125, 1};
  state.timeEntryBeginTimestamp = kNow - 600;
  testing::writeFile(widgetFile("timer"), encodeWidgetRecord(state));
  CommandRun timeline = run({"timeline", "timer", "--now", kNowText});
  ASSERT_EQ(timeline.status, 0) << timeline.errors;
  EXPECT_EQ(timeline.errors, "") << "a good file gives no warning";
  const json entry = timeline.parsed()["entries"][0];
  EXPECT_EQ(timeline.parsed()["family"], "systemSmall") << "the widget's first family";
  EXPECT_EQ(entry["date"], kNow);
  EXPECT_EQ(entry["taskName"], "Write");
  EXPECT_FALSE(entry.contains("taskId")) << "absent optionals are left out";
  EXPECT_EQ(entry["isTimerRunning"], true);
  EXPECT_EQ(entry["taskColor"]["greenComponent"], 0.25);
  EXPECT_EQ(entry["taskBackgroundColorOptimizedForLightContent"]["greenComponent"], 1.0) << "white when absent";
  EXPECT_EQ(timeline.parsed()["policy"], json::parse(R"({"type":"after","date":)" + std::to_string(kNow + 3000) + "}"));

  CommandRun placeholder = run({"placeholder", "--now=1000", "timer", "--family", "systemMedium"});
  ASSERT_EQ(placeholder.status, 0) << placeholder.errors;
  EXPECT_EQ(placeholder.parsed()["entries"][0]["taskId"], "123");
  EXPECT_EQ(placeholder.parsed()["entries"][0]["date"], 1000.0) << "--now holds for the placeholder's creation";
  EXPECT_FALSE(placeholder.parsed().contains("policy"));

  CommandRun snapshot = run({"snapshot", "--", "recentTasks"});
  ASSERT_EQ(snapshot.status, 0) << snapshot.errors;
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
  testing::writeFile(widgetFile("weeklyRevenueChart"), encodeWidgetRecord(record));
  CommandRun timeline = run({"timeline", "weeklyRevenueChart", "--now", kNowText});
  ASSERT_EQ(timeline.status, 0) << timeline.errors;
  json result = timeline.parsed();
  ASSERT_EQ(result["entries"].size(), 2u);
  EXPECT_EQ(result["entries"][1]["date"], kNow + 900);
  EXPECT_EQ(result["entries"][0]["chartBars"][1]["totalValue"], 42.5) << "half an hour at 60 an hour";
  EXPECT_EQ(result["entries"][0]["chartBars"][1]["segments"][0]["taskId"], "x-kestrona://S/Task/p1");
  EXPECT_EQ(result["entries"][0]["currencyLocalIdentifier"], "de_DE");
  EXPECT_EQ(result["policy"], json::parse(R"({"type":"atEnd"})"));
}

TEST_F(CommandLineTest, WrongCommandLinesExitWithStatusTwoAndSayWhy) {
  const std::string out = (directory.path() / "picture.png").string();
  const struct {
    std::vector<std::string> arguments;
    std::string message;
  } cases[] = {
      {{}, "no command given"},
      {{"draw", "timer"}, "unknown command 'draw'"},
      {{"timeline"}, "a widget kind is needed"},
      {{"timeline", "Timer"}, "unknown widget kind 'Timer'"},
      {{"timeline", "timer", "--family", "small"}, "unknown family 'small'"},
      {{"timeline", "timer", "--family", "systemLarge"}, "the widget 'timer' has no family systemLarge"},
      {{"snapshot", "timer", "--family"}, "--family needs a value"},
      {{"timeline", "timer", "--now", "12x"},
       "--now takes seconds since 1970 within the years 1970 to 9999, not '12x'"},
      {{"timeline", "timer", "--now", "1e30"}, "--now takes seconds since 1970 within the years 1970 to 9999"},
      {{"timeline", "timer", "--now", "-1e300"}, "--now takes seconds since 1970 within the years 1970 to 9999"},
      {{"timeline", "timer", "--now", "inf"}, "--now takes seconds since 1970"},
      {{"timeline", "timer", "--now", "1", "--now=2"}, "--now is given twice"},
      {{"placeholder", "timer", "recentTasks"}, "unexpected argument 'recentTasks'"},
      {{"timeline", "timer", "--colour", "red"}, "unknown option --colour"},
      {{"timeline", "timer", "-x"}, "unknown option -x"},
      {{"timeline", "timer", "--", "--help"}, "unexpected argument '--help'"},
      {{"list", "extra"}, "unexpected argument 'extra'"},
      {{"run", "--for", "-1"}, "--for takes a number from 0 on, not '-1'"},
      {{"render", "timer"}, "render needs --out FILE"},
      {{"render", "timer", "--out", ""}, "--out needs a file name, or - for the standard output"},
      {{"render", "timer", "--out", "picture.jpg"}, "--out must name a .png or .svg file, or -, not 'picture.jpg'"},
      {{"render", "timer", "--out", out, "--scale", "0"}, "--scale takes a number above 0 and at most 8, not '0'"},
      {{"render", "timer", "--out", out, "--scale", "1e30"}, "--scale takes a number above 0 and at most 8"},
      {{"render", "timer", "--out", "-", "--format", "jpg"}, "--format takes png or svg, not 'jpg'"},
      {{"render", "timer", "--out", out, "--format", "svg"}, "--format svg and --out '" + out + "' do not agree"},
      {{"render-all"}, "render-all needs --out DIR"},
      {{"render-all", "--out", "-"}, "render-all needs a folder name after --out, not '-'"},
      {{"render-all", "timer", "--out", "x"}, "unexpected argument 'timer'"},
      {{"press", "timer"}, "press needs either --x X --y Y or --plate N"},
      {{"press", "timer", "--x", "10"}, "press needs either --x X --y Y or --plate N"},
      {{"press", "timer", "--x", "500", "--y", "10"},
       "the point (500, 10) lies outside the widget's 170 × 170 points"},
      {{"press", "timer", "--plate", "1"}, "--plate is for the recent tasks widget only"},
      {{"press", "recentTasks", "--plate", "3"}, "--plate takes a plate from 1 to 2"},
      {{"press", "recentTasks", "--plate", "1.5"}, "--plate takes a plate from 1 to 2"},
      {{"press", "recentTasks", "--plate", "1", "--x", "3", "--y", "4"},
       "press takes either --x X --y Y or --plate N, not both"},
  };
  for (const auto& wrong : cases) {
    CommandRun result = run(wrong.arguments);
    EXPECT_EQ(result.status, 2) << wrong.message;
    EXPECT_EQ(result.output, "") << wrong.message;
    EXPECT_NE(result.errors.find("kestrona-widgets: " + wrong.message), std::string::npos) << result.errors;
    EXPECT_NE(result.errors.find("Run 'kestrona-widgets --help' for the usage."), std::string::npos);
  }
  EXPECT_FALSE(fs::exists(out));
}

TEST_F(CommandLineTest, HelpExplainsTheProgramAndEachCommand) {
  CommandRun help = run({"--help"});
  ASSERT_EQ(help.status, 0);
  EXPECT_EQ(help.errors, "");
  for (const WidgetCommand& command : widgetCommands()) {
    EXPECT_NE(help.output.find("  " + std::string(command.name) + " "), std::string::npos) << command.name;
    EXPECT_NE(help.output.find(command.summary), std::string::npos) << command.name;
  }
  EXPECT_NE(help.output.find("recentTasks               systemSmall, systemMedium, systemLarge"), std::string::npos);
  EXPECT_NE(help.output.find((widgetFile("KIND")).string()), std::string::npos) << "where the files are read";
  EXPECT_NE(help.output.find("Exit status: 0"), std::string::npos);

  for (const std::vector<std::string>& arguments : std::vector<std::vector<std::string>>{
           {"render", "--help"}, {"render", "timer", "-h"}, {"render", "--out", "x.png", "--help"}}) {
    CommandRun commandHelp = run(arguments);
    EXPECT_EQ(commandHelp.status, 0);
    EXPECT_EQ(commandHelp.output.rfind("Usage: kestrona-widgets render KIND", 0), 0u) << commandHelp.output;
    EXPECT_NE(commandHelp.output.find("--scale N"), std::string::npos);
  }
  EXPECT_EQ(run({"-h"}).output, help.output);
  CommandRun version = run({"--version"});
  EXPECT_EQ(version.status, 0);
  EXPECT_EQ(version.output.rfind("kestrona-widgets ", 0), 0u);
}

// A failed write says which path and why, as the operating system tells it.
TEST_F(CommandLineTest, WriteFailuresNameThePathAndTheReason) {
  fs::create_directories(directory.path() / "folder.png");
  const struct {
    std::vector<std::string> arguments;
    std::string message;
  } cases[] = {
      {{"render", "timer", "--out", (directory.path() / "missing" / "timer.png").string()},
       (directory.path() / "missing" / "timer.png").string() + "\" could not be written: No such file or directory"},
      {{"render", "timer", "--out", (directory.path() / "folder.png").string()},
       "\"" + (directory.path() / "folder.png").string() + "\" could not be written: Is a directory"},
  };
  for (const auto& failing : cases) {
    CommandRun result = run(failing.arguments);
    EXPECT_EQ(result.status, 1) << failing.message;
    EXPECT_EQ(result.output, "");
    EXPECT_NE(result.errors.find(failing.message), std::string::npos) << result.errors;
  }
  testing::writeFile(directory.path() / "file", "");
  CommandRun below = run({"render-all", "--out", (directory.path() / "file" / "gallery").string()});
  EXPECT_EQ(below.status, 1);
  EXPECT_NE(below.errors.find("Not a directory"), std::string::npos) << below.errors;
}

TEST_F(CommandLineTest, RenderWritesThePictureToAFileOrTheStandardOutput) {
  CommandRun png = run({"render", "timer", "--out", "-"});
  ASSERT_EQ(png.status, 0) << png.errors;
  EXPECT_EQ(png.output.substr(0, 8), "\x89PNG\r\n\x1a\n");
  CommandRun svg = run({"render", "recentTasks", "--family", "systemLarge", "--out", "-", "--format", "svg"});
  ASSERT_EQ(svg.status, 0) << svg.errors;
  EXPECT_EQ(svg.output.rfind("<?xml", 0), 0u);
  EXPECT_NE(svg.output.find(R"(width="364pt" height="382pt")"), std::string::npos);

  const fs::path file = directory.path() / "timer.svg";
  ASSERT_EQ(run({"render", "timer", "--out", file.string()}).status, 0);
  EXPECT_NE(testing::readFile(file).find("<svg"), std::string::npos);
  EXPECT_EQ(std::distance(fs::directory_iterator(directory.path()), fs::directory_iterator()), 1)
      << "the picture, and no temporary file left";
}

TEST_F(CommandLineTest, RenderAllWritesItsPageOnlyWhenEveryPictureIsThere) {
  const fs::path gallery = directory.path() / "gallery";
  CommandRun done = run({"render-all", "--out", gallery.string(), "--now", kNowText});
  ASSERT_EQ(done.status, 0) << done.errors;
  EXPECT_EQ(done.output, (gallery / "index.html").string() + "\n");
  EXPECT_EQ(std::distance(fs::directory_iterator(gallery), fs::directory_iterator()), 14) << "13 pictures and a page";
  const std::string page = testing::readFile(gallery / "index.html");
  EXPECT_LT(page.find("<section id=\"timer\">"), page.find("<section id=\"recentTasks\">")) << "the bundle's order";
  EXPECT_NE(page.find(R"(src="recentTasks-systemLarge.png" width="364" height="382")"), std::string::npos);
  EXPECT_NE(page.find("monthlyRevenueChart · systemSmall"), std::string::npos);
  EXPECT_EQ(page.find("palette/index.html"), std::string::npos) << "no palette sheet, no link";

  // A picture that can't be written: no page shows it.
  const fs::path broken = directory.path() / "broken";
  fs::create_directories(broken / "recentTasks-systemLarge.png");
  CommandRun failed = run({"render-all", "--out", broken.string()});
  EXPECT_EQ(failed.status, 1);
  EXPECT_NE(failed.errors.find("recentTasks-systemLarge.png\" could not be written: Is a directory"),
            std::string::npos) << failed.errors;
  EXPECT_FALSE(fs::exists(broken / "index.html"));

  testing::writeFile(gallery / "palette" / "index.html", "<html></html>");
  ASSERT_EQ(run({"render-all", "--out", gallery.string()}).status, 0);
  EXPECT_NE(testing::readFile(gallery / "index.html").find("href=\"palette/index.html\""), std::string::npos);
}

// A widget that falls back on stand-in data says once which file and why,
// and still shows what it shows without a file.
TEST_F(CommandLineTest, FallingBackOnStandInDataWarnsWithTheFileAndTheReason) {
  const std::string file = widgetFile("timer").string();
  const auto warning = [this](const std::vector<std::string>& arguments) {
    CommandRun result = run(arguments);
    EXPECT_EQ(result.status, 0) << result.errors;
    return result.errors;
  };
  EXPECT_EQ(warning({"snapshot", "timer"}),
            "kestrona-widgets: warning: The file \"" + file +
                "\" could not be read: No such file or directory; the timer widget shows its placeholder\n");
  testing::writeFile(widgetFile("timer"), R"({"timeEntryBeginTimestamp":-1e300})");
  EXPECT_NE(warning({"render", "timer", "--out", "-"}).find("\"" + file + "\" is damaged: Date <-1e+300> lies outside "
                                                            "the years 1970 to 9999"),
            std::string::npos);
  fs::remove(widgetFile("timer"));
  ASSERT_EQ(::mkfifo(widgetFile("timer").c_str(), 0600), 0);
  EXPECT_NE(warning({"timeline", "timer"}).find("could not be read: it is not a regular file"), std::string::npos);
  EXPECT_NE(warning({"snapshot", "recentTasks"}).find("the recentTasks widget shows its sample tasks"),
            std::string::npos);
  EXPECT_NE(warning({"snapshot", "weeklyRevenueChart"}).find("the weeklyRevenueChart widget shows an empty chart"),
            std::string::npos);
}

// Outside an application bundle the host has nowhere to send the link.
TEST_F(CommandLineTest, PressOnAPlateStartsItsTaskAndAFailedIntentSaysWhy) {
  CommandRun plate = run({"press", "recentTasks", "--family", "systemMedium", "--plate", "1"});
  EXPECT_EQ(plate.status, 1) << plate.errors;
  json pressed = plate.parsed();
  EXPECT_EQ(pressed["pressed"], "intent");
  EXPECT_EQ(pressed["command"], "start");
  EXPECT_EQ(pressed["result"], "failed");
  EXPECT_EQ(pressed["error"]["domain"], "TimerWidgetAppIntent.AppIntentError");
  EXPECT_EQ(pressed["error"]["code"], 1) << "taskNotFound";

  json last = run({"press", "recentTasks", "--family", "systemLarge", "--plate", "8"}).parsed();
  EXPECT_GT(last["y"].get<double>(), 300) << "plate 8 is in the bottom row";
  EXPECT_GT(last["x"].get<double>(), 182) << "plate 8 is in the right column";
  EXPECT_NE(last["taskId"], pressed["taskId"]);
}

}  // namespace
}  // namespace kestrona
