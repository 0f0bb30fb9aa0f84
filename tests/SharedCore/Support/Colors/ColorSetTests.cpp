#include "SharedCore/Support/Colors/ColorSet.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <limits>
#include <set>
#include <utility>
#include <vector>

#include "SharedCore/Support/Colors/CodableColor.h"
#include "SharedCore/Support/Colors/ColorConversion.h"
#include "SharedCore/Support/Colors/ColorHexParsing.h"
#include "SharedCore/Support/Colors/NamedColors.h"

namespace kestrona {
namespace {

using ID = ColorSet::ID;

Color displayP3(std::string_view hexString) {
  const RGBAComponents c = displayP3HexToRGBA(hexString);
  return Color::displayP3(c.red, c.green, c.blue, c.alpha);
}

TEST(ColorSetIDTest, RawValuesOutsideThePaletteGiveNoID) {
  EXPECT_EQ(fromRawValue<ID>(-3), std::nullopt);
  EXPECT_EQ(fromRawValue<ID>(18), std::nullopt);
  EXPECT_EQ(fromRawValue<ID>(17), ID::lightIndigo);
  EXPECT_EQ(fromRawValue<ID>(-2), ID::white);
  EXPECT_EQ(fromRawValue<ID>(10), ID::brown);
  std::set<std::int16_t> raws;
  for (ID id : allCases<ID>) {
    EXPECT_EQ(fromRawValue<ID>(rawValue(id)), id);
    raws.insert(rawValue(id));
  }
  EXPECT_EQ(raws.size(), 20u);
}

TEST(ColorSetTest, ColorsAreNamedAndResolvedFromTheirHexStrings) {
  for (ID id : allCases<ID>) {
    const ColorSet set(id);
    SCOPED_TRACE(rawValue(id));
    EXPECT_EQ(set.id(), id);
    EXPECT_EQ(set.baseColor().name(),
              std::string(set.displayP3HexString(false)) + std::string(set.displayP3HexString(true)));
    EXPECT_EQ(set.baseColor().resolved(Appearance::light()), displayP3(set.displayP3HexString(false)));
    EXPECT_EQ(set.baseColor().resolved(Appearance::dark()), displayP3(set.displayP3HexString(true)));
    EXPECT_EQ(set.backgroundColorOptimizedForLightContent().resolved(Appearance::light()),
              displayP3(set.displayP3HexBackgroundColorOptimizedForLightContent(false)));
    EXPECT_EQ(set.backgroundColorOptimizedForLightContent().resolved(Appearance::dark()),
              displayP3(set.displayP3HexBackgroundColorOptimizedForLightContent(true)));
  }
}

// The palette as the design lists it: raw value, the four hex strings (base
// light and dark, background light and dark), the base opacity and the
// running-button opacity, in declared order.
TEST(ColorSetTest, EveryPaletteRowHasItsRawValueHexStringsAndOpacities) {
  struct Row {
    ID id;
    std::int16_t raw;
    std::string_view baseLight, baseDark, backgroundLight, backgroundDark;
    float baseOpacity, runningButtonOpacity;
  };
  const Row rows[] = {
      {ID::white, -2, "#FFFFFF", "#FFFFFF", "#BABABA", "#6B6B6B", 0.2f, 0.25f},
      {ID::gray, -1, "#BBBBBB", "#6B6B6B", "#BABABA", "#6B6B6B", 0.2f, 0.25f},
      {ID::red, 0, "#EB1753", "#FF0048", "#EB1753", "#EB1753", 0.14f, 0.3f},
      {ID::brown, 10, "#A2845E", "#B79467", "#9B7D56", "#A37E4F", 0.2f, 0.25f},
      {ID::orange, 1, "#FF9500", "#FF9500", "#F18D00", "#F18D00", 0.14f, 0.25f},
      {ID::green2, 3, "#9CD824", "#A0E810", "#8EC71C", "#88B728", 0.2f, 0.25f},
      {ID::green, 4, "#28CD5F", "#05D74A", "#1FB551", "#22B553", 0.14f, 0.28f},
      {ID::teal, 14, "#55BEF0", "#55BEF0", "#5AB3D0", "#3AB8DE", 0.19f, 0.25f},
      {ID::blue, 6, "#008CF6", "#0091FF", "#007DDB", "#007DDB", 0.2f, 0.25f},
      {ID::violett, 7, "#B348E9", "#B449EA", "#A33BD7", "#8E39B9", 0.18f, 0.2f},
      {ID::lightPink, 8, "#FF73C4", "#FF8ACE", "#EF61B3", "#EF61B3", 0.19f, 0.3f},
      {ID::indigo, 15, "#605EEA", "#5654F3", "#5451E4", "#4B49D4", 0.17f, 0.25f},
      {ID::lightRed, 9, "#FF8084", "#FF8084", "#F16C70", "#F16C70", 0.19f, 0.25f},
      {ID::pink, 11, "#E12392", "#E41A90", "#EF61B3", "#EF61B3", 0.16f, 0.25f},
      {ID::yellow, 2, "#FFCC00", "#FFCC00", "#E1B400", "#DDB100", 0.15f, 0.25f},
      {ID::lightGreen, 13, "#39E68C", "#31F38F", "#2BCF7A", "#2ECB7A", 0.13f, 0.3f},
      {ID::cyan, 5, "#2BCAD0", "#3AE8E5", "#18B0B8", "#10A6AE", 0.15f, 0.3f},
      {ID::lightBlue, 12, "#7FC8EC", "#73DEFF", "#75C4EB", "#5ECBEC", 0.17f, 0.21f},
      {ID::lightViolett, 16, "#B385F8", "#B584FF", "#A776F0", "#A776F0", 0.18f, 0.25f},
      {ID::lightIndigo, 17, "#7D8EFA", "#8D9CFF", "#6778E4", "#6778E4", 0.15f, 0.21f},
  };
  ASSERT_EQ(std::size(rows), allCases<ID>.size());
  for (std::size_t index = 0; index < std::size(rows); ++index) {
    const Row& row = rows[index];
    SCOPED_TRACE(row.raw);
    EXPECT_EQ(allCases<ID>[index], row.id);
    EXPECT_EQ(rawValue(row.id), row.raw);
    const ColorSet set(row.id);
    EXPECT_EQ(set.displayP3HexString(false), row.baseLight);
    EXPECT_EQ(set.displayP3HexString(true), row.baseDark);
    EXPECT_EQ(set.displayP3HexBackgroundColorOptimizedForLightContent(false), row.backgroundLight);
    EXPECT_EQ(set.displayP3HexBackgroundColorOptimizedForLightContent(true), row.backgroundDark);
    EXPECT_EQ(set.sidebarTimerRunningBackgroundOpacity(false), row.baseOpacity);
    EXPECT_EQ(set.sidebarTimerRunningBackgroundOpacity(true), row.baseOpacity * 0.66f);
    EXPECT_EQ(set.runningStartPauseButtonBackgroundOpacity(false), row.runningButtonOpacity);
  }
}

TEST(ColorSetTest, PaletteRowsGiveTheirLightAndDarkValues) {
  const ColorSet red(ID::red);
  EXPECT_EQ(red.displayP3HexString(false), "#EB1753");
  EXPECT_EQ(red.displayP3HexString(true), "#FF0048");
  EXPECT_EQ(red.baseColor().resolved(Appearance::dark()), Color::displayP3(1, 0, 72 / 255.0, 1));

  const ColorSet orange(ID::orange);
  EXPECT_EQ(orange.baseColor().name(), "#FF9500#FF9500");
  EXPECT_EQ(orange.baseColor().resolved(Appearance::light()), orange.baseColor().resolved(Appearance::dark()));

  const ColorSet lightIndigo(ID::lightIndigo);
  EXPECT_EQ(lightIndigo.backgroundColorOptimizedForLightContent().name(), "#6778E4#6778E4");
  EXPECT_EQ(ColorSet(ID::gray).baseColor().name(), "#BBBBBB#6B6B6B");
}

TEST(ColorSetTest, DefaultAndWhiteAreMadeOnceFromTheirRows) {
  EXPECT_EQ(&ColorSet::defaultSet(), &ColorSet::defaultSet());
  EXPECT_EQ(ColorSet::defaultSet().id(), ID::gray);
  EXPECT_EQ(ColorSet::defaultSet(), ColorSet(ID::gray));
  EXPECT_EQ(ColorSet::defaultSet().backgroundColorOptimizedForLightContent().name(), "#BABABA#6B6B6B");

  EXPECT_EQ(ColorSet::white().id(), ID::white);
  EXPECT_EQ(ColorSet::white().baseColor().name(), "#FFFFFF#FFFFFF");
  EXPECT_EQ(ColorSet::white().backgroundColorOptimizedForLightContent(),
            ColorSet::defaultSet().backgroundColorOptimizedForLightContent());
}

TEST(ColorSetTest, OpacitiesAreComputedInSinglePrecision) {
  const ColorSet red(ID::red);
  EXPECT_EQ(red.startPauseButtonBackgroundOpacity(false), 0.14f * 1.65f);
  EXPECT_EQ(red.startPauseButtonBackgroundOpacity(true), 0.14f * 0.66f * 1.8f);
  EXPECT_EQ(red.sidebarTimerRunningBackgroundOpacity(false), 0.14f);
  EXPECT_EQ(red.sidebarTimerRunningBackgroundOpacity(true), 0.14f * 0.66f);

  const ColorSet violett(ID::violett);
  EXPECT_EQ(violett.runningSessionListRowBackgroundOpacity(true), 0.18f * 0.66f * 0.85f);
  EXPECT_EQ(violett.dashboardTimerRunningBackgroundOpacity(false), 0.18f * 0.6f);
  EXPECT_EQ(violett.runningTaskRowOpacity(true), 0.18f * 0.66f * 0.625f);

  EXPECT_EQ(ColorSet(ID::cyan).runningStartPauseButtonBackgroundOpacity(false), 0.3f);
  EXPECT_EQ(ColorSet(ID::lightIndigo).runningStartPauseButtonBackgroundOpacity(false), 0.21f);
  EXPECT_EQ(ColorSet(ID::cyan).runningStartPauseButtonBackgroundOpacity(true), 0.15f);
}

TEST(ColorSetTest, OnlyThreeSetsHaveAnOpaqueWhiteSidebarAndOnlyWhenLight) {
  for (ID id : allCases<ID>) {
    const ColorSet set(id);
    EXPECT_EQ(set.sidebarTimerOpaqueWhiteBackgroundOpacity(true), 0.0);
    const double light = set.sidebarTimerOpaqueWhiteBackgroundOpacity(false);
    switch (id) {
      case ID::green2: EXPECT_EQ(light, 0.85); break;
      case ID::lightBlue: EXPECT_EQ(light, 0.75); break;
      case ID::yellow: EXPECT_EQ(light, 0.7); break;
      default: EXPECT_EQ(light, 0.0) << rawValue(id);
    }
  }
}

TEST(ToRGBAComponentsTest, ConvertsThePaletteToDeviceRGBUnclamped) {
  ScopedAppearance dark(Appearance::dark());
  const RGBAComponents red = toRGBAComponents(ColorSet(ID::red).baseColor());
  EXPECT_EQ(red, convertDisplayP3ToDeviceRGB({1, 0, 72 / 255.0, 1}));
  EXPECT_GT(red.red, 1.0);
  EXPECT_LT(red.green, 0.0);

  const RGBAComponents white = toRGBAComponents(ColorSet::white().baseColor());
  EXPECT_NEAR(white.red, 1, 1e-12);
  EXPECT_NEAR(white.green, 1, 1e-12);
  EXPECT_NEAR(white.blue, 1, 1e-12);
  EXPECT_EQ(white.alpha, 1);
}

TEST(ToRGBAComponentsDeathTest, AnUnconvertibleColorEndsTheProcess) {
  const Color broken = Color::displayP3(std::numeric_limits<double>::quiet_NaN(), 0, 0, 1);
  EXPECT_DEATH(toRGBAComponents(broken), "Fatal error: Could not convert color to RGBA\\.");
}

TEST(NamedColorsTest, EachHasALightAndADarkValueAndConverts) {
  const Color* colors[] = {&NamedColors::systemBackground(), &NamedColors::secondarySystemBackground(),
                           &NamedColors::tertiarySystemBackground(), &NamedColors::label(),
                           &NamedColors::secondaryLabel(), &NamedColors::separator()};
  std::set<std::string> names;
  for (const Color* color : colors) {
    names.insert(color->name());
    EXPECT_NE(color->resolved(Appearance::light()), color->resolved(Appearance::dark())) << color->name();
  }
  EXPECT_EQ(names.size(), 6u);
  EXPECT_EQ(NamedColors::label().name(), "label");
  // Text is dark on light backgrounds and light on dark ones.
  EXPECT_LT(NamedColors::label().resolved(Appearance::light()).components().red, 0.5);
  EXPECT_GT(NamedColors::label().resolved(Appearance::dark()).components().red, 0.5);
  EXPECT_GT(NamedColors::systemBackground().resolved(Appearance::light()).components().red, 0.5);
  EXPECT_LT(NamedColors::systemBackground().resolved(Appearance::dark()).components().red, 0.5);
}

TEST(CodableColorTest, CodesUnderItsFourKeys) {
  const CodableColor color(0.25, 0.5, 1.5, -0.125);
  const nlohmann::json json = color;
  EXPECT_EQ(json, (nlohmann::json{{"red", 0.25}, {"green", 0.5}, {"blue", 1.5}, {"alpha", -0.125}}));
  EXPECT_EQ(json.get<CodableColor>(), color);
  EXPECT_EQ(nlohmann::json::parse(R"({"red":1,"green":0,"blue":0,"alpha":1})").get<CodableColor>(),
            CodableColor(1, 0, 0, 1));
}

// The code and coding path of the error that decoding json throws.
std::pair<ColorDecodingError::Code, std::vector<std::string>> decodingFailure(std::string_view json) {
  try {
    (void)nlohmann::json::parse(json).get<CodableColor>();
  } catch (const ColorDecodingError& error) {
    EXPECT_EQ(error.domain(), "DecodingError");
    EXPECT_FALSE(error.debugDescription().empty());
    return {error.kind(), error.codingPath()};
  }
  ADD_FAILURE() << "decoded without an error: " << json;
  return {};
}

TEST(CodableColorTest, DecodingFailuresAreTypedErrorsNamingTheKey) {
  using Code = ColorDecodingError::Code;
  using Path = std::vector<std::string>;
  EXPECT_EQ(decodingFailure(R"({"red":1,"green":0,"blue":0})"), std::pair(Code::keyNotFound, Path{"alpha"}));
  EXPECT_EQ(decodingFailure(R"({"red":true,"green":0,"blue":0,"alpha":1})"), std::pair(Code::typeMismatch, Path{"red"}));
  EXPECT_EQ(decodingFailure(R"({"red":1,"green":"1","blue":0,"alpha":1})"),
            std::pair(Code::typeMismatch, Path{"green"}));
  EXPECT_EQ(decodingFailure(R"({"red":1,"green":0,"blue":null,"alpha":1})"),
            std::pair(Code::valueNotFound, Path{"blue"}));
  EXPECT_EQ(decodingFailure(R"([1,0,0,1])"), std::pair(Code::typeMismatch, Path{}));
  EXPECT_EQ(decodingFailure("null"), std::pair(Code::typeMismatch, Path{}));
  // The same numbers as the record decoding's cases of the same names.
  EXPECT_EQ(static_cast<int>(Code::typeMismatch), 0);
  EXPECT_EQ(static_cast<int>(Code::valueNotFound), 1);
  EXPECT_EQ(static_cast<int>(Code::keyNotFound), 2);

  // A failed decoding leaves the target as it was; unknown keys are ignored.
  CodableColor target(0.5, 0.5, 0.5, 0.5);
  EXPECT_THROW(nlohmann::json::parse(R"({"red":1,"green":0,"blue":0})").get_to(target), ColorDecodingError);
  EXPECT_EQ(target, CodableColor(0.5, 0.5, 0.5, 0.5));
  nlohmann::json::parse(R"({"red":1,"green":0,"blue":0,"alpha":1,"space":"p3"})").get_to(target);
  EXPECT_EQ(target, CodableColor(1, 0, 0, 1));
}

TEST(CodableColorTest, ComponentsThatJSONCannotCarryAreRefused) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double infinity = std::numeric_limits<double>::infinity();
  for (const auto& [color, key] : {std::pair(CodableColor(nan, 0, 0, 1), "red"),
                                   std::pair(CodableColor(0, 0, -infinity, 1), "blue"),
                                   std::pair(CodableColor(0, 0, 0, infinity), "alpha")}) {
    try {
      const nlohmann::json json = color;
      ADD_FAILURE() << "encoded as " << json.dump();
    } catch (const ColorEncodingError& error) {
      EXPECT_EQ(error.domain(), "EncodingError");
      EXPECT_EQ(error.kind(), ColorEncodingError::Code::invalidValue);
      EXPECT_EQ(error.codingPath(), std::vector<std::string>{key});
    }
  }
}

TEST(CodableColorTest, ReadsComponentsWithoutConversion) {
  const CodableColor fromP3(Color::displayP3(1, 0, 0, 0.5));
  EXPECT_EQ(fromP3, CodableColor(1, 0, 0, 0.5));
  EXPECT_EQ(fromP3.color(), Color::rgb(1, 0, 0, 0.5));
}

}  // namespace
}  // namespace kestrona
