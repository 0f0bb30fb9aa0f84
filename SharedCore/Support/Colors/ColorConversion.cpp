#include "SharedCore/Support/Colors/ColorConversion.h"

#include <optional>

#include "Platform/Foundation/FatalError.h"

namespace kestrona {

RGBAComponents toRGBAComponents(const Color& color) {
  const std::optional<Color> device = color.usingColorSpace(ColorSpace::deviceRGB);
  if (!device) fatalError("Could not convert color to RGBA.");
  return device->components();
}

}  // namespace kestrona
