#include "SharedWidgets/Views/Timer/StartStopView.h"

#include "SharedWidgets/Views/Timer/WidgetColors.h"

namespace kestrona {

View StartStopView::body() const {
  const View play = playImage.tint(playImageTintColor)
                        .padding(Edge::leading, playImageLeadingInset)
                        .scaleEffect(isRunning ? kRunningPlayImageScale : playImageInitialScaleFactor);
  const View pause = pauseButtonImage.tint(Color::white())
                         .scaleEffect(isRunning ? pauseImageInitialScaleFactor : kHiddenPauseImageScale);
  return ZStack(Alignment::center(), {play, pause})
      .frame(size.width, size.height)
      .background(ShapeView(Shape::circle(), withOpacity(backgroundColor, startButtonBackgroundOpacity)))
      .clipShape(Shape::circle());
}

}  // namespace kestrona
