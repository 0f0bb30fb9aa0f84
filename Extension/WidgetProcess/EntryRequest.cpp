#include "Extension/WidgetProcess/EntryRequest.h"

#include "Extension/WidgetProcess/CommandLine.h"
#include "Platform/WidgetHost/WidgetHost.h"

namespace kestrona {
namespace {

using Code = CommandLineErrorCode;

std::string kindList(const std::vector<WidgetConfiguration>& widgets) {
  std::string list;
  for (const WidgetConfiguration& widget : widgets) list += (list.empty() ? "" : ", ") + widget.kind();
  return list;
}

}  // namespace

std::unique_ptr<EntryRequest> EntryRequest::parse(const KestronaWidgets& bundle,
                                                  const std::vector<std::string>& arguments,
                                                  const std::vector<std::string_view>& extraOptions) {
  std::vector<std::string_view> names = {"--family", "--now"};
  names.insert(names.end(), extraOptions.begin(), extraOptions.end());
  std::unique_ptr<EntryRequest> request(new EntryRequest());
  request->options_ = readCommandOptions(arguments, names, true);
  const CommandOptions& options = request->options_;
  if (!options.argument) throw CommandLineError(Code::missingValue, "a widget kind is needed");
  if (const std::string* now = options.value("--now")) {
    request->clock_.set(parseNowOption(*now));
    request->scopedClock_.emplace(request->clock_);
  }
  std::vector<WidgetConfiguration> widgets = bundle.body();
  for (const WidgetConfiguration& widget : widgets) {
    if (widget.kind() == *options.argument) request->configuration_ = widget;
  }
  if (!request->configuration_) {
    throw CommandLineError(Code::unknownKind,
                           "unknown widget kind '" + *options.argument + "' (kinds: " + kindList(widgets) + ")");
  }
  const WidgetConfiguration& widget = *request->configuration_;
  request->family_ = widget.supportedFamilies().front();
  if (const std::string* name = options.value("--family")) {
    std::optional<WidgetFamily> family = fromRawValue<WidgetFamily>(*name);
    if (!family) {
      throw CommandLineError(Code::unknownFamily,
                             "unknown family '" + *name + "' (families: systemSmall, systemMedium, systemLarge)");
    }
    if (!widget.isSupported(*family)) {
      throw CommandLineError(Code::unsupportedFamily, "the widget '" + widget.kind() + "' has no family " + *name);
    }
    request->family_ = *family;
  }
  return request;
}

TimelineProviderContext EntryRequest::context() const {
  return TimelineProviderContext{.family = family_, .displayWidth = 0, .displayHeight = 0, .isPreview = false};
}

const std::string* EntryRequest::option(std::string_view name) const { return options_.value(name); }

AnyTimelineEntry EntryRequest::currentEntry() const {
  WidgetHost host({*configuration_}, Clock::current(), nullptr);
  host.start();
  return *host.currentEntry(configuration_->kind(), family_);
}

}  // namespace kestrona
