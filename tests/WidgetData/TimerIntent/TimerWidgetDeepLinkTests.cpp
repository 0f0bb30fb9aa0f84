#include "WidgetData/TimerIntent/TimerWidgetDeepLink.h"

#include <gtest/gtest.h>

#include "WidgetData/TimerIntent/KestronaWidgetDeepLinkScheme.h"

namespace kestrona {
namespace {

std::optional<TimerWidgetDeepLink> parse(std::string_view text) {
  std::optional<URL> url = URL::fromString(text);
  EXPECT_TRUE(url.has_value()) << text;
  return url ? TimerWidgetDeepLink::fromURL(*url) : std::nullopt;
}

TEST(TimerWidgetDeepLinkText, StartAndPauseProduceTheGrammar) {
  EXPECT_EQ(TimerWidgetDeepLink::pause().url()->absoluteString(), "deeplink-pauseTimer://");
  EXPECT_EQ(TimerWidgetDeepLink::start("abc").url()->absoluteString(), "deeplink-startTimer://?taskId=abc");
  EXPECT_EQ(TimerWidgetDeepLink::start("x-kestrona://3F1C2A4B-0D6E-4F1A-9C3B-5E7D8A9B0C1D/Task/p12").url()->absoluteString(),
            "deeplink-startTimer://?taskId=x-kestrona://3F1C2A4B-0D6E-4F1A-9C3B-5E7D8A9B0C1D/Task/p12");
  EXPECT_EQ(TimerWidgetDeepLink::start("a b&c=d+e#f%").url()->absoluteString(),
            "deeplink-startTimer://?taskId=a%20b%26c%3Dd%2Be%23f%25");
  // An empty identifier still makes a link; reading it back refuses it.
  EXPECT_EQ(TimerWidgetDeepLink::start("").url()->absoluteString(), "deeplink-startTimer://?taskId=");
  EXPECT_EQ(parse("deeplink-startTimer://?taskId="), std::nullopt);
}

TEST(TimerWidgetDeepLinkText, IdentifiersRoundTrip) {
  for (std::string taskId : {"x-kestrona://3F1C2A4B-0D6E-4F1A-9C3B-5E7D8A9B0C1D/Task/p12",
                             "x-kestrona://3F1C/Task/t7 with blank & amp", "a=b", "100%", "1+1", "#hash?q",
                             "\xC3\xA9t\xC3\xA9", "taskId=x&taskId=y"}) {
    std::optional<URL> url = TimerWidgetDeepLink::start(taskId).url();
    ASSERT_TRUE(url.has_value()) << taskId;
    EXPECT_EQ(TimerWidgetDeepLink::fromURL(*url), TimerWidgetDeepLink::start(taskId)) << url->absoluteString();
  }
  EXPECT_EQ(TimerWidgetDeepLink::fromURL(*TimerWidgetDeepLink::pause().url()), TimerWidgetDeepLink::pause());
}

TEST(TimerWidgetDeepLinkParsing, PauseIgnoresEverythingButTheScheme) {
  EXPECT_EQ(parse("deeplink-pauseTimer://"), TimerWidgetDeepLink::pause());
  EXPECT_EQ(parse("deeplink-pauseTimer://anything/else?taskId=1"), TimerWidgetDeepLink::pause());
  EXPECT_EQ(parse("deeplink-pauseTimer:"), TimerWidgetDeepLink::pause());
}

TEST(TimerWidgetDeepLinkParsing, StartNeedsAFirstTaskIdWithAValue) {
  EXPECT_EQ(parse("deeplink-startTimer://"), std::nullopt);
  EXPECT_EQ(parse("deeplink-startTimer://?"), std::nullopt);
  EXPECT_EQ(parse("deeplink-startTimer://?other=1"), std::nullopt);
  EXPECT_EQ(parse("deeplink-startTimer://?taskId"), std::nullopt);
  EXPECT_EQ(parse("deeplink-startTimer://?taskId=&taskId=a"), std::nullopt);
  EXPECT_EQ(parse("deeplink-startTimer://?TaskId=a"), std::nullopt);
  EXPECT_EQ(parse("deeplink-startTimer://?other=1&taskId=a"), TimerWidgetDeepLink::start("a"));
  EXPECT_EQ(parse("deeplink-startTimer://?taskId=a&taskId=b"), TimerWidgetDeepLink::start("a"));
  EXPECT_EQ(parse("deeplink-startTimer://?taskId=a+b%20c"), TimerWidgetDeepLink::start("a+b c"));
  EXPECT_EQ(parse("deeplink-startTimer://somehost/path?taskId=a"), TimerWidgetDeepLink::start("a"));
}

TEST(TimerWidgetDeepLinkParsing, OnlyCommandSchemesSpelledExactlyAreLinks) {
  EXPECT_EQ(parse("Deeplink-startTimer://?taskId=a"), std::nullopt);
  EXPECT_EQ(parse("deeplink-starttimer://?taskId=a"), std::nullopt);
  EXPECT_EQ(parse("DEEPLINK-PAUSETIMER://"), std::nullopt);
  EXPECT_EQ(parse("https://example.com/?taskId=a"), std::nullopt);
  for (KestronaWidgetDeepLinkScheme scheme :
       {KestronaWidgetDeepLinkScheme::openApp, KestronaWidgetDeepLinkScheme::toggleTimer,
        KestronaWidgetDeepLinkScheme::openWeeklyReports, KestronaWidgetDeepLinkScheme::openMonthlyReports,
        KestronaWidgetDeepLinkScheme::unknown}) {
    std::string text = std::string(rawValue(scheme)) + "://?taskId=a";
    EXPECT_EQ(parse(text), std::nullopt) << text;
  }
}

TEST(TimerWidgetDeepLinkDescription, NamesTheCaseAndTheQuotedIdentifier) {
  EXPECT_EQ(TimerWidgetDeepLink::pause().description(), "pause");
  EXPECT_EQ(TimerWidgetDeepLink::start("x-kestrona://A/Task/p1").description(),
            "start(taskId: \"x-kestrona://A/Task/p1\")");
  EXPECT_EQ(TimerWidgetDeepLink::start("say \"hi\"").description(), "start(taskId: \"say \\\"hi\\\"\")");
  EXPECT_NE(TimerWidgetDeepLink::start("a"), TimerWidgetDeepLink::start("A"));
  EXPECT_NE(TimerWidgetDeepLink::start(""), TimerWidgetDeepLink::pause());
}

TEST(KestronaWidgetDeepLinkSchemeTest, EachSchemeIsABareURLAndReadsBackExactly) {
  const char* expected[] = {"deeplink-openApp://",           "deeplink-toggleTimer://",
                            "deeplink-openWeeklyReports://", "deeplink-openMonthlyReports://",
                            "deeplink-startTimer://",        "deeplink-pauseTimer://",
                            "deeplink-unknown://"};
  std::size_t index = 0;
  for (KestronaWidgetDeepLinkScheme scheme : allCases<KestronaWidgetDeepLinkScheme>) {
    std::optional<URL> url = kestrona::url(scheme);
    ASSERT_TRUE(url.has_value());
    EXPECT_EQ(url->absoluteString(), expected[index++]);
    EXPECT_EQ(url->host(), "");
    EXPECT_EQ(url->path(), "");
    EXPECT_FALSE(url->query().has_value());
    EXPECT_EQ(fromRawValue<KestronaWidgetDeepLinkScheme>(url->scheme()), scheme);
  }
  EXPECT_EQ(fromRawValue<KestronaWidgetDeepLinkScheme>("deeplink-OpenApp"), std::nullopt);
  EXPECT_EQ(fromRawValue<KestronaWidgetDeepLinkScheme>("openApp"), std::nullopt);
}

}  // namespace
}  // namespace kestrona
