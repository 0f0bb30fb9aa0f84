// The action a timer intent asks for: start the timer on a task, or pause it.
//
// Raw values "start" and "pause", compared exactly ("Start" is no case).
// Presented to the user as "Timer Action" with the cases "Start" and
// "Pause"; listed in that order.
#pragma once

#include <array>
#include <optional>
#include <string_view>

#include "Platform/Intents/AppEnum.h"

namespace kestrona {

enum class TimerActionType { start, pause };

template <>
struct RawRepresentable<TimerActionType> {
  using RawValue = std::string_view;
  static RawValue rawValue(TimerActionType action);
  static std::optional<TimerActionType> fromRawValue(RawValue raw);
};

template <>
inline constexpr std::array<TimerActionType, 2> allCases<TimerActionType> = {TimerActionType::start,
                                                                             TimerActionType::pause};

template <>
struct AppEnumDisplay<TimerActionType> {
  static constexpr std::string_view typeDisplayName = "Timer Action";
  static std::string_view caseDisplayRepresentation(TimerActionType action);
};

}  // namespace kestrona
