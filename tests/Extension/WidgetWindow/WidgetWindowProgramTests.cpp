// The real kestrona-widget-window, on an X server of its own (Xvfb) at two
// pixels per point, inside a fake application whose program records the
// links it is asked to open. Screenshots are compared with our own drawing
// of the same widgets; clicks and keys come from xdotool. Nothing sleeps for
// a fixed time: every wait polls with a deadline. With KESTRONA_SCREENSHOT_DIR
// set, the screenshots are kept there as PNG files.
#include <cairo.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstring>
#include <fstream>
#include <functional>
#include <optional>
#include <sstream>
#include <thread>

#include <nlohmann/json.hpp>

#include "Extension/WidgetProcess/KestronaWidgets.h"
#include "Extension/WidgetWindow/WidgetBoard.h"
#include "Platform/View/Renderer.h"
#include "tests/Platform/Workspace/ProgramFixtures.h"
#include "tests/support/TemporaryDirectory.h"

extern char** environ;

namespace kestrona {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr int kScale = 2;
// The share of a widget's pixels that may differ from our own drawing of it:
// the X server places glyphs on whole pixels where an image surface may not,
// which moves a large text by a pixel. Another picture differs far more.
constexpr double kMatching = 0.01;
constexpr const char* kTitle = "^Kestrona Widgets$";

bool waitUntil(double seconds, const std::function<bool()>& done) {
  const auto deadline = Clock::now() + std::chrono::duration<double>(seconds);
  while (!done()) {
    if (Clock::now() > deadline) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return true;
}

// A program run in the background with its output in files, in the test's
// environment as it is at the start; ended with SIGTERM when still running,
// and by the kernel when the test process dies first (setpriv --pdeathsig),
// so that a test killed by its time limit leaves no X server behind.
class Child {
 public:
  Child(std::vector<std::string> arguments, const fs::path& output) {
    arguments.insert(arguments.begin(), {"setpriv", "--pdeathsig", "TERM", "--"});
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    const std::string errors = output.string() + ".err";
    posix_spawn_file_actions_addopen(&actions, 1, output.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    posix_spawn_file_actions_addopen(&actions, 2, errors.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    std::vector<char*> argv;
    for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);
    EXPECT_EQ(posix_spawnp(&pid_, argv[0], &actions, nullptr, argv.data(), environ), 0) << arguments[0];
    posix_spawn_file_actions_destroy(&actions);
  }
  ~Child() { terminate(); }

  // The exit status once it has ended within seconds; none otherwise.
  std::optional<int> waitFor(double seconds) {
    if (pid_ > 0 && waitUntil(seconds, [this] { return ::waitpid(pid_, &status_, WNOHANG) == pid_; })) pid_ = 0;
    if (pid_ > 0) return std::nullopt;
    return WIFEXITED(status_) ? WEXITSTATUS(status_) : 128 + WTERMSIG(status_);
  }

  std::optional<int> terminate() {
    if (pid_ > 0) ::kill(pid_, SIGTERM);
    return waitFor(20);
  }

 private:
  pid_t pid_ = 0;
  int status_ = 0;
};

int shell(const std::string& command) { return std::system(command.c_str()); }

// A screenshot read from xwd's format: 24 or 32 bits per pixel, either byte
// order, as 0xRRGGBB.
struct Screenshot {
  int width = 0;
  int height = 0;
  std::vector<std::uint32_t> pixels;

  std::uint32_t at(int x, int y) const { return pixels[static_cast<std::size_t>(y) * width + x] & 0xFFFFFF; }

  static Screenshot read(const fs::path& file) {
    const std::string bytes = testing::readFile(file);
    auto field = [&](int index) {
      std::uint32_t value = 0;
      for (int byte = 0; byte < 4; ++byte) value = value << 8 | static_cast<unsigned char>(bytes.at(index * 4 + byte));
      return value;
    };
    Screenshot shot{static_cast<int>(field(4)), static_cast<int>(field(5)), {}};
    const bool leastFirst = field(7) == 0;
    const std::uint32_t step = field(11) / 8;
    const std::size_t start = field(0) + field(19) * 12;
    for (int y = 0; y < shot.height; ++y) {
      for (int x = 0; x < shot.width; ++x) {
        const std::size_t at = start + y * field(12) + x * step;
        std::uint32_t pixel = 0;
        for (std::uint32_t byte = 0; byte < step; ++byte) {
          const std::uint32_t value = static_cast<unsigned char>(bytes.at(at + byte));
          pixel |= leastFirst ? value << (8 * byte) : value << (8 * (step - 1 - byte));
        }
        shot.pixels.push_back(pixel);
      }
    }
    return shot;
  }

  void keep(const std::string& name) {
    const char* folder = std::getenv("KESTRONA_SCREENSHOT_DIR");
    if (!folder) return;
    for (std::uint32_t& pixel : pixels) pixel |= 0xFF000000;
    cairo_surface_t* surface = cairo_image_surface_create_for_data(reinterpret_cast<unsigned char*>(pixels.data()),
                                                                   CAIRO_FORMAT_ARGB32, width, height, width * 4);
    cairo_surface_write_to_png(surface, (fs::path(folder) / (name + ".png")).c_str());
    cairo_surface_destroy(surface);
  }
};

class WidgetWindowProgramTest : public ::testing::Test {
 protected:
  WidgetWindowProgramTest() {
    environment.set("XDG_DATA_HOME", (directory.path() / "data").string());
    environment.set("XDG_CONFIG_HOME", (directory.path() / "config").string());
    environment.set("TZ", "UTC");
    environment.set("LC_ALL", "en_US.UTF-8");
    environment.set("WAYLAND_DISPLAY", std::nullopt);
  }

  testing::TemporaryDirectory directory;
  testing::ScopedEnvironment environment;
};

class WidgetWindowOnXvfbTest : public WidgetWindowProgramTest {
 protected:
  WidgetWindowOnXvfbTest() {
    environment.set("GDK_SCALE", std::to_string(kScale));
    environment.set("GDK_BACKEND", "x11");
    environment.set("GTK_A11Y", "none");
    startServer();
  }

  // Xvfb on a display it finds free itself (-displayfd), as DISPLAY.
  void startServer() {
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    server.emplace(std::vector<std::string>{"Xvfb", "-displayfd", std::to_string(ends[1]), "-screen", "0",
                                            "1200x1400x24", "-nolisten", "tcp"},
                   directory.path() / "xvfb");
    ::close(ends[1]);
    pollfd ready{ends[0], POLLIN, 0};
    char number[16] = {};
    ASSERT_EQ(::poll(&ready, 1, 20000), 1) << "Xvfb did not start (is the xvfb package installed?)";
    ASSERT_GT(::read(ends[0], number, sizeof number - 1), 0);
    ::close(ends[0]);
    environment.set("DISPLAY", ":" + std::string(number, std::strcspn(number, "\n")));
  }

  void writeWidgetFile(const std::string& kind, const nlohmann::json& record) {
    testing::writeFile(directory.path() / "data" / KestronaWidgets::kAppGroupName / "widgetData" / kind,
                       record.dump());
  }

  // The window's output lines of one event.
  std::vector<nlohmann::json> events(const std::string& name) const {
    std::vector<nlohmann::json> found;
    std::istringstream lines(testing::readFile(directory.path() / "window"));
    for (std::string line; std::getline(lines, line);) {
      nlohmann::json event = nlohmann::json::parse(line, nullptr, false);
      if (!event.is_discarded() && event["event"] == name) found.push_back(event);
    }
    return found;
  }

  Screenshot screenshot(const std::string& name) {
    const fs::path file = directory.path() / (name + ".xwd");
    EXPECT_EQ(shell("xwd -silent -name 'Kestrona Widgets' -out '" + file.string() + "'"), 0);
    Screenshot shot = Screenshot::read(file);
    shot.keep(name);
    return shot;
  }

  // The share of pixels of placement index on the screen that differ from
  // our own drawing of the widget at the screen's scale (its opaque pixels).
  double mismatch(const Screenshot& shot, std::size_t index) const {
    WidgetBoard board(KestronaWidgets().body(), defaultWidgetChoices(), kestrona::Clock::current(), nullptr,
                      std::nullopt);
    const LayoutTree& tree = board.placements()[index].tree;
    const int width = static_cast<int>(tree.canvasSize().width) * kScale;
    const int height = static_cast<int>(tree.canvasSize().height) * kScale;
    cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width, height);
    cairo_surface_set_device_scale(surface, kScale, kScale);
    cairo_t* context = cairo_create(surface);
    draw(tree, context);
    cairo_destroy(context);
    cairo_surface_flush(surface);
    const auto* drawn = reinterpret_cast<const std::uint32_t*>(cairo_image_surface_get_data(surface));
    const Point origin = origins.at(index);
    int compared = 0;
    int different = 0;
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x < width; ++x) {
        const std::uint32_t expected = drawn[y * width + x];
        if (expected >> 24 != 0xFF) continue;
        const std::uint32_t seen = shot.at(static_cast<int>(origin.x) * kScale + x, static_cast<int>(origin.y) * kScale + y);
        auto channelsDiffer = [&](int shift) { return std::abs(int(seen >> shift & 0xFF) - int(expected >> shift & 0xFF)) > 2; };
        ++compared;
        different += channelsDiffer(0) || channelsDiffer(8) || channelsDiffer(16);
      }
    }
    cairo_surface_destroy(surface);
    return compared == 0 ? 1.0 : static_cast<double>(different) / compared;
  }

  // Clicks at point of placement index, in points on the widget.
  void click(std::size_t index, Point point) {
    const Point origin = origins.at(index);
    const std::string x = std::to_string(static_cast<int>((origin.x + point.x) * kScale));
    const std::string y = std::to_string(static_cast<int>((origin.y + point.y) * kScale));
    EXPECT_EQ(shell(std::string("xdotool search --name '") + kTitle + "' mousemove --window %1 " + x + " " + y +
                    " click 1"),
              0);
  }

  std::string opened() const { return testing::readFile(recorded); }

  std::optional<Child> server;
  fs::path recorded;
  // Where the window's widgets stand, in points on its surface.
  std::vector<Point> origins;
};

nlohmann::json color(double red, double green, double blue) {
  return {{"redComponent", red}, {"greenComponent", green}, {"blueComponent", blue}, {"alphaComponent", 1}};
}

nlohmann::json stoppedTimer(const std::string& taskName, const nlohmann::json& taskColor, double now) {
  return {{"taskId", "x-kestrona://S/Task/p1"}, {"taskName", taskName},       {"taskColor", taskColor},
          {"folderName", "Client Work"},        {"startButtonBackgroundOpacity", 0.2},
          {"timeEntryBeginTimestamp", now - 8280}, {"timeEntryEndTimestamp", now - 600}};
}

TEST_F(WidgetWindowOnXvfbTest, ShowsTheWidgetsLiveAndPressesReachTheApplication) {
  const double now = std::floor(Date::now().timeIntervalSince1970());
  writeWidgetFile("timer", stoppedTimer("Concept sketches", color(0.37, 0.36, 0.9), now));
  nlohmann::json tasks = nlohmann::json::array();
  for (const char* name : {"Concept sketches", "Client calls", "Invoices"}) {
    tasks.push_back({{"taskId", "x-kestrona://S/Task/p" + std::to_string(tasks.size() + 2)}, {"taskName", name},
                     {"taskColor", color(0.95, 0.45, 0.3)}, {"confirmedDuration", 3900},
                     {"taskBackgroundColorOptimizedForLightContent", color(0.8, 0.35, 0.22)}});
  }
  writeWidgetFile("recentTasks", {{"tasks", tasks}});
  nlohmann::json bars = nlohmann::json::array();
  for (int day = 3; day >= 0; --day) {
    const nlohmann::json segment = {{"taskId", "p"}, {"taskColor", color(0.3, 0.78, 0.5)}, {"value", 3600 * (day + 1)}};
    bars.push_back({{"date", now - day * 86400.0}, {"timeEntryCount", 1}, {"totalValue", 3600 * (day + 1)},
                    {"segments", {segment}}});
  }
  writeWidgetFile("weeklyTimeTrackedChart", {{"bars", bars}, {"firstDayOfWeek", 2}});

  const fs::path application = testing::layOutApplication(
      directory.path(), R"(printf '%s|%s|%s|%s\n' "$#" "$1" "$2" "$KESTRONA_OPEN_ACTIVATES" >> "$(dirname "$0")/../recorded")");
  recorded = application / "Contents/recorded";
  const fs::path bundle = application / "Contents/PlugIns/KestronaWidgetWindow.appex";
  fs::create_directories(bundle / "bin");
  fs::copy_file(KESTRONA_WIDGET_WINDOW_INFO, bundle / "Info.json");
  const fs::path program = bundle / "bin/kestrona-widget-window";
  fs::copy_file(KESTRONA_WIDGET_WINDOW_EXECUTABLE, program);
  Child window({program.string()}, directory.path() / "window");
  ASSERT_TRUE(waitUntil(60, [&] { return !events("arranged").empty(); }))
      << testing::readFile(directory.path() / "window.err");
  const nlohmann::json arrangement = events("arranged").back();
  for (const nlohmann::json& widget : arrangement["widgets"]) origins.push_back({widget["x"], widget["y"]});
  ASSERT_EQ(origins.size(), 3u);
  EXPECT_EQ(arrangement["scale"], kScale);

  // The three default widgets, drawn as our renderer draws them at the
  // screen's scale, on the light window background.
  const Screenshot first = screenshot("1-three-widgets");
  for (std::size_t index = 0; index < 3; ++index) EXPECT_LT(mismatch(first, index), kMatching) << "widget " << index;
  EXPECT_EQ(first.at(4, 4), 0xECECECu) << "the window's light background";

  // The second plate starts its task by a deep link that does not bring the
  // application forward; the chart opens the week's report, which does.
  click(1, {265, 48});
  ASSERT_TRUE(waitUntil(10, [&] { return opened().find('\n') != std::string::npos; }))
      << testing::readFile(directory.path() / "window.err");
  EXPECT_EQ(opened(), "2|open-url|deeplink-startTimer://?taskId=x-kestrona://S/Task/p3|0\n");
  click(2, {250, 60});
  ASSERT_TRUE(waitUntil(10, [&] { return events("opened").size() == 1; }));
  EXPECT_EQ(events("opened")[0]["result"], "performed");
  EXPECT_NE(opened().find("2|open-url|deeplink-openWeeklyReports://|1\n"), std::string::npos) << opened();
  EXPECT_EQ(events("pressed")[0]["result"], "performed");

  // A rewritten timer file shows within a second: a screenshot taken
  // before the second is up shows the new timer as our renderer draws it.
  const auto written = Clock::now();
  writeWidgetFile("timer", stoppedTimer("Quarterly report", color(0.95, 0.75, 0.2), now));
  std::optional<double> shownAfter;
  waitUntil(1, [&] {
    const double taken = std::chrono::duration<double>(Clock::now() - written).count();
    if (mismatch(screenshot("2-rewritten-timer"), 0) < kMatching) shownAfter = taken;
    return shownAfter.has_value();
  });
  ASSERT_TRUE(shownAfter) << "the new timer did not show within a second";
  EXPECT_LT(*shownAfter, 1.0);

  // Tab reaches the timer's button first; Enter presses it.
  EXPECT_EQ(shell(std::string("xdotool search --name '") + kTitle + "' key --window %1 Tab Return"), 0);
  ASSERT_TRUE(waitUntil(10, [&] { return events("pressed").size() == 3; }));
  EXPECT_EQ(events("pressed")[2]["deepLink"], "deeplink-startTimer://?taskId=x-kestrona://S/Task/p1");
  screenshot("3-focus-on-the-timer-button");

  EXPECT_EQ(window.terminate(), 0);
  const std::string settings = testing::readFile(directory.path() / "config/kestrona/app.kestrona.widget-window.json");
  EXPECT_NE(settings.find("WidgetWindow.height"), std::string::npos) << settings;
}

TEST_F(WidgetWindowProgramTest, WithoutADisplayItFailsAtOnceAndBadArgumentsAreRefused) {
  const std::tuple<std::vector<std::string>, std::optional<std::string>, int, std::string> runs[] = {
      {{}, std::nullopt, 1, "cannot open a display"},
      {{}, ":4242", 1, "cannot open a display"},
      {{"--kind", "stopwatch"}, std::nullopt, 2, "unknown widget kind 'stopwatch'"},
      {{"--help"}, std::nullopt, 0, ""},
  };
  for (const auto& [arguments, display, status, message] : runs) {
    environment.set("DISPLAY", display);
    std::vector<std::string> command = {KESTRONA_WIDGET_WINDOW_EXECUTABLE};
    command.insert(command.end(), arguments.begin(), arguments.end());
    EXPECT_EQ(Child(command, directory.path() / "run").waitFor(20), status) << message;
    EXPECT_NE(testing::readFile(directory.path() / "run.err").find(message), std::string::npos) << message;
  }
  EXPECT_EQ(testing::readFile(directory.path() / "run").rfind("usage: kestrona-widget-window", 0), 0u);
}

}  // namespace
}  // namespace kestrona
