// kestrona-widgets run [--for SECONDS]: the widget process as the desktop
// starts it. It places every widget in every family on a widget host, on
// the system clock, watches the widget files of the group container, and
// writes one JSON line per host event to the output:
//
//   {"event": "timelineReloaded" | "entryChanged", "kind", "family", "date",
//    "reason": "start" | "policy" | "fileChanged" | "requested",
//    "entry": {...}}                       (entry: entryChanged only)
//
// It sleeps in poll() until the host's next update or a file change, and
// never blocks on a file itself: the providers read only regular files. With
// --for it stops after that many seconds (0: start, one update, stop);
// without it runs until it is ended. With no group container it still runs,
// with nothing to watch. A widget that shows stand-in data because its file
// can't be used is warned about on the error stream when it is reloaded,
// once for each new reason.
#include <poll.h>

#include <algorithm>
#include <cmath>
#include <ostream>

#include "Extension/WidgetProcess/CommandLine.h"
#include "Extension/WidgetProcess/CommandOptions.h"
#include "Extension/WidgetProcess/DataFileWarnings.h"
#include "Extension/WidgetProcess/EntryJSON.h"
#include "Platform/WidgetHost/InotifyFileChangeMonitor.h"
#include "Platform/WidgetHost/WidgetHost.h"
#include "WidgetData/Records/WidgetStoreDirectory.h"

namespace kestrona {
namespace {

std::optional<double> readDuration(const std::vector<std::string>& arguments) {
  const CommandOptions options = readCommandOptions(arguments, {"--for"}, false);
  const std::string* text = options.value("--for");
  if (!text) return std::nullopt;
  return parseNonNegativeOption("--for", *text);
}

std::string_view reasonName(WidgetHostEvent::Reason reason) {
  switch (reason) {
    case WidgetHostEvent::Reason::start: return "start";
    case WidgetHostEvent::Reason::policy: return "policy";
    case WidgetHostEvent::Reason::fileChanged: return "fileChanged";
    case WidgetHostEvent::Reason::requested: return "requested";
  }
  return "";
}

}  // namespace

int runRunCommand(const CommandInvocation& invocation) {
  std::optional<double> duration = readDuration(invocation.arguments);
  Clock& clock = Clock::current();
  std::optional<Date> end;
  if (duration) end = clock.now().addingTimeInterval(*duration);

  std::shared_ptr<InotifyFileChangeMonitor> monitor = InotifyFileChangeMonitor::make();
  WidgetHost host(invocation.bundle.body(), clock, monitor);
  DataFileWarnings warnings(invocation.bundle.appGroupName, invocation.errors);
  host.setObserver([&host, &invocation, &warnings](const WidgetHostEvent& event) {
    nlohmann::ordered_json json = nlohmann::ordered_json::object();
    bool changed = event.kind == WidgetHostEvent::Kind::entryChanged;
    if (!changed) warnings.check(event.widgetKind);
    json["event"] = changed ? "entryChanged" : "timelineReloaded";
    json["kind"] = event.widgetKind;
    json["family"] = std::string(rawValue(event.family));
    json["date"] = event.date.timeIntervalSince1970();
    json["reason"] = std::string(reasonName(event.reason));
    if (changed) {
      if (const AnyTimelineEntry* entry = host.currentEntry(event.widgetKind, event.family)) {
        json["entry"] = entryJSON(*entry);
      }
    }
    invocation.output << json.dump() << std::endl;
  });
  if (std::optional<URL> directory = widgetStoreDirectoryUrl(invocation.bundle.appGroupName)) {
    for (const WidgetConfiguration& widget : host.widgets()) {
      host.watchDataFile(widget.kind(), directory->appendingPathComponent(widget.kind()).filesystemPath());
    }
  }
  host.start();
  for (;;) {
    host.update();
    Date now = clock.now();
    if (end && now >= *end) return 0;
    std::optional<Date> wake = host.nextUpdateDate();
    if (end && (!wake || *end < *wake)) wake = end;
    int timeout = -1;
    if (wake) timeout = static_cast<int>(std::clamp(std::ceil(wake->timeIntervalSince(now) * 1000), 0.0, 3.6e6));
    pollfd descriptor{.fd = monitor->fileDescriptor(), .events = POLLIN, .revents = 0};
    ::poll(&descriptor, 1, timeout);
  }
}

}  // namespace kestrona
