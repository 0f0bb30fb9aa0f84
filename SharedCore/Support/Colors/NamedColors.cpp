#include "SharedCore/Support/Colors/NamedColors.h"

#include <array>
#include <string>

namespace kestrona {

namespace {

Color namedColor(std::string name, RGBAComponents light, RGBAComponents dark) {
  return Color::dynamic(std::move(name), [light, dark](const Appearance& appearance) {
    static constexpr std::array<Appearance::Name, 2> kDarkThenLight{Appearance::Name::dark, Appearance::Name::light};
    const RGBAComponents& chosen = appearance.bestMatch(kDarkThenLight) == Appearance::Name::dark ? dark : light;
    return Color::deviceRGB(chosen.red, chosen.green, chosen.blue, chosen.alpha);
  });
}

constexpr double gray(int byte) { return byte / 255.0; }

}  // namespace

const Color& NamedColors::systemBackground() {
  static const Color color =
      namedColor("systemBackground", {gray(0xEC), gray(0xEC), gray(0xEC), 1}, {gray(0x32), gray(0x32), gray(0x32), 1});
  return color;
}

const Color& NamedColors::secondarySystemBackground() {
  static const Color color = namedColor("secondarySystemBackground", {gray(0xE3), gray(0xE3), gray(0xE3), 1},
                                        {gray(0x28), gray(0x28), gray(0x28), 1});
  return color;
}

const Color& NamedColors::tertiarySystemBackground() {
  static const Color color =
      namedColor("tertiarySystemBackground", {1, 1, 1, 1}, {gray(0x1E), gray(0x1E), gray(0x1E), 1});
  return color;
}

const Color& NamedColors::label() {
  static const Color color = namedColor("label", {0, 0, 0, 0.85}, {1, 1, 1, 0.85});
  return color;
}

const Color& NamedColors::secondaryLabel() {
  static const Color color = namedColor("secondaryLabel", {0, 0, 0, 0.5}, {1, 1, 1, 0.55});
  return color;
}

const Color& NamedColors::separator() {
  static const Color color = namedColor("separator", {0, 0, 0, 0.1}, {1, 1, 1, 0.1});
  return color;
}

}  // namespace kestrona
