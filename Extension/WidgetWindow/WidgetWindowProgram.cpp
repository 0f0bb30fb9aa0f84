#include "Extension/WidgetWindow/WidgetWindowProgram.h"

#include <gtk/gtk.h>

#include <ostream>

#include "Extension/WidgetProcess/CommandLine.h"
#include "Extension/WidgetWindow/GLibMainContextPump.h"
#include "Extension/WidgetWindow/WidgetWindow.h"
#include "Extension/WidgetWindow/WidgetWindowOptions.h"
#include "Extension/WidgetWindow/WidgetWindowSettings.h"
#include "Platform/UserDefaults/UserDefaults.h"
#include "WidgetData/Records/WidgetStoreDirectory.h"

namespace kestrona {
namespace {

constexpr std::string_view kProgram = "kestrona-widget-window: ";

// The window draws with Cairo alone. Its widgets are Cairo drawings, and
// GTK's GL renderer would add a whole GL stack (on a machine without a GPU
// driver, a software rasteriser with a JIT compiler: some 45 MiB and two
// threads) to redraw a few small pictures once a second. A user who sets
// GSK_RENDERER keeps that choice. GTK reads the variables when it starts and
// when the window gets its renderer; restore() takes them back afterwards,
// so that the application, when a press starts it, does not inherit them.
class CairoRendererChoice {
 public:
  CairoRendererChoice() : chosen_(g_getenv("GSK_RENDERER") == nullptr) {
    if (!chosen_) return;
    if (const char* debug = g_getenv("GDK_DEBUG")) debugFlags_ = debug;
    g_setenv("GSK_RENDERER", "cairo", TRUE);
    g_setenv("GDK_DEBUG", debugFlags_ ? (*debugFlags_ + ",gl-disable").c_str() : "gl-disable", TRUE);
  }

  void restore() {
    if (!chosen_) return;
    chosen_ = false;
    g_unsetenv("GSK_RENDERER");
    if (debugFlags_) {
      g_setenv("GDK_DEBUG", debugFlags_->c_str(), TRUE);
    } else {
      g_unsetenv("GDK_DEBUG");
    }
  }

 private:
  bool chosen_;
  std::optional<std::string> debugFlags_;
};

}  // namespace

int runWidgetWindow(const KestronaWidgets& bundle, const std::vector<std::string>& arguments, std::ostream& output,
                    std::ostream& errors) {
  const std::vector<WidgetConfiguration> widgets = bundle.body();
  WidgetWindowOptions options;
  try {
    options = parseWidgetWindowOptions(arguments, widgets);
  } catch (const CommandLineError& error) {
    errors << kProgram << error.localizedDescription() << "\n" << widgetWindowUsage();
    return 2;
  }
  if (options.help) {
    output << widgetWindowUsage();
    return 0;
  }

  // GTK would set the C library's locale from the environment; the core
  // reads numbers in the C locale and takes its locale from ICU instead.
  gtk_disable_setlocale();
  CairoRendererChoice renderer;
  if (!gtk_init_check()) {
    errors << kProgram
           << "cannot open a display: no X11 or Wayland display is reachable (DISPLAY, WAYLAND_DISPLAY). "
              "The widgets need a desktop session.\n";
    return 1;
  }

  std::shared_ptr<UserDefaults> defaults = UserDefaults::standard();
  WidgetWindowSettings settings = WidgetWindowSettings::read(*defaults, widgets);
  if (!options.widgets.empty()) settings.widgets = options.widgets;
  if (settings.widgets.empty()) settings.widgets = defaultWidgetChoices();

  WidgetWindow::Configuration configuration{widgets, settings.widgets, settings.windowSize, std::nullopt};
  if (std::optional<URL> directory = widgetStoreDirectoryUrl(bundle.appGroupName)) {
    configuration.widgetDirectory = directory->filesystemPath();
  }

  MainLoop& loop = MainLoop::main();
  std::unique_ptr<GLibMainContextPump> pump = GLibMainContextPump::start(loop, g_main_context_default());
  std::unique_ptr<WidgetWindow> window;
  try {
    window = std::make_unique<WidgetWindow>(loop, std::move(configuration), output, [&loop] { loop.stop(); });
  } catch (const Error& error) {
    errors << kProgram << error.localizedDescription() << "\n";
    return 1;
  }
  window->present();
  renderer.restore();
  loop.run();

  settings.windowSize = window->windowSize();
  settings.write(*defaults);
  window.reset();
  pump.reset();
  try {
    defaults->synchronize();
  } catch (const UserDefaultsError& error) {
    errors << kProgram << error.localizedDescription() << "\n";
    return 1;
  }
  return 0;
}

}  // namespace kestrona
