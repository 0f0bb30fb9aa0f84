// What a rule set does when its rules match (RuleSet::StartType,
// RuleSet::PauseType) and how long it waits first (RuleSet::StartDelay,
// RuleSet::PauseDelay).
//
// notify asks the user; active lets the timer act by itself. The delays'
// raw values are the stored indices, and they differ from the declared
// order on purpose (allCases follows the declared order): stores written
// before the short delays existed keep their meaning. PauseDelay has no raw
// value 4. fromRawValue gives none for a number without a case; RuleSet's
// readers map such numbers to a default instead.
//
// localizedLabel() reads "immediately", "for 10 seconds", "for 1 minute",
// "for 3 minutes" and so on, through the keys "rules.delay.*". Pure
// functions, thread-safe.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "Platform/Foundation/RawRepresentable.h"
#include "SharedCore/Model/StoredRawValues.h"

namespace kestrona {

enum class RuleSetStartType : std::int16_t { notify = 0, active = 1 };
enum class RuleSetPauseType : std::int16_t { none = 0, notify = 1, active = 2 };

enum class RuleSetStartDelay : std::int16_t {
  immediately = 4,
  for10sec = 5,
  for30sec = 0,
  for1min = 1,
  for3min = 2,
  for5min = 3,
};

enum class RuleSetPauseDelay : std::int16_t {
  for10sec = 5,
  for30sec = 0,
  for1min = 1,
  for3min = 2,
  for5min = 3,
};

template <>
struct RawRepresentable<RuleSetStartType> : StoredRawValues<RuleSetStartType, 0, 1> {};

template <>
struct RawRepresentable<RuleSetPauseType> : StoredRawValues<RuleSetPauseType, 0, 2> {};

template <>
struct RawRepresentable<RuleSetStartDelay> : StoredRawValues<RuleSetStartDelay, 0, 5> {};

template <>
struct RawRepresentable<RuleSetPauseDelay> {
  using RawValue = std::int64_t;
  static constexpr RawValue rawValue(RuleSetPauseDelay delay) { return static_cast<RawValue>(delay); }
  static constexpr std::optional<RuleSetPauseDelay> fromRawValue(RawValue raw) {
    if (raw < 0 || raw > 5 || raw == 4) return std::nullopt;
    return static_cast<RuleSetPauseDelay>(raw);
  }
};

template <>
inline constexpr std::array<RuleSetStartType, 2> allCases<RuleSetStartType> = {RuleSetStartType::notify,
                                                                                RuleSetStartType::active};
template <>
inline constexpr std::array<RuleSetPauseType, 3> allCases<RuleSetPauseType> = {
    RuleSetPauseType::none, RuleSetPauseType::notify, RuleSetPauseType::active};
template <>
inline constexpr std::array<RuleSetStartDelay, 6> allCases<RuleSetStartDelay> = {
    RuleSetStartDelay::immediately, RuleSetStartDelay::for10sec, RuleSetStartDelay::for30sec,
    RuleSetStartDelay::for1min,     RuleSetStartDelay::for3min,  RuleSetStartDelay::for5min};
template <>
inline constexpr std::array<RuleSetPauseDelay, 5> allCases<RuleSetPauseDelay> = {
    RuleSetPauseDelay::for10sec, RuleSetPauseDelay::for30sec, RuleSetPauseDelay::for1min,
    RuleSetPauseDelay::for3min, RuleSetPauseDelay::for5min};

// Seconds to wait.
double interval(RuleSetStartDelay delay);
double interval(RuleSetPauseDelay delay);
// The interval in whole minutes, cut down: 0 for the delays under a minute.
int intervalInMinutes(RuleSetStartDelay delay);
int intervalInMinutes(RuleSetPauseDelay delay);
std::string localizedLabel(RuleSetStartDelay delay);
std::string localizedLabel(RuleSetPauseDelay delay);

}  // namespace kestrona
