// The widgets of the window, live: what each one shows, when to look again,
// and which of their buttons has the keyboard's focus. It knows nothing of
// GTK; the window draws its placements and feeds it time and keys.
//
// A board is made with the bundle's widgets and the choices to show, in
// order. It places the chosen kinds, each in the families chosen for it, on
// a widget host of its own (watching each kind's widget file in
// widgetDirectory, when there is one), starts the host, and lays every
// placement out: the widget's view (WidgetViews.h) with its corners rounded
// by kCornerRadius, as a desktop shows widgets, on its family's canvas.
// Two choices of one kind and family show the same instance.
//
// update() does what is due at the clock's present moment: the host's
// reloads and entry changes, and the second-by-second advance of a running
// timer's text. A placement is laid out again, and the observer told its
// index, only when its entry changed, or when it shows a live timer whose
// text has changed since it was last laid out; so a running timer redraws
// its own widget once a second and nothing else. nextUpdateDate() says when
// update() must run next: the host's next date, or just after the next whole
// second while a live timer shows; none when nothing is due. A change of a
// watched file is due at once: call update() when the monitor has news.
//
// The keyboard's focus moves among the buttons (press targets) of all
// placements, in board order and within a widget in drawing order (row by
// row for the recent tasks' plates): moveFocus() forwards from the last
// button or backwards from the first wraps around, and from no focus it
// takes the first (or last) button. A placement laid out anew keeps the
// focus on the same button number while it has one, and gives it up
// otherwise. The observer hears of the placements that lose and gain the
// focus, to redraw their focus ring.
//
// Views read the present moment through Date::now(), so clock must be the
// process's current clock (Clock::current(); tests install a ScopedClock).
// The clock and the monitor must outlive the board.
//
// Threading: one thread, the one that makes the board; not copied or moved.
#pragma once

#include <cstddef>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "Extension/WidgetWindow/WidgetChoice.h"
#include "Platform/Time/Clock.h"
#include "Platform/View/Layout.h"
#include "Platform/View/Shape.h"
#include "Platform/WidgetHost/FileChangeMonitor.h"
#include "Platform/WidgetHost/WidgetConfiguration.h"
#include "Platform/WidgetHost/WidgetHost.h"

namespace kestrona {

class WidgetBoard {
 public:
  static constexpr double kCornerRadius = 20;

  struct Placement {
    WidgetChoice choice;
    LayoutTree tree;
    // The moment it was laid out at.
    Date laidOutAt;
    bool showsLiveTimer = false;
  };

  struct FocusedButton {
    std::size_t placement = 0;
    // Among the placement's press targets, in drawing order.
    std::size_t button = 0;
    // The button's frame on its widget's canvas.
    Rect frame;
    // Its outline: the shape of the first clip or fill inside it that covers
    // its frame (a round button's circle, a plate's rounded rectangle), else
    // a rectangle.
    Shape outline = Shape::rectangle();
  };

  enum class FocusDirection { forward, backward };

  using Observer = std::function<void(std::size_t placement)>;

  // choices must not be empty, and each must name a widget of bundle in a
  // family it supports (the command line and the settings make sure).
  WidgetBoard(const std::vector<WidgetConfiguration>& bundle, std::vector<WidgetChoice> choices, Clock& clock,
              std::shared_ptr<FileChangeMonitor> monitor, const std::optional<std::filesystem::path>& widgetDirectory);
  WidgetBoard(const WidgetBoard&) = delete;
  WidgetBoard& operator=(const WidgetBoard&) = delete;

  void setObserver(Observer observer) { observer_ = std::move(observer); }

  const std::vector<Placement>& placements() const noexcept { return placements_; }

  void update();
  std::optional<Date> nextUpdateDate() const;

  std::optional<FocusedButton> focusedButton() const;
  void moveFocus(FocusDirection direction);
  void clearFocus();

 private:
  struct Focus {
    std::size_t placement;
    std::size_t button;
  };

  Placement laidOut(const WidgetChoice& choice) const;
  // Lays placement index out again and tells the observer.
  void refresh(std::size_t index);
  void setFocus(std::optional<Focus> focus);

  Clock& clock_;
  WidgetHost host_;
  std::vector<Placement> placements_;
  // Placements whose entry changed since the last update(), by the host.
  std::vector<bool> changed_;
  std::optional<Focus> focus_;
  Observer observer_;
};

}  // namespace kestrona
