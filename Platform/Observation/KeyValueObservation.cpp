#include "Platform/Observation/KeyValueObservation.h"

#include <utility>

namespace kestrona {

KeyValueObservation::KeyValueObservation(KeyValueObservation&& other) noexcept
    : owner_(std::move(other.owner_)), id_(std::exchange(other.id_, 0)), remove_(other.remove_) {}

KeyValueObservation& KeyValueObservation::operator=(KeyValueObservation&& other) noexcept {
  if (this != &other) {
    invalidate();
    owner_ = std::move(other.owner_);
    id_ = std::exchange(other.id_, 0);
    remove_ = other.remove_;
  }
  return *this;
}

KeyValueObservation::~KeyValueObservation() { invalidate(); }

void KeyValueObservation::invalidate() noexcept {
  if (id_ == 0) return;
  if (auto owner = owner_.lock()) remove_(owner.get(), id_);
  owner_.reset();
  id_ = 0;
}

}  // namespace kestrona
