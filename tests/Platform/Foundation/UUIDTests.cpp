#include "Platform/Foundation/UUID.h"

#include <gtest/gtest.h>

#include <unordered_set>

#include "Platform/Foundation/Error.h"

namespace kestrona {
namespace {

TEST(UUID, RandomIdentifiersAreVersion4UpperCaseAndDistinct) {
  std::unordered_set<UUID> seen;
  for (int i = 0; i < 1000; ++i) {
    UUID uuid = UUID::random();
    std::string text = uuid.uuidString();
    ASSERT_EQ(text.size(), 36u);
    EXPECT_EQ(text[14], '4');
    EXPECT_NE(std::string("89AB").find(text[19]), std::string::npos) << text;
    EXPECT_EQ(text.find_first_of("abcdef"), std::string::npos) << text;
    EXPECT_TRUE(seen.insert(uuid).second);
  }
}

TEST(UUID, TextRoundTripsAndParsingAcceptsEitherCase) {
  auto parsed = UUID::fromString("e621e1f8-c36c-495a-93fc-0c247a3e6e5f");
  ASSERT_TRUE(parsed);
  EXPECT_EQ(parsed->uuidString(), "E621E1F8-C36C-495A-93FC-0C247A3E6E5F");
  EXPECT_EQ(UUID::fromString(parsed->uuidString()), parsed);
}

TEST(UUID, MalformedTextGivesNone) {
  for (const char* text : {"", "E621E1F8C36C495A93FC0C247A3E6E5F", "E621E1F8-C36C-495A-93FC-0C247A3E6E5",
                           "E621E1F8-C36C-495A-93FC-0C247A3E6E5FF", "G621E1F8-C36C-495A-93FC-0C247A3E6E5F",
                           "E621E1F8+C36C-495A-93FC-0C247A3E6E5F", "E621E1F-8C36C-495A-93FC-0C247A3E6E5F"}) {
    EXPECT_FALSE(UUID::fromString(text)) << text;
  }
}

TEST(Error, CarriesDomainCodeUserInfoAndCause) {
  enum class Code { gone = 133000 };
  auto cause = std::make_shared<const Error>("Cause", 7, "inner");
  CodedError<Code> error("NSCocoaErrorDomain", Code::gone, "The object is gone.",
                         {{"count", std::int64_t{2}}, {"uris", std::vector<std::string>{"a", "b"}}}, cause);
  EXPECT_TRUE(error.is("NSCocoaErrorDomain", 133000));
  EXPECT_EQ(error.kind(), Code::gone);
  ASSERT_NE(error.userInfoValue<std::int64_t>("count"), nullptr);
  EXPECT_EQ(*error.userInfoValue<std::int64_t>("count"), 2);
  EXPECT_EQ(error.userInfoValue<std::string>("count"), nullptr);
  EXPECT_EQ(error.userInfoValue<std::int64_t>("missing"), nullptr);
  EXPECT_EQ(error.underlyingError()->code(), 7);
  EXPECT_STREQ(error.what(), "The object is gone. (NSCocoaErrorDomain 133000)");
}

}  // namespace
}  // namespace kestrona
