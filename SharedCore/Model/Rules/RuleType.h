// The kinds of auto-tracking rule, stored as Rule.typeValue.
//
// Nine kinds, raw values 0 to 8. What each one matches is the business of
// the monitor that evaluates the rules, outside this system, so the cases
// carry their numbers only. Rule::type() reads a stored value without a case
// as kind6.
#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "Platform/Foundation/RawRepresentable.h"
#include "SharedCore/Model/StoredRawValues.h"

namespace kestrona {

enum class RuleType : std::int16_t {
  kind0 = 0,
  kind1 = 1,
  kind2 = 2,
  kind3 = 3,
  kind4 = 4,
  kind5 = 5,
  kind6 = 6,
  kind7 = 7,
  kind8 = 8,
};

template <>
struct RawRepresentable<RuleType> : StoredRawValues<RuleType, 0, 8> {};

template <>
inline constexpr std::array<RuleType, 9> allCases<RuleType> = {
    RuleType::kind0, RuleType::kind1, RuleType::kind2, RuleType::kind3, RuleType::kind4,
    RuleType::kind5, RuleType::kind6, RuleType::kind7, RuleType::kind8};

}  // namespace kestrona
