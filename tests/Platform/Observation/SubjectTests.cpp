#include <gtest/gtest.h>

#include <vector>

#include "Platform/Observation/CurrentValueSubject.h"

namespace kestrona {
namespace {

// Subscribing and cancelling through handleEvents are covered by the key-path
// change observer's tests; here, what a subject itself promises.
TEST(CurrentValueSubject, NewSubscribersHearTheCurrentValueAndCancellingStopsEvenWithinASend) {
  CurrentValueSubject<int> subject(7);
  std::vector<int> first;
  std::vector<int> second;
  AnyCancellable secondSubscription;
  auto firstSubscription = subject.sink([&](int value) {
    first.push_back(value);
    if (value == 8) secondSubscription.cancel();
  });
  secondSubscription = subject.eraseToAnyPublisher().sink([&](int value) { second.push_back(value); });
  subject.send(8);
  subject.send(9);
  EXPECT_EQ(first, (std::vector<int>{7, 8, 9}));
  EXPECT_EQ(second, (std::vector<int>{7}));
  EXPECT_EQ(subject.value(), 9);
}

}  // namespace
}  // namespace kestrona
