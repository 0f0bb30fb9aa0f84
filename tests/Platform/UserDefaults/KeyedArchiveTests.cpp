#include "Platform/UserDefaults/KeyedArchive.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace kestrona {
namespace {

template <typename Function>
KeyedArchiveError::Code failureOf(Function function) {
  try {
    function();
  } catch (const KeyedArchiveError& error) {
    return error.kind();
  }
  ADD_FAILURE() << "no KeyedArchiveError";
  return KeyedArchiveError::Code::damaged;
}

TEST(KeyedArchiveTest, ValuesAndNothingRoundTrip) {
  const PropertyValue dictionary = PropertyValue::Dictionary{
      {"pattern", "*.txt"}, {"since", Date(1700000000.5)}, {"bytes", PropertyValue::Data{0, 255}},
      {"list", PropertyValue::Array{true, 2, 3.5}}};
  EXPECT_EQ(KeyedArchive::unarchivedObject("Dictionary", KeyedArchive::archivedData(dictionary, "Dictionary")),
            dictionary);
  const PropertyValue url("x-kestrona://6F1C/Task/p12");
  EXPECT_EQ(KeyedArchive::unarchivedObject("URL", KeyedArchive::archivedData(url, "URL")), url);
  EXPECT_EQ(KeyedArchive::unarchivedObject("URL", KeyedArchive::archivedData(std::nullopt, "URL")), std::nullopt);
}

TEST(KeyedArchiveTest, UnreadableArchivesAreTypedErrors) {
  const PropertyValue::Data archive = KeyedArchive::archivedData(PropertyValue("x"), "URL");
  EXPECT_EQ(failureOf([&] { KeyedArchive::unarchivedObject("Dictionary", archive); }),
            KeyedArchiveError::Code::wrongClass);
  EXPECT_EQ(failureOf([] { KeyedArchive::unarchivedObject("URL", {}); }), KeyedArchiveError::Code::notAnArchive);
  EXPECT_EQ(failureOf([] { KeyedArchive::unarchivedObject("URL", {'{', '}', ' ', ' ', ' '}); }),
            KeyedArchiveError::Code::notAnArchive);

  PropertyValue::Data later = archive;
  later[4] = KeyedArchive::kVersion + 1;
  EXPECT_EQ(failureOf([&] { KeyedArchive::unarchivedObject("URL", later); }),
            KeyedArchiveError::Code::unsupportedVersion);

  PropertyValue::Data truncated(archive.begin(), archive.end() - 1);
  EXPECT_EQ(failureOf([&] { KeyedArchive::unarchivedObject("URL", truncated); }), KeyedArchiveError::Code::damaged);
  PropertyValue::Data trailing = archive;
  trailing.push_back(0);
  EXPECT_EQ(failureOf([&] { KeyedArchive::unarchivedObject("URL", trailing); }), KeyedArchiveError::Code::damaged);

  // Well-formed CBOR whose root is no property value.
  PropertyValue::Data nullRoot{'K', 'S', 'K', 'A', KeyedArchive::kVersion};
  nlohmann::json::to_cbor(nlohmann::json{{"class", "URL"}, {"root", nullptr}}, nullRoot);
  EXPECT_EQ(failureOf([&] { KeyedArchive::unarchivedObject("URL", nullRoot); }), KeyedArchiveError::Code::damaged);

  // A map or an array that claims more elements than memory could hold, as
  // a damaged length field would.
  const PropertyValue::Data hugeMap{'K', 'S', 'K', 'A', KeyedArchive::kVersion, 0xBB,
                                    0x40, 0x40, 0x40, 0x40, 0x40, 0x40, 0x40, 0x40};
  EXPECT_EQ(failureOf([&] { KeyedArchive::unarchivedObject("URL", hugeMap); }), KeyedArchiveError::Code::damaged);
  const PropertyValue::Data hugeArray{'K', 'S', 'K', 'A', KeyedArchive::kVersion, 0x9B,
                                      0x40, 0x40, 0x40, 0x40, 0x40, 0x40, 0x40, 0x40};
  EXPECT_EQ(failureOf([&] { KeyedArchive::unarchivedObject("URL", hugeArray); }), KeyedArchiveError::Code::damaged);
}

}  // namespace
}  // namespace kestrona
