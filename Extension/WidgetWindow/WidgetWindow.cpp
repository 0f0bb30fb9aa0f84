#include "Extension/WidgetWindow/WidgetWindow.h"

#include <glib-unix.h>
#include <gtk/gtk.h>

#include <algorithm>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <ostream>

#include <nlohmann/json.hpp>

#include "Extension/DeepLinkTimerWidgetIntentHost.h"
#include "Extension/WidgetProcess/WidgetPresser.h"
#include "Extension/WidgetProcess/WidgetViews.h"
#include "Extension/WidgetWindow/WidgetArrangement.h"
#include "Extension/WidgetWindow/WindowAppearance.h"
#include "Platform/RunLoop/RunLoopTimer.h"
#include "Platform/View/Renderer.h"
#include "Platform/Workspace/Workspace.h"
#include "SharedCore/Support/Colors/NamedColors.h"

namespace kestrona {
namespace {

constexpr const char* kPartsKey = "kestrona-widget-window";
constexpr const char* kIndexKey = "kestrona-placement";
constexpr const char* kCSSClass = "kestrona-widget-window";
constexpr double kLargestDefaultHeight = 900;
constexpr double kFocusRingWidth = 2;

RGBAComponents deviceComponents(const Color& color, Appearance appearance) {
  std::optional<Color> device = color.resolved(appearance).usingColorSpace(ColorSpace::deviceRGB);
  return device ? device->components() : RGBAComponents{0, 0, 0, 0};
}

int channel(double component) { return static_cast<int>(std::lround(std::clamp(component, 0.0, 1.0) * 255)); }

void roundedRectanglePath(cairo_t* cr, const Rect& rect, double radius) {
  cairo_new_sub_path(cr);
  cairo_arc(cr, rect.maxX() - radius, rect.minY() + radius, radius, -M_PI / 2, 0);
  cairo_arc(cr, rect.maxX() - radius, rect.maxY() - radius, radius, 0, M_PI / 2);
  cairo_arc(cr, rect.minX() + radius, rect.maxY() - radius, radius, M_PI / 2, M_PI);
  cairo_arc(cr, rect.minX() + radius, rect.minY() + radius, radius, M_PI, 3 * M_PI / 2);
  cairo_close_path(cr);
}

}  // namespace

struct WidgetWindow::Parts {
  Parts(MainLoop& mainLoop, const Configuration& configuration, std::ostream& eventStream,
        std::function<void()> close)
      : loop(mainLoop),
        events(eventStream),
        closeRequested(std::move(close)),
        monitor(InotifyFileChangeMonitor::make()),
        board(configuration.bundle, configuration.widgets, Clock::current(), monitor, configuration.widgetDirectory),
        presser(mainLoop) {}

  void write(const nlohmann::ordered_json& event) { events << event.dump() << std::endl; }

  // The board's next update, on a loop timer.
  void scheduleUpdate() {
    updateTimer.reset();
    std::optional<Date> next = board.nextUpdateDate();
    if (!next) return;
    updateTimer = RunLoopTimer::once(loop, next->timeIntervalSince(Date::now()), [this] {
      board.update();
      scheduleUpdate();
    });
  }

  void press(std::size_t index, Point point) {
    const WidgetBoard::Placement& placement = board.placements()[index];
    nlohmann::ordered_json event = {{"event", "pressed"},
                                    {"kind", placement.choice.kind},
                                    {"family", std::string(rawValue(placement.choice.family))},
                                    {"x", point.x},
                                    {"y", point.y}};
    presser.press(placement.tree, point, [this, event](const WidgetPressOutcome& outcome) mutable {
      event.update(pressOutcomeJSON(outcome));
      write(event);
      if (outcome.link) follow(outcome.link->url);
    });
  }

  // Opens url at the containing application, which may come forward: the
  // user asked for the application, not for a command.
  void follow(const URL& url) {
    nlohmann::ordered_json event = {{"event", "opened"}, {"url", url.absoluteString()}};
    std::optional<URL> application = DeepLinkTimerWidgetIntentHost::containingApplicationURL();
    if (!application) {
      event["result"] = "failed";
      event["error"] = failureJSON(std::make_exception_ptr(WorkspaceError(
          WorkspaceErrorCode::applicationNotFound, "the widget bundle lies in no application bundle")));
      write(event);
      return;
    }
    Workspace::OpenConfiguration configuration;
    configuration.setPromptsUserIfNeeded(false);
    std::weak_ptr<bool> alive = lifetime;
    Workspace::shared()->openURLs({url}, *application, configuration, [this, alive, event](std::exception_ptr error) {
      if (alive.expired()) return;
      nlohmann::ordered_json ended = event;
      ended["result"] = error ? "failed" : "performed";
      if (error) ended["error"] = failureJSON(error);
      write(ended);
    });
  }

  void applyAppearance() {
    gboolean prefersDark = FALSE;
    gchar* themeName = nullptr;
    g_object_get(settings, "gtk-application-prefer-dark-theme", &prefersDark, "gtk-theme-name", &themeName, nullptr);
    const char* themeEnvironment = g_getenv("GTK_THEME");
    appearance = windowAppearance(prefersDark, themeName ? themeName : "",
                                  themeEnvironment ? std::optional<std::string_view>(themeEnvironment) : std::nullopt);
    g_free(themeName);
    const RGBAComponents background = deviceComponents(NamedColors::systemBackground(), appearance);
    char css[160];
    std::snprintf(css, sizeof css, "window.%s { background-color: rgb(%d, %d, %d); }", kCSSClass,
                  channel(background.red), channel(background.green), channel(background.blue));
    gtk_css_provider_load_from_data(cssProvider, css, -1);
    for (GtkWidget* area : areas) gtk_widget_queue_draw(area);
  }

  void draw(std::size_t index, cairo_t* cr) {
    kestrona::draw(board.placements()[index].tree, cr);
    std::optional<WidgetBoard::FocusedButton> focused = board.focusedButton();
    if (!focused || focused->placement != index) return;
    const Rect& button = focused->frame;
    const double inset = kFocusRingWidth / 2;
    const Rect ring{{button.minX() - inset, button.minY() - inset},
                    {button.width() + 2 * inset, button.height() + 2 * inset}};
    const double radius = focused->outline.effectiveRadius(button) + inset;
    const RGBAComponents color = deviceComponents(focusRingColor(), appearance);
    roundedRectanglePath(cr, ring, radius);
    cairo_set_source_rgba(cr, color.red, color.green, color.blue, color.alpha);
    cairo_set_line_width(cr, kFocusRingWidth);
    cairo_stroke(cr);
  }

  void allocate(int width) {
    const std::vector<Rect> placed = arrangeWidgets(sizes, width);
    for (std::size_t index = 0; index < areas.size(); ++index) {
      int minimum = 0;
      int natural = 0;
      gtk_widget_measure(areas[index], GTK_ORIENTATION_HORIZONTAL, -1, &minimum, &natural, nullptr, nullptr);
      const GtkAllocation allocation{static_cast<int>(placed[index].minX()), static_cast<int>(placed[index].minY()),
                                     static_cast<int>(placed[index].width()), static_cast<int>(placed[index].height())};
      gtk_widget_size_allocate(areas[index], &allocation, -1);
    }
    if (placed != frames) {
      frames = placed;
      arrangementPending = true;
    }
  }

  // Reports where the widgets stand, once they all stand somewhere.
  void reportArrangement() {
    if (!arrangementPending) return;
    double surfaceX = 0;
    double surfaceY = 0;
    gtk_native_get_surface_transform(GTK_NATIVE(window), &surfaceX, &surfaceY);
    nlohmann::ordered_json widgets = nlohmann::ordered_json::array();
    for (std::size_t index = 0; index < areas.size(); ++index) {
      graphene_point_t origin = GRAPHENE_POINT_INIT(0, 0);
      graphene_point_t onWindow = GRAPHENE_POINT_INIT(0, 0);
      if (!gtk_widget_compute_point(areas[index], GTK_WIDGET(window), &origin, &onWindow)) return;
      const WidgetChoice& choice = board.placements()[index].choice;
      widgets.push_back({{"kind", choice.kind},
                         {"family", std::string(rawValue(choice.family))},
                         {"x", onWindow.x + surfaceX},
                         {"y", onWindow.y + surfaceY},
                         {"width", sizes[index].width},
                         {"height", sizes[index].height}});
    }
    arrangementPending = false;
    write({{"event", "arranged"}, {"scale", gtk_widget_get_scale_factor(GTK_WIDGET(window))}, {"widgets", widgets}});
  }

  MainLoop& loop;
  std::ostream& events;
  std::function<void()> closeRequested;
  std::shared_ptr<InotifyFileChangeMonitor> monitor;
  WidgetBoard board;
  WidgetPresser presser;
  std::unique_ptr<RunLoopTimer> updateTimer;
  // Expires with the parts, for completions that may come later.
  std::shared_ptr<bool> lifetime = std::make_shared<bool>(true);

  GtkWindow* window = nullptr;
  std::vector<GtkWidget*> areas;
  std::vector<Size> sizes;
  std::vector<Rect> frames;
  bool arrangementPending = true;
  GtkCssProvider* cssProvider = nullptr;
  GtkSettings* settings = nullptr;
  Appearance appearance = Appearance::light();
  std::vector<gulong> settingsHandlers;
  gulong afterPaintHandler = 0;
  GdkFrameClock* frameClock = nullptr;
  std::vector<guint> sources;
};

namespace {

using Parts = WidgetWindow::Parts;

Parts& partsOf(GtkWidget* widget) { return *static_cast<Parts*>(g_object_get_data(G_OBJECT(widget), kPartsKey)); }

std::size_t indexOf(GtkWidget* area) {
  return GPOINTER_TO_SIZE(g_object_get_data(G_OBJECT(area), kIndexKey));
}

GtkSizeRequestMode requestMode(GtkWidget*) { return GTK_SIZE_REQUEST_HEIGHT_FOR_WIDTH; }

void measureFlow(GtkWidget* flow, GtkOrientation orientation, int forSize, int* minimum, int* natural,
                 int* minimumBaseline, int* naturalBaseline) {
  const Parts& parts = partsOf(flow);
  const double narrowest = narrowestWidth(parts.sizes);
  if (orientation == GTK_ORIENTATION_HORIZONTAL) {
    *minimum = *natural = static_cast<int>(std::ceil(narrowest));
  } else {
    const double width = forSize >= 0 ? forSize : narrowest;
    *minimum = *natural = static_cast<int>(std::ceil(arrangedSize(parts.sizes, width).height));
  }
  *minimumBaseline = *naturalBaseline = -1;
}

void allocateFlow(GtkWidget* flow, int width, int, int) { partsOf(flow).allocate(width); }

void drawArea(GtkDrawingArea* area, cairo_t* cr, int, int, gpointer data) {
  static_cast<Parts*>(data)->draw(indexOf(GTK_WIDGET(area)), cr);
}

void clickReleased(GtkGestureClick* gesture, int, double x, double y, gpointer data) {
  GtkWidget* area = gtk_event_controller_get_widget(GTK_EVENT_CONTROLLER(gesture));
  if (x < 0 || y < 0 || x >= gtk_widget_get_width(area) || y >= gtk_widget_get_height(area)) return;
  static_cast<Parts*>(data)->press(indexOf(area), Point{x, y});
}

gboolean keyPressed(GtkEventControllerKey*, guint key, guint, GdkModifierType, gpointer data) {
  Parts& parts = *static_cast<Parts*>(data);
  switch (key) {
    case GDK_KEY_Tab:
    case GDK_KEY_KP_Tab: parts.board.moveFocus(WidgetBoard::FocusDirection::forward); return TRUE;
    case GDK_KEY_ISO_Left_Tab: parts.board.moveFocus(WidgetBoard::FocusDirection::backward); return TRUE;
    case GDK_KEY_Escape: parts.board.clearFocus(); return TRUE;
    case GDK_KEY_Return:
    case GDK_KEY_KP_Enter:
    case GDK_KEY_space:
    case GDK_KEY_KP_Space:
      if (std::optional<WidgetBoard::FocusedButton> focused = parts.board.focusedButton()) {
        parts.press(focused->placement, Point{focused->frame.midX(), focused->frame.midY()});
        return TRUE;
      }
      return FALSE;
    default: return FALSE;
  }
}

gboolean closeRequest(GtkWindow*, gpointer data) {
  static_cast<Parts*>(data)->closeRequested();
  return TRUE;
}

gboolean endRequested(gpointer data) {
  static_cast<Parts*>(data)->closeRequested();
  return G_SOURCE_CONTINUE;
}

gboolean monitorReadable(gint, GIOCondition, gpointer data) {
  Parts& parts = *static_cast<Parts*>(data);
  parts.board.update();
  parts.scheduleUpdate();
  return G_SOURCE_CONTINUE;
}

void afterPaint(GdkFrameClock*, gpointer data) { static_cast<Parts*>(data)->reportArrangement(); }

void realized(GtkWidget* window, gpointer data) {
  Parts& parts = *static_cast<Parts*>(data);
  parts.frameClock = gtk_widget_get_frame_clock(window);
  g_object_ref(parts.frameClock);
  parts.afterPaintHandler = g_signal_connect(parts.frameClock, "after-paint", G_CALLBACK(afterPaint), data);
}

void appearanceChanged(GObject*, GParamSpec*, gpointer data) { static_cast<Parts*>(data)->applyAppearance(); }

}  // namespace

WidgetWindow::WidgetWindow(MainLoop& loop, Configuration configuration, std::ostream& events,
                           std::function<void()> closeRequested)
    : parts_(std::make_unique<Parts>(loop, configuration, events, std::move(closeRequested))) {
  Parts& parts = *parts_;
  parts.window = GTK_WINDOW(gtk_window_new());
  gtk_window_set_title(parts.window, "Kestrona Widgets");
  gtk_widget_add_css_class(GTK_WIDGET(parts.window), kCSSClass);

  GtkWidget* flow = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
  g_object_set_data(G_OBJECT(flow), kPartsKey, &parts);
  gtk_widget_set_layout_manager(flow, gtk_custom_layout_new(requestMode, measureFlow, allocateFlow));
  for (std::size_t index = 0; index < parts.board.placements().size(); ++index) {
    const Size size = widgetCanvasSize(parts.board.placements()[index].choice.family);
    GtkWidget* area = gtk_drawing_area_new();
    g_object_set_data(G_OBJECT(area), kIndexKey, GSIZE_TO_POINTER(index));
    gtk_drawing_area_set_content_width(GTK_DRAWING_AREA(area), static_cast<int>(size.width));
    gtk_drawing_area_set_content_height(GTK_DRAWING_AREA(area), static_cast<int>(size.height));
    gtk_drawing_area_set_draw_func(GTK_DRAWING_AREA(area), drawArea, &parts, nullptr);
    GtkGesture* click = gtk_gesture_click_new();
    gtk_gesture_single_set_button(GTK_GESTURE_SINGLE(click), GDK_BUTTON_PRIMARY);
    g_signal_connect(click, "released", G_CALLBACK(clickReleased), &parts);
    gtk_widget_add_controller(area, GTK_EVENT_CONTROLLER(click));
    gtk_box_append(GTK_BOX(flow), area);
    parts.areas.push_back(area);
    parts.sizes.push_back(size);
  }
  // The board changes on loop timers too, outside GLib's dispatch: wake
  // GLib so that the frame clock's new source is seen (GLibMainContextPump.h).
  parts.board.setObserver([&parts](std::size_t index) {
    gtk_widget_queue_draw(parts.areas[index]);
    g_main_context_wakeup(nullptr);
  });

  GtkWidget* scroller = gtk_scrolled_window_new();
  gtk_scrolled_window_set_policy(GTK_SCROLLED_WINDOW(scroller), GTK_POLICY_NEVER, GTK_POLICY_AUTOMATIC);
  gtk_scrolled_window_set_child(GTK_SCROLLED_WINDOW(scroller), flow);
  gtk_window_set_child(parts.window, scroller);

  const double width = narrowestWidth(parts.sizes);
  const Size size =
      configuration.size.value_or(Size{width, std::min(kLargestDefaultHeight, arrangedSize(parts.sizes, width).height)});
  gtk_window_set_default_size(parts.window, static_cast<int>(size.width), static_cast<int>(size.height));

  GtkEventController* keys = gtk_event_controller_key_new();
  gtk_event_controller_set_propagation_phase(keys, GTK_PHASE_CAPTURE);
  g_signal_connect(keys, "key-pressed", G_CALLBACK(keyPressed), &parts);
  gtk_widget_add_controller(GTK_WIDGET(parts.window), keys);
  g_signal_connect(parts.window, "close-request", G_CALLBACK(closeRequest), &parts);
  g_signal_connect_after(parts.window, "realize", G_CALLBACK(realized), &parts);

  parts.cssProvider = gtk_css_provider_new();
  gtk_style_context_add_provider_for_display(gtk_widget_get_display(GTK_WIDGET(parts.window)),
                                             GTK_STYLE_PROVIDER(parts.cssProvider),
                                             GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);
  parts.settings = gtk_settings_get_default();
  for (const char* signal : {"notify::gtk-application-prefer-dark-theme", "notify::gtk-theme-name"}) {
    parts.settingsHandlers.push_back(g_signal_connect(parts.settings, signal, G_CALLBACK(appearanceChanged), &parts));
  }
  parts.applyAppearance();

  parts.sources.push_back(
      g_unix_fd_add(parts.monitor->fileDescriptor(), G_IO_IN, monitorReadable, &parts));
  for (int signal : {SIGTERM, SIGINT, SIGHUP}) parts.sources.push_back(g_unix_signal_add(signal, endRequested, &parts));
  parts.scheduleUpdate();
}

WidgetWindow::~WidgetWindow() {
  Parts& parts = *parts_;
  for (guint source : parts.sources) g_source_remove(source);
  for (gulong handler : parts.settingsHandlers) g_signal_handler_disconnect(parts.settings, handler);
  if (parts.frameClock) {
    g_signal_handler_disconnect(parts.frameClock, parts.afterPaintHandler);
    g_object_unref(parts.frameClock);
  }
  gtk_style_context_remove_provider_for_display(gtk_widget_get_display(GTK_WIDGET(parts.window)),
                                                GTK_STYLE_PROVIDER(parts.cssProvider));
  g_object_unref(parts.cssProvider);
  gtk_window_destroy(parts.window);
}

void WidgetWindow::present() { gtk_window_present(parts_->window); }

Size WidgetWindow::windowSize() const {
  int width = 0;
  int height = 0;
  gtk_window_get_default_size(parts_->window, &width, &height);
  if (width <= 0 || height <= 0) {
    width = gtk_widget_get_width(GTK_WIDGET(parts_->window));
    height = gtk_widget_get_height(GTK_WIDGET(parts_->window));
  }
  return Size{static_cast<double>(width), static_cast<double>(height)};
}

}  // namespace kestrona
