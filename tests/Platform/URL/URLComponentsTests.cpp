#include "Platform/URL/URLComponents.h"

#include <gtest/gtest.h>

namespace kestrona {
namespace {

using Items = std::vector<URLQueryItem>;

TEST(URLComponentsQuery, EncodesWhatAQueryValueMayNotHoldAndKeepsColonAndSlash) {
  URLComponents components;
  components.setScheme("deeplink-startTimer");
  components.setHost("");
  components.setQueryItems(Items{{"taskId", "x-kestrona://3F1C-A2/Task/p12 a&b=c+d#e%f?g@h"}});
  EXPECT_EQ(components.string(),
            "deeplink-startTimer://?taskId=x-kestrona://3F1C-A2/Task/p12%20a%26b=c+d%23e%25f?g@h");
}

TEST(URLComponentsQuery, KeepsExactlyTheUnreservedAndListedCharactersLiteral) {
  std::string everyByte;
  for (int byte = 0; byte < 256; ++byte) everyByte.push_back(static_cast<char>(byte));
  std::string literal;
  std::string encoded = percentEncodeQueryValue(everyByte);
  for (std::size_t i = 0; i < encoded.size(); ++i) {
    if (encoded[i] == '%') {
      i += 2;
    } else {
      literal.push_back(encoded[i]);
    }
  }
  EXPECT_EQ(literal, "!$'()*+,-./0123456789:;=?@ABCDEFGHIJKLMNOPQRSTUVWXYZ_abcdefghijklmnopqrstuvwxyz~");
  EXPECT_EQ(percentDecode(encoded), everyByte);
}

TEST(URLComponentsQuery, ReadsItemsDecodedWithoutPlusToSpace) {
  std::optional<URLComponents> components =
      URLComponents::fromString("s://?a=1+2&flag&empty=&%74askId=x%3Ay%2Fz&a=second&==&eq=a=b");
  ASSERT_TRUE(components.has_value());
  EXPECT_EQ(components->queryItems(), (Items{{"a", "1+2"},
                                             {"flag", std::nullopt},
                                             {"empty", ""},
                                             {"taskId", "x:y/z"},
                                             {"a", "second"},
                                             {"", "="},
                                             {"eq", "a=b"}}));
}

TEST(URLComponentsQuery, TellsNoQueryFromAnEmptyOne) {
  EXPECT_FALSE(URLComponents::fromString("s://")->queryItems().has_value());
  EXPECT_EQ(URLComponents::fromString("s://?")->queryItems(), Items{});
  URLComponents components = *URLComponents::fromString("s://?a=1");
  components.setQueryItems(std::nullopt);
  EXPECT_EQ(components.string(), "s://");
  components.setQueryItems(Items{});
  EXPECT_EQ(components.string(), "s://?");
}

TEST(URLComponentsQuery, ItemsRoundTripThroughAURL) {
  const Items items{{"taskId", "x-kestrona://3F1C/Task/p12"},
                    {"blank and amp", "a b&c"},
                    {"noValue", std::nullopt},
                    {"unicode", "\xC3\xA9t\xC3\xA9"},
                    {"percent", "100%"},
                    {"plus", "1+1"},
                    {"name=with equals", "k=v"}};
  URLComponents components;
  components.setScheme("s");
  components.setHost("");
  components.setQueryItems(items);
  std::optional<URL> url = components.url();
  ASSERT_TRUE(url.has_value());
  std::optional<URLComponents> back = URLComponents::fromURL(*url);
  ASSERT_TRUE(back.has_value());
  EXPECT_EQ(back->queryItems(), items);
}

TEST(URLComponentsCompose, HostPutsTheDoubleSlash) {
  URLComponents components;
  components.setScheme("deeplink-pauseTimer");
  EXPECT_EQ(components.string(), "deeplink-pauseTimer:");
  components.setHost("");
  EXPECT_EQ(components.string(), "deeplink-pauseTimer://");
  EXPECT_EQ(components.url()->host(), "");
}

TEST(URLComponentsCompose, EncodesHostPathAndFragment) {
  URLComponents components;
  components.setScheme("file");
  components.setHost("");
  components.setPath("/a b/c%d/e?f");
  components.setFragment("x y");
  EXPECT_EQ(components.string(), "file:///a%20b/c%25d/e%3Ff#x%20y");
  EXPECT_EQ(components.url()->path(), "/a b/c%d/e?f");

  URLComponents hosted;
  hosted.setScheme("http");
  hosted.setHost("my host");
  hosted.setPort(8080);
  EXPECT_EQ(hosted.string(), "http://my%20host:8080");
  EXPECT_EQ(hosted.url()->port(), 8080);
}

TEST(URLComponentsCompose, RefusesPartsThatCannotFormAURL) {
  URLComponents badScheme;
  badScheme.setScheme("1st");
  EXPECT_FALSE(badScheme.url().has_value());

  URLComponents relativePathWithHost;
  relativePathWithHost.setScheme("s");
  relativePathWithHost.setHost("h");
  relativePathWithHost.setPath("no-slash");
  EXPECT_FALSE(relativePathWithHost.string().has_value());

  URLComponents doubleSlashWithoutHost;
  doubleSlashWithoutHost.setScheme("s");
  doubleSlashWithoutHost.setPath("//x");
  EXPECT_FALSE(doubleSlashWithoutHost.string().has_value());

  URLComponents noScheme;
  noScheme.setPath("/a");
  EXPECT_EQ(noScheme.string(), "/a");
  EXPECT_FALSE(noScheme.url().has_value());

  URLComponents badQuery;
  badQuery.setScheme("s");
  badQuery.setPercentEncodedQuery("a b");
  EXPECT_FALSE(badQuery.url().has_value());
}

TEST(URLComponentsParse, TakesApartAndPutsBackUnchanged) {
  for (std::string_view text : {"https://user:pw@example.com:8443/a%20b/?x=1&y=%2F#f", "deeplink-pauseTimer://",
                                "deeplink-startTimer://?taskId=x-kestrona://3F1C/Task/p12", "mailto:ada@example.com",
                                "file:///tmp/a%25b"}) {
    std::optional<URLComponents> components = URLComponents::fromString(text);
    ASSERT_TRUE(components.has_value()) << text;
    EXPECT_EQ(components->string(), text);
  }
  EXPECT_FALSE(URLComponents::fromString("a b").has_value());
  EXPECT_FALSE(URLComponents::fromString("%zz").has_value());
}

TEST(PercentDecode, RefusesMalformedEscapes) {
  EXPECT_EQ(percentDecode("a%20b%2f"), "a b/");
  EXPECT_FALSE(percentDecode("%").has_value());
  EXPECT_FALSE(percentDecode("%2").has_value());
  EXPECT_FALSE(percentDecode("%g0").has_value());
  EXPECT_EQ(percentDecode("%25"), "%");
}

}  // namespace
}  // namespace kestrona
