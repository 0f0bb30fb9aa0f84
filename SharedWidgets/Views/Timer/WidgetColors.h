// The named colours of the widgets, and colours made fainter by an opacity.
//
// The widgets are always drawn in the dark scheme. Their named colours:
//   background, tertiaryBackground   black
//   secondaryBackground              the colour of the hex string "F2F2F7"
//   secondaryLabel, separatorColor   NamedColors::secondaryLabel() and
//                                    NamedColors::separator(), dynamic
// Each is made once, on first use, from any thread.
//
// withOpacity(color, opacity) is color with its alpha multiplied by opacity,
// as a widget draws "a colour at an opacity" without a layer of its own. A
// dynamic colour stays dynamic: the factor applies to whatever it resolves
// to. An opacity outside 0...1 is clamped into it, and one that is not a
// number counts as 0, so that a damaged widget file never makes a colour
// brighter than itself or stops drawing.
//
// Threading: colours are immutable values; any thread.
#pragma once

#include "Platform/Color/Color.h"

namespace kestrona {

struct WidgetColors {
  static const Color& background();
  static const Color& tertiaryBackground();
  static const Color& secondaryBackground();
  static const Color& secondaryLabel();
  static const Color& separatorColor();
};

Color withOpacity(const Color& color, double opacity);

}  // namespace kestrona
