#include "Platform/UserDefaults/PropertyValueCoding.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace kestrona {
namespace {

PropertyValue roundTrip(const PropertyValue& value) {
  return decodePropertyValue(nlohmann::json::parse(encodePropertyValue(value).dump()));
}

TEST(PropertyValueCodingTest, ScalarsKeepTheirExactType) {
  EXPECT_EQ(roundTrip(true).type(), PropertyValue::Type::boolean);
  EXPECT_EQ(roundTrip(1).type(), PropertyValue::Type::integer);
  EXPECT_EQ(roundTrip(1.0).type(), PropertyValue::Type::real);
  EXPECT_EQ(roundTrip(std::numeric_limits<std::int64_t>::min()), PropertyValue(std::numeric_limits<std::int64_t>::min()));
  EXPECT_EQ(roundTrip(std::numeric_limits<std::int64_t>::max()), PropertyValue(std::numeric_limits<std::int64_t>::max()));
  EXPECT_EQ(roundTrip(0.1), PropertyValue(0.1));
  EXPECT_EQ(roundTrip(-1e300), PropertyValue(-1e300));
  EXPECT_EQ(roundTrip("1"), PropertyValue("1"));
  EXPECT_EQ(roundTrip(Date(1700000000.25)), PropertyValue(Date(1700000000.25)));
}

TEST(PropertyValueCodingTest, NonFiniteNumbersSurvive) {
  EXPECT_TRUE(std::isnan(*roundTrip(std::nan("")).getIf<double>()));
  EXPECT_EQ(roundTrip(std::numeric_limits<double>::infinity()), PropertyValue(std::numeric_limits<double>::infinity()));
  EXPECT_EQ(roundTrip(-std::numeric_limits<double>::infinity()),
            PropertyValue(-std::numeric_limits<double>::infinity()));
}

TEST(PropertyValueCodingTest, DataOfEveryLengthAndByteRoundTrips) {
  PropertyValue::Data all;
  for (int byte = 0; byte < 256; ++byte) all.push_back(static_cast<std::uint8_t>(byte));
  for (std::size_t length : {0u, 1u, 2u, 3u, 4u, 255u, 256u}) {
    const PropertyValue::Data data(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(length));
    EXPECT_EQ(roundTrip(data), PropertyValue(data)) << "length " << length;
  }
  EXPECT_EQ(encodePropertyValue(PropertyValue::Data{'M', 'a'}), (nlohmann::json{{"data", "TWE="}}));
}

TEST(PropertyValueCodingTest, NestedContainersAndLookalikeDictionariesRoundTrip) {
  const PropertyValue::Dictionary lookalike{{"data", "not base64 at all"}};
  const PropertyValue nested = PropertyValue::Dictionary{
      {"list", PropertyValue::Array{1, 2.5, "three", PropertyValue::Array{}, lookalike}},
      {"empty", PropertyValue::Dictionary{}},
      {"date", lookalike},
  };
  EXPECT_EQ(roundTrip(nested), nested);
}

TEST(PropertyValueCodingTest, ValuesJsonCannotMeanAreRejected) {
  const char* rejected[] = {
      "null",
      R"({})",
      R"({"data": "TWE=", "date": 1})",
      R"({"data": "TWE"})",
      R"({"data": "TW=E"})",
      R"({"data": "T!E="})",
      R"({"date": "yesterday"})",
      R"({"double": 1.5})",
      R"({"double": "big"})",
      R"({"dictionary": []})",
      R"({"url": "x"})",
      "18446744073709551615",
      R"([1, null])",
  };
  for (const char* text : rejected) {
    EXPECT_THROW(decodePropertyValue(nlohmann::json::parse(text)), PropertyValueCodingError) << text;
  }
}

}  // namespace
}  // namespace kestrona
