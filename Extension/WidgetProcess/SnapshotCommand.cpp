// kestrona-widgets snapshot KIND [--family F] [--now SECONDS]: the one entry
// the widget gives for a quick look.
#include <optional>
#include <ostream>

#include "Extension/WidgetProcess/CommandLine.h"
#include "Extension/WidgetProcess/EntryJSON.h"
#include "Extension/WidgetProcess/EntryRequest.h"

namespace kestrona {

int runSnapshotCommand(const CommandInvocation& invocation) {
  std::unique_ptr<EntryRequest> request = EntryRequest::parse(invocation.bundle, invocation.arguments);
  request->warnAboutDataFile(invocation.errors);
  std::optional<AnyTimelineEntry> snapshot;
  request->configuration().getSnapshot(request->context(),
                                       [&snapshot](AnyTimelineEntry given) { snapshot = std::move(given); });
  nlohmann::ordered_json json = nlohmann::ordered_json::object();
  json["kind"] = request->configuration().kind();
  json["family"] = std::string(rawValue(request->family()));
  json["entries"] = nlohmann::ordered_json::array({entryJSON(*snapshot)});
  invocation.output << json.dump() << "\n";
  return 0;
}

}  // namespace kestrona
