// The billing state of a time entry, stored as its raw value in
// Session.billingStatusValue.
//
// fromRawValue<BillingStatus> gives none outside 0 to 2; every other use of
// such a value is a programming error, except Session::billingStatus(),
// which reads any unknown stored value as unbilled. description() is the
// localised text, enDescription() the fixed English word, color() the
// colour a list shows the state in (unbilled in the secondary text colour).
// Pure functions, thread-safe.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "Platform/Color/Color.h"
#include "Platform/Foundation/RawRepresentable.h"
#include "SharedCore/Model/StoredRawValues.h"

namespace kestrona {

enum class BillingStatus : std::int16_t { unbilled = 0, billed = 1, paid = 2 };

template <>
struct RawRepresentable<BillingStatus> : StoredRawValues<BillingStatus, 0, 2> {};

template <>
inline constexpr std::array<BillingStatus, 3> allCases<BillingStatus> = {
    BillingStatus::unbilled, BillingStatus::billed, BillingStatus::paid};

// "unbilled", "billed", "paid".
std::string_view enDescription(BillingStatus status);
// "Unbilled", "Billed", "Paid", through the localisation keys
// "timeEntry.billingStatus.<word>".
std::string description(BillingStatus status);
Color color(BillingStatus status);

}  // namespace kestrona
