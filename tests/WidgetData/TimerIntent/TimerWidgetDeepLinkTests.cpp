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

// A task identifier keeps what a query allows literal; only the rest, and
// the item delimiter "&", is escaped. Reading the link gives it back.
TEST(TimerWidgetDeepLink, LinksEscapeOnlyWhatAQueryCannotHoldAndReadBack) {
  const std::pair<std::string, std::string> links[] = {
      {"x-kestrona://3F1C2A4B-0D6E/Task/p12", "deeplink-startTimer://?taskId=x-kestrona://3F1C2A4B-0D6E/Task/p12"},
      {"k=v", "deeplink-startTimer://?taskId=k=v"},
      {"a+b", "deeplink-startTimer://?taskId=a+b"},
      {"a b&c#d%?@!$'()*,;", "deeplink-startTimer://?taskId=a%20b%26c%23d%25?@!$'()*,;"},
      {"\xC3\xA9t\xC3\xA9", "deeplink-startTimer://?taskId=%C3%A9t%C3%A9"},
      {"taskId=x&taskId=y", "deeplink-startTimer://?taskId=taskId=x%26taskId=y"},
      {"", "deeplink-startTimer://?taskId="},
  };
  for (const auto& [taskId, text] : links) {
    std::optional<URL> url = TimerWidgetDeepLink::start(taskId).url();
    ASSERT_TRUE(url.has_value()) << taskId;
    EXPECT_EQ(url->absoluteString(), text);
    std::optional<TimerWidgetDeepLink> back = TimerWidgetDeepLink::fromURL(*url);
    if (taskId.empty()) {
      EXPECT_EQ(back, std::nullopt) << "an empty identifier is refused when read";
    } else {
      EXPECT_EQ(back, TimerWidgetDeepLink::start(taskId)) << text;
    }
  }
  EXPECT_EQ(TimerWidgetDeepLink::pause().url()->absoluteString(), "deeplink-pauseTimer://");
}

TEST(TimerWidgetDeepLink, ParsingTakesTheFirstTaskIdOfAnExactCommandScheme) {
  const std::pair<std::string, std::optional<TimerWidgetDeepLink>> cases[] = {
      {"deeplink-pauseTimer://", TimerWidgetDeepLink::pause()},
      {"deeplink-pauseTimer://anything/else?taskId=1", TimerWidgetDeepLink::pause()},
      {"deeplink-pauseTimer:", TimerWidgetDeepLink::pause()},
      {"deeplink-startTimer://", std::nullopt},
      {"deeplink-startTimer://?", std::nullopt},
      {"deeplink-startTimer://?other=1", std::nullopt},
      {"deeplink-startTimer://?taskId", std::nullopt},
      {"deeplink-startTimer://?taskId=&taskId=a", std::nullopt},
      {"deeplink-startTimer://?TaskId=a", std::nullopt},
      {"deeplink-startTimer://?other=1&taskId=a", TimerWidgetDeepLink::start("a")},
      {"deeplink-startTimer://?taskId=a&taskId=b", TimerWidgetDeepLink::start("a")},
      {"deeplink-startTimer://?taskId=a+b%20c%3Dd", TimerWidgetDeepLink::start("a+b c=d")},
      {"deeplink-startTimer://somehost/path?taskId=a", TimerWidgetDeepLink::start("a")},
      {"Deeplink-startTimer://?taskId=a", std::nullopt},
      {"DEEPLINK-PAUSETIMER://", std::nullopt},
      {"https://example.com/?taskId=a", std::nullopt},
      {"deeplink-openApp://?taskId=a", std::nullopt},
      {"deeplink-toggleTimer://?taskId=a", std::nullopt},
      {"deeplink-openWeeklyReports://?taskId=a", std::nullopt},
      {"deeplink-openMonthlyReports://?taskId=a", std::nullopt},
      {"deeplink-unknown://?taskId=a", std::nullopt},
  };
  for (const auto& [text, expected] : cases) EXPECT_EQ(parse(text), expected) << text;
}

TEST(TimerWidgetDeepLink, DescriptionNamesTheCaseAndTheQuotedIdentifier) {
  EXPECT_EQ(TimerWidgetDeepLink::pause().description(), "pause");
  EXPECT_EQ(TimerWidgetDeepLink::start("say \"hi\"").description(), "start(taskId: \"say \\\"hi\\\"\")");
}

TEST(KestronaWidgetDeepLinkScheme, EachSchemeIsABareURLAndReadsBackExactly) {
  for (KestronaWidgetDeepLinkScheme scheme : allCases<KestronaWidgetDeepLinkScheme>) {
    std::optional<URL> url = kestrona::url(scheme);
    ASSERT_TRUE(url.has_value());
    EXPECT_EQ(url->absoluteString(), std::string(rawValue(scheme)) + "://");
    EXPECT_FALSE(url->query().has_value());
    EXPECT_EQ(fromRawValue<KestronaWidgetDeepLinkScheme>(url->scheme()), scheme);
  }
  EXPECT_EQ(fromRawValue<KestronaWidgetDeepLinkScheme>("deeplink-OpenApp"), std::nullopt);
}

}  // namespace
}  // namespace kestrona
