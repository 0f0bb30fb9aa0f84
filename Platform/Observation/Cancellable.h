// A subscription's handle: cancelling it ends the subscription.
//
// AnyCancellable runs its cancel action once, on cancel() or when it is
// destroyed, whichever comes first; later calls do nothing. Move-only. An
// empty one does nothing.
//
// Threading: cancel on any thread the subscription's contract allows; the
// handle itself is not shared between threads.
#pragma once

#include <functional>
#include <utility>

namespace kestrona {

class AnyCancellable {
 public:
  AnyCancellable() = default;
  explicit AnyCancellable(std::function<void()> cancel) : cancel_(std::move(cancel)) {}
  AnyCancellable(AnyCancellable&& other) noexcept : cancel_(std::exchange(other.cancel_, nullptr)) {}
  AnyCancellable& operator=(AnyCancellable&& other) noexcept {
    if (this != &other) {
      cancel();
      cancel_ = std::exchange(other.cancel_, nullptr);
    }
    return *this;
  }
  ~AnyCancellable() { cancel(); }
  AnyCancellable(const AnyCancellable&) = delete;
  AnyCancellable& operator=(const AnyCancellable&) = delete;

  void cancel() noexcept {
    if (auto cancel = std::exchange(cancel_, nullptr)) cancel();
  }

 private:
  std::function<void()> cancel_;
};

}  // namespace kestrona
