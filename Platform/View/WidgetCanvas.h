// The sizes of the widget families, in points.
//
// Views of a widget are laid out on a canvas of its family's size:
//   small 170 x 170, medium 364 x 170, large 364 x 382.
// These are the sizes a desktop widget host gives the three families; the
// widget host of this system uses them too, and the renderer multiplies them
// by its pixel scale.
//
// Threading: constants; any thread.
#pragma once

#include "Platform/View/Geometry.h"

namespace kestrona::widgetcanvas {

inline constexpr Size kSmall{170, 170};
inline constexpr Size kMedium{364, 170};
inline constexpr Size kLarge{364, 382};

}  // namespace kestrona::widgetcanvas
