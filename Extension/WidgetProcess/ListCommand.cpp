// kestrona-widgets list: the widgets of the bundle in gallery order, each
// with its kind, name, description and families, as one JSON array.
#include <ostream>

#include <nlohmann/json.hpp>

#include "Extension/WidgetProcess/CommandLine.h"
#include "Extension/WidgetProcess/CommandOptions.h"

namespace kestrona {

int runListCommand(const CommandInvocation& invocation) {
  readCommandOptions(invocation.arguments, {}, false);
  nlohmann::ordered_json widgets = nlohmann::ordered_json::array();
  for (const WidgetConfiguration& widget : invocation.bundle.body()) {
    nlohmann::ordered_json item = nlohmann::ordered_json::object();
    item["kind"] = widget.kind();
    item["displayName"] = widget.displayName();
    item["description"] = widget.description();
    item["families"] = nlohmann::ordered_json::array();
    for (WidgetFamily family : widget.supportedFamilies()) item["families"].push_back(std::string(rawValue(family)));
    widgets.push_back(std::move(item));
  }
  invocation.output << widgets.dump() << "\n";
  return 0;
}

}  // namespace kestrona
