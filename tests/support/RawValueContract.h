// One typed contract test for enumerations with raw values.
//
// expectRawValues<E>(expected) checks that allCases<E> lists the cases in
// the order of expected, each with its raw value, that every raw value reads
// back as its case, and, for text raw values, that a raw value compared
// loosely (another case of its first letter, a trailing blank, the empty
// text) reads as no case. Raw values are file names, URL schemes and stored
// numbers: this is where a renamed one is caught.
#pragma once

#include <cctype>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

#include "Platform/Foundation/RawRepresentable.h"

namespace kestrona::testing {

template <typename E>
void expectRawValues(const std::vector<typename RawRepresentable<E>::RawValue>& expected) {
  using Raw = typename RawRepresentable<E>::RawValue;
  ASSERT_EQ(allCases<E>.size(), expected.size());
  for (std::size_t index = 0; index < expected.size(); ++index) {
    const E value = allCases<E>[index];
    EXPECT_EQ(rawValue(value), expected[index]) << "case " << index;
    EXPECT_EQ(fromRawValue<E>(expected[index]), value) << expected[index];
    if constexpr (std::is_same_v<Raw, std::string_view>) {
      std::string flipped(expected[index]);
      flipped[0] = static_cast<char>(std::isupper(static_cast<unsigned char>(flipped[0]))
                                         ? std::tolower(static_cast<unsigned char>(flipped[0]))
                                         : std::toupper(static_cast<unsigned char>(flipped[0])));
      EXPECT_EQ(fromRawValue<E>(flipped), std::nullopt) << flipped;
      EXPECT_EQ(fromRawValue<E>(std::string(expected[index]) + " "), std::nullopt) << expected[index];
    }
  }
  if constexpr (std::is_same_v<Raw, std::string_view>) {
    EXPECT_EQ(fromRawValue<E>(""), std::nullopt);
  }
}

}  // namespace kestrona::testing
