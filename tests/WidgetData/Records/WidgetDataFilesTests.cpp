#include <sys/stat.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <string>

#include "WidgetData/Records/FileSystemError.h"
#include "WidgetData/Records/WidgetDataReader.h"
#include "WidgetData/Records/WidgetDataWriter.h"
#include "WidgetData/Records/WidgetError.h"
#include "WidgetData/Records/WidgetStoreDirectory.h"
#include "tests/WidgetData/Records/RecordSamples.h"
#include "tests/support/RawValueContract.h"
#include "tests/support/TemporaryDirectory.h"

namespace kestrona {
namespace {

namespace fs = std::filesystem;
using testing::readFile;
using testing::writeFile;

constexpr std::string_view kGroup = "Q7RM4XW2KD.app.kestrona.group";

// The result of one write, checking that the completion ran exactly once
// before write() returned.
WidgetDataResult<bool> writeNow(const WidgetDataWriterProtocol& writer, std::optional<std::string_view> data) {
  int calls = 0;
  std::optional<WidgetDataResult<bool>> outcome;
  writer.write(data, [&](const WidgetDataResult<bool>& result) {
    ++calls;
    outcome = result;
  });
  EXPECT_EQ(calls, 1);
  return outcome.value_or(WidgetDataResult<bool>::failure(Error("Test", 0, "completion not called")));
}

WidgetDataResult<bool> writeTo(const fs::path& directory, WidgetType type, std::optional<std::string_view> data) {
  return writeNow(*WidgetDataWriter::withStoreDirectoryURL(URL::fileURLWithPath(directory, true), type), data);
}

// Every test runs in a fresh data home of its own.
class WidgetDataFiles : public ::testing::Test {
 protected:
  WidgetDataFiles() {
    environment_.set("XDG_DATA_HOME", (temporary_.path() / "data").string());
    environment_.set("HOME", (temporary_.path() / "home").string());
  }

  fs::path widgetDataDirectory() const { return temporary_.path() / "data" / kGroup / "widgetData"; }

  template <typename Record>
  WidgetDataResult<Record> read(WidgetType type) const {
    return WidgetDataReader::withAppGroupName(kGroup, type)->readCodableData<Record>();
  }

  template <typename Record>
  void write(WidgetType type, const Record& record) {
    WidgetDataResult<bool> result =
        writeNow(*WidgetDataWriter::withAppGroupName(kGroup, type), encodeWidgetRecord(record));
    ASSERT_TRUE(result.isSuccess()) << result.error().what();
    EXPECT_TRUE(result.value());
  }

  testing::TemporaryDirectory temporary_;
  testing::ScopedEnvironment environment_;
};

TEST_F(WidgetDataFiles, EveryRecordRoundTripsThroughTheFileOfItsWidgetType) {
  write(WidgetType::timer, testing::sampleTimerState());
  write(WidgetType::weeklyTimeTrackedChart, testing::sampleTimeTracked());
  write(WidgetType::monthlyTimeTrackedChart, TimeTrackedWidgetDataVO::empty());
  write(WidgetType::weeklyRevenueChart, testing::sampleRevenue());
  write(WidgetType::monthlyRevenueChart, RevenueWidgetDataVO::empty());
  write(WidgetType::recentTasks, testing::sampleRecentTasks());
  EXPECT_EQ(read<TimerStateVO>(WidgetType::timer).value(), testing::sampleTimerState());
  EXPECT_EQ(read<TimeTrackedWidgetDataVO>(WidgetType::weeklyTimeTrackedChart).value(), testing::sampleTimeTracked());
  EXPECT_EQ(read<TimeTrackedWidgetDataVO>(WidgetType::monthlyTimeTrackedChart).value(),
            TimeTrackedWidgetDataVO::empty());
  EXPECT_EQ(read<RevenueWidgetDataVO>(WidgetType::weeklyRevenueChart).value(), testing::sampleRevenue());
  EXPECT_EQ(read<RevenueWidgetDataVO>(WidgetType::monthlyRevenueChart).value(), RevenueWidgetDataVO::empty());
  EXPECT_EQ(read<RecentTasksWidgetDataVO>(WidgetType::recentTasks).value(), testing::sampleRecentTasks());
  // One file per type, named by its raw value, with no extension.
  EXPECT_EQ(std::distance(fs::directory_iterator(widgetDataDirectory()), fs::directory_iterator()), 6);
  EXPECT_TRUE(fs::is_regular_file(widgetDataDirectory() / "weeklyRevenueChart"));

  // Writing again replaces the whole file.
  TimerStateVO shorter;
  shorter.taskName = "B";
  write(WidgetType::timer, shorter);
  EXPECT_EQ(readFile(widgetDataDirectory() / "timer"), R"({"taskName":"B"})");
}

TEST_F(WidgetDataFiles, NoDataTruncatesTheFileWhichThenFailsToDecode) {
  write(WidgetType::timer, testing::sampleTimerState());
  auto writer = WidgetDataWriter::withAppGroupName(kGroup, WidgetType::timer);
  for (std::optional<std::string_view> nothing : {std::optional<std::string_view>(), std::optional(std::string_view())}) {
    WidgetDataResult<bool> result = writeNow(*writer, nothing);
    ASSERT_TRUE(result.isSuccess());
    EXPECT_FALSE(result.value());
    EXPECT_EQ(fs::file_size(widgetDataDirectory() / "timer"), 0u);
  }
  // The file is there, so this is the decoder's error and not cannotReadData.
  auto empty = read<TimerStateVO>(WidgetType::timer);
  ASSERT_NE(empty.errorAs<DecodingError>(), nullptr);
  EXPECT_EQ(empty.errorAs<DecodingError>()->kind(), DecodingError::Code::dataCorrupted);
}

// Only a regular file of a sane size is read; anything else at the path is
// the reader's error, with the file system's reason underneath, and never
// blocks or fills the memory.
TEST_F(WidgetDataFiles, OnlyRegularFilesOfASaneSizeAreRead) {
  const fs::path file = widgetDataDirectory() / "recentTasks";
  struct Case {
    std::string name;
    std::function<void()> arrange;
    std::int64_t code;
  };
  const Case cases[] = {
      {"no folder", [] {}, kFileReadNoSuchFileError},
      {"no file", [] {}, kFileReadNoSuchFileError},
      {"a folder", [&] { fs::create_directories(file); }, kFileReadUnknownError},
      {"a FIFO", [&] { ASSERT_EQ(::mkfifo(file.c_str(), 0600), 0); }, kFileReadUnknownError},
      {"a link to /dev/zero", [&] { fs::create_symlink("/dev/zero", file); }, kFileReadUnknownError},
      {"a file of 4 MiB and a byte",
       [&] {
         std::ofstream(file).close();
         fs::resize_file(file, WidgetDataReader::kMaximumFileSize + 1);
       },
       kFileReadTooLargeError},
  };
  for (const Case& unreadable : cases) {
    SCOPED_TRACE(unreadable.name);
    fs::remove_all(widgetDataDirectory());
    if (unreadable.name != "no folder") fs::create_directories(widgetDataDirectory());
    unreadable.arrange();
    auto result = read<RecentTasksWidgetDataVO>(WidgetType::recentTasks);
    ASSERT_NE(result.errorAs<WidgetError>(), nullptr);
    EXPECT_EQ(result.errorAs<WidgetError>()->kind(), WidgetError::Code::cannotReadData);
    EXPECT_EQ(result.error().localizedDescription(), "Can not read data from storage");
    const std::shared_ptr<const Error>& reason = result.error().underlyingError();
    ASSERT_NE(reason, nullptr);
    EXPECT_TRUE(reason->is(kFileErrorDomain, unreadable.code)) << reason->what();
    EXPECT_NE(reason->localizedDescription().find(file.string()), std::string::npos) << reason->what();
  }
  // A link to a good file is read, and a file at the limit is read whole.
  fs::remove_all(widgetDataDirectory());
  fs::create_directories(widgetDataDirectory());
  writeFile(temporary_.path() / "elsewhere", encodeWidgetRecord(testing::sampleRecentTasks()));
  fs::create_symlink(temporary_.path() / "elsewhere", file);
  EXPECT_EQ(read<RecentTasksWidgetDataVO>(WidgetType::recentTasks).value(), testing::sampleRecentTasks());
  std::string padded = encodeWidgetRecord(testing::sampleRecentTasks());
  padded.resize(WidgetDataReader::kMaximumFileSize, ' ');
  writeFile(temporary_.path() / "elsewhere", padded);
  EXPECT_TRUE(read<RecentTasksWidgetDataVO>(WidgetType::recentTasks).isSuccess());
}

TEST_F(WidgetDataFiles, DamagedFilesGiveTheDecodersError) {
  writeFile(widgetDataDirectory() / "recentTasks", R"({"tasks":[{"taskId":)");
  auto damaged = read<RecentTasksWidgetDataVO>(WidgetType::recentTasks);
  ASSERT_NE(damaged.errorAs<DecodingError>(), nullptr);
  EXPECT_EQ(damaged.errorAs<WidgetError>(), nullptr);
  writeFile(widgetDataDirectory() / "recentTasks", encodeWidgetRecord(testing::sampleTimerState()));
  EXPECT_EQ(read<RecentTasksWidgetDataVO>(WidgetType::recentTasks).errorAs<DecodingError>()->kind(),
            DecodingError::Code::keyNotFound);
}

TEST_F(WidgetDataFiles, WithoutADirectoryOrContainerEveryReadAndWriteFails) {
  auto reader = WidgetDataReader::withStoreDirectoryURL(std::nullopt, WidgetType::timer);
  auto writer = WidgetDataWriter::withStoreDirectoryURL(std::nullopt, WidgetType::timer);
  environment_.set("XDG_DATA_HOME", std::nullopt);
  environment_.set("HOME", std::nullopt);
  auto containerReader = WidgetDataReader::withAppGroupName(kGroup, WidgetType::timer);
  auto containerWriter = WidgetDataWriter::withAppGroupName(kGroup, WidgetType::timer);
  for (const auto* each : {reader.get(), containerReader.get()}) {
    auto result = each->readCodableData<TimerStateVO>();
    ASSERT_NE(result.errorAs<WidgetError>(), nullptr);
    EXPECT_EQ(result.errorAs<WidgetError>()->kind(), WidgetError::Code::cannotAccessDirectory);
    EXPECT_EQ(result.error().localizedDescription(), "Can not access directory");
  }
  for (const auto* each : {writer.get(), containerWriter.get()}) {
    auto result = writeNow(*each, "{}");
    ASSERT_NE(result.errorAs<WidgetDataWriterError>(), nullptr);
    EXPECT_EQ(result.errorAs<WidgetDataWriterError>()->kind(),
              WidgetDataWriterError::Code::cannotGetWidgetStoreDirectoryUrl);
  }
}

TEST_F(WidgetDataFiles, TheContainerIsTheGroupFolderOfTheDataHome) {
  EXPECT_EQ(widgetStoreDirectoryUrl(kGroup),
            URL::fileURLWithPath(temporary_.path() / "data" / kGroup / "widgetData", true));
  // The data home falls back to ~/.local/share when XDG_DATA_HOME is unset,
  // empty or relative.
  URL fallback = URL::fileURLWithPath(temporary_.path() / "home/.local/share" / kGroup / "widgetData", true);
  for (std::optional<std::string> value : {std::optional<std::string>(), std::optional<std::string>(""),
                                           std::optional<std::string>("relative/data")}) {
    environment_.set("XDG_DATA_HOME", value);
    EXPECT_EQ(widgetStoreDirectoryUrl(kGroup), fallback) << value.value_or("unset");
  }
  environment_.set("HOME", "relative/home");
  EXPECT_FALSE(widgetStoreDirectoryUrl(kGroup));
  // A group identifier never leads outside the data home.
  environment_.set("XDG_DATA_HOME", (temporary_.path() / "data").string());
  for (std::string_view identifier : {"", ".", "..", "../escape", "a/b"}) {
    EXPECT_FALSE(applicationGroupContainerURL(identifier)) << identifier;
  }
}

// A failed write names the file and the operating system's reason.
TEST_F(WidgetDataFiles, WriterMakesItsDirectoryOrReportsTheFileSystemError) {
  fs::path nested = temporary_.path() / "a" / "b" / "widgetData";
  ASSERT_TRUE(writeTo(nested, WidgetType::recentTasks, "{\"tasks\":[]}").value());
  EXPECT_EQ(readFile(nested / "recentTasks"), "{\"tasks\":[]}");

  fs::path blocked = temporary_.path() / "blocked";
  writeFile(blocked, "not a directory");
  ASSERT_EQ(::mkfifo((nested / "timer").c_str(), 0600), 0);
  const struct {
    fs::path directory;
    std::int64_t code;
    int posixError;
  } cases[] = {
      {blocked, kFileWriteUnknownError, ENOTDIR},
      {blocked / "widgetData", kFileWriteUnknownError, ENOTDIR},
      {nested, kFileWriteUnknownError, ENXIO},
  };
  for (const auto& failing : cases) {
    auto result = writeTo(failing.directory, WidgetType::timer, "{}");
    ASSERT_FALSE(result.isSuccess()) << failing.directory;
    EXPECT_TRUE(result.error().is(kFileErrorDomain, failing.code)) << result.error().what();
    EXPECT_TRUE(result.error().underlyingError()->is(kPOSIXErrorDomain, failing.posixError)) << result.error().what();
    EXPECT_EQ(*result.error().userInfoValue<std::string>(kFilePathKey), (failing.directory / "timer").string());
    EXPECT_NE(result.error().localizedDescription().find((failing.directory / "timer").string() + "\" could not be "
                                                         "written: "),
              std::string::npos);
  }
  EXPECT_EQ(readFile(blocked), "not a directory");
}

TEST_F(WidgetDataFiles, LocationsThatAreNotFilesAreNeitherReadNorWritten) {
  std::optional<URL> remote = URL::fromString("https://example.com/widgetData/");
  auto read = WidgetDataReader::withStoreDirectoryURL(remote, WidgetType::timer)->readCodableData<TimerStateVO>();
  EXPECT_EQ(read.errorAs<WidgetError>()->kind(), WidgetError::Code::cannotReadData);
  auto written = writeNow(*WidgetDataWriter::withStoreDirectoryURL(remote, WidgetType::timer), "{}");
  EXPECT_TRUE(written.error().is(kFileErrorDomain, kFileWriteUnsupportedSchemeError));
}

TEST(WidgetType, RawValuesNameTheFilesAndKindsForGood) {
  testing::expectRawValues<WidgetType>({"timer", "weeklyTimeTrackedChart", "monthlyTimeTrackedChart",
                                        "weeklyRevenueChart", "monthlyRevenueChart", "recentTasks"});
  EXPECT_EQ(displayName(WidgetType::monthlyRevenueChart), "Revenue this month");
  EXPECT_EQ(description(WidgetType::recentTasks),
            "View your recent tasks and last session and toggle the timer of task");
}

}  // namespace
}  // namespace kestrona
