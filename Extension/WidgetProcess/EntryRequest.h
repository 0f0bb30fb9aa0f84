// The arguments the entry commands share: KIND [--family F] [--now SECONDS].
//
// EntryRequest::parse() reads them, fixes the present moment when --now is
// given (for as long as the request lives), and only then asks the bundle
// for its widgets, so that everything dated "now", a timer placeholder
// included, takes the fixed moment. The family defaults to the widget's
// first. Options may come before or after KIND, as "--family F" or
// "--family=F". Throws CommandLineError for anything it can't read.
//
// Holds the clock it installs: not copied or moved; one per command run.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Extension/WidgetProcess/KestronaWidgets.h"
#include "Platform/Time/Clock.h"
#include "Platform/WidgetHost/WidgetConfiguration.h"

namespace kestrona {

class EntryRequest {
 public:
  static std::unique_ptr<EntryRequest> parse(const KestronaWidgets& bundle, const std::vector<std::string>& arguments);

  EntryRequest(const EntryRequest&) = delete;
  EntryRequest& operator=(const EntryRequest&) = delete;

  const WidgetConfiguration& configuration() const { return *configuration_; }
  WidgetFamily family() const noexcept { return family_; }
  TimelineProviderContext context() const;

 private:
  EntryRequest() = default;

  ManualClock clock_;
  std::optional<ScopedClock> scopedClock_;
  std::optional<WidgetConfiguration> configuration_;
  WidgetFamily family_ = WidgetFamily::systemSmall;
};

}  // namespace kestrona
