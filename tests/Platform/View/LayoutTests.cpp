#include <gtest/gtest.h>

#include "Platform/View/Layout.h"
#include "tests/Platform/View/FixedWidthMeasurer.h"

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

void expectFrame(const LaidOutNode& node, Rect expected) {
  EXPECT_DOUBLE_EQ(node.frame.minX(), expected.minX());
  EXPECT_DOUBLE_EQ(node.frame.minY(), expected.minY());
  EXPECT_DOUBLE_EQ(node.frame.width(), expected.width());
  EXPECT_DOUBLE_EQ(node.frame.height(), expected.height());
}

void expectFrame(const LayoutTree& tree, std::string_view text, Rect expected) {
  const LaidOutNode* node = tree.findText(text);
  ASSERT_NE(node, nullptr) << "no text " << text;
  SCOPED_TRACE(text);
  expectFrame(*node, expected);
}

TEST(StackLayoutTest, VerticalStackSpacesChildrenAndAlignsThemAcross) {
  const auto leading = layOut(VStack(HorizontalAlignment::leading, 2, {text10("ab"), text10("abcd")}), {100, 100});
  // The stack is 20 wide (its widest child) and 12 + 2 + 12 high, centred.
  expectFrame(leading.root(), {{40, 37}, {20, 26}});
  expectFrame(leading, "ab", {{40, 37}, {10, 12}});
  expectFrame(leading, "abcd", {{40, 51}, {20, 12}});

  const auto trailing = layOut(VStack(HorizontalAlignment::trailing, 2, {text10("ab"), text10("abcd")}), {100, 100});
  expectFrame(trailing, "ab", {{50, 37}, {10, 12}});

  const auto centred = layOut(VStack({text10("ab"), text10("abcd")}), {100, 100});
  // The default spacing is 8.
  expectFrame(centred, "ab", {{45, 34}, {10, 12}});
  expectFrame(centred, "abcd", {{40, 54}, {20, 12}});
}

TEST(StackLayoutTest, SpacerTakesWhatTheOtherChildrenLeave) {
  const View button = ColorFill(Color::white()).frame(36, 36);
  const auto tree = layOut(HStack(VerticalAlignment::top, 0, {text10("abcd"), Spacer(), button}), {200, 100});
  // The row is as high as the button and spans the whole width.
  expectFrame(tree.root(), {{0, 32}, {200, 36}});
  expectFrame(tree, "abcd", {{0, 32}, {20, 12}});
  const auto spacers = tree.nodesOfKind(ViewKind::spacer);
  ASSERT_EQ(spacers.size(), 1u);
  expectFrame(*spacers[0], {{20, 32}, {144, 0}});
  expectFrame(*tree.nodesOfKind(ViewKind::fixedFrame)[0], {{164, 32}, {36, 36}});
}

TEST(StackLayoutTest, SpacerKeepsItsMinimumLengthWhenSpaceRunsOut) {
  const auto tree =
      layOut(HStack(VerticalAlignment::center, 0,
                    {ColorFill(Color::white()).frame(60, 10), Spacer(12), ColorFill(Color::white()).frame(60, 10)}),
             {100, 20});
  EXPECT_DOUBLE_EQ(tree.nodesOfKind(ViewKind::spacer)[0]->frame.width(), 12);
  EXPECT_DOUBLE_EQ(tree.root().frame.width(), 132);
}

TEST(StackLayoutTest, FlexibleChildrenShareTheRemainingSpaceEqually) {
  const auto tree = layOut(
      HStack(VerticalAlignment::center, 0,
             {ColorFill(Color::white()), ColorFill(Color::black()).frame(20, std::nullopt), ColorFill(Color::white())}),
      {100, 50});
  const auto shapes = tree.nodesOfKind(ViewKind::shape);
  ASSERT_EQ(shapes.size(), 3u);
  expectFrame(*shapes[0], {{0, 0}, {40, 50}});
  expectFrame(*shapes[1], {{40, 0}, {20, 50}});
  expectFrame(*shapes[2], {{60, 0}, {40, 50}});
}

TEST(StackLayoutTest, ChildrenThatDoNotFitShareTheSpaceAndTruncate) {
  const std::string twenty = "abcdefghijklmnopqrst";
  const auto tree =
      layOut(HStack(VerticalAlignment::center, 10, {text10(twenty).lineLimit(1), text10(twenty + "!").lineLimit(1)}),
             {110, 50});
  const auto texts = tree.nodesOfKind(ViewKind::text);
  ASSERT_EQ(texts.size(), 2u);
  EXPECT_DOUBLE_EQ(texts[0]->frame.width(), 50);
  EXPECT_DOUBLE_EQ(texts[1]->frame.width(), 50);
  EXPECT_DOUBLE_EQ(texts[1]->frame.minX(), 60);
  EXPECT_TRUE(texts[0]->text->isTruncated);
  EXPECT_TRUE(texts[1]->text->isTruncated);
}

TEST(StackLayoutTest, LayeredStackIsAsLargeAsItsLargestChildAndAlignsEach) {
  const auto tree =
      layOut(ZStack(Alignment::topLeading(), {ColorFill(Color::white()).frame(40, 30), text10("ab")}), {100, 100});
  expectFrame(tree.root(), {{30, 35}, {40, 30}});
  expectFrame(tree, "ab", {{30, 35}, {10, 12}});

  const auto bottomTrailing =
      layOut(ZStack(Alignment::bottomTrailing(), {ColorFill(Color::white()).frame(40, 30), text10("ab")}), {100, 100});
  expectFrame(bottomTrailing, "ab", {{60, 53}, {10, 12}});
}

TEST(FrameLayoutTest, PaddingInsetsItsChild) {
  const auto tree = layOut(ColorFill(Color::white()).padding(EdgeInsets{13, 13, 16, 16}), {170, 170});
  expectFrame(*tree.nodesOfKind(ViewKind::shape)[0], {{13, 13}, {141, 141}});

  const auto someEdges = layOut(text10("ab").padding(Edge::top | Edge::leading, 3), {100, 100});
  expectFrame(someEdges.root(), {{43.5, 42.5}, {13, 15}});
  expectFrame(someEdges, "ab", {{46.5, 45.5}, {10, 12}});
}

TEST(FrameLayoutTest, FixedFrameTakesItsSizeAndAlignsItsChild) {
  const auto tree = layOut(text10("ab").frame(36, 36, Alignment::bottomTrailing()), {100, 100});
  expectFrame(tree.root(), {{32, 32}, {36, 36}});
  expectFrame(tree, "ab", {{58, 56}, {10, 12}});

  // A frame with only a width keeps its child's height.
  const auto widthOnly = layOut(text10("ab").frame(50, std::nullopt), {100, 100});
  expectFrame(widthOnly.root(), {{25, 44}, {50, 12}});
}

TEST(FrameLayoutTest, InfiniteMaximumFillsTheOfferedSpaceInItsAlignment) {
  const auto leading =
      layOut(text10("abcd").frame(FlexibleFrame{.maxWidth = kInfinity, .alignment = Alignment::leading()}), {100, 50});
  expectFrame(leading.root(), {{0, 19}, {100, 12}});
  expectFrame(leading, "abcd", {{0, 19}, {20, 12}});

  const auto trailing =
      layOut(text10("abcd").frame(FlexibleFrame{.maxWidth = kInfinity, .alignment = Alignment::trailing()}), {100, 50});
  expectFrame(trailing, "abcd", {{80, 19}, {20, 12}});

  const auto both = layOut(text10("abcd").frame(FlexibleFrame{
                               .maxWidth = kInfinity, .maxHeight = kInfinity, .alignment = Alignment::topLeading()}),
                           {100, 50});
  expectFrame(both.root(), {{0, 0}, {100, 50}});
  expectFrame(both, "abcd", {{0, 0}, {20, 12}});
}

TEST(FrameLayoutTest, MinimumAndMaximumBoundsClampTheChild) {
  const auto minimum = layOut(text10("ab").frame(FlexibleFrame{.minWidth = 50}), {100, 100});
  EXPECT_DOUBLE_EQ(minimum.root().frame.width(), 50);

  // A maximum narrower than the text makes it wrap inside the frame.
  const auto maximum = layOut(text10("ab").frame(FlexibleFrame{.maxWidth = 6}), {100, 100});
  EXPECT_DOUBLE_EQ(maximum.root().frame.width(), 6);
  EXPECT_EQ(maximum.findText("ab")->text->lineCount, 2);

  // A minimum larger than the offered space wins over the offer.
  const auto overflowing = layOut(ColorFill(Color::white()).frame(FlexibleFrame{.minHeight = 80}), {100, 50});
  EXPECT_DOUBLE_EQ(overflowing.root().frame.height(), 80);
}

TEST(FrameLayoutTest, BackgroundAndOverlayTakeTheChildsSizeAndDrawInOrder) {
  const auto background = layOut(text10("abcd").padding(5).background(ColorFill(Color::white())), {100, 100});
  const LaidOutNode& root = background.root();
  ASSERT_EQ(root.children.size(), 2u);
  EXPECT_EQ(root.children[0].kind, ViewKind::shape);
  EXPECT_EQ(root.children[1].kind, ViewKind::padding);
  expectFrame(root.children[0], root.children[1].frame);
  expectFrame(root, {{35, 39}, {30, 22}});

  const auto overlay = layOut(ColorFill(Color::white())
                                  .frame(40, 40)
                                  .overlay(TemplateImage(TemplateSymbol::play, 12), Alignment::topTrailing()),
                              {100, 100});
  ASSERT_EQ(overlay.root().children.size(), 2u);
  EXPECT_EQ(overlay.root().children[0].kind, ViewKind::fixedFrame);
  EXPECT_EQ(overlay.root().children[1].kind, ViewKind::image);
  expectFrame(overlay.root().children[1], {{58, 30}, {12, 12}});
}

TEST(FrameLayoutTest, EffectsLinksAndPressTargetsKeepTheirChildsFrame) {
  const URL url = *URL::fromString("deeplink-openApp://");
  const auto tree = layOut(text10("ab").opacity(0.5).scaleEffect(5).clipShape(Shape::circle()).link(url), {100, 100});
  for (const LaidOutNode* node : tree.nodes()) {
    SCOPED_TRACE(static_cast<int>(node->kind));
    expectFrame(*node, {{45, 44}, {10, 12}});
  }
}

TEST(FrameLayoutTest, NestedOpacitiesMultiply) {
  const auto tree = layOut(VStack({text10("dim").opacity(0.6), text10("plain")}).opacity(0.5), {100, 100});
  EXPECT_DOUBLE_EQ(tree.effectiveOpacity(*tree.findText("dim")), 0.3);
  EXPECT_DOUBLE_EQ(tree.effectiveOpacity(*tree.findText("plain")), 0.5);
  EXPECT_DOUBLE_EQ(tree.effectiveOpacity(tree.root()), 0.5);
}

TEST(FrameLayoutTest, OffsetMovesTheChildButNotTheLayout) {
  const auto tree = layOut(HStack(VerticalAlignment::top, 0, {text10("ab").offset(10, -5), text10("cd")}), {100, 100});
  const LaidOutNode& offset = *tree.nodesOfKind(ViewKind::offset)[0];
  expectFrame(offset, {{40, 44}, {10, 12}});
  expectFrame(tree, "ab", {{50, 39}, {10, 12}});
  expectFrame(tree, "cd", {{50, 44}, {10, 12}});
}

TEST(FrameLayoutTest, SizeReaderBuildsItsContentForTheSpaceItIsGiven) {
  std::vector<Size> offered;
  const View reader = SizeReader([&offered](Size size) {
    offered.push_back(size);
    return View(ColorFill(Color::white()).frame(size.width / 2, size.height / 2));
  });
  const auto tree = layOut(VStack(HorizontalAlignment::center, 0, {text10("ab"), reader}), {100, 100});
  // The reader takes what the text leaves and lays its content out at its
  // top-leading corner.
  expectFrame(*tree.nodesOfKind(ViewKind::sizeReader)[0], {{0, 12}, {100, 88}});
  expectFrame(*tree.nodesOfKind(ViewKind::shape)[0], {{0, 12}, {50, 44}});
  ASSERT_FALSE(offered.empty());
  EXPECT_EQ(offered.back(), (Size{100, 88}));
}

TEST(TextLayoutTest, WrapsWithinTheOfferedWidthUnlessLimited) {
  const std::string twenty = "abcdefghijklmnopqrst";
  const auto wrapped = layOut(text10(twenty), {50, 100});
  EXPECT_EQ(wrapped.findText(twenty)->text->lineCount, 2);
  expectFrame(wrapped, twenty, {{0, 38}, {50, 24}});
  EXPECT_FALSE(wrapped.findText(twenty)->text->isTruncated);

  const auto limited = layOut(text10(twenty).lineLimit(1), {50, 100});
  EXPECT_EQ(limited.findText(twenty)->text->lineCount, 1);
  EXPECT_TRUE(limited.findText(twenty)->text->isTruncated);
  EXPECT_EQ(limited.findText(twenty)->text->widthLimit, 50.0);
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

TEST(TextLayoutTest, CarriesItsFontFamilyWeightAndColour) {
  const Color blue = Color::deviceRGB(0, 0, 1, 1);
  const auto tree =
      layOut(VStack({Text("Concept").font(Font::system(17, Font::Weight::bold)).foregroundColor(blue),
                     Text("0:12:00").font(Font::system(26, Font::Weight::semibold, Font::Design::rounded))}),
             {170, 170});
  const LaidOutText& name = *tree.findText("Concept")->text;
  EXPECT_EQ(name.font, (ResolvedFont{"Inter", 17, Font::Weight::bold, false}));
  EXPECT_EQ(name.color, (RGBAComponents{0, 0, 1, 1}));
  const LaidOutText& duration = *tree.findText("0:12:00")->text;
  EXPECT_EQ(duration.font, (ResolvedFont{"Quicksand", 26, Font::Weight::semibold, false}));
  // The default text colour is the dark scheme's primary text: white.
  EXPECT_EQ(duration.color, (RGBAComponents{1, 1, 1, 1}));
}

TEST(ColourResolutionTest, DynamicColoursResolveAgainstTheLayoutsAppearance) {
  const Color adaptive = Color::dynamic("adaptive", [](const Appearance& appearance) {
    return appearance.isDark() ? Color::deviceRGB(0.9, 0.9, 0.9, 1) : Color::deviceRGB(0.1, 0.1, 0.1, 1);
  });
  const View fill = ColorFill(adaptive);
  EXPECT_EQ(*layOut(fill, {10, 10}).root().color, (RGBAComponents{0.9, 0.9, 0.9, 1}));
  EXPECT_EQ(*layOut(fill, {10, 10}, LayoutEnvironment{Appearance::light(), Date()}).root().color,
            (RGBAComponents{0.1, 0.1, 0.1, 1}));
}

TEST(ColourResolutionTest, DisplayP3ColoursAreConvertedToDeviceRGB) {
  const auto tree = layOut(TemplateImage(TemplateSymbol::pause).tint(Color::displayP3(1, 0, 0, 0.5)), {40, 40});
  const RGBAComponents tint = *tree.root().color;
  // Display P3's red lies outside device RGB: red above 1, green below 0.
  EXPECT_NEAR(tint.red, 1.0931, 5e-4);
  EXPECT_NEAR(tint.green, -0.2267, 5e-4);
  EXPECT_DOUBLE_EQ(tint.alpha, 0.5);
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
