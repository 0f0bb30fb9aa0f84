// The URL schemes by which the widgets talk to the application.
//
// Each raw value is a whole scheme; url() is that scheme followed by "://",
// with no host, path or query. Command links (startTimer, pauseTimer) are
// made and read by TimerWidgetDeepLink; navigation links (openApp,
// openWeeklyReports, openMonthlyReports) are attached to widget surfaces;
// toggleTimer and unknown are part of the vocabulary the application shares,
// produced by nothing on the widget side. Raw values compare exactly, with
// case respected.
#pragma once

#include <array>
#include <optional>
#include <string_view>

#include "Platform/Foundation/RawRepresentable.h"
#include "Platform/URL/URL.h"

namespace kestrona {

enum class KestronaWidgetDeepLinkScheme {
  openApp,
  toggleTimer,
  openWeeklyReports,
  openMonthlyReports,
  startTimer,
  pauseTimer,
  unknown,
};

template <>
struct RawRepresentable<KestronaWidgetDeepLinkScheme> {
  using RawValue = std::string_view;
  static RawValue rawValue(KestronaWidgetDeepLinkScheme scheme);
  static std::optional<KestronaWidgetDeepLinkScheme> fromRawValue(RawValue raw);
};

template <>
inline constexpr std::array<KestronaWidgetDeepLinkScheme, 7> allCases<KestronaWidgetDeepLinkScheme> = {
    KestronaWidgetDeepLinkScheme::openApp,           KestronaWidgetDeepLinkScheme::toggleTimer,
    KestronaWidgetDeepLinkScheme::openWeeklyReports, KestronaWidgetDeepLinkScheme::openMonthlyReports,
    KestronaWidgetDeepLinkScheme::startTimer,        KestronaWidgetDeepLinkScheme::pauseTimer,
    KestronaWidgetDeepLinkScheme::unknown};

// "<raw value>://". Optional only because parsing is; it never fails for
// these schemes.
std::optional<URL> url(KestronaWidgetDeepLinkScheme scheme);

}  // namespace kestrona
