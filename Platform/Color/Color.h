// Colour values.
//
// A Color is either fixed or dynamic.
//
// A fixed colour is four components (red, green, blue, alpha) in one of two
// RGB colour spaces: Display P3, in which the palette of this system is
// written, and device RGB, in which colours are exchanged with the widgets.
// Device RGB is taken to be sRGB; colours made "device-independent" are
// made in the same space. Components are not clamped: a colour converted
// from Display P3 may have components below 0 or above 1 (extended range),
// and they are kept as they are.
//
// A dynamic colour has a name and a provider. The provider is asked for a
// colour each time the dynamic colour is resolved against an appearance
// (Appearance.h); it may answer with another dynamic colour, which is then
// resolved in turn. Reading the space or components of a dynamic colour
// resolves it against the calling thread's current drawing appearance.
//
// Conversion to another space uses the standard transform: each component
// is linearised with the sRGB transfer function (Display P3 shares it,
// mirrored for negative values), multiplied by the 3x3 matrix from the
// source primaries through CIE XYZ (D65 white) to the target primaries, and
// re-encoded. Alpha is kept. A colour with a component that is not a finite
// number has no conversion.
//
// Equality: two fixed colours are equal when their spaces and all four
// components are equal; two dynamic colours are equal when their names are;
// a fixed colour never equals a dynamic one.
//
// Failure: a provider chain that never reaches a fixed colour (a dynamic
// colour that answers with itself, for instance) is a programming error and
// ends the process through fatalError() after a fixed number of steps.
//
// Threading: Color is an immutable value, safe to copy and read from any
// thread. A provider may be called from any thread that resolves the colour
// and must therefore be thread-safe itself.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "Platform/Color/Appearance.h"

namespace kestrona {

enum class ColorSpace { deviceRGB, displayP3 };

// The four components of a colour, in the order red, green, blue, alpha.
struct RGBAComponents {
  double red = 0;
  double green = 0;
  double blue = 0;
  double alpha = 1;

  friend bool operator==(const RGBAComponents&, const RGBAComponents&) = default;
};

class Color {
 public:
  using Provider = std::function<Color(const Appearance&)>;

  // A fixed colour in Display P3.
  static Color displayP3(double red, double green, double blue, double alpha);
  // A fixed colour in device RGB (sRGB).
  static Color deviceRGB(double red, double green, double blue, double alpha);
  // A fixed colour in device-independent RGB; the same space as deviceRGB.
  static Color rgb(double red, double green, double blue, double alpha) {
    return deviceRGB(red, green, blue, alpha);
  }
  // A dynamic colour. provider must not be empty.
  static Color dynamic(std::string name, Provider provider);

  // Opaque white and black in device RGB.
  static Color white() { return deviceRGB(1, 1, 1, 1); }
  static Color black() { return deviceRGB(0, 0, 0, 1); }

  bool isDynamic() const noexcept { return provider_ != nullptr; }
  // The name of a dynamic colour; empty for a fixed one.
  const std::string& name() const noexcept { return name_; }

  // The fixed colour this one stands for in appearance: itself when fixed.
  Color resolved(const Appearance& appearance) const;

  // The space and components, after resolving against Appearance::current()
  // when dynamic. No conversion takes place.
  ColorSpace colorSpace() const;
  RGBAComponents components() const;

  // This colour in space, resolved against Appearance::current() when
  // dynamic; none when it has no conversion (see above).
  std::optional<Color> usingColorSpace(ColorSpace space) const;

  friend bool operator==(const Color& lhs, const Color& rhs);

 private:
  Color(ColorSpace space, RGBAComponents components) : space_(space), components_(components) {}

  ColorSpace space_ = ColorSpace::deviceRGB;
  RGBAComponents components_;
  std::string name_;
  std::shared_ptr<const Provider> provider_;
};

// The components of a Display P3 colour in device RGB, by the transform
// described above, for callers that hold components rather than colours.
RGBAComponents convertDisplayP3ToDeviceRGB(const RGBAComponents& displayP3);
// The inverse transform.
RGBAComponents convertDeviceRGBToDisplayP3(const RGBAComponents& deviceRGB);

}  // namespace kestrona
