#include <gtest/gtest.h>

#include <vector>

#include "Platform/Observation/CurrentValueSubject.h"

namespace kestrona {
namespace {

TEST(CurrentValueSubject, SubscribersGetTheCurrentValueAtOnceThenEachSend) {
  CurrentValueSubject<int> subject(7);
  std::vector<int> early;
  std::vector<int> late;
  auto first = subject.sink([&](int value) { early.push_back(value); });
  subject.send(8);
  auto second = subject.eraseToAnyPublisher().sink([&](int value) { late.push_back(value); });
  subject.send(9);
  EXPECT_EQ(early, (std::vector<int>{7, 8, 9}));
  EXPECT_EQ(late, (std::vector<int>{8, 9}));
  EXPECT_EQ(subject.value(), 9);
}

TEST(CurrentValueSubject, CancellingStopsDeliveriesEvenWithinASend) {
  CurrentValueSubject<int> subject;
  AnyCancellable second;
  int firstCalls = 0;
  int secondCalls = 0;
  auto first = subject.sink([&](int value) {
    ++firstCalls;
    if (value == 1) second.cancel();
  });
  second = subject.sink([&](int) { ++secondCalls; });
  subject.send(1);
  subject.send(2);
  EXPECT_EQ(firstCalls, 3);
  EXPECT_EQ(secondCalls, 1);  // only the value given on subscribing
}

TEST(AnyPublisher, HandleEventsRunsItsCancelActionAfterTheUpstreamEnds) {
  auto subject = std::make_unique<CurrentValueSubject<int>>();
  std::vector<std::string> events;
  auto publisher = subject->eraseToAnyPublisher().handleEvents([&] { events.push_back("cancelled"); });
  auto subscription = publisher.sink([&](int value) { events.push_back(std::to_string(value)); });
  subject->send(1);
  subscription.cancel();
  subject->send(2);
  subscription.cancel();
  // The subscription outlives the subject without harm.
  auto other = publisher.sink([&](int) {});
  subject.reset();
  other.cancel();
  EXPECT_EQ(events, (std::vector<std::string>{"0", "1", "cancelled", "cancelled"}));
}

}  // namespace
}  // namespace kestrona
