#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "Platform/Notifications/NotificationCenter.h"

namespace kestrona {
namespace {

class NotificationCenterTest : public ::testing::Test {
 protected:
  // Registers an observer that records "<tag>:<name>" for each delivery.
  ObserverToken record(std::string tag, std::optional<std::string> name, const void* object) {
    return center_.addObserver(std::move(name), object,
                               [this, tag](const Notification& n) { log_.push_back(tag + ":" + n.name); });
  }

  NotificationCenter center_;
  std::vector<std::string> log_;
  int sender_ = 0;
  int otherSender_ = 0;
};

TEST_F(NotificationCenterTest, DeliversToMatchingNameAndObjectInRegistrationOrder) {
  auto all = record("all", std::nullopt, nullptr);
  auto tickFromSender = record("sender", "KSMinuteChanged", &sender_);
  auto tickFromAnyone = record("any", "KSMinuteChanged", nullptr);
  auto hour = record("hour", "KSHourChanged", nullptr);

  center_.post("KSMinuteChanged", &sender_);
  EXPECT_EQ(log_, (std::vector<std::string>{"all:KSMinuteChanged", "sender:KSMinuteChanged", "any:KSMinuteChanged"}));

  log_.clear();
  center_.post("KSMinuteChanged", &otherSender_);
  EXPECT_EQ(log_, (std::vector<std::string>{"all:KSMinuteChanged", "any:KSMinuteChanged"}));

  log_.clear();
  center_.post("KSMinuteChanged");
  EXPECT_EQ(log_, (std::vector<std::string>{"all:KSMinuteChanged", "any:KSMinuteChanged"}));

  log_.clear();
  center_.post("KSHourChanged", &sender_);
  EXPECT_EQ(log_, (std::vector<std::string>{"all:KSHourChanged", "hour:KSHourChanged"}));

  log_.clear();
  // Names are compared byte for byte.
  center_.post("ksminutechanged");
  EXPECT_EQ(log_, (std::vector<std::string>{"all:ksminutechanged"}));
}

TEST_F(NotificationCenterTest, UserInfoAndObjectReachTheObserver) {
  struct Changes {
    int inserted;
  };
  std::optional<int> inserted;
  const void* object = nullptr;
  bool wrongTypeIsNull = false;
  auto token = center_.addObserver("mainContextDidChange", nullptr, [&](const Notification& n) {
    if (auto* changes = n.userInfoValue<Changes>("contextChanges")) inserted = changes->inserted;
    wrongTypeIsNull = n.userInfoValue<std::string>("contextChanges") == nullptr &&
                      n.userInfoValue<Changes>("absent") == nullptr;
    object = n.object;
  });
  center_.post("mainContextDidChange", &sender_, {{"contextChanges", Changes{3}}});
  EXPECT_EQ(inserted, 3);
  EXPECT_TRUE(wrongTypeIsNull);
  EXPECT_EQ(object, &sender_);
}

TEST_F(NotificationCenterTest, TokensUnregisterWhenRemovedDestroyedOrReplaced) {
  auto removed = record("removed", "N", nullptr);
  auto moved = record("moved", "N", nullptr);
  auto overwritten = record("overwritten", "N", nullptr);
  {
    auto scoped = record("scoped", "N", nullptr);
    center_.post("N");
  }
  EXPECT_EQ(log_, (std::vector<std::string>{"removed:N", "moved:N", "overwritten:N", "scoped:N"}));

  log_.clear();
  removed.remove();
  removed.remove();  // a second removal does nothing
  EXPECT_FALSE(removed.isActive());
  ObserverToken holder = std::move(moved);
  EXPECT_FALSE(moved.isActive());
  EXPECT_TRUE(holder.isActive());
  overwritten = record("replacement", "N", nullptr);
  center_.post("N");
  EXPECT_EQ(log_, (std::vector<std::string>{"moved:N", "replacement:N"}));

  log_.clear();
  center_.removeObserver(holder);
  center_.post("N");
  EXPECT_EQ(log_, (std::vector<std::string>{"replacement:N"}));
}

TEST_F(NotificationCenterTest, ObserversRemovedDuringADeliveryAreNotCalledAfterwards) {
  ObserverToken first, second, third;
  first = center_.addObserver("N", nullptr, [&](const Notification&) {
    log_.push_back("first");
    third.remove();  // registered later: must not run in this very post
  });
  second = center_.addObserver("N", nullptr, [&](const Notification&) {
    log_.push_back("second");
    second.remove();  // removes itself
  });
  third = center_.addObserver("N", nullptr, [&](const Notification&) { log_.push_back("third"); });
  center_.post("N");
  center_.post("N");
  EXPECT_EQ(log_, (std::vector<std::string>{"first", "second", "first"}));
}

TEST_F(NotificationCenterTest, ObserversAddedDuringADeliveryGetOnlyLaterPosts) {
  std::vector<ObserverToken> added;
  auto adder = center_.addObserver("N", nullptr, [&](const Notification&) {
    log_.push_back("adder");
    if (added.empty()) added.push_back(record("late", "N", nullptr));
  });
  center_.post("N");
  EXPECT_EQ(log_, (std::vector<std::string>{"adder"}));
  center_.post("N");
  EXPECT_EQ(log_, (std::vector<std::string>{"adder", "adder", "late:N"}));
}

TEST_F(NotificationCenterTest, BlocksMayPostInTurn) {
  auto relay = center_.addObserver("WriteContextDidSave", nullptr,
                                   [&](const Notification&) { center_.post("mainContextDidChange"); });
  auto all = record("all", std::nullopt, nullptr);
  center_.post("WriteContextDidSave");
  // The nested post completes before the outer one goes on to "all".
  EXPECT_EQ(log_, (std::vector<std::string>{"all:mainContextDidChange", "all:WriteContextDidSave"}));
}

TEST(NotificationCenter, DeliveryHappensOnThePostingThread) {
  NotificationCenter center;
  std::atomic<int> onPoster = 0;
  std::atomic<int> elsewhere = 0;
  thread_local bool isPoster = false;
  auto token = center.addObserver("N", nullptr, [&](const Notification&) { (isPoster ? onPoster : elsewhere)++; });
  std::vector<std::thread> posters;
  for (int t = 0; t < 4; ++t) {
    posters.emplace_back([&] {
      isPoster = true;
      for (int i = 0; i < 100; ++i) center.post("N");
    });
  }
  for (auto& poster : posters) poster.join();
  EXPECT_EQ(onPoster, 400);
  EXPECT_EQ(elsewhere, 0);
}

TEST(NotificationCenter, TokensMayOutliveTheirCentre) {
  ObserverToken token;
  {
    NotificationCenter center;
    token = center.addObserver("N", nullptr, [](const Notification&) {});
    EXPECT_TRUE(token.isActive());
  }
  EXPECT_FALSE(token.isActive());
  token.remove();
}

}  // namespace
}  // namespace kestrona
