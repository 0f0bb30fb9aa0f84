#include <gtest/gtest.h>

#include "Platform/View/Layout.h"
#include "tests/Platform/View/FixedWidthMeasurer.h"
#include "tests/Platform/View/LayoutSnapshot.h"

namespace kestrona {
namespace {

const FontCatalog& testCatalog() {
  static const FontCatalog catalog({"Inter", "Quicksand"});
  return catalog;
}

LayoutTree layOut(const View& root, Size canvas, LayoutEnvironment environment = {}) {
  static const testing::FixedWidthMeasurer measurer;
  return layout(root, canvas, measurer, testCatalog(), environment);
}

// Text of size 10: 5 points per character, 12 points per line.
Text text10(std::string string) { return Text(std::move(string)).font(Font::system(10)); }

// The frames of the nodes of kind, in drawing order, as "x,y wxh; ...".
std::string frames(const LayoutTree& tree, ViewKind kind) {
  std::string text;
  for (const LaidOutNode* node : tree.nodesOfKind(kind))
    text += (text.empty() ? "" : "; ") + testing::frameText(node->frame);
  return text;
}

TEST(LayoutTest, PlacesEachKindOfViewAsDeclarativeLayoutDoes) {
  using Kind = ViewKind;
  const View white = ColorFill(Color::white());
  const std::string twenty = "abcdefghijklmnopqrst";
  const struct {
    const char* what;
    View view;
    Size canvas;
    Kind kind;
    const char* frames;
  } cases[] = {
      // A stack is as wide as its widest child, as long as its children
      // and spacing (8 unless stated), centred on the canvas.
      {"leading column", VStack(HorizontalAlignment::leading, 2, {text10("ab"), text10("abcd")}),
       {100, 100}, Kind::text, "40,37 10x12; 40,51 20x12"},
      {"trailing column", VStack(HorizontalAlignment::trailing, 2, {text10("ab"), text10("abcd")}),
       {100, 100}, Kind::text, "50,37 10x12; 40,51 20x12"},
      {"default spacing", VStack({text10("ab"), text10("abcd")}), {100, 100}, Kind::text, "45,34 10x12; 40,54 20x12"},
      {"spacer takes the rest", HStack(VerticalAlignment::top, 0, {text10("abcd"), Spacer(), white.frame(36, 36)}),
       {200, 100}, Kind::spacer, "20,32 144x0"},
      {"spacer keeps its minimum",
       HStack(VerticalAlignment::center, 0, {white.frame(60, 10), Spacer(12), white.frame(60, 10)}),
       {100, 20}, Kind::spacer, "44,10 12x0"},
      {"flexible children share", HStack(VerticalAlignment::center, 0, {white, white.frame(20, std::nullopt), white}),
       {100, 50}, Kind::shape, "0,0 40x50; 40,0 20x50; 60,0 40x50"},
      {"texts that do not fit share",
       HStack(VerticalAlignment::center, 10, {text10(twenty).lineLimit(1), text10(twenty + "!").lineLimit(1)}),
       {110, 50}, Kind::text, "0,19 50x12; 60,19 50x12"},
      {"layered, top leading", ZStack(Alignment::topLeading(), {white.frame(40, 30), text10("ab")}),
       {100, 100}, Kind::text, "30,35 10x12"},
      {"layered, bottom trailing", ZStack(Alignment::bottomTrailing(), {white.frame(40, 30), text10("ab")}),
       {100, 100}, Kind::text, "60,53 10x12"},
      {"padding", white.padding(EdgeInsets{13, 13, 16, 16}), {170, 170}, Kind::shape, "13,13 141x141"},
      {"padding of some edges", text10("ab").padding(Edge::top | Edge::leading, 3),
       {100, 100}, Kind::text, "46.5,45.5 10x12"},
      {"fixed frame", text10("ab").frame(36, 36, Alignment::bottomTrailing()), {100, 100}, Kind::text, "58,56 10x12"},
      {"width-only frame", text10("ab").frame(50, std::nullopt), {100, 100}, Kind::fixedFrame, "25,44 50x12"},
      {"infinite maximum, leading",
       text10("abcd").frame(FlexibleFrame{.maxWidth = kInfinity, .alignment = Alignment::leading()}),
       {100, 50}, Kind::text, "0,19 20x12"},
      {"infinite maximum, trailing",
       text10("abcd").frame(FlexibleFrame{.maxWidth = kInfinity, .alignment = Alignment::trailing()}),
       {100, 50}, Kind::text, "80,19 20x12"},
      {"infinite maxima",
       text10("abcd").frame(FlexibleFrame{.maxWidth = kInfinity, .maxHeight = kInfinity,
                                          .alignment = Alignment::topLeading()}),
       {100, 50}, Kind::flexibleFrame, "0,0 100x50"},
      {"minimum width", text10("ab").frame(FlexibleFrame{.minWidth = 50}),
       {100, 100}, Kind::flexibleFrame, "25,44 50x12"},
      // A maximum narrower than the text wraps it inside the frame.
      {"maximum width", text10("ab").frame(FlexibleFrame{.maxWidth = 6}), {100, 100}, Kind::text, "47.5,38 5x24"},
      // A minimum larger than the offered space wins over the offer.
      {"minimum height", white.frame(FlexibleFrame{.minHeight = 80}), {100, 50}, Kind::flexibleFrame, "0,-15 100x80"},
      {"background", text10("abcd").padding(5).background(white), {100, 100}, Kind::shape, "35,39 30x22"},
      {"overlay", white.frame(40, 40).overlay(TemplateImage(TemplateSymbol::play, 12), Alignment::topTrailing()),
       {100, 100}, Kind::image, "58,30 12x12"},
      // An offset moves its child, not the layout around it.
      {"offset", HStack(VerticalAlignment::top, 0, {text10("ab").offset(10, -5), text10("cd")}),
       {100, 100}, Kind::text, "50,39 10x12; 50,44 10x12"},
      {"wrapped text", text10(twenty), {50, 100}, Kind::text, "0,38 50x24"},
  };
  for (const auto& c : cases) EXPECT_EQ(frames(layOut(c.view, c.canvas), c.kind), c.frames) << c.what;
}

TEST(LayoutTest, BackgroundsDrawBehindAndOverlaysInFront) {
  const auto background = layOut(text10("abcd").background(ColorFill(Color::white())), {100, 100});
  const auto overlay = layOut(text10("abcd").overlay(ColorFill(Color::white())), {100, 100});
  EXPECT_EQ(background.root().children.at(0).kind, ViewKind::shape);
  EXPECT_EQ(overlay.root().children.at(1).kind, ViewKind::shape);
}

TEST(LayoutTest, EffectsLinksAndPressTargetsKeepTheirChildsFrameAndOpacitiesMultiply) {
  const URL url = *URL::fromString("deeplink-openApp://");
  const auto tree = layOut(text10("ab").opacity(0.5).scaleEffect(5).clipShape(Shape::circle()).link(url), {100, 100});
  for (const LaidOutNode* node : tree.nodes()) EXPECT_EQ(testing::frameText(node->frame), "45,44 10x12");

  const auto layers = layOut(VStack({text10("dim").opacity(0.6), text10("plain")}).opacity(0.5), {100, 100});
  EXPECT_DOUBLE_EQ(layers.effectiveOpacity(*layers.findText("dim")), 0.3);
  EXPECT_DOUBLE_EQ(layers.effectiveOpacity(*layers.findText("plain")), 0.5);
}

TEST(LayoutTest, SizeReaderBuildsItsContentForTheSpaceItIsGiven) {
  std::vector<Size> offered;
  const View reader = SizeReader([&offered](Size size) {
    offered.push_back(size);
    return View(ColorFill(Color::white()).frame(size.width / 2, size.height / 2));
  });
  const auto tree = layOut(VStack(HorizontalAlignment::center, 0, {text10("ab"), reader}), {100, 100});
  // The reader takes what the text leaves; its content sits at its top-leading corner.
  EXPECT_EQ(frames(tree, ViewKind::sizeReader), "0,12 100x88");
  EXPECT_EQ(frames(tree, ViewKind::shape), "0,12 50x44");
  EXPECT_EQ(offered.at(offered.size() - 1), (Size{100, 88}));
}

TEST(TextLayoutTest, WrapsWithinTheOfferedWidthUnlessLimited) {
  const std::string twenty = "abcdefghijklmnopqrst";
  const LaidOutText wrapped = *layOut(text10(twenty), {50, 100}).findText(twenty)->text;
  EXPECT_EQ(wrapped.lineCount, 2);
  EXPECT_FALSE(wrapped.isTruncated);
  const LaidOutText limited = *layOut(text10(twenty).lineLimit(1), {50, 100}).findText(twenty)->text;
  EXPECT_EQ(limited.lineCount, 1);
  EXPECT_TRUE(limited.isTruncated);
  EXPECT_EQ(limited.widthLimit, 50.0);
}

TEST(TextLayoutTest, ShrinksToTheLargestScaleThatFitsBeforeTruncating) {
  const std::string twenty = "abcdefghijklmnopqrst";  // 100 points wide at full size
  const auto shrunk = layOut(text10(twenty).lineLimit(1).minimumScaleFactor(0.5), {80, 50});
  const LaidOutText& fitted = *shrunk.findText(twenty)->text;
  EXPECT_FALSE(fitted.isTruncated);
  EXPECT_LE(fitted.scale, 0.8);
  EXPECT_GE(fitted.scale, 0.79);
  EXPECT_DOUBLE_EQ(fitted.font.size, 10 * fitted.scale);
  EXPECT_LE(shrunk.findText(twenty)->frame.width(), 80);

  const auto floor = layOut(text10(twenty).lineLimit(1).minimumScaleFactor(0.9), {80, 50});
  const LaidOutText& truncated = *floor.findText(twenty)->text;
  EXPECT_TRUE(truncated.isTruncated);
  EXPECT_DOUBLE_EQ(truncated.scale, 0.9);
  EXPECT_DOUBLE_EQ(truncated.font.size, 9);

  // Text that fits keeps its size whatever its minimum scale factor.
  const auto fits = layOut(text10("abc").lineLimit(1).minimumScaleFactor(0.5), {80, 50});
  EXPECT_DOUBLE_EQ(fits.findText("abc")->text->scale, 1);
}

// A name with a line break or a tab stays one line of words: each is drawn
// as a space, not as the end of the visible text or a gap to a tab stop.
TEST(TextLayoutTest, OneLineTextShowsLineBreaksAndTabsAsSpaces) {
  const std::pair<const char*, const char*> cases[] = {
      {"Client\ncalls", "Client calls"}, {"Client\r\ncalls", "Client calls"},
      {"Client\tcalls", "Client calls"}, {"Q3\u2028review\u2029notes", "Q3 review notes"},
      {"\n\tIndented", "  Indented"},
  };
  for (const auto& [written, shown] : cases) {
    const auto tree = layOut(text10(written).lineLimit(1), {200, 50});
    const LaidOutText& text = *tree.nodesOfKind(ViewKind::text)[0]->text;
    EXPECT_EQ(text.string, shown);
    EXPECT_FALSE(text.isTruncated);
  }
  // Text of several lines keeps its breaks.
  EXPECT_EQ(layOut(text10("Client\ncalls"), {200, 50}).nodesOfKind(ViewKind::text)[0]->text->string, "Client\ncalls");
}

TEST(ColourResolutionTest, ColoursResolveAgainstTheLayoutsAppearanceInDeviceRGB) {
  const Color adaptive = Color::dynamic("adaptive", [](const Appearance& appearance) {
    return appearance.isDark() ? Color::deviceRGB(0.9, 0.9, 0.9, 1) : Color::deviceRGB(0.1, 0.1, 0.1, 1);
  });
  EXPECT_EQ(*layOut(ColorFill(adaptive), {10, 10}).root().color, (RGBAComponents{0.9, 0.9, 0.9, 1}));
  EXPECT_EQ(*layOut(ColorFill(adaptive), {10, 10}, LayoutEnvironment{Appearance::light(), Date()}).root().color,
            (RGBAComponents{0.1, 0.1, 0.1, 1}));
  // Display P3's red lies outside device RGB: red above 1, green below 0.
  const RGBAComponents tint =
      *layOut(TemplateImage(TemplateSymbol::pause).tint(Color::displayP3(1, 0, 0, 0.5)), {40, 40}).root().color;
  EXPECT_NEAR(tint.red, 1.0931, 5e-4);
  EXPECT_NEAR(tint.green, -0.2267, 5e-4);
}

TEST(LiveTimerTest, ShowsTheWholeSecondsSinceItsBeginAtTheLayoutsMoment) {
  const Date begin(1'000'000.9);
  auto shownAt = [&](double seconds) {
    const auto tree = layOut(Text::timer(begin), {170, 50}, LayoutEnvironment{Appearance::dark(), Date(seconds)});
    return tree.nodesOfKind(ViewKind::text)[0]->text->string;
  };
  EXPECT_EQ(shownAt(1'000'001.1), "0:01");  // both instants are floored to seconds
  EXPECT_EQ(shownAt(1'000'000 + 3599), "59:59");
  EXPECT_EQ(shownAt(1'000'000 + 3600), "1:00:00");
  EXPECT_EQ(shownAt(1'000'000 + 36 * 3600 + 61), "36:01:01");
  EXPECT_EQ(shownAt(999'000), "0:00");  // a begin in the future counts as none yet
}

TEST(ViewPreconditionTest, RejectsLengthsAndFactorsOutOfRange) {
  EXPECT_DEATH(ColorFill(Color::white()).opacity(1.5), "An opacity lies between 0 and 1");
  EXPECT_DEATH(ColorFill(Color::white()).frame(-1, 10), "A frame's width must not be negative");
  EXPECT_DEATH(ColorFill(Color::white()).frame(FlexibleFrame{.minWidth = 20, .maxWidth = 10}),
               "A frame's minimum width must not exceed its maximum");
  EXPECT_DEATH(Text("x").lineLimit(0), "A line limit must be positive");
  EXPECT_DEATH(Text("x").minimumScaleFactor(0), "A minimum scale factor lies in");
}

}  // namespace
}  // namespace kestrona
