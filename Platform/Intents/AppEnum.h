// Enumerations that intents take as parameters.
//
// An enumeration offered to the user as the value of an intent parameter
// specialises AppEnumDisplay with the name of its type and the text of each
// case, as the user sees them. It also has string raw values
// (RawRepresentable) and listed cases (allCases), by which a chosen case is
// stored and read back.
//
//   template <> struct AppEnumDisplay<TimerActionType> {
//     static constexpr std::string_view typeDisplayName = "Timer Action";
//     static std::string_view caseDisplayRepresentation(TimerActionType action);
//   };
#pragma once

#include <concepts>
#include <string_view>

#include "Platform/Foundation/RawRepresentable.h"

namespace kestrona {

template <typename Enum>
struct AppEnumDisplay;

template <typename Enum>
concept AppEnum = requires(Enum value) {
  { AppEnumDisplay<Enum>::typeDisplayName } -> std::convertible_to<std::string_view>;
  { AppEnumDisplay<Enum>::caseDisplayRepresentation(value) } -> std::convertible_to<std::string_view>;
  { rawValue(value) } -> std::convertible_to<std::string_view>;
  allCases<Enum>.size();
};

}  // namespace kestrona
