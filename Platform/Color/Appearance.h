// The appearance a colour is drawn in: light or dark.
//
// Dynamic colours (Color.h) choose their value by asking an appearance for
// its best match among a list of appearance names, most wanted first. An
// appearance matches exactly its own name; when the list does not hold it
// there is no match, and the caller falls back on a default of its own.
//
// Every thread has a current drawing appearance, light unless a
// ScopedAppearance on that thread says otherwise. A dynamic colour that is
// read without an explicit appearance resolves against it. Appearance values
// are immutable and may be shared between threads; ScopedAppearance changes
// only its own thread's current appearance.
#pragma once

#include <optional>
#include <span>

namespace kestrona {

class Appearance {
 public:
  // The names appearances answer to.
  enum class Name { light, dark };

  constexpr explicit Appearance(Name name) : name_(name) {}

  static constexpr Appearance light() { return Appearance(Name::light); }
  static constexpr Appearance dark() { return Appearance(Name::dark); }

  // The current drawing appearance of the calling thread.
  static Appearance current();

  constexpr Name name() const noexcept { return name_; }
  constexpr bool isDark() const noexcept { return name_ == Name::dark; }

  // The first of names that this appearance answers to, or none.
  std::optional<Name> bestMatch(std::span<const Name> names) const;

  friend constexpr bool operator==(Appearance, Appearance) = default;

 private:
  Name name_;
};

// Makes appearance the calling thread's current drawing appearance for its
// lifetime, then restores the previous one. Scopes nest; each must end on
// the thread that made it, in reverse order of making.
class ScopedAppearance {
 public:
  explicit ScopedAppearance(Appearance appearance);
  ~ScopedAppearance();
  ScopedAppearance(const ScopedAppearance&) = delete;
  ScopedAppearance& operator=(const ScopedAppearance&) = delete;

 private:
  Appearance previous_;
};

}  // namespace kestrona
