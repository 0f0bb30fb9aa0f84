// kestrona-widgets timeline KIND [--family F] [--now SECONDS]: the timeline
// the widget gives now, with its reload policy.
#include <optional>
#include <ostream>

#include "Extension/WidgetProcess/CommandLine.h"
#include "Extension/WidgetProcess/EntryJSON.h"
#include "Extension/WidgetProcess/EntryRequest.h"

namespace kestrona {

int runTimelineCommand(const CommandInvocation& invocation) {
  std::unique_ptr<EntryRequest> request = EntryRequest::parse(invocation.bundle, invocation.arguments);
  request->warnAboutDataFile(invocation.errors);
  std::optional<AnyTimeline> timeline;
  request->configuration().getTimeline(request->context(),
                                       [&timeline](AnyTimeline given) { timeline = std::move(given); });
  nlohmann::ordered_json json = nlohmann::ordered_json::object();
  json["kind"] = request->configuration().kind();
  json["family"] = std::string(rawValue(request->family()));
  json["entries"] = nlohmann::ordered_json::array();
  for (const AnyTimelineEntry& entry : timeline->entries) json["entries"].push_back(entryJSON(entry));
  json["policy"] = policyJSON(timeline->policy);
  invocation.output << json.dump() << "\n";
  return 0;
}

}  // namespace kestrona
