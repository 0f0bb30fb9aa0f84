// The token that keeps one key-value observer registered, for every kind of
// observable object.
//
// The observed object hands it out from its observe(): a weak reference to
// whatever owns the object's observer list, the observer's number, and the
// function that removes that number from the list. Destroying the token, or
// invalidate(), removes the observer once; later calls do nothing, and a
// token whose object is gone does nothing at all. Move-only.
//
// Threading: a token may be dropped on any thread; the observed object's
// remove function must take its own lock if it allows that.
#pragma once

#include <cstdint>
#include <memory>

namespace kestrona {

class KeyValueObservation {
 public:
  // Removes observer id from owner; must not throw.
  using Remove = void (*)(void* owner, std::uint64_t id) noexcept;

  KeyValueObservation() = default;
  KeyValueObservation(std::weak_ptr<void> owner, std::uint64_t id, Remove remove) noexcept
      : owner_(std::move(owner)), id_(id), remove_(remove) {}
  KeyValueObservation(KeyValueObservation&& other) noexcept;
  KeyValueObservation& operator=(KeyValueObservation&& other) noexcept;
  ~KeyValueObservation();
  KeyValueObservation(const KeyValueObservation&) = delete;
  KeyValueObservation& operator=(const KeyValueObservation&) = delete;

  // Removes the observer; later calls do nothing.
  void invalidate() noexcept;
  bool isActive() const noexcept { return id_ != 0 && !owner_.expired(); }

 private:
  std::weak_ptr<void> owner_;
  std::uint64_t id_ = 0;
  Remove remove_ = nullptr;
};

}  // namespace kestrona
