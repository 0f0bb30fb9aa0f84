#include "Platform/WidgetHost/WidgetConfiguration.h"

#include <algorithm>

#include "Platform/Foundation/FatalError.h"

namespace kestrona {

WidgetConfiguration::WidgetConfiguration(std::string kind, std::shared_ptr<const ErasedProvider> provider)
    : kind_(std::move(kind)),
      supportedFamilies_(allCases<WidgetFamily>.begin(), allCases<WidgetFamily>.end()),
      provider_(std::move(provider)) {}

bool WidgetConfiguration::isSupported(WidgetFamily family) const {
  return std::find(supportedFamilies_.begin(), supportedFamilies_.end(), family) != supportedFamilies_.end();
}

WidgetConfiguration WidgetConfiguration::configurationDisplayName(std::string name) const {
  WidgetConfiguration copy = *this;
  copy.displayName_ = std::move(name);
  return copy;
}

WidgetConfiguration WidgetConfiguration::withDescription(std::string text) const {
  WidgetConfiguration copy = *this;
  copy.description_ = std::move(text);
  return copy;
}

WidgetConfiguration WidgetConfiguration::withSupportedFamilies(std::vector<WidgetFamily> families) const {
  precondition(!families.empty(), "A widget must support at least one family");
  WidgetConfiguration copy = *this;
  copy.supportedFamilies_ = std::move(families);
  return copy;
}

WidgetConfiguration WidgetConfiguration::withContentMarginsDisabled() const {
  WidgetConfiguration copy = *this;
  copy.contentMarginsDisabled_ = true;
  return copy;
}

AnyTimelineEntry WidgetConfiguration::placeholder(const TimelineProviderContext& context) const {
  return provider_->placeholder(context);
}

void WidgetConfiguration::getSnapshot(const TimelineProviderContext& context,
                                      const SnapshotCompletion& completion) const {
  provider_->getSnapshot(context, completion);
}

void WidgetConfiguration::getTimeline(const TimelineProviderContext& context,
                                      const TimelineCompletion& completion) const {
  provider_->getTimeline(context, completion);
}

}  // namespace kestrona
