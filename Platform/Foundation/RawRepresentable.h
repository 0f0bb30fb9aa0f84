// Enumerations with raw values, and enumerations whose cases can be listed.
//
// An enumeration whose cases have persisted or exchanged raw values
// specialises RawRepresentable with its raw type and both conversions:
//
//   template <> struct RawRepresentable<WidgetType> {
//     using RawValue = std::string_view;
//     static RawValue rawValue(WidgetType type);
//     static std::optional<WidgetType> fromRawValue(RawValue raw);
//   };
//
// Callers then write rawValue(type) and fromRawValue<WidgetType>("timer").
// A raw value outside the enumeration gives none, never an unnamed case.
// An enumeration whose cases are listed in order specialises allCases.
#pragma once

#include <optional>

namespace kestrona {

template <typename Enum>
struct RawRepresentable;

template <typename Enum>
constexpr auto rawValue(Enum value) -> typename RawRepresentable<Enum>::RawValue {
  return RawRepresentable<Enum>::rawValue(value);
}

template <typename Enum>
constexpr std::optional<Enum> fromRawValue(typename RawRepresentable<Enum>::RawValue raw) {
  return RawRepresentable<Enum>::fromRawValue(raw);
}

// Specialise as: template <> inline constexpr std::array<E, N> allCases<E> = {...};
template <typename Enum>
inline constexpr auto allCases = nullptr;

}  // namespace kestrona
