#include "Extension/WidgetProcess/WidgetSelection.h"

#include <string>

#include "Extension/WidgetProcess/CommandLine.h"

namespace kestrona {

const WidgetConfiguration& widgetOfKind(const std::vector<WidgetConfiguration>& widgets, std::string_view kind) {
  std::string kinds;
  for (const WidgetConfiguration& widget : widgets) {
    if (widget.kind() == kind) return widget;
    kinds += (kinds.empty() ? "" : ", ") + widget.kind();
  }
  throw CommandLineError(CommandLineErrorCode::unknownKind,
                         "unknown widget kind '" + std::string(kind) + "' (kinds: " + kinds + ")");
}

WidgetFamily familyOfWidget(const WidgetConfiguration& widget, std::string_view name) {
  std::optional<WidgetFamily> family = fromRawValue<WidgetFamily>(name);
  if (!family) {
    throw CommandLineError(CommandLineErrorCode::unknownFamily, "unknown family '" + std::string(name) +
                                                                    "' (families: systemSmall, systemMedium, systemLarge)");
  }
  if (!widget.isSupported(*family)) {
    throw CommandLineError(CommandLineErrorCode::unsupportedFamily,
                           "the widget '" + widget.kind() + "' has no family " + std::string(name));
  }
  return *family;
}

}  // namespace kestrona
