#include "WidgetData/Records/ColorTransferable.h"

#include <gtest/gtest.h>

#include <limits>

#include "Platform/Color/Appearance.h"
#include "WidgetData/Records/RecordCoding.h"

namespace kestrona {
namespace {

TEST(ColorTransferable, DeviceColoursPassThroughUnchanged) {
  Color color = Color::deviceRGB(0.2, 0.4, 0.6, 0.8);
  ColorTransferable transferable = toTransferable(color);
  EXPECT_EQ(transferable, (ColorTransferable{0.2, 0.4, 0.6, 0.8}));
  EXPECT_EQ(transferable.color(), color);
  EXPECT_EQ(toTransferable(Color::white()), (ColorTransferable{1, 1, 1, 1}));
}

TEST(ColorTransferable, DisplayP3ColoursAreConvertedAndKeepTheirExtendedRange) {
  // Pure Display P3 red lies outside sRGB: its device components leave 0...1.
  ColorTransferable red = toTransferable(Color::displayP3(1, 0, 0, 0.5));
  EXPECT_GT(red.redComponent, 1.0);
  EXPECT_LT(red.greenComponent, 0.0);
  EXPECT_LT(red.blueComponent, 0.0);
  EXPECT_EQ(red.alphaComponent, 0.5);

  // Grey is the same in both spaces.
  ColorTransferable grey = toTransferable(Color::displayP3(0.5, 0.5, 0.5, 1));
  EXPECT_NEAR(grey.redComponent, 0.5, 1e-9);
  EXPECT_NEAR(grey.greenComponent, 0.5, 1e-9);
  EXPECT_NEAR(grey.blueComponent, 0.5, 1e-9);

  // What the files carry comes back as the same colour, out-of-range components included.
  ColorTransferable back = decodeWidgetRecord<ColorTransferable>(encodeWidgetRecord(red));
  EXPECT_EQ(back, red);
  EXPECT_EQ(back.color().components(), (RGBAComponents{red.redComponent, red.greenComponent, red.blueComponent, 0.5}));
  EXPECT_EQ(back.color().colorSpace(), ColorSpace::deviceRGB);
}

TEST(ColorTransferable, DynamicColoursResolveAgainstTheCurrentAppearance) {
  Color dynamic = Color::dynamic("test.background", [](const Appearance& appearance) {
    return appearance.isDark() ? Color::deviceRGB(0.1, 0.1, 0.1, 1) : Color::deviceRGB(0.9, 0.9, 0.9, 1);
  });
  EXPECT_EQ(toTransferable(dynamic).redComponent, 0.9);
  ScopedAppearance dark(Appearance::dark());
  EXPECT_EQ(toTransferable(dynamic).redComponent, 0.1);
}

TEST(ColorTransferableDeathTest, AColourWithoutDeviceFormEndsTheProcess) {
  Color broken = Color::displayP3(std::numeric_limits<double>::quiet_NaN(), 0, 0, 1);
  EXPECT_DEATH(toTransferable(broken), "Fatal error: Could not convert color to RGBA.");
}

}  // namespace
}  // namespace kestrona
