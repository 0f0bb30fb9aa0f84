#include "tests/Platform/View/LayoutSnapshot.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <sstream>

#include "Platform/Intents/AppIntent.h"
#include "tests/support/TemporaryDirectory.h"

namespace kestrona::testing {
namespace {

std::string number(double value) {
  char buffer[32];
  std::snprintf(buffer, sizeof buffer, "%.2f", std::abs(value) < 0.005 ? 0.0 : value);
  std::string text = buffer;
  text.erase(text.find_last_not_of('0') + 1);
  if (text.back() == '.') text.pop_back();
  return text;
}

std::string colourText(const RGBAComponents& colour) {
  char buffer[16];
  auto byte = [](double component) { return static_cast<int>(std::lround(std::clamp(component, 0.0, 1.0) * 255)); };
  std::snprintf(buffer, sizeof buffer, "#%02x%02x%02x%02x", byte(colour.red), byte(colour.green), byte(colour.blue),
                byte(colour.alpha));
  return buffer;
}

std::string shapeText(const Shape& shape) {
  switch (shape.kind()) {
    case Shape::Kind::rectangle: return "rect";
    case Shape::Kind::circle: return "circle";
    case Shape::Kind::capsule: return "capsule";
    case Shape::Kind::roundedRectangle: break;
  }
  std::string text = "rounded(" + number(shape.cornerRadius());
  if (shape.style() == RoundedCornerStyle::continuous) text += " continuous";
  if (shape.corners() != RectCorner::allCorners) {
    const std::pair<RectCorner, const char*> names[] = {{RectCorner::topLeft, " topLeft"},
                                                        {RectCorner::topRight, " topRight"},
                                                        {RectCorner::bottomLeft, " bottomLeft"},
                                                        {RectCorner::bottomRight, " bottomRight"}};
    for (const auto& [corner, name] : names) {
      if (contains(shape.corners(), corner)) text += name;
    }
  }
  return text + ")";
}

class Writer {
 public:
  explicit Writer(const LayoutTree& tree) : tree_(tree) {}

  std::string text() {
    visit(tree_.root(), Effects{});
    return out_.str();
  }

 private:
  struct Effects {
    double scale = 1;
    double opacity = 1;
    const Shape* clip = nullptr;
  };

  void visit(const LaidOutNode& node, Effects effects) {
    if (const auto* scale = node.as<ScaleNode>()) effects.scale *= scale->factor;
    if (const auto* layer = node.as<OpacityNode>()) effects.opacity *= layer->opacity;
    if (const auto* clip = node.as<ClipNode>()) effects.clip = &clip->shape;

    std::string line;
    if (const auto* shape = node.as<ShapeNode>()) {
      line = "fill " + shapeText(shape->shape) + " " + frameText(node.frame) + " " + colourText(*node.color);
    } else if (node.text) {
      const LaidOutText& text = *node.text;
      line = "text \"" + text.string + "\"";
      if (std::holds_alternative<LiveTimer>(node.as<TextNode>()->content)) line += " (live)";
      line += " " + frameText(node.frame) + " " + text.font.family + " " + number(text.font.size) + " " +
              std::to_string(static_cast<int>(text.font.weight)) + " " + colourText(text.color);
      if (text.lineCount != 1) line += " lines " + std::to_string(text.lineCount);
      if (text.isTruncated) line += " truncated";
    } else if (const auto* image = node.as<ImageNode>()) {
      line = "image " + std::string(templateSymbolName(image->symbol)) + " " + frameText(node.frame) + " " +
             colourText(*node.color);
    } else if (const auto* press = node.as<PressTargetNode>()) {
      line = "press \"" + std::string(press->intent->title()) + "\" " + frameText(node.frame);
    } else if (const auto* link = node.as<LinkNode>()) {
      line = (link->isWidgetURL ? "widget-link " : "link ") + link->url.absoluteString() + " " + frameText(node.frame);
    }
    if (!line.empty()) {
      if (effects.scale != 1) line += " scale " + number(effects.scale);
      if (effects.opacity != 1) line += " opacity " + number(effects.opacity);
      if (effects.clip != nullptr) line += " clip " + shapeText(*effects.clip);
      out_ << line << '\n';
    }
    for (const LaidOutNode& child : node.children) visit(child, effects);
  }

  const LayoutTree& tree_;
  std::ostringstream out_;
};

}  // namespace

std::string frameText(const Rect& frame) {
  return number(frame.minX()) + "," + number(frame.minY()) + " " + number(frame.width()) + "x" + number(frame.height());
}

std::string layoutSnapshot(const LayoutTree& tree) { return Writer(tree).text(); }

void expectSnapshot(const LayoutTree& tree, const std::string& name) {
  const char* dataDirectory = std::getenv("KESTRONA_TEST_DATA_DIR");
  ASSERT_NE(dataDirectory, nullptr) << "KESTRONA_TEST_DATA_DIR is not set; run the tests through ctest";
  const std::filesystem::path file = std::filesystem::path(dataDirectory) / "ViewSnapshots" / (name + ".txt");
  const std::string actual = layoutSnapshot(tree);
  if (std::getenv("KESTRONA_UPDATE_SNAPSHOTS") != nullptr) {
    writeFile(file, actual);
    return;
  }
  ASSERT_TRUE(std::filesystem::exists(file)) << file << " is missing; run with KESTRONA_UPDATE_SNAPSHOTS=1";
  EXPECT_EQ(readFile(file), actual) << name << " differs from " << file
                                    << " (KESTRONA_UPDATE_SNAPSHOTS=1 writes it anew)";
}

}  // namespace kestrona::testing
