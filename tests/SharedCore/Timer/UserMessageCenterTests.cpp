#include "SharedCore/Timer/UserMessageCenter.h"

#include <gtest/gtest.h>

#include <vector>

namespace kestrona {
namespace {

class RecordingReporter final : public UserMessageReporter {
 public:
  std::optional<UUID> post(const UserMessage& message) override {
    posted.push_back(message);
    return id;
  }
  void dismiss(const UUID& dismissedID) override { dismissed.push_back(dismissedID); }

  UUID id = UUID::random();
  std::vector<UserMessage> posted;
  std::vector<UUID> dismissed;
};

TEST(UserMessageCenter, PassesMessagesToTheReporterAndLosesThemWithoutOne) {
  UserMessageCenter::setReporter(nullptr);
  EXPECT_EQ(UserMessageCenter::post(UserMessage::error("Lost")), std::nullopt);
  UserMessageCenter::dismiss(UUID::random());

  auto reporter = std::make_shared<RecordingReporter>();
  UserMessageCenter::setReporter(reporter);
  auto shown = UserMessageCenter::post(UserMessage::info("Saved", "2 entries"));
  EXPECT_EQ(shown, reporter->id);
  UserMessageCenter::dismiss(*shown);
  UserMessageCenter::setReporter(nullptr);

  ASSERT_EQ(reporter->posted.size(), 1u);
  EXPECT_EQ(reporter->posted[0].kind, UserMessage::Kind::info);
  EXPECT_EQ(reporter->posted[0].description, "2 entries");
  EXPECT_EQ(reporter->dismissed, std::vector<UUID>{reporter->id});
}

}  // namespace
}  // namespace kestrona
