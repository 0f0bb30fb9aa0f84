// The widget process. The bundle is made before anything else runs, so the
// timer-intent host is in place before any widget or intent; then the
// command line decides what the process does.
#include <iostream>
#include <string>
#include <vector>

#include "Extension/WidgetProcess/CommandLine.h"
#include "Extension/WidgetProcess/KestronaWidgets.h"

int main(int argc, char** argv) {
  const kestrona::KestronaWidgets bundle;
  std::vector<std::string> arguments(argv + 1, argv + argc);
  return kestrona::runWidgetProcess(bundle, arguments, std::cout, std::cerr);
}
