// kestrona-widgets placeholder KIND [--family F] [--now SECONDS]: the entry
// the widget shows before anything else is known.
#include <ostream>

#include "Extension/WidgetProcess/CommandLine.h"
#include "Extension/WidgetProcess/EntryJSON.h"
#include "Extension/WidgetProcess/EntryRequest.h"

namespace kestrona {

int runPlaceholderCommand(const CommandInvocation& invocation) {
  std::unique_ptr<EntryRequest> request = EntryRequest::parse(invocation.bundle, invocation.arguments);
  nlohmann::ordered_json json = nlohmann::ordered_json::object();
  json["kind"] = request->configuration().kind();
  json["family"] = std::string(rawValue(request->family()));
  json["entries"] = nlohmann::ordered_json::array({entryJSON(request->configuration().placeholder(request->context()))});
  invocation.output << json.dump() << "\n";
  return 0;
}

}  // namespace kestrona
