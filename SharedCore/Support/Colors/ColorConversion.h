// The device RGB components of a colour, as the widget files carry them.
//
// toRGBAComponents() resolves a dynamic colour against the calling thread's
// current drawing appearance, converts the result to device RGB, and reads
// its four components, unclamped. A colour with no such conversion is a
// programming error: the process ends with "Could not convert color to
// RGBA.". Every colour of the palette and the named colours converts.
// Thread-safe.
#pragma once

#include "Platform/Color/Color.h"

namespace kestrona {

RGBAComponents toRGBAComponents(const Color& color);

}  // namespace kestrona
