#include <gtest/gtest.h>

#include "Platform/Time/Clock.h"
#include "SharedCore/Model/ActivityLog/BrowserALEntry.h"
#include "SharedCore/Model/ActivityLog/DocumentAppALEntry.h"
#include "tests/SharedCore/Model/ModelTestSupport.h"

namespace kestrona {
namespace {

class ActivityLogTest : public ::testing::Test {
 protected:
  std::shared_ptr<BrowserALEntry> browser(std::optional<std::string> bundleId, std::optional<std::string> url) {
    auto made = store.insert<BrowserALEntry>("BrowserALEntry");
    made->setBundleId(bundleId);
    made->setUrl(url ? URL::fromString(*url) : std::nullopt);
    return made;
  }

  testing::ModelStore store;
  ManualClock clock{Date(1'000.5)};
  ScopedClock scopedClock{clock};
  std::shared_ptr<ALEntry> entry = store.insert<ALEntry>("ALEntry");
};

TEST_F(ActivityLogTest, AnEntryRunsFromItsBeginUntilItHasAnEnd) {
  EXPECT_FALSE(entry->isRunning());
  EXPECT_EQ(entry->effectiveDuration(), 0);
  EXPECT_EQ(entry->dateInterval(), DateInterval(Date(1'000.5), Date(1'000.5)));

  entry->setBegin(Date(900.7));
  EXPECT_TRUE(entry->isRunning());
  EXPECT_EQ(entry->effectiveDuration(), 100);
  clock.advance(20);
  EXPECT_EQ(entry->effectiveDuration(), 120);
  EXPECT_EQ(entry->effectiveEnd(), Date(1'020.5));

  entry->setEnd(Date(800));
  EXPECT_FALSE(entry->isRunning());
  EXPECT_EQ(entry->effectiveDuration(), 0);
  EXPECT_EQ(entry->dateInterval(), DateInterval(Date(900.7), Date(900.7)));
  entry->setTitle("");
  EXPECT_FALSE(entry->hasTitle());
}

TEST_F(ActivityLogTest, SimilarEntriesShareTheApplicationAndTheSiteOrTheDocument) {
  auto page = browser("web", "https://example.com/a?q=1");
  auto document = store.insert<DocumentAppALEntry>("DocumentAppALEntry");
  auto otherDocument = store.insert<DocumentAppALEntry>("DocumentAppALEntry");
  for (const auto& web : std::vector<std::shared_ptr<ALEntry>>{document, otherDocument, entry}) web->setBundleId("web");
  otherDocument->setDocumentUrl(URL::fromString("file:///a.txt"));
  const std::tuple<std::shared_ptr<ALEntry>, std::shared_ptr<ALEntry>, bool> cases[] = {
      {page, browser("web", "https://example.com/b"), true},
      {page, browser("web", "https://other.org/a"), false},
      {page, browser("mail", "https://example.com/a"), false},
      {browser(std::nullopt, std::nullopt), browser(std::nullopt, std::nullopt), true},
      {browser("web", std::nullopt), page, false},
      {entry, page, true},  // not symmetric across classes
      {page, entry, false},
      {document, otherDocument, false},
      {otherDocument, otherDocument, true},
      {document, entry, false},
  };
  for (std::size_t index = 0; index < std::size(cases); ++index) {
    const auto& [one, other, similar] = cases[index];
    EXPECT_EQ(one->isSimilar(*other), similar) << index;
  }
}

TEST_F(ActivityLogTest, TheDictionaryFormRoundTripsAndPopulatingTakesOnlyValuesOfTheRightType) {
  auto page = browser("web", "https://example.com/a");
  page->setBegin(Date(10));
  page->setTitle("Home");
  const PropertyValue::Dictionary written = page->toDictionary();
  EXPECT_EQ(written, (PropertyValue::Dictionary{{"begin", Date(10)},
                                                {"bundleId", "web"},
                                                {"title", "Home"},
                                                {"type", "browser"},
                                                {"url", "https://example.com/a"}}));
  EXPECT_FALSE(entry->toDictionary().contains("type"));

  auto copy = browser(std::nullopt, std::nullopt);
  copy->populate(written);
  EXPECT_EQ(copy->toDictionary(), written);
  copy->populate({});
  EXPECT_EQ(copy->toDictionary(), written);
  copy->populate({{"begin", "not a date"}, {"title", std::int64_t{3}}, {"url", std::int64_t{1}}});
  EXPECT_EQ(copy->toDictionary(), written);
  copy->populate({{"url", "not a url at all"}});
  EXPECT_EQ(copy->url(), std::nullopt);

  auto document = store.insert<DocumentAppALEntry>("DocumentAppALEntry");
  document->populate({{"documentUrl", "file:///notes/a.txt"}, {"end", Date(20)}});
  EXPECT_EQ(document->toDictionary(), (PropertyValue::Dictionary{
                                          {"documentUrl", "file:///notes/a.txt"}, {"end", Date(20)}, {"type", "doc"}}));
}

}  // namespace
}  // namespace kestrona
