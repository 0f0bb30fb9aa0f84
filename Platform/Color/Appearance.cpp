#include "Platform/Color/Appearance.h"

#include <algorithm>

namespace kestrona {

namespace {

thread_local Appearance currentAppearance = Appearance::light();

}  // namespace

Appearance Appearance::current() { return currentAppearance; }

std::optional<Appearance::Name> Appearance::bestMatch(std::span<const Name> names) const {
  if (std::find(names.begin(), names.end(), name_) == names.end()) return std::nullopt;
  return name_;
}

ScopedAppearance::ScopedAppearance(Appearance appearance) : previous_(currentAppearance) {
  currentAppearance = appearance;
}

ScopedAppearance::~ScopedAppearance() { currentAppearance = previous_; }

}  // namespace kestrona
