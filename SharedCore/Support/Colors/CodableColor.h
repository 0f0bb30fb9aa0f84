// A colour as four plain numbers, for JSON.
//
// CodableColor is coded as an object with the four required keys "red",
// "green", "blue" and "alpha", each a 64-bit number; other keys are ignored.
// Decoding throws ColorDecodingError (ColorDecodingError.h): typeMismatch
// when the value is not an object or a component is not a number (a
// boolean is not one), valueNotFound when a component is null, keyNotFound
// when one is absent, with that component's key as the coding path.
// Encoding a component that is NaN or infinite, which JSON cannot carry,
// throws ColorEncodingError (ColorEncodingError.h) instead of writing null.
//
// CodableColor(color) reads the components of color as they are (a dynamic
// colour resolved against the calling thread's current appearance), with no
// conversion of colour space, so color should already be in the space the
// reader expects; color() makes a device RGB colour. A plain value,
// thread-safe to copy and read.
#pragma once

#include <nlohmann/json_fwd.hpp>

#include "Platform/Color/Color.h"
#include "SharedCore/Support/Colors/ColorDecodingError.h"
#include "SharedCore/Support/Colors/ColorEncodingError.h"

namespace kestrona {

struct CodableColor {
  double red = 0;
  double green = 0;
  double blue = 0;
  double alpha = 0;

  CodableColor() = default;
  CodableColor(double redValue, double greenValue, double blueValue, double alphaValue)
      : red(redValue), green(greenValue), blue(blueValue), alpha(alphaValue) {}
  explicit CodableColor(const Color& color);

  Color color() const;

  friend bool operator==(const CodableColor&, const CodableColor&) = default;
};

void to_json(nlohmann::json& json, const CodableColor& color);
void from_json(const nlohmann::json& json, CodableColor& color);

}  // namespace kestrona
