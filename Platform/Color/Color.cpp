#include "Platform/Color/Color.h"

#include <array>
#include <cmath>
#include <utility>

#include "Platform/Foundation/FatalError.h"

namespace kestrona {

namespace {

using Matrix = std::array<std::array<double, 3>, 3>;
using Vector = std::array<double, 3>;

struct Chromaticity {
  double x;
  double y;
};

constexpr Vector toXYZ(Chromaticity c) { return {c.x / c.y, 1.0, (1.0 - c.x - c.y) / c.y}; }

constexpr Matrix multiply(const Matrix& a, const Matrix& b) {
  Matrix result{};
  for (int row = 0; row < 3; ++row) {
    for (int column = 0; column < 3; ++column) {
      double sum = 0;
      for (int k = 0; k < 3; ++k) sum += a[row][k] * b[k][column];
      result[row][column] = sum;
    }
  }
  return result;
}

constexpr Vector multiply(const Matrix& m, const Vector& v) {
  return {m[0][0] * v[0] + m[0][1] * v[1] + m[0][2] * v[2], m[1][0] * v[0] + m[1][1] * v[1] + m[1][2] * v[2],
          m[2][0] * v[0] + m[2][1] * v[1] + m[2][2] * v[2]};
}

constexpr Matrix inverse(const Matrix& m) {
  const double determinant = m[0][0] * (m[1][1] * m[2][2] - m[1][2] * m[2][1]) -
                             m[0][1] * (m[1][0] * m[2][2] - m[1][2] * m[2][0]) +
                             m[0][2] * (m[1][0] * m[2][1] - m[1][1] * m[2][0]);
  Matrix result{};
  result[0][0] = (m[1][1] * m[2][2] - m[1][2] * m[2][1]) / determinant;
  result[0][1] = (m[0][2] * m[2][1] - m[0][1] * m[2][2]) / determinant;
  result[0][2] = (m[0][1] * m[1][2] - m[0][2] * m[1][1]) / determinant;
  result[1][0] = (m[1][2] * m[2][0] - m[1][0] * m[2][2]) / determinant;
  result[1][1] = (m[0][0] * m[2][2] - m[0][2] * m[2][0]) / determinant;
  result[1][2] = (m[0][2] * m[1][0] - m[0][0] * m[1][2]) / determinant;
  result[2][0] = (m[1][0] * m[2][1] - m[1][1] * m[2][0]) / determinant;
  result[2][1] = (m[0][1] * m[2][0] - m[0][0] * m[2][1]) / determinant;
  result[2][2] = (m[0][0] * m[1][1] - m[0][1] * m[1][0]) / determinant;
  return result;
}

// The matrix from linear RGB of the given primaries to CIE XYZ, scaled so
// that RGB white maps to the white point (the usual derivation: the
// primaries' XYZ as columns, each scaled by the solution for the white).
constexpr Matrix rgbToXYZ(Chromaticity red, Chromaticity green, Chromaticity blue, Chromaticity white) {
  const Vector r = toXYZ(red);
  const Vector g = toXYZ(green);
  const Vector b = toXYZ(blue);
  const Matrix primaries{{{r[0], g[0], b[0]}, {r[1], g[1], b[1]}, {r[2], g[2], b[2]}}};
  const Vector scale = multiply(inverse(primaries), toXYZ(white));
  Matrix result{};
  for (int row = 0; row < 3; ++row) {
    for (int column = 0; column < 3; ++column) result[row][column] = primaries[row][column] * scale[column];
  }
  return result;
}

constexpr Chromaticity kD65{0.3127, 0.3290};
constexpr Matrix kDisplayP3ToXYZ = rgbToXYZ({0.680, 0.320}, {0.265, 0.690}, {0.150, 0.060}, kD65);
constexpr Matrix kSRGBToXYZ = rgbToXYZ({0.64, 0.33}, {0.30, 0.60}, {0.15, 0.06}, kD65);
constexpr Matrix kDisplayP3ToSRGB = multiply(inverse(kSRGBToXYZ), kDisplayP3ToXYZ);
constexpr Matrix kSRGBToDisplayP3 = multiply(inverse(kDisplayP3ToXYZ), kSRGBToXYZ);

// The sRGB transfer function, which Display P3 shares, extended to negative
// values by mirroring so that out-of-gamut colours survive a round trip.
double linearize(double encoded) {
  const double magnitude = std::fabs(encoded);
  const double linear = magnitude <= 0.04045 ? magnitude / 12.92 : std::pow((magnitude + 0.055) / 1.055, 2.4);
  return std::copysign(linear, encoded);
}

double encode(double linear) {
  const double magnitude = std::fabs(linear);
  const double encoded = magnitude <= 0.0031308 ? magnitude * 12.92 : 1.055 * std::pow(magnitude, 1.0 / 2.4) - 0.055;
  return std::copysign(encoded, linear);
}

RGBAComponents transform(const Matrix& matrix, const RGBAComponents& components) {
  const Vector linear{linearize(components.red), linearize(components.green), linearize(components.blue)};
  const Vector converted = multiply(matrix, linear);
  return {encode(converted[0]), encode(converted[1]), encode(converted[2]), components.alpha};
}

bool isFinite(const RGBAComponents& c) {
  return std::isfinite(c.red) && std::isfinite(c.green) && std::isfinite(c.blue) && std::isfinite(c.alpha);
}

// How many providers a resolution may pass through before it is taken for
// a cycle. Real chains are one step long.
constexpr int kMaximumProviderChain = 16;

}  // namespace

RGBAComponents convertDisplayP3ToDeviceRGB(const RGBAComponents& displayP3) {
  return transform(kDisplayP3ToSRGB, displayP3);
}

RGBAComponents convertDeviceRGBToDisplayP3(const RGBAComponents& deviceRGB) {
  return transform(kSRGBToDisplayP3, deviceRGB);
}

Color Color::displayP3(double red, double green, double blue, double alpha) {
  return Color(ColorSpace::displayP3, {red, green, blue, alpha});
}

Color Color::deviceRGB(double red, double green, double blue, double alpha) {
  return Color(ColorSpace::deviceRGB, {red, green, blue, alpha});
}

Color Color::dynamic(std::string name, Provider provider) {
  precondition(static_cast<bool>(provider), "A dynamic colour needs a provider.");
  Color color(ColorSpace::deviceRGB, {});
  color.name_ = std::move(name);
  color.provider_ = std::make_shared<const Provider>(std::move(provider));
  return color;
}

Color Color::resolved(const Appearance& appearance) const {
  Color color = *this;
  for (int step = 0; color.isDynamic(); ++step) {
    if (step == kMaximumProviderChain) {
      fatalError("The dynamic colour " + name_ + " does not resolve to a fixed colour.");
    }
    color = (*color.provider_)(appearance);
  }
  return color;
}

ColorSpace Color::colorSpace() const { return isDynamic() ? resolved(Appearance::current()).space_ : space_; }

RGBAComponents Color::components() const {
  return isDynamic() ? resolved(Appearance::current()).components_ : components_;
}

std::optional<Color> Color::usingColorSpace(ColorSpace space) const {
  const Color fixed = isDynamic() ? resolved(Appearance::current()) : *this;
  if (!isFinite(fixed.components_)) return std::nullopt;
  if (fixed.space_ == space) return fixed;
  const RGBAComponents converted = space == ColorSpace::deviceRGB ? convertDisplayP3ToDeviceRGB(fixed.components_)
                                                                  : convertDeviceRGBToDisplayP3(fixed.components_);
  return Color(space, converted);
}

bool operator==(const Color& lhs, const Color& rhs) {
  if (lhs.isDynamic() || rhs.isDynamic()) return lhs.isDynamic() && rhs.isDynamic() && lhs.name_ == rhs.name_;
  return lhs.space_ == rhs.space_ && lhs.components_ == rhs.components_;
}

}  // namespace kestrona
