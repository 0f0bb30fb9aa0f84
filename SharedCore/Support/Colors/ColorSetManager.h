// The colour sets offered to tasks, and the rotation that gives new tasks
// their colour.
//
// colorSets() holds the 18 sets a task may have, in the order they are
// offered; white and gray are not among them. nextColorSet() hands out the
// sets in the fixed order of initiationSorting(), so that successive new
// tasks get visibly different colours. Its position, initiationCounter(),
// lives in the standard user defaults under
// "KSColorSetManager.initiationCounter" and is written and synchronised at
// every call, so the rotation continues across restarts. It is read once, at
// its first use, and cached: two managers alive at once may hand out the
// same set.
//
// Fatal errors: a stored counter that is negative or not less than the
// length of the rotation, and a negative index to colorSetAtIndex(). There
// is no repair of a damaged counter.
//
// Threading: a manager may be used from any thread; it serialises the
// rotation with a lock of its own. It is neither copied nor moved; make it
// with std::make_shared and share it.
#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string_view>
#include <vector>

#include "Platform/Color/Color.h"
#include "Platform/UserDefaults/UserDefaults.h"
#include "SharedCore/Support/Colors/ColorSet.h"

namespace kestrona {

class ColorSetManager {
 public:
  static constexpr std::string_view kInitiationCounterKey = "KSColorSetManager.initiationCounter";

  // A manager over the standard user defaults, read at the first use of the
  // rotation. A non-null defaults is used instead (tools and tests).
  explicit ColorSetManager(std::shared_ptr<UserDefaults> defaults = nullptr);
  ColorSetManager(const ColorSetManager&) = delete;
  ColorSetManager& operator=(const ColorSetManager&) = delete;

  // ColorSet::defaultSet(): the gray set.
  static const ColorSet& defaultColorSet();

  const std::vector<ColorSet>& colorSets() const noexcept { return colorSets_; }
  const std::vector<ColorSet::ID>& initiationSorting() const noexcept { return initiationSorting_; }
  // The position of the rotation, read from the user defaults (0 when
  // missing) at its first use.
  std::int64_t initiationCounter();

  // The next set of the rotation. Advances the counter, stores it and
  // synchronises the user defaults.
  ColorSet nextColorSet();
  // The set of id in colorSets(), or defaultColorSet() when it is not there
  // (as for white and gray).
  ColorSet colorSetWithId(ColorSet::ID id) const;
  // The set at index of colorSets(), or defaultColorSet() at or beyond the
  // end. A negative index is fatal.
  ColorSet colorSetAtIndex(std::int64_t index) const;
  // The index of id in colorSets(), or 0 when it is not there.
  std::int64_t index(ColorSet::ID id) const;
  // The base colours of colorSets(), in order.
  std::vector<Color> allBaseColors() const;

 private:
  std::int64_t initiationCounterLocked();

  const std::vector<ColorSet> colorSets_;
  const std::vector<ColorSet::ID> initiationSorting_;
  std::shared_ptr<UserDefaults> defaults_;
  std::mutex mutex_;
  std::optional<std::int64_t> initiationCounter_;
};

}  // namespace kestrona
