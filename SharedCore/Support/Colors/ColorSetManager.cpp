#include "SharedCore/Support/Colors/ColorSetManager.h"

#include <algorithm>
#include <array>
#include <string>

#include "Platform/Foundation/FatalError.h"

namespace kestrona {

namespace {

using ID = ColorSet::ID;

std::vector<ColorSet> makeColorSets() {
  constexpr std::array<ID, 18> kOffered{ID::violett,      ID::pink,      ID::red,     ID::orange,    ID::yellow,
                                        ID::green,        ID::teal,      ID::blue,    ID::indigo,    ID::lightViolett,
                                        ID::lightPink,    ID::lightRed,  ID::brown,   ID::green2,    ID::lightGreen,
                                        ID::cyan,         ID::lightBlue, ID::lightIndigo};
  std::vector<ColorSet> sets;
  sets.reserve(kOffered.size());
  for (ID id : kOffered) sets.emplace_back(id);
  return sets;
}

}  // namespace

ColorSetManager::ColorSetManager(std::shared_ptr<UserDefaults> defaults)
    : colorSets_(makeColorSets()),
      initiationSorting_{ID::cyan,         ID::blue,       ID::violett, ID::green2,   ID::pink,      ID::orange,
                         ID::lightViolett, ID::lightGreen, ID::teal,    ID::green,    ID::red,       ID::indigo,
                         ID::yellow,       ID::lightRed,   ID::lightBlue, ID::lightPink, ID::brown, ID::lightIndigo},
      defaults_(std::move(defaults)) {}

const ColorSet& ColorSetManager::defaultColorSet() { return ColorSet::defaultSet(); }

std::int64_t ColorSetManager::initiationCounter() {
  std::lock_guard lock(mutex_);
  return initiationCounterLocked();
}

std::int64_t ColorSetManager::initiationCounterLocked() {
  if (!initiationCounter_) {
    if (defaults_ == nullptr) defaults_ = UserDefaults::standard();
    initiationCounter_ = defaults_->integerForKey(kInitiationCounterKey);
  }
  return *initiationCounter_;
}

ColorSet ColorSetManager::nextColorSet() {
  std::lock_guard lock(mutex_);
  const std::int64_t counter = initiationCounterLocked();
  if (counter < 0 || counter >= static_cast<std::int64_t>(initiationSorting_.size())) {
    fatalError("The colour rotation counter " + std::string(kInitiationCounterKey) + " is damaged: " +
               std::to_string(counter));
  }
  ColorSet set = colorSetWithId(initiationSorting_[static_cast<std::size_t>(counter)]);
  // The position wraps by the length of colorSets; both lists hold the same
  // 18 sets, so this stays inside initiationSorting.
  const std::int64_t next = (counter + 1) % static_cast<std::int64_t>(colorSets_.size());
  initiationCounter_ = next;
  defaults_->set(next, kInitiationCounterKey);
  try {
    defaults_->synchronize();
  } catch (const UserDefaultsError&) {
    // The defaults logged why; the new counter stays pending in them and is
    // written at their next synchronize, at the latest when the process ends.
  }
  return set;
}

ColorSet ColorSetManager::colorSetWithId(ColorSet::ID id) const {
  const auto found = std::find_if(colorSets_.begin(), colorSets_.end(), [id](const ColorSet& set) { return set.id() == id; });
  return found == colorSets_.end() ? defaultColorSet() : *found;
}

ColorSet ColorSetManager::colorSetAtIndex(std::int64_t index) const {
  if (index < 0) fatalError("A negative colour set index: " + std::to_string(index));
  if (index >= static_cast<std::int64_t>(colorSets_.size())) return defaultColorSet();
  return colorSets_[static_cast<std::size_t>(index)];
}

std::int64_t ColorSetManager::index(ColorSet::ID id) const {
  const auto found = std::find_if(colorSets_.begin(), colorSets_.end(), [id](const ColorSet& set) { return set.id() == id; });
  return found == colorSets_.end() ? 0 : found - colorSets_.begin();
}

std::vector<Color> ColorSetManager::allBaseColors() const {
  std::vector<Color> colors;
  colors.reserve(colorSets_.size());
  for (const ColorSet& set : colorSets_) colors.push_back(set.baseColor());
  return colors;
}

}  // namespace kestrona
