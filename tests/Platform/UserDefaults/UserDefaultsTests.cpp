#include "Platform/UserDefaults/UserDefaults.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/ChildTestProcess.h"
#include "tests/support/ExpectThrow.h"
#include "tests/support/RecordingLogHandler.h"
#include "tests/support/TemporaryDirectory.h"

namespace kestrona {
namespace {

using testing::ScopedEnvironment;
using testing::TemporaryDirectory;
using testing::readFile;
using testing::writeFile;

// Why synchronize() wrote nothing; a synchronize that wrote fails the test.
UserDefaultsErrorCode synchronizeFailure(UserDefaults& defaults) {
  auto error = testing::thrownBy<UserDefaultsError>([&] { defaults.synchronize(); });
  if (!error) return UserDefaultsErrorCode::noDirectory;
  EXPECT_NE(error->userInfoValue<std::string>(UserDefaultsError::kFilePathKey), nullptr);
  return error->kind();
}

// What the user defaults logged since the last call, so that tests can see
// a damaged file being reported.
std::vector<testing::LoggedRecord> userDefaultsLog() {
  auto records = testing::RecordingLogHandler::bootstrapped().take();
  std::erase_if(records, [](const testing::LoggedRecord& record) { return record.label != "UserDefaults"; });
  return records;
}

class UserDefaultsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    environment_.set("XDG_CONFIG_HOME", home_.path().string());
    userDefaultsLog();
  }

  std::filesystem::path directory() const { return home_.path() / "kestrona"; }
  std::shared_ptr<UserDefaults> fresh(const std::string& domain = "tests") const {
    return UserDefaults::make(domain, directory());
  }

  TemporaryDirectory home_;
  ScopedEnvironment environment_;
};

TEST_F(UserDefaultsTest, MissingKeysReadAsTheTypesDefaults) {
  const auto defaults = fresh();
  EXPECT_FALSE(defaults->objectForKey("missing").has_value());
  EXPECT_FALSE(defaults->boolForKey("missing"));
  EXPECT_EQ(defaults->integerForKey("missing"), 0);
  EXPECT_EQ(defaults->doubleForKey("missing"), 0.0);
  EXPECT_FALSE(defaults->stringForKey("missing").has_value());
  EXPECT_FALSE(defaults->dataForKey("missing").has_value());
  EXPECT_FALSE(defaults->dateForKey("missing").has_value());
  EXPECT_FALSE(defaults->arrayForKey("missing").has_value());
  EXPECT_FALSE(defaults->dictionaryForKey("missing").has_value());
  EXPECT_FALSE(defaults->stringArrayForKey("missing").has_value());

  // A value of another type reads as the default of the asked type.
  defaults->set(PropertyValue::Array{"a"}, "list");
  EXPECT_EQ(defaults->integerForKey("list"), 0);
  EXPECT_FALSE(defaults->stringForKey("list").has_value());
  EXPECT_FALSE(defaults->dataForKey("list").has_value());
}

TEST_F(UserDefaultsTest, ScalarReadsConvertBetweenNumbersBooleansAndTexts) {
  const auto defaults = fresh();
  defaults->set(3.9, "positive");
  defaults->set(-3.9, "negative");
  defaults->set(1e30, "huge");
  defaults->set("42", "text");
  defaults->set("+7", "signed");
  defaults->set("4x", "junk");
  defaults->set("YES", "yes");
  defaults->set("2.5", "fraction");
  defaults->set(true, "flag");
  EXPECT_EQ(defaults->integerForKey("positive"), 3);
  EXPECT_EQ(defaults->integerForKey("negative"), -3);
  EXPECT_EQ(defaults->integerForKey("huge"), 0);
  EXPECT_EQ(defaults->integerForKey("text"), 42);
  EXPECT_EQ(defaults->integerForKey("signed"), 7);
  EXPECT_EQ(defaults->integerForKey("junk"), 0);
  EXPECT_EQ(defaults->integerForKey("flag"), 1);
  EXPECT_EQ(defaults->integerForKey("fraction"), 0);
  EXPECT_TRUE(defaults->boolForKey("yes"));
  EXPECT_TRUE(defaults->boolForKey("text"));
  EXPECT_FALSE(defaults->boolForKey("junk"));
  EXPECT_TRUE(defaults->boolForKey("negative"));
  EXPECT_EQ(defaults->doubleForKey("fraction"), 2.5);
  EXPECT_EQ(defaults->doubleForKey("text"), 42.0);
  EXPECT_EQ(defaults->doubleForKey("flag"), 1.0);

  defaults->set(PropertyValue::Array{"a", "b"}, "strings");
  defaults->set(PropertyValue::Array{"a", 1}, "mixed");
  EXPECT_EQ(defaults->stringArrayForKey("strings"), (std::vector<std::string>{"a", "b"}));
  EXPECT_FALSE(defaults->stringArrayForKey("mixed").has_value());
}

TEST_F(UserDefaultsTest, SynchronizedValuesReadBackWithTheirTypes) {
  const PropertyValue::Dictionary values{
      {"bool", false},
      {"integer", 1},
      {"double", 1.0},
      {"string", "Ünïcödé \"quoted\"\n"},
      {"data", PropertyValue::Data{0, 1, 254, 255}},
      {"date", Date(1700000000.5)},
      {"nested", PropertyValue::Dictionary{{"list", PropertyValue::Array{1, "two", Date(3)}}}},
  };
  {
    const auto writer = fresh();
    for (const auto& [key, value] : values) writer->set(value, key);
    writer->set("gone", "removed");
    writer->removeObject("removed");
    ASSERT_NO_THROW(writer->synchronize());
  }
  EXPECT_EQ(fresh()->dictionaryRepresentation(), values);
  EXPECT_EQ(*fresh()->dateForKey("date"), Date(1700000000.5));
}

TEST_F(UserDefaultsTest, TextThatIsNotUTF8DoesNotKeepOtherChangesFromTheFile) {
  const auto writer = fresh();
  writer->set(std::string("ab\xFF"), "bad value");
  writer->set(1, std::string("bad key \xC3"));
  writer->set(7, "good");
  EXPECT_NO_THROW(writer->synchronize());
  EXPECT_FALSE(userDefaultsLog().empty());

  const auto reader = fresh();
  EXPECT_EQ(reader->integerForKey("good"), 7);
  EXPECT_EQ(reader->stringForKey("bad value"), "ab\uFFFD");
  EXPECT_EQ(reader->integerForKey("bad key \uFFFD"), 1);
  // Nothing is left pending: the next synchronize has nothing to write.
  EXPECT_NO_THROW(writer->synchronize());
  EXPECT_EQ(writer->stringForKey("bad value"), "ab\uFFFD");
}

TEST_F(UserDefaultsTest, UnsynchronizedChangesAreWrittenWhenTheInstanceEnds) {
  fresh()->set(5, "count");
  EXPECT_EQ(fresh()->integerForKey("count"), 5);
}

TEST_F(UserDefaultsTest, SynchronizeKeepsOtherInstancesChangesToOtherKeys) {
  const auto first = fresh();
  const auto second = fresh();
  first->set(1, "first");
  first->set("old", "shared");
  ASSERT_NO_THROW(first->synchronize());
  second->set(2, "second");
  second->set("new", "shared");
  ASSERT_NO_THROW(second->synchronize());
  EXPECT_EQ(second->integerForKey("first"), 1);

  first->removeObject("second");
  ASSERT_NO_THROW(first->synchronize());
  EXPECT_EQ(first->stringForKey("shared"), "new");

  const auto reader = fresh();
  EXPECT_EQ(reader->integerForKey("first"), 1);
  EXPECT_FALSE(reader->objectForKey("second").has_value());
  EXPECT_EQ(reader->stringForKey("shared"), "new");
}

TEST_F(UserDefaultsTest, AFailedWriteKeepsTheChangesForTheNextSynchronize) {
  // A plain file where the directory should be makes every write fail.
  writeFile(directory(), "in the way");
  const auto defaults = fresh();
  defaults->set(7, "kept");
  // The file cannot even be read there, so it is not replaced.
  EXPECT_EQ(synchronizeFailure(*defaults), UserDefaultsErrorCode::fileNotReplaceable);
  EXPECT_EQ(defaults->integerForKey("kept"), 7);
  EXPECT_FALSE(userDefaultsLog().empty());

  std::filesystem::remove(directory());
  EXPECT_NO_THROW(defaults->synchronize());
  EXPECT_EQ(fresh()->integerForKey("kept"), 7);
  // Only the domain's file is left: no temporary files.
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(directory()), {}), 1);
}

TEST_F(UserDefaultsTest, ConcurrentWritersLoseNothing) {
  const auto defaults = fresh();
  std::vector<std::thread> threads;
  for (int thread = 0; thread < 4; ++thread) {
    threads.emplace_back([&defaults, thread] {
      for (int index = 0; index < 50; ++index) {
        const std::string key = std::to_string(thread) + "." + std::to_string(index);
        defaults->set(index, key);
        EXPECT_EQ(defaults->integerForKey(key), index);
        if (index % 10 == 0) defaults->synchronize();
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  ASSERT_NO_THROW(defaults->synchronize());
  EXPECT_EQ(fresh()->dictionaryRepresentation().size(), 200u);
}

class DamagedUserDefaultsTest : public UserDefaultsTest {
 protected:
  std::filesystem::path file() const { return directory() / "tests.json"; }
  std::filesystem::path kept(int number) const {
    return directory() / ("tests.damaged-" + std::to_string(number) + ".json");
  }
};

TEST_F(DamagedUserDefaultsTest, DamagedFilesAreKeptAsideAndReadAsEmpty) {
  const char* damaged[] = {
      "{not json",
      "",
      "[]",
      R"({"values": {"a": 1}})",
      R"({"version": "1", "values": {"a": 1}})",
      R"({"version": 2, "values": {"a": 1}})",
      R"({"version": 1})",
      R"({"version": 1, "values": {"a": null}})",
      R"({"version": 1, "values": {"a": {"data": "%%%%"}}})",
  };
  int number = 0;
  for (const char* text : damaged) {
    ++number;
    writeFile(file(), text);
    const auto defaults = fresh();
    EXPECT_TRUE(defaults->dictionaryRepresentation().empty()) << text;
    EXPECT_FALSE(std::filesystem::exists(file())) << text;
    EXPECT_EQ(readFile(kept(number)), text);

    const auto logged = userDefaultsLog();
    ASSERT_EQ(logged.size(), 1u) << text;
    const auto keptAs = logged[0].metadata.find("keptAs");
    ASSERT_NE(keptAs, logged[0].metadata.end());
    EXPECT_EQ(*keptAs->second.string(), kept(number).string());
  }
  // Every earlier copy is still as it was.
  EXPECT_EQ(readFile(kept(1)), "{not json");
}

TEST_F(DamagedUserDefaultsTest, WritingAfterDamageLeavesTheKeptCopyAlone) {
  writeFile(file(), "{\"version\": 1, \"values\": {\"a\": tru");
  const auto defaults = fresh();
  defaults->set(true, "a");
  ASSERT_NO_THROW(defaults->synchronize());
  EXPECT_TRUE(fresh()->boolForKey("a"));
  EXPECT_EQ(readFile(kept(1)), "{\"version\": 1, \"values\": {\"a\": tru");
}

TEST_F(DamagedUserDefaultsTest, DamageFoundAtSynchronizeIsKeptAsideToo) {
  const auto defaults = fresh();
  defaults->set(1, "mine");
  writeFile(file(), "garbage");
  ASSERT_NO_THROW(defaults->synchronize());
  EXPECT_EQ(readFile(kept(1)), "garbage");
  EXPECT_EQ(fresh()->integerForKey("mine"), 1);
}

TEST_F(DamagedUserDefaultsTest, AFileThatCannotBeReadIsNeverReplaced) {
  // A directory where the file should be cannot be read, even by root.
  writeFile(file() / "precious", "kept");
  const auto defaults = fresh();
  EXPECT_TRUE(defaults->dictionaryRepresentation().empty());
  defaults->set(1, "a");
  EXPECT_EQ(synchronizeFailure(*defaults), UserDefaultsErrorCode::fileNotReplaceable);
  EXPECT_EQ(readFile(file() / "precious"), "kept");
  EXPECT_FALSE(std::filesystem::exists(kept(1)));
  EXPECT_GE(userDefaultsLog().size(), 2u);
}

TEST_F(UserDefaultsTest, SharedInstancesFollowDomainAndDirectory) {
  const auto first = UserDefaults::forDomain("shared");
  ASSERT_NE(first, nullptr);
  EXPECT_EQ(UserDefaults::forDomain("shared"), first);
  EXPECT_NE(UserDefaults::forDomain("other"), first);
  EXPECT_EQ(first->fileURL(), directory() / "shared.json");

  TemporaryDirectory elsewhere;
  ScopedEnvironment moved;
  moved.set("XDG_CONFIG_HOME", elsewhere.path().string());
  EXPECT_NE(UserDefaults::forDomain("shared"), first);
  moved.set("XDG_CONFIG_HOME", "relative/ignored");
  moved.set("HOME", elsewhere.path().string());
  EXPECT_EQ(UserDefaults::defaultDirectory(), elsewhere.path() / ".config" / "kestrona");

  for (const char* bad : {"", ".", "..", "a/b"}) EXPECT_EQ(UserDefaults::forDomain(bad), nullptr) << bad;
  EXPECT_EQ(UserDefaults::make(std::string_view("a\0b", 3), directory()), nullptr);
}

TEST_F(UserDefaultsTest, TheStandardDomainIsTheExecutableUnlessNamed) {
  EXPECT_EQ(UserDefaults::standardDomain(), "platform_userdefaults_tests");
  UserDefaults::setStandardDomain("app.kestrona.tests");
  EXPECT_EQ(UserDefaults::standard()->fileURL(), directory() / "app.kestrona.tests.json");
  UserDefaults::setStandardDomain("");
  EXPECT_EQ(UserDefaults::standard()->domain(), "platform_userdefaults_tests");
}

TEST_F(UserDefaultsTest, AStandardDomainThatCannotNameAFileEndsTheProcess) {
  UserDefaults::setStandardDomain("a/b");
  EXPECT_DEATH(UserDefaults::standard(), "Fatal error: The standard user defaults domain cannot name a file");
  UserDefaults::setStandardDomain("");
}

TEST_F(UserDefaultsTest, ValuesSurviveARestartOfTheProcess) {
  const auto defaults = UserDefaults::forDomain("restart");
  defaults->set(18, "counter");
  defaults->set(PropertyValue::Array{"store-a", "store-b"}, "stores");
  ASSERT_NO_THROW(defaults->synchronize());
  EXPECT_EQ(testing::ChildTestProcess("UserDefaultsChildProcess.ReadsWhatTheParentWrote", "KESTRONA_USERDEFAULTS_CHILD")
                .wait(),
            0);
  // And what the child wrote is here after synchronize().
  ASSERT_NO_THROW(defaults->synchronize());
  EXPECT_EQ(defaults->stringForKey("child"), "was here");
}

TEST(UserDefaultsChildProcess, ReadsWhatTheParentWrote) {
  if (std::getenv("KESTRONA_USERDEFAULTS_CHILD") == nullptr) GTEST_SKIP() << "runs as a child process only";
  const auto defaults = UserDefaults::forDomain("restart");
  EXPECT_EQ(defaults->integerForKey("counter"), 18);
  EXPECT_EQ(defaults->stringArrayForKey("stores"), (std::vector<std::string>{"store-a", "store-b"}));
  defaults->set("was here", "child");
  EXPECT_NO_THROW(defaults->synchronize());
}

}  // namespace
}  // namespace kestrona
