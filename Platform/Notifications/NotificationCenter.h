// The notification centre: named broadcasts within one process.
//
// A Notification has a name (the design's notification texts, such as
// "mainContextDidChange" or "KSMinuteChanged"), an optional object (usually
// the sender) and a user-info dictionary of any values.
//
// An observer registers a block for a name and an object; either may be left
// open: no name means every name, a null object means any sender. Objects are
// compared by identity (address), never by value, and the centre never owns or
// dereferences them: a registration holds the address only.
//
// post() delivers synchronously, on the posting thread, before it returns, to
// every observer that matches, in the order they registered. The set of
// observers is taken when post() starts: an observer added during a delivery
// gets only later posts; an observer removed during a delivery (by itself or
// another) is not called afterwards, even within that same post.
//
// addObserver() returns an ObserverToken. Destroying the token or calling
// its remove() unregisters the block; after remove() returns, the block is
// not called again except by a delivery already running on another thread.
// removeObserver(token) on the centre does the same. Tokens may outlive their
// centre (they then do nothing).
//
// Threading: every member from any thread. Blocks run on the posting thread,
// without the centre's lock held, so they may post, add and remove observers.
#pragma once

#include <any>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace kestrona {

struct Notification {
  using UserInfo = std::map<std::string, std::any, std::less<>>;

  std::string name;
  // The sender, by identity; null for none. Not owned.
  const void* object = nullptr;
  UserInfo userInfo;

  // The user-info value under key if it holds a T, else null.
  template <typename T>
  const T* userInfoValue(std::string_view key) const noexcept {
    auto found = userInfo.find(key);
    return found == userInfo.end() ? nullptr : std::any_cast<T>(&found->second);
  }
};

class NotificationCenter;

// Keeps one registration alive. Move-only; destruction removes it.
class ObserverToken {
 public:
  ObserverToken() = default;
  ObserverToken(ObserverToken&& other) noexcept;
  ObserverToken& operator=(ObserverToken&& other) noexcept;
  ~ObserverToken();
  ObserverToken(const ObserverToken&) = delete;
  ObserverToken& operator=(const ObserverToken&) = delete;

  // Unregisters; later calls do nothing.
  void remove() noexcept;
  // Whether this token still holds a registration.
  bool isActive() const noexcept;

 private:
  friend class NotificationCenter;
  struct Registry;
  ObserverToken(std::weak_ptr<Registry> registry, std::uint64_t id);

  std::weak_ptr<Registry> registry_;
  std::uint64_t id_ = 0;
};

class NotificationCenter {
 public:
  using Block = std::function<void(const Notification&)>;

  NotificationCenter();
  ~NotificationCenter();
  NotificationCenter(const NotificationCenter&) = delete;
  NotificationCenter& operator=(const NotificationCenter&) = delete;

  // The process's centre, made on first use.
  static NotificationCenter& defaultCenter();

  // Registers block for notifications named name (all when none) from object
  // (any when null).
  [[nodiscard]] ObserverToken addObserver(std::optional<std::string> name, const void* object, Block block);

  void post(const Notification& notification);
  void post(std::string name, const void* object = nullptr, Notification::UserInfo userInfo = {});

  void removeObserver(ObserverToken& token) noexcept { token.remove(); }

 private:
  std::shared_ptr<ObserverToken::Registry> registry_;
};

}  // namespace kestrona
