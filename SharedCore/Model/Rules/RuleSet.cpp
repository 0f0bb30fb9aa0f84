#include "SharedCore/Model/Rules/RuleSet.h"

#include "SharedCore/Model/EntityValues.h"
#include "SharedCore/Model/Rules/RuleBase.h"
#include "SharedCore/Model/Tracking/Task.h"

namespace kestrona {

std::vector<std::shared_ptr<RuleBase>> RuleSet::rules() { return objectsOfClass<RuleBase>(objectsForKey("rules")); }

std::shared_ptr<Task> RuleSet::task() { return std::dynamic_pointer_cast<Task>(objectForKey("task")); }

RuleSet::StartType RuleSet::startType() {
  return integerForKey("startTypeIndex") == 0 ? StartType::notify : StartType::active;
}

void RuleSet::setStartType(StartType type) { setValue(Value(rawValue(type)), "startTypeIndex"); }

RuleSet::StartDelay RuleSet::startDelay() {
  return fromRawValue<StartDelay>(integerForKey("startDelayIndex")).value_or(StartDelay::for10sec);
}

void RuleSet::setStartDelay(StartDelay delay) { setValue(Value(rawValue(delay)), "startDelayIndex"); }

RuleSet::PauseType RuleSet::pauseType() {
  const auto index = integerForKey("pauseTypeIndex");
  if (index == 0) return PauseType::none;
  if (index == 1) return PauseType::notify;
  return PauseType::active;
}

void RuleSet::setPauseType(PauseType type) { setValue(Value(rawValue(type)), "pauseTypeIndex"); }

RuleSet::PauseDelay RuleSet::pauseDelay() {
  return fromRawValue<PauseDelay>(integerForKey("pauseDelayIndex")).value_or(PauseDelay::for10sec);
}

void RuleSet::setPauseDelay(PauseDelay delay) { setValue(Value(rawValue(delay)), "pauseDelayIndex"); }

}  // namespace kestrona
