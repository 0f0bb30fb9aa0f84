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
#include "tests/support/ExpectThrow.h"
#include "tests/support/RawValueContract.h"

namespace kestrona {
namespace {

using ID = ColorSet::ID;

Color displayP3(std::string_view hexString) {
  const RGBAComponents c = displayP3HexToRGBA(hexString);
  return Color::displayP3(c.red, c.green, c.blue, c.alpha);
}

// Raw values are stored with every task: a renumbered case would recolour
// tasks.
TEST(ColorSetIDTest, RawValuesAreTheStoredNumbers) {
  testing::expectRawValues<ID>({-2, -1, 0, 10, 1, 3, 4, 14, 6, 7, 8, 15, 9, 11, 2, 13, 5, 12, 16, 17});
  EXPECT_EQ(fromRawValue<ID>(-3), std::nullopt);
  EXPECT_EQ(fromRawValue<ID>(18), std::nullopt);
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
  const auto error =
      testing::thrownBy<ColorDecodingError>([&] { (void)nlohmann::json::parse(json).get<CodableColor>(); });
  if (!error) return {};
  EXPECT_EQ(error->domain(), "DecodingError");
  return {error->kind(), error->codingPath()};
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
    const auto error = testing::thrownBy<ColorEncodingError>([&] { const nlohmann::json json = color; });
    ASSERT_TRUE(error);
    EXPECT_EQ(error->kind(), ColorEncodingError::Code::invalidValue);
    EXPECT_EQ(error->codingPath(), std::vector<std::string>{key});
  }
}

TEST(CodableColorTest, ReadsComponentsWithoutConversion) {
  const CodableColor fromP3(Color::displayP3(1, 0, 0, 0.5));
  EXPECT_EQ(fromP3, CodableColor(1, 0, 0, 0.5));
  EXPECT_EQ(fromP3.color(), Color::rgb(1, 0, 0, 0.5));
}

}  // namespace
}  // namespace kestrona
