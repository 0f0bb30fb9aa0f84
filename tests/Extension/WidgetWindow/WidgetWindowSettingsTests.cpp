// The widgets a window shows: from the command line, and kept in user
// defaults for the next run.
#include <gtest/gtest.h>

#include "Extension/WidgetProcess/CommandLine.h"
#include "Extension/WidgetProcess/KestronaWidgets.h"
#include "Extension/WidgetWindow/WidgetWindowOptions.h"
#include "Extension/WidgetWindow/WidgetWindowSettings.h"
#include "tests/support/ExpectThrow.h"
#include "tests/support/TemporaryDirectory.h"

namespace kestrona {
namespace {

using Family = WidgetFamily;
using Code = CommandLineErrorCode;

TEST(WidgetWindowOptionsTest, EachKindAddsAWidgetInTheFamilyThatFollowsIt) {
  const std::vector<WidgetConfiguration> widgets = KestronaWidgets().body();
  const WidgetWindowOptions options = parseWidgetWindowOptions(
      {"--kind", "recentTasks", "--family=systemLarge", "--kind=timer", "--kind", "timer", "--family", "systemMedium"},
      widgets);
  EXPECT_EQ(options.widgets, (std::vector<WidgetChoice>{{"recentTasks", Family::systemLarge},
                                                        {"timer", Family::systemSmall},
                                                        {"timer", Family::systemMedium}}));
  EXPECT_FALSE(options.help);
  EXPECT_TRUE(parseWidgetWindowOptions({"--help"}, widgets).help);
  EXPECT_TRUE(parseWidgetWindowOptions({}, widgets).widgets.empty());

  const struct {
    std::vector<std::string> arguments;
    Code code;
  } wrong[] = {
      {{"--kind", "stopwatch"}, Code::unknownKind},
      {{"--kind"}, Code::missingValue},
      {{"--family", "systemSmall"}, Code::unexpectedArgument},
      {{"--kind", "timer", "--family", "systemLarge"}, Code::unsupportedFamily},
      {{"--kind", "timer", "--family", "systemHuge"}, Code::unknownFamily},
      {{"--kind", "timer", "--family", "systemSmall", "--family", "systemSmall"}, Code::unexpectedArgument},
      {{"timer"}, Code::unexpectedArgument},
  };
  for (const auto& example : wrong) {
    auto error = testing::thrownBy<CommandLineError>([&] { parseWidgetWindowOptions(example.arguments, widgets); });
    EXPECT_EQ(error.value_or(CommandLineError(Code::badValue, "")).kind(), example.code);
  }
}

TEST(WidgetWindowSettingsTest, KeepsTheChoiceAndSizeAndReadsOnlyWhatTheBundleCanShow) {
  testing::TemporaryDirectory directory;
  const std::vector<WidgetConfiguration> widgets = KestronaWidgets().body();
  std::shared_ptr<UserDefaults> defaults = UserDefaults::make("window", directory.path());
  EXPECT_EQ(WidgetWindowSettings::read(*defaults, widgets), WidgetWindowSettings{});

  const WidgetWindowSettings kept{{{"monthlyRevenueChart", Family::systemSmall}, {"timer", Family::systemMedium}},
                                  Size{800, 420}};
  kept.write(*defaults);
  ASSERT_NO_THROW(defaults->synchronize());
  EXPECT_EQ(WidgetWindowSettings::read(*UserDefaults::make("window", directory.path()), widgets), kept);

  using Dictionary = PropertyValue::Dictionary;
  defaults->set(PropertyValue::Array{Dictionary{{"kind", "stopwatch"}, {"family", "systemSmall"}},
                                     Dictionary{{"kind", "timer"}, {"family", "systemLarge"}},
                                     Dictionary{{"kind", "timer"}}, PropertyValue("timer"),
                                     Dictionary{{"kind", "recentTasks"}, {"family", "systemLarge"}}},
                "WidgetWindow.widgets");
  defaults->set(0, "WidgetWindow.width");
  const WidgetWindowSettings read = WidgetWindowSettings::read(*defaults, widgets);
  EXPECT_EQ(read.widgets, (std::vector<WidgetChoice>{{"recentTasks", Family::systemLarge}}));
  EXPECT_FALSE(read.windowSize);
}

}  // namespace
}  // namespace kestrona
