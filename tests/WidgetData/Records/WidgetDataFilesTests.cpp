#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <string>

#include "WidgetData/Records/WidgetDataReader.h"
#include "WidgetData/Records/WidgetDataWriter.h"
#include "WidgetData/Records/WidgetError.h"
#include "WidgetData/Records/WidgetStoreDirectory.h"
#include "tests/WidgetData/Records/RecordSamples.h"
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
  if (!outcome) return WidgetDataResult<bool>::failure(Error("Test", 0, "completion not called"));
  return *outcome;
}

template <typename Record>
void writeRecord(WidgetType type, const Record& record) {
  auto writer = WidgetDataWriter::withAppGroupName(kGroup, type);
  WidgetDataResult<bool> result = writeNow(*writer, encodeWidgetRecord(record));
  ASSERT_TRUE(result.isSuccess()) << result.error().what();
  EXPECT_TRUE(result.value());
}

template <typename Record>
Record readRecord(WidgetType type) {
  WidgetDataResult<Record> result = WidgetDataReader::withAppGroupName(kGroup, type)->readCodableData<Record>();
  if (!result.isSuccess()) {
    ADD_FAILURE() << "reading " << rawValue(type) << ": " << result.error().what();
    return Record{};
  }
  return result.value();
}

bool isWidgetError(const Error& error, WidgetError::Code code) {
  return error.is(WidgetError::kDomain, static_cast<std::int64_t>(code));
}

// Every test runs in a fresh data home of its own.
class WidgetDataFiles : public ::testing::Test {
 protected:
  WidgetDataFiles() {
    environment_.set("XDG_DATA_HOME", (temporary_.path() / "data").string());
    environment_.set("HOME", (temporary_.path() / "home").string());
  }

  fs::path widgetDataDirectory() const { return temporary_.path() / "data" / kGroup / "widgetData"; }

  testing::TemporaryDirectory temporary_;
  testing::ScopedEnvironment environment_;
};

TEST_F(WidgetDataFiles, EveryRecordRoundTripsThroughTheFileOfItsWidgetType) {
  TimerStateVO timer = testing::sampleTimerState();
  TimeTrackedWidgetDataVO weekTime = testing::sampleTimeTracked();
  TimeTrackedWidgetDataVO monthTime = TimeTrackedWidgetDataVO::empty();
  RevenueWidgetDataVO weekRevenue = testing::sampleRevenue();
  RevenueWidgetDataVO monthRevenue = RevenueWidgetDataVO::empty();
  RecentTasksWidgetDataVO recent = testing::sampleRecentTasks();

  writeRecord(WidgetType::timer, timer);
  writeRecord(WidgetType::weeklyTimeTrackedChart, weekTime);
  writeRecord(WidgetType::monthlyTimeTrackedChart, monthTime);
  writeRecord(WidgetType::weeklyRevenueChart, weekRevenue);
  writeRecord(WidgetType::monthlyRevenueChart, monthRevenue);
  writeRecord(WidgetType::recentTasks, recent);

  EXPECT_EQ(readRecord<TimerStateVO>(WidgetType::timer), timer);
  EXPECT_EQ(readRecord<TimeTrackedWidgetDataVO>(WidgetType::weeklyTimeTrackedChart), weekTime);
  EXPECT_EQ(readRecord<TimeTrackedWidgetDataVO>(WidgetType::monthlyTimeTrackedChart), monthTime);
  EXPECT_EQ(readRecord<RevenueWidgetDataVO>(WidgetType::weeklyRevenueChart), weekRevenue);
  EXPECT_EQ(readRecord<RevenueWidgetDataVO>(WidgetType::monthlyRevenueChart), monthRevenue);
  EXPECT_EQ(readRecord<RecentTasksWidgetDataVO>(WidgetType::recentTasks), recent);

  // One file per type, named by its raw value, with no extension.
  for (WidgetType type : allCases<WidgetType>) {
    EXPECT_TRUE(fs::is_regular_file(widgetDataDirectory() / std::string(rawValue(type)))) << rawValue(type);
  }
  EXPECT_EQ(std::distance(fs::directory_iterator(widgetDataDirectory()), fs::directory_iterator()), 6);
}

TEST_F(WidgetDataFiles, RecordsWithoutOptionalValuesRoundTrip) {
  writeRecord(WidgetType::timer, TimerStateVO{});
  EXPECT_EQ(readFile(widgetDataDirectory() / "timer"), "{}");
  EXPECT_EQ(readRecord<TimerStateVO>(WidgetType::timer), TimerStateVO{});

  TimeTrackedWidgetDataVO chart = testing::sampleTimeTracked();
  chart.currentTimeEntry.reset();
  writeRecord(WidgetType::weeklyTimeTrackedChart, chart);
  EXPECT_EQ(readRecord<TimeTrackedWidgetDataVO>(WidgetType::weeklyTimeTrackedChart), chart);
}

TEST_F(WidgetDataFiles, WritingAgainReplacesTheWholeFile) {
  writeRecord(WidgetType::timer, testing::sampleTimerState());
  TimerStateVO shorter;
  shorter.taskName = "B";
  writeRecord(WidgetType::timer, shorter);
  EXPECT_EQ(readFile(widgetDataDirectory() / "timer"), encodeWidgetRecord(shorter));
  EXPECT_EQ(readRecord<TimerStateVO>(WidgetType::timer), shorter);
}

TEST_F(WidgetDataFiles, NoDataTruncatesTheFileWhichThenFailsToDecode) {
  writeRecord(WidgetType::timer, testing::sampleTimerState());
  auto writer = WidgetDataWriter::withAppGroupName(kGroup, WidgetType::timer);

  WidgetDataResult<bool> result = writeNow(*writer, std::nullopt);
  ASSERT_TRUE(result.isSuccess());
  EXPECT_FALSE(result.value());
  EXPECT_TRUE(fs::exists(widgetDataDirectory() / "timer"));
  EXPECT_EQ(fs::file_size(widgetDataDirectory() / "timer"), 0u);

  // The file is there, so this is the decoder's error and not cannotReadData.
  auto read = WidgetDataReader::withAppGroupName(kGroup, WidgetType::timer)->readCodableData<TimerStateVO>();
  ASSERT_FALSE(read.isSuccess());
  ASSERT_NE(read.errorAs<DecodingError>(), nullptr);
  EXPECT_EQ(read.errorAs<DecodingError>()->kind(), DecodingError::Code::dataCorrupted);
  EXPECT_EQ(read.errorAs<WidgetError>(), nullptr);

  result = writeNow(*writer, std::string_view());
  ASSERT_TRUE(result.isSuccess());
  EXPECT_FALSE(result.value());
}

TEST_F(WidgetDataFiles, ReaderFailures) {
  auto reader = WidgetDataReader::withAppGroupName(kGroup, WidgetType::recentTasks);

  // No directory yet, then a directory without the file.
  auto missing = reader->readCodableData<RecentTasksWidgetDataVO>();
  ASSERT_FALSE(missing.isSuccess());
  EXPECT_TRUE(isWidgetError(missing.error(), WidgetError::Code::cannotReadData));
  ASSERT_NE(missing.errorAs<WidgetError>(), nullptr);
  EXPECT_EQ(missing.errorAs<WidgetError>()->kind(), WidgetError::Code::cannotReadData);
  EXPECT_EQ(missing.error().localizedDescription(), "Can not read data from storage");
  fs::create_directories(widgetDataDirectory());
  EXPECT_TRUE(isWidgetError(reader->readCodableData<RecentTasksWidgetDataVO>().error(),
                            WidgetError::Code::cannotReadData));

  // Something that can't be read as a file stands in its place.
  fs::create_directories(widgetDataDirectory() / "recentTasks");
  EXPECT_TRUE(isWidgetError(reader->readCodableData<RecentTasksWidgetDataVO>().error(),
                            WidgetError::Code::cannotReadData));
  fs::remove(widgetDataDirectory() / "recentTasks");

  // Damaged JSON, and a file of another record, give the decoder's error.
  writeFile(widgetDataDirectory() / "recentTasks", R"({"tasks":[{"taskId":)");
  auto damaged = reader->readCodableData<RecentTasksWidgetDataVO>();
  ASSERT_NE(damaged.errorAs<DecodingError>(), nullptr);
  EXPECT_EQ(damaged.errorAs<DecodingError>()->kind(), DecodingError::Code::dataCorrupted);
  writeFile(widgetDataDirectory() / "recentTasks", encodeWidgetRecord(testing::sampleTimerState()));
  auto otherRecord = reader->readCodableData<RecentTasksWidgetDataVO>();
  ASSERT_NE(otherRecord.errorAs<DecodingError>(), nullptr);
  EXPECT_EQ(otherRecord.errorAs<DecodingError>()->kind(), DecodingError::Code::keyNotFound);

  // The same reader reads the file once it is good.
  writeFile(widgetDataDirectory() / "recentTasks", encodeWidgetRecord(testing::sampleRecentTasks()));
  auto good = reader->readCodableData<RecentTasksWidgetDataVO>();
  ASSERT_TRUE(good.isSuccess());
  EXPECT_EQ(good.value(), testing::sampleRecentTasks());
}

TEST_F(WidgetDataFiles, WithoutADirectoryEveryReadAndWriteFails) {
  auto reader = WidgetDataReader::withStoreDirectoryURL(std::nullopt, WidgetType::timer);
  EXPECT_FALSE(reader->storeDirectoryURL());
  EXPECT_EQ(reader->widgetType(), WidgetType::timer);
  for (int attempt = 0; attempt < 2; ++attempt) {
    auto result = reader->readCodableData<TimerStateVO>();
    ASSERT_FALSE(result.isSuccess());
    EXPECT_TRUE(isWidgetError(result.error(), WidgetError::Code::cannotAccessDirectory));
    EXPECT_EQ(result.error().localizedDescription(), "Can not access directory");
  }

  auto writer = WidgetDataWriter::withStoreDirectoryURL(std::nullopt, WidgetType::timer);
  for (std::optional<std::string_view> data : {std::optional<std::string_view>("{}"),
                                               std::optional<std::string_view>()}) {
    auto result = writeNow(*writer, data);
    ASSERT_FALSE(result.isSuccess());
    ASSERT_NE(result.errorAs<WidgetDataWriterError>(), nullptr);
    EXPECT_EQ(result.errorAs<WidgetDataWriterError>()->kind(),
              WidgetDataWriterError::Code::cannotGetWidgetStoreDirectoryUrl);
  }
}

TEST_F(WidgetDataFiles, WithoutAContainerTheGroupHasNoDirectory) {
  environment_.set("XDG_DATA_HOME", std::nullopt);
  environment_.set("HOME", std::nullopt);
  EXPECT_FALSE(widgetStoreDirectoryUrl(kGroup));

  auto read = WidgetDataReader::withAppGroupName(kGroup, WidgetType::timer)->readCodableData<TimerStateVO>();
  EXPECT_TRUE(isWidgetError(read.error(), WidgetError::Code::cannotAccessDirectory));
  auto written = writeNow(*WidgetDataWriter::withAppGroupName(kGroup, WidgetType::timer), "{}");
  EXPECT_TRUE(written.error().is(WidgetDataWriterError::kDomain, 0));
}

TEST_F(WidgetDataFiles, TheContainerIsTheGroupFolderOfTheDataHome) {
  EXPECT_EQ(widgetStoreDirectoryUrl(kGroup),
            URL::fileURLWithPath(temporary_.path() / "data" / kGroup / "widgetData", true));
  EXPECT_TRUE(widgetStoreDirectoryUrl(kGroup)->hasDirectoryPath());

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
  EXPECT_EQ(applicationGroupContainerURL("odd name%"),
            URL::fileURLWithPath(temporary_.path() / "data/odd name%", true));
}

TEST_F(WidgetDataFiles, WriterMakesItsDirectoryOrReportsTheFileSystemError) {
  fs::path nested = temporary_.path() / "a" / "b" / "widgetData";
  auto writer = WidgetDataWriter::withStoreDirectoryURL(URL::fileURLWithPath(nested, true), WidgetType::recentTasks);
  auto made = writeNow(*writer, "{\"tasks\":[]}");
  ASSERT_TRUE(made.isSuccess()) << made.error().what();
  EXPECT_TRUE(made.value());
  EXPECT_EQ(readFile(nested / "recentTasks"), "{\"tasks\":[]}");

  // A file where the directory should be: existence is all that is asked,
  // so nothing is made and the write fails with its own error.
  fs::path blocked = temporary_.path() / "blocked";
  writeFile(blocked, "not a directory");
  auto onFile = writeNow(*WidgetDataWriter::withStoreDirectoryURL(URL::fileURLWithPath(blocked, true),
                                                                  WidgetType::timer),
                         "{}");
  ASSERT_FALSE(onFile.isSuccess());
  EXPECT_EQ(onFile.error().domain(), "NSCocoaErrorDomain");
  ASSERT_NE(onFile.error().underlyingError(), nullptr);
  EXPECT_TRUE(onFile.error().underlyingError()->is("NSPOSIXErrorDomain", ENOTDIR));
  ASSERT_NE(onFile.error().userInfoValue<std::string>("NSFilePath"), nullptr);
  EXPECT_EQ(*onFile.error().userInfoValue<std::string>("NSFilePath"), (blocked / "timer").string());
  EXPECT_EQ(readFile(blocked), "not a directory");

  // A directory that can't be made, below that file.
  auto below = writeNow(*WidgetDataWriter::withStoreDirectoryURL(URL::fileURLWithPath(blocked / "widgetData", true),
                                                                 WidgetType::timer),
                        "{}");
  ASSERT_FALSE(below.isSuccess());
  EXPECT_TRUE(below.error().underlyingError()->is("NSPOSIXErrorDomain", ENOTDIR));

  // A directory where the file should be.
  fs::create_directories(nested / "timer");
  auto onDirectory = writeNow(*WidgetDataWriter::withStoreDirectoryURL(URL::fileURLWithPath(nested, true),
                                                                       WidgetType::timer),
                              "{}");
  ASSERT_FALSE(onDirectory.isSuccess());
  EXPECT_TRUE(onDirectory.error().is("NSCocoaErrorDomain", 512));
  EXPECT_TRUE(onDirectory.error().underlyingError()->is("NSPOSIXErrorDomain", EISDIR));
}

TEST_F(WidgetDataFiles, LocationsThatAreNotFilesAreNeitherReadNorWritten) {
  std::optional<URL> remote = URL::fromString("https://example.com/widgetData/");
  ASSERT_TRUE(remote);
  auto read = WidgetDataReader::withStoreDirectoryURL(remote, WidgetType::timer)->readCodableData<TimerStateVO>();
  EXPECT_TRUE(isWidgetError(read.error(), WidgetError::Code::cannotReadData));
  auto written = writeNow(*WidgetDataWriter::withStoreDirectoryURL(remote, WidgetType::timer), "{}");
  ASSERT_FALSE(written.isSuccess());
  EXPECT_TRUE(written.error().is("NSCocoaErrorDomain", 518));
}

TEST(WidgetType, RawValuesNameTheFilesAndReadBack) {
  std::set<std::string_view> names;
  std::set<std::string> titles;
  for (WidgetType type : allCases<WidgetType>) {
    EXPECT_EQ(fromRawValue<WidgetType>(rawValue(type)), type);
    names.insert(rawValue(type));
    titles.insert(displayName(type));
    EXPECT_FALSE(description(type).empty());
  }
  EXPECT_EQ(names.size(), 6u);
  EXPECT_EQ(titles.size(), 6u);
  EXPECT_EQ(rawValue(WidgetType::weeklyTimeTrackedChart), "weeklyTimeTrackedChart");
  EXPECT_EQ(allCases<WidgetType>.front(), WidgetType::timer);
  EXPECT_EQ(allCases<WidgetType>.back(), WidgetType::recentTasks);
  for (std::string_view unknown : {"Timer", "timer ", "", "weeklyRevenue"}) {
    EXPECT_FALSE(fromRawValue<WidgetType>(unknown)) << unknown;
  }
  EXPECT_EQ(displayName(WidgetType::monthlyRevenueChart), "Revenue this month");
  EXPECT_EQ(description(WidgetType::recentTasks),
            "View your recent tasks and last session and toggle the timer of task");
}

}  // namespace
}  // namespace kestrona
