#include "Extension/WidgetProcess/EntryRequest.h"

#include "Extension/WidgetProcess/CommandLine.h"
#include "Extension/WidgetProcess/DataFileWarnings.h"
#include "Extension/WidgetProcess/WidgetSelection.h"
#include "Platform/WidgetHost/WidgetHost.h"

namespace kestrona {

std::unique_ptr<EntryRequest> EntryRequest::parse(const KestronaWidgets& bundle,
                                                  const std::vector<std::string>& arguments,
                                                  const std::vector<std::string_view>& extraOptions) {
  std::vector<std::string_view> names = {"--family", "--now"};
  names.insert(names.end(), extraOptions.begin(), extraOptions.end());
  std::unique_ptr<EntryRequest> request(new EntryRequest());
  request->appGroupName_ = bundle.appGroupName;
  request->options_ = readCommandOptions(arguments, names, true);
  const CommandOptions& options = request->options_;
  if (!options.argument) throw CommandLineError(CommandLineErrorCode::missingValue, "a widget kind is needed");
  if (const std::string* now = options.value("--now")) {
    request->clock_.set(parseNowOption(*now));
    request->scopedClock_.emplace(request->clock_);
  }
  std::vector<WidgetConfiguration> widgets = bundle.body();
  request->configuration_ = widgetOfKind(widgets, *options.argument);
  request->family_ = request->configuration_->supportedFamilies().front();
  if (const std::string* name = options.value("--family")) {
    request->family_ = familyOfWidget(*request->configuration_, *name);
  }
  return request;
}

TimelineProviderContext EntryRequest::context() const {
  return TimelineProviderContext{.family = family_, .displayWidth = 0, .displayHeight = 0, .isPreview = false};
}

const std::string* EntryRequest::option(std::string_view name) const { return options_.value(name); }

void EntryRequest::warnAboutDataFile(std::ostream& errors) const {
  DataFileWarnings(appGroupName_, errors).check(configuration_->kind());
}

AnyTimelineEntry EntryRequest::currentEntry() const {
  WidgetHost host({*configuration_}, Clock::current(), nullptr);
  host.start();
  return *host.currentEntry(configuration_->kind(), family_);
}

}  // namespace kestrona
