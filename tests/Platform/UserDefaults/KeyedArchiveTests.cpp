#include "Platform/UserDefaults/KeyedArchive.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tests/support/ExpectThrow.h"

namespace kestrona {
namespace {

// Why unarchiving data as className fails; a success fails the test.
std::optional<KeyedArchiveError::Code> failureOf(std::string_view className, const PropertyValue::Data& data) {
  auto error = testing::thrownBy<KeyedArchiveError>([&] { auto object = KeyedArchive::unarchivedObject(className, data); });
  return error ? std::optional(error->kind()) : std::nullopt;
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
  using Code = KeyedArchiveError::Code;
  const PropertyValue::Data archive = KeyedArchive::archivedData(PropertyValue("x"), "URL");
  PropertyValue::Data later = archive;
  later[4] = KeyedArchive::kVersion + 1;
  PropertyValue::Data trailing = archive;
  trailing.push_back(0);
  // Well-formed CBOR whose root is no property value.
  PropertyValue::Data nullRoot{'K', 'S', 'K', 'A', KeyedArchive::kVersion};
  nlohmann::json::to_cbor(nlohmann::json{{"class", "URL"}, {"root", nullptr}}, nullRoot);
  // A map or an array that claims more elements than memory could hold, as
  // a damaged length field would.
  const PropertyValue::Data hugeMap{'K', 'S', 'K', 'A', KeyedArchive::kVersion, 0xBB,
                                    0x40, 0x40, 0x40, 0x40, 0x40, 0x40, 0x40, 0x40};
  const PropertyValue::Data hugeArray{'K', 'S', 'K', 'A', KeyedArchive::kVersion, 0x9B,
                                      0x40, 0x40, 0x40, 0x40, 0x40, 0x40, 0x40, 0x40};
  struct Case {
    const char* what;
    const char* className;
    PropertyValue::Data data;
    Code code;
  };
  for (const auto& [what, className, data, code] : std::vector<Case>{
           {"another class", "Dictionary", archive, Code::wrongClass},
           {"no bytes", "URL", {}, Code::notAnArchive},
           {"JSON", "URL", {'{', '}', ' ', ' ', ' '}, Code::notAnArchive},
           {"a later version", "URL", later, Code::unsupportedVersion},
           {"truncated", "URL", PropertyValue::Data(archive.begin(), archive.end() - 1), Code::damaged},
           {"trailing bytes", "URL", trailing, Code::damaged},
           {"a null root", "URL", nullRoot, Code::damaged},
           {"a huge map", "URL", hugeMap, Code::damaged},
           {"a huge array", "URL", hugeArray, Code::damaged}}) {
    EXPECT_EQ(failureOf(className, data), code) << what;
  }
}

}  // namespace
}  // namespace kestrona
