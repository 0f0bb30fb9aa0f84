#include "SharedCore/Model/Rules/RuleSetOptions.h"

#include <string_view>

#include "Platform/Foundation/LocalizedString.h"

namespace kestrona {

namespace {

// The delay's label by its length alone: both delay types read the same.
std::string labelForSeconds(double seconds) {
  constexpr std::string_view comment = "Auto-tracking rules: delay before the timer starts or pauses";
  const auto whole = static_cast<long long>(seconds);
  if (whole == 0) {
    return localizedString("rules.delay.immediately", "immediately", "Auto-tracking rules: when the timer starts");
  }
  if (whole == 60) return localizedString("rules.delay.oneMinute", "for 1 minute", comment);
  const bool inMinutes = whole >= 60;
  std::string text =
      inMinutes ? localizedString("rules.delay.minutes", "for %lld minutes",
                                  "Auto-tracking rules: delay before the timer starts or pauses; the argument is the "
                                  "number of minutes")
                : localizedString("rules.delay.seconds", "for %lld seconds",
                                  "Auto-tracking rules: delay before the timer starts or pauses; the argument is the "
                                  "number of seconds");
  const auto argument = text.find("%lld");
  if (argument != std::string::npos) text.replace(argument, 4, std::to_string(inMinutes ? whole / 60 : whole));
  return text;
}

double intervalOfRaw(std::int64_t raw) {
  switch (raw) {
    case 4:
      return 0;
    case 5:
      return 10;
    case 0:
      return 30;
    case 1:
      return 60;
    case 2:
      return 180;
    default:
      return 300;
  }
}

}  // namespace

double interval(RuleSetStartDelay delay) { return intervalOfRaw(rawValue(delay)); }
double interval(RuleSetPauseDelay delay) { return intervalOfRaw(rawValue(delay)); }
int intervalInMinutes(RuleSetStartDelay delay) { return static_cast<int>(interval(delay) / 60); }
int intervalInMinutes(RuleSetPauseDelay delay) { return static_cast<int>(interval(delay) / 60); }
std::string localizedLabel(RuleSetStartDelay delay) { return labelForSeconds(interval(delay)); }
std::string localizedLabel(RuleSetPauseDelay delay) { return labelForSeconds(interval(delay)); }

}  // namespace kestrona
