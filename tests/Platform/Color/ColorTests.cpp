#include "Platform/Color/Color.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <thread>

#include "Platform/Color/Appearance.h"

namespace kestrona {
namespace {

void expectComponentsNear(const RGBAComponents& actual, const RGBAComponents& expected, double tolerance) {
  EXPECT_NEAR(actual.red, expected.red, tolerance);
  EXPECT_NEAR(actual.green, expected.green, tolerance);
  EXPECT_NEAR(actual.blue, expected.blue, tolerance);
  EXPECT_NEAR(actual.alpha, expected.alpha, tolerance);
}

// Reference values of the Display P3 primaries in extended sRGB, as colour
// management references publish them.
TEST(ColorConversionTest, DisplayP3PrimariesLeaveTheDeviceGamutUnclamped) {
  expectComponentsNear(convertDisplayP3ToDeviceRGB({1, 0, 0, 1}), {1.0931, -0.2267, -0.1501, 1}, 5e-4);
  expectComponentsNear(convertDisplayP3ToDeviceRGB({0, 1, 0, 1}), {-0.5116, 1.0183, -0.3107, 1}, 5e-4);
  // Blue is nearly the same primary in both spaces.
  const RGBAComponents blue = convertDisplayP3ToDeviceRGB({0, 0, 1, 1});
  EXPECT_GT(blue.blue, 1.0);
  EXPECT_NEAR(blue.red, 0.0, 0.01);
}

TEST(ColorConversionTest, NeutralsAndAlphaAreKept) {
  for (double gray : {0.0, 0.002, 0.2, 0.5, 1.0}) {
    expectComponentsNear(convertDisplayP3ToDeviceRGB({gray, gray, gray, 0.25}), {gray, gray, gray, 0.25}, 1e-9);
  }
}

TEST(ColorConversionTest, RoundTripRecoversOutOfGamutValues) {
  const std::array<RGBAComponents, 4> samples{{
      {1.0931, -0.2267, -0.1501, 1}, {0.3, 0.6, 0.9, 0.5}, {-0.2, 1.4, 0.001, 1}, {0.0005, 0.02, 0.04, 1}}};
  for (const RGBAComponents& sample : samples) {
    expectComponentsNear(convertDisplayP3ToDeviceRGB(convertDeviceRGBToDisplayP3(sample)), sample, 1e-9);
  }
}

TEST(ColorTest, UsingColorSpaceConvertsOnlyAcrossSpaces) {
  const Color p3Red = Color::displayP3(1, 0, 0, 0.5);
  const std::optional<Color> deviceRed = p3Red.usingColorSpace(ColorSpace::deviceRGB);
  ASSERT_TRUE(deviceRed.has_value());
  EXPECT_EQ(deviceRed->colorSpace(), ColorSpace::deviceRGB);
  expectComponentsNear(deviceRed->components(), {1.0931, -0.2267, -0.1501, 0.5}, 5e-4);

  const std::optional<Color> same = p3Red.usingColorSpace(ColorSpace::displayP3);
  ASSERT_TRUE(same.has_value());
  EXPECT_EQ(*same, p3Red);
}

TEST(ColorTest, NonFiniteComponentsHaveNoConversion) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double infinity = std::numeric_limits<double>::infinity();
  EXPECT_FALSE(Color::displayP3(nan, 0, 0, 1).usingColorSpace(ColorSpace::deviceRGB).has_value());
  EXPECT_FALSE(Color::deviceRGB(0, 0, 0, infinity).usingColorSpace(ColorSpace::deviceRGB).has_value());
}

TEST(ColorTest, EqualityComparesSpaceAndComponentsOrDynamicNames) {
  EXPECT_EQ(Color::deviceRGB(1, 0, 0, 1), Color::rgb(1, 0, 0, 1));
  EXPECT_NE(Color::deviceRGB(1, 0, 0, 1), Color::displayP3(1, 0, 0, 1));
  EXPECT_NE(Color::deviceRGB(1, 0, 0, 1), Color::deviceRGB(1, 0, 0, 0.5));

  const auto white = [](const Appearance&) { return Color::white(); };
  const auto black = [](const Appearance&) { return Color::black(); };
  EXPECT_EQ(Color::dynamic("ink", white), Color::dynamic("ink", black));
  EXPECT_NE(Color::dynamic("ink", white), Color::dynamic("paper", white));
  EXPECT_NE(Color::dynamic("ink", white), Color::white());
}

TEST(AppearanceTest, BestMatchIsTheFirstNameTheAppearanceAnswersTo) {
  const std::array<Appearance::Name, 2> darkThenLight{Appearance::Name::dark, Appearance::Name::light};
  const std::array<Appearance::Name, 1> darkOnly{Appearance::Name::dark};
  EXPECT_EQ(Appearance::dark().bestMatch(darkThenLight), Appearance::Name::dark);
  EXPECT_EQ(Appearance::light().bestMatch(darkThenLight), Appearance::Name::light);
  EXPECT_EQ(Appearance::light().bestMatch(darkOnly), std::nullopt);
  EXPECT_EQ(Appearance::dark().bestMatch({}), std::nullopt);
}

TEST(AppearanceTest, ScopedAppearanceNestsAndStaysOnItsThread) {
  EXPECT_EQ(Appearance::current(), Appearance::light());
  {
    ScopedAppearance dark(Appearance::dark());
    EXPECT_EQ(Appearance::current(), Appearance::dark());
    {
      ScopedAppearance light(Appearance::light());
      EXPECT_EQ(Appearance::current(), Appearance::light());
    }
    EXPECT_EQ(Appearance::current(), Appearance::dark());
    Appearance seenElsewhere = Appearance::dark();
    std::thread([&] { seenElsewhere = Appearance::current(); }).join();
    EXPECT_EQ(seenElsewhere, Appearance::light());
  }
  EXPECT_EQ(Appearance::current(), Appearance::light());
}

Color lightOrDark() {
  return Color::dynamic("lightOrDark", [](const Appearance& appearance) {
    return appearance.isDark() ? Color::deviceRGB(0.1, 0.1, 0.1, 1) : Color::displayP3(0.9, 0.9, 0.9, 1);
  });
}

TEST(DynamicColorTest, ResolvesAgainstTheGivenOrCurrentAppearance) {
  const Color color = lightOrDark();
  EXPECT_TRUE(color.isDynamic());
  EXPECT_EQ(color.name(), "lightOrDark");
  EXPECT_EQ(color.resolved(Appearance::dark()), Color::deviceRGB(0.1, 0.1, 0.1, 1));
  EXPECT_EQ(color.resolved(Appearance::light()), Color::displayP3(0.9, 0.9, 0.9, 1));

  EXPECT_EQ(color.colorSpace(), ColorSpace::displayP3);
  EXPECT_EQ(color.components(), (RGBAComponents{0.9, 0.9, 0.9, 1}));
  ScopedAppearance dark(Appearance::dark());
  EXPECT_EQ(color.colorSpace(), ColorSpace::deviceRGB);
  const std::optional<Color> converted = color.usingColorSpace(ColorSpace::deviceRGB);
  ASSERT_TRUE(converted.has_value());
  EXPECT_FALSE(converted->isDynamic());
  EXPECT_EQ(*converted, Color::deviceRGB(0.1, 0.1, 0.1, 1));
}

TEST(DynamicColorTest, ProviderMayAnswerWithAnotherDynamicColor) {
  const Color outer = Color::dynamic("outer", [](const Appearance&) { return lightOrDark(); });
  EXPECT_EQ(outer.resolved(Appearance::dark()), Color::deviceRGB(0.1, 0.1, 0.1, 1));
}

Color endless(const Appearance&) { return Color::dynamic("endless", endless); }

TEST(DynamicColorDeathTest, ProviderChainWithoutEndEndsTheProcess) {
  const Color color = Color::dynamic("endless", endless);
  EXPECT_DEATH((void)color.resolved(Appearance::light()),
               "Fatal error: The dynamic colour endless does not resolve to a fixed colour");
  EXPECT_DEATH((void)color.components(), "does not resolve to a fixed colour");
}

}  // namespace
}  // namespace kestrona
