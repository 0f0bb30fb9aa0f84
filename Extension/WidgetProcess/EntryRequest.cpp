#include "Extension/WidgetProcess/EntryRequest.h"

#include <charconv>
#include <cmath>

#include "Extension/WidgetProcess/CommandLine.h"

namespace kestrona {
namespace {

using Code = CommandLineErrorCode;

struct Options {
  std::optional<std::string> kind;
  std::optional<std::string> family;
  std::optional<std::string> now;
};

// Reads "--name value" or "--name=value" at position; true when it was name.
bool readOption(const std::vector<std::string>& arguments, std::size_t& position, std::string_view name,
                std::optional<std::string>& value) {
  const std::string& argument = arguments[position];
  if (argument.rfind(name, 0) != 0) return false;
  std::string_view rest = std::string_view(argument).substr(name.size());
  if (!rest.empty() && rest.front() != '=') return false;
  if (value) throw CommandLineError(Code::unexpectedArgument, std::string(name) + " is given twice");
  if (!rest.empty()) {
    value = std::string(rest.substr(1));
  } else if (position + 1 < arguments.size()) {
    value = arguments[++position];
  } else {
    throw CommandLineError(Code::missingValue, std::string(name) + " needs a value");
  }
  return true;
}

Options readOptions(const std::vector<std::string>& arguments) {
  Options options;
  for (std::size_t position = 0; position < arguments.size(); ++position) {
    if (readOption(arguments, position, "--family", options.family)) continue;
    if (readOption(arguments, position, "--now", options.now)) continue;
    const std::string& argument = arguments[position];
    if (argument.rfind("--", 0) == 0) throw CommandLineError(Code::unexpectedArgument, "unknown option " + argument);
    if (options.kind) throw CommandLineError(Code::unexpectedArgument, "unexpected argument '" + argument + "'");
    options.kind = argument;
  }
  if (!options.kind) throw CommandLineError(Code::missingValue, "a widget kind is needed");
  return options;
}

Date parseSeconds(const std::string& text) {
  double seconds = 0;
  auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), seconds);
  if (error != std::errc() || end != text.data() + text.size() || !std::isfinite(seconds)) {
    throw CommandLineError(Code::badValue, "--now takes seconds since 1970, not '" + text + "'");
  }
  return Date(seconds);
}

std::string kindList(const std::vector<WidgetConfiguration>& widgets) {
  std::string list;
  for (const WidgetConfiguration& widget : widgets) list += (list.empty() ? "" : ", ") + widget.kind();
  return list;
}

}  // namespace

std::unique_ptr<EntryRequest> EntryRequest::parse(const KestronaWidgets& bundle,
                                                  const std::vector<std::string>& arguments) {
  Options options = readOptions(arguments);
  std::unique_ptr<EntryRequest> request(new EntryRequest());
  if (options.now) {
    request->clock_.set(parseSeconds(*options.now));
    request->scopedClock_.emplace(request->clock_);
  }
  std::vector<WidgetConfiguration> widgets = bundle.body();
  for (const WidgetConfiguration& widget : widgets) {
    if (widget.kind() == *options.kind) request->configuration_ = widget;
  }
  if (!request->configuration_) {
    throw CommandLineError(Code::unknownKind,
                           "unknown widget kind '" + *options.kind + "' (kinds: " + kindList(widgets) + ")");
  }
  const WidgetConfiguration& widget = *request->configuration_;
  request->family_ = widget.supportedFamilies().front();
  if (options.family) {
    std::optional<WidgetFamily> family = fromRawValue<WidgetFamily>(*options.family);
    if (!family) {
      throw CommandLineError(Code::unknownFamily, "unknown family '" + *options.family +
                                                      "' (families: systemSmall, systemMedium, systemLarge)");
    }
    if (!widget.isSupported(*family)) {
      throw CommandLineError(Code::unsupportedFamily,
                             "the widget '" + widget.kind() + "' has no family " + *options.family);
    }
    request->family_ = *family;
  }
  return request;
}

TimelineProviderContext EntryRequest::context() const {
  return TimelineProviderContext{.family = family_, .displayWidth = 0, .displayHeight = 0, .isPreview = false};
}

}  // namespace kestrona
