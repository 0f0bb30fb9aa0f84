// The arguments the entry commands share: KIND [--family F] [--now SECONDS].
//
// EntryRequest::parse() reads them, fixes the present moment when --now is
// given (for as long as the request lives), and only then asks the bundle
// for its widgets, so that everything dated "now", a timer placeholder
// included, takes the fixed moment. The family defaults to the widget's
// first. Options may come before or after KIND, as "--family F" or
// "--family=F"; a command may take options of its own (extraOptions), which
// option() gives back unread. Throws CommandLineError for anything it can't
// read.
//
// currentEntry() is the entry the widget shows at the present moment, as
// the widget host has it: the placeholder first, then the entry of the
// widget's timeline whose date has come last (or its first, while none has).
// warnAboutDataFile() writes the warning of DataFileWarnings.h when the
// widget's file can't be used.
//
// Holds the clock it installs: not copied or moved; one per command run.
#pragma once

#include <iosfwd>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Extension/WidgetProcess/CommandOptions.h"
#include "Extension/WidgetProcess/KestronaWidgets.h"
#include "Platform/Time/Clock.h"
#include "Platform/WidgetHost/WidgetConfiguration.h"

namespace kestrona {

class EntryRequest {
 public:
  static std::unique_ptr<EntryRequest> parse(const KestronaWidgets& bundle, const std::vector<std::string>& arguments,
                                             const std::vector<std::string_view>& extraOptions = {});

  EntryRequest(const EntryRequest&) = delete;
  EntryRequest& operator=(const EntryRequest&) = delete;

  const WidgetConfiguration& configuration() const { return *configuration_; }
  WidgetFamily family() const noexcept { return family_; }
  TimelineProviderContext context() const;
  // The value of one of the extra options; null when it was not given.
  const std::string* option(std::string_view name) const;
  AnyTimelineEntry currentEntry() const;
  void warnAboutDataFile(std::ostream& errors) const;

 private:
  EntryRequest() = default;

  ManualClock clock_;
  std::optional<ScopedClock> scopedClock_;
  std::optional<WidgetConfiguration> configuration_;
  WidgetFamily family_ = WidgetFamily::systemSmall;
  CommandOptions options_;
  std::string appGroupName_;
};

}  // namespace kestrona
