#include "WidgetData/TimerIntent/KestronaWidgetDeepLinkScheme.h"

#include <string>

namespace kestrona {

std::string_view RawRepresentable<KestronaWidgetDeepLinkScheme>::rawValue(KestronaWidgetDeepLinkScheme scheme) {
  switch (scheme) {
    case KestronaWidgetDeepLinkScheme::openApp:
      return "deeplink-openApp";
    case KestronaWidgetDeepLinkScheme::toggleTimer:
      return "deeplink-toggleTimer";
    case KestronaWidgetDeepLinkScheme::openWeeklyReports:
      return "deeplink-openWeeklyReports";
    case KestronaWidgetDeepLinkScheme::openMonthlyReports:
      return "deeplink-openMonthlyReports";
    case KestronaWidgetDeepLinkScheme::startTimer:
      return "deeplink-startTimer";
    case KestronaWidgetDeepLinkScheme::pauseTimer:
      return "deeplink-pauseTimer";
    case KestronaWidgetDeepLinkScheme::unknown:
      return "deeplink-unknown";
  }
  return "deeplink-unknown";
}

std::optional<KestronaWidgetDeepLinkScheme> RawRepresentable<KestronaWidgetDeepLinkScheme>::fromRawValue(
    RawValue raw) {
  for (KestronaWidgetDeepLinkScheme scheme : allCases<KestronaWidgetDeepLinkScheme>) {
    if (rawValue(scheme) == raw) return scheme;
  }
  return std::nullopt;
}

std::optional<URL> url(KestronaWidgetDeepLinkScheme scheme) {
  return URL::fromString(std::string(rawValue(scheme)) + "://");
}

}  // namespace kestrona
