#include "Platform/Observation/KeyValueObservable.h"

#include <gtest/gtest.h>

#include <variant>

namespace kestrona {
namespace {

namespace Option = KeyValueObservingOption;

class Item;
using ItemValue = std::variant<std::monostate, int>;

// A plain object with a stored key and a computed key. Key paths into
// linked objects are tested with the store's objects, in the timer's tests.
class Item : public KeyValueObservable<ItemValue> {
 public:
  void setCount(int value) {
    willChangeValueForKey("count");
    count_ = value;
    didChangeValueForKey("count");
  }
  ItemValue valueForKey(std::string_view key) const override {
    if (key == "count") return count_;
    if (key == "doubled") return 2 * count_;
    return {};
  }
  std::vector<std::string> keyPathsForValuesAffectingValueForKey(std::string_view key) const override {
    if (key == "doubled") return {"count"};
    return {};
  }

 private:
  int count_ = 0;
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

TEST(KeyValueObservable, DependentKeysHearTheKeysTheyDependOn) {
  Item item;
  Heard doubled;
  auto token = item.observe("doubled", Option::oldValue | Option::newValue, doubled.callback());
  item.setCount(4);
  EXPECT_EQ(doubled.changes, (Changes{{false, 0, 8}}));
}

TEST(KeyValueObservable, TokensEndObservationOnceAndOutliveTheObject) {
  auto item = std::make_shared<Item>();
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
  item.reset();
  EXPECT_FALSE(firstToken.isActive());
  firstToken.invalidate();
}

}  // namespace
}  // namespace kestrona
