// The widget window. The bundle is made first, so the timer-intent host is in
// place before any widget or intent runs; then the program does the rest.
#include <iostream>
#include <string>
#include <vector>

#include "Extension/WidgetProcess/KestronaWidgets.h"
#include "Extension/WidgetWindow/WidgetWindowProgram.h"
#include "Platform/Bundle/Bundle.h"
#include "Platform/UserDefaults/UserDefaults.h"

int main(int argc, char** argv) {
  const kestrona::KestronaWidgets bundle;
  kestrona::UserDefaults::setStandardDomain(
      kestrona::Bundle::main().bundleIdentifier().value_or("app.kestrona.widget-window"));
  std::vector<std::string> arguments(argv + 1, argv + argc);
  return kestrona::runWidgetWindow(bundle, arguments, std::cout, std::cerr);
}
