// The raw values of an enumeration that the store keeps as an integer and
// whose cases are all the numbers from First to Last: specialise
//
//   template <> struct RawRepresentable<BillingStatus> : StoredRawValues<BillingStatus, 0, 2> {};
//
// rawValue() is the case's number; fromRawValue() gives none outside the
// range. The readers of the entities decide what an unknown stored number
// means.
#pragma once

#include <cstdint>
#include <optional>

#include "Platform/Foundation/RawRepresentable.h"

namespace kestrona {

template <typename Enum, std::int64_t First, std::int64_t Last>
struct StoredRawValues {
  using RawValue = std::int64_t;
  static constexpr RawValue rawValue(Enum value) { return static_cast<RawValue>(value); }
  static constexpr std::optional<Enum> fromRawValue(RawValue raw) {
    if (raw < First || raw > Last) return std::nullopt;
    return static_cast<Enum>(raw);
  }
};

}  // namespace kestrona
