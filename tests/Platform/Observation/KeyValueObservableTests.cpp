#include "Platform/Observation/KeyValueObservable.h"

#include <gtest/gtest.h>

#include <variant>

namespace kestrona {
namespace {

namespace Option = KeyValueObservingOption;

class Item;
using ItemValue = std::variant<std::monostate, int, std::shared_ptr<Item>>;

// A plain object with a stored key, a computed key and a link to another.
class Item : public KeyValueObservable<ItemValue> {
 public:
  void setCount(int value) {
    willChangeValueForKey("count");
    count_ = value;
    didChangeValueForKey("count");
  }
  void setNext(std::shared_ptr<Item> next) {
    willChangeValueForKey("next");
    next_ = std::move(next);
    didChangeValueForKey("next");
  }
  ItemValue valueForKey(std::string_view key) const override {
    if (key == "count") return count_;
    if (key == "doubled") return 2 * count_;
    if (key == "next" && next_) return next_;
    return {};
  }
  std::vector<std::string> keyPathsForValuesAffectingValueForKey(std::string_view key) const override {
    if (key == "doubled") return {"count"};
    return {};
  }

 protected:
  ItemValue valueForKeyPathOfValue(const ItemValue& value, std::string_view keyPath) const override {
    auto item = std::get_if<std::shared_ptr<Item>>(&value);
    return item ? (*item)->valueForKeyPath(keyPath) : ItemValue{};
  }
  KeyValueObservation observeKeyPathOfValue(const ItemValue& value, std::string keyPath,
                                            NestedChangeCallback changed) override {
    auto item = std::get_if<std::shared_ptr<Item>>(&value);
    if (!item) return {};
    return (*item)->observe(std::move(keyPath), Option::prior,
                            [changed](const Change& change) { changed(change.isPrior); });
  }

 private:
  int count_ = 0;
  std::shared_ptr<Item> next_;
};

// What an observer heard, as (prior?, old, new) with -1 for absent or not a number.
struct Heard {
  std::vector<std::tuple<bool, int, int>> changes;
  Item::ObservationCallback callback() {
    return [this](const Item::Change& change) {
      auto number = [](const std::optional<ItemValue>& value) {
        return value && std::holds_alternative<int>(*value) ? std::get<int>(*value) : -1;
      };
      changes.emplace_back(change.isPrior, number(change.oldValue), number(change.newValue));
    };
  }
};

using Changes = std::vector<std::tuple<bool, int, int>>;

TEST(KeyValueObservable, OptionsAndNestedAnnouncements) {
  Item item;
  item.setCount(1);
  Heard all;
  Heard bare;
  auto t1 = item.observe("count", Option::initial | Option::prior | Option::oldValue | Option::newValue, all.callback());
  auto t2 = item.observe("count", 0, bare.callback());
  // Announcements nest: the observers hear once, with the value before the outermost will.
  item.willChangeValueForKey("count");
  item.setCount(2);
  item.setCount(3);
  item.didChangeValueForKey("count");
  EXPECT_EQ(all.changes, (Changes{{false, -1, 1}, {true, 1, -1}, {false, 1, 3}}));
  EXPECT_EQ(bare.changes, (Changes{{false, -1, -1}}));
}

TEST(KeyValueObservable, DependentKeysAndKeyPathsThroughLinkedObjects) {
  Item item;
  auto first = std::make_shared<Item>();
  auto second = std::make_shared<Item>();
  first->setCount(10);
  second->setCount(20);
  item.setNext(first);
  Heard doubled;
  Heard nextCount;
  auto t1 = item.observe("doubled", Option::newValue, doubled.callback());
  auto t2 = item.observe("next.count", Option::oldValue | Option::newValue, nextCount.callback());
  item.setCount(4);
  first->setCount(11);
  item.setNext(second);
  first->setCount(12);  // no longer on the path
  second->setCount(21);
  item.setNext(nullptr);
  second->setCount(22);
  EXPECT_EQ(doubled.changes, (Changes{{false, -1, 8}}));
  EXPECT_EQ(nextCount.changes, (Changes{{false, 10, 11}, {false, 11, 20}, {false, 20, 21}, {false, 21, -1}}));
}

TEST(KeyValueObservable, TokensEndObservationOnceAndOutliveTheObject) {
  auto item = std::make_shared<Item>();
  auto next = std::make_shared<Item>();
  item->setNext(next);
  // The first observer removes the second during a delivery: it is not called for that change.
  Heard second;
  KeyValueObservation secondToken;
  int firstCalls = 0;
  auto firstToken = item->observe("count", 0, [&](const Item::Change&) {
    ++firstCalls;
    secondToken.invalidate();
  });
  secondToken = item->observe("count", 0, second.callback());
  item->setCount(1);
  EXPECT_EQ(firstCalls, 1);
  EXPECT_TRUE(second.changes.empty());
  EXPECT_FALSE(secondToken.isActive());

  // Destroying the object ends its observers, the nested ones on linked objects too.
  Heard nested;
  auto nestedToken = item->observe("next.count", 0, nested.callback());
  item.reset();
  next->setCount(5);
  EXPECT_TRUE(nested.changes.empty());
  EXPECT_FALSE(nestedToken.isActive());
  nestedToken.invalidate();
}

}  // namespace
}  // namespace kestrona
