#include "SharedCore/Timer/KeyPathChangeObserver.h"

#include <gtest/gtest.h>

#include <functional>
#include <map>

#include "Platform/Observation/KeyValueObserving.h"

namespace kestrona {
namespace {

// An observable that counts the observers added and removed.
class CountingObject : public std::enable_shared_from_this<CountingObject> {
 public:
  using Callback = std::function<void(const BasicKeyValueChange<int, CountingObject>&)>;

  KeyValueObservation observe(std::string keyPath, KeyValueObservingOptions options, Callback callback) {
    EXPECT_EQ(options, 0u);
    observers_[next_] = {std::move(keyPath), std::move(callback)};
    return KeyValueObservation(weak_from_this(), next_++, &CountingObject::remove);
  }
  void change(const std::string& keyPath) {
    auto observers = observers_;
    for (auto& [id, observer] : observers) {
      if (observer.first == keyPath) observer.second({});
    }
  }
  int removals = 0;
  std::size_t observerCount() const { return observers_.size(); }

 private:
  static void remove(void* object, std::uint64_t id) noexcept {
    auto self = static_cast<CountingObject*>(object);
    self->removals += static_cast<int>(self->observers_.erase(id));
  }
  std::map<std::uint64_t, std::pair<std::string, Callback>> observers_;
  std::uint64_t next_ = 1;
};

// A subscription keeps its observer alive: nothing else holds it here.
TEST(KeyPathChangeObserver, OneEventOnSubscribingAndOnePerChangeOfAnyPath) {
  auto object = std::make_shared<CountingObject>();
  int events = 0;
  auto subscription =
      std::make_shared<KeyPathChangeObserver>(object, std::vector<std::string>{"session.task", "session.begin"})
          ->publisher()
          .sink([&](const KeyPathChangeObserver::Event&) { ++events; });
  EXPECT_EQ(events, 1);
  object->change("session.task");
  object->change("session.begin");
  object->change("session.end");
  EXPECT_EQ(events, 3);
  subscription.cancel();
  EXPECT_EQ(object->observerCount(), 0u);
}

TEST(KeyPathChangeObserver, CancellingStopsObservingOnceAndDestructionRemovesNothingMore) {
  auto object = std::make_shared<CountingObject>();
  int events = 0;
  {
    auto observer = std::make_shared<KeyPathChangeObserver>(object, std::vector<std::string>{"a", "b", "c"});
    auto subscription = observer->publisher().sink([&](const KeyPathChangeObserver::Event&) { ++events; });
    subscription.cancel();
    EXPECT_EQ(object->removals, 3);
    EXPECT_TRUE(observer->keyPaths().empty());
    object->change("a");
    observer->stop();
  }
  EXPECT_EQ(object->removals, 3);
  EXPECT_EQ(object->observerCount(), 0u);
  EXPECT_EQ(events, 1);
}

}  // namespace
}  // namespace kestrona
