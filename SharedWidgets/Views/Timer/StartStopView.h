// The timer widget's round start and pause button.
//
// A square of size, content centred, clipped to a circle, on backgroundColor
// at startButtonBackgroundOpacity (so an opacity of 0 leaves a transparent
// button). In it lie, back to front:
//   - playImage as a template in playImageTintColor, inset by
//     playImageLeadingInset on its leading side, scaled by 5 while running
//     (so that it grows past the circle and fills it with its tint) and by
//     playImageInitialScaleFactor otherwise;
//   - pauseButtonImage as a template in white, scaled by
//     pauseImageInitialScaleFactor while running and by 1e-9 otherwise, so
//     that it is not seen but keeps its place in the layout.
// Scaling leaves the layout alone: the button is the same size in both
// states.
//
// Threading: a plain value; body() may run on any thread.
#pragma once

#include "Platform/Color/Color.h"
#include "Platform/View/View.h"

namespace kestrona {

struct StartStopView {
  // The scale by which the play image grows out of the button while the
  // timer runs, and the one by which the pause image hides while it doesn't.
  static constexpr double kRunningPlayImageScale = 5.0;
  static constexpr double kHiddenPauseImageScale = 1e-9;

  bool isRunning = false;
  Size size;
  double playImageInitialScaleFactor = 1;
  double pauseImageInitialScaleFactor = 1;
  double startButtonBackgroundOpacity = 0;
  Color backgroundColor = Color::white();
  TemplateImage playImage{TemplateSymbol::play};
  Color playImageTintColor = Color::white();
  double playImageLeadingInset = 0;
  TemplateImage pauseButtonImage{TemplateSymbol::pause};

  View body() const;
};

}  // namespace kestrona
