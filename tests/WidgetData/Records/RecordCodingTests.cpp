#include "WidgetData/Records/RecordCoding.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

#include "Platform/Time/Clock.h"
#include "WidgetData/Records/ColorTransferable.h"
#include "tests/WidgetData/Records/RecordSamples.h"

namespace kestrona {
namespace {

using testing::sampleColor;

// The DecodingError that decoding text as Record throws; fails the test
// when there is none.
template <typename Record>
DecodingError decodingFailure(std::string_view text) {
  try {
    decodeWidgetRecord<Record>(text);
  } catch (const DecodingError& error) {
    return error;
  }
  ADD_FAILURE() << "decoded without error: " << text;
  return DecodingError(DecodingError::Code::dataCorrupted, {}, "no error");
}

template <typename Record>
EncodingError encodingFailure(const Record& record) {
  try {
    encodeWidgetRecord(record);
  } catch (const EncodingError& error) {
    return error;
  }
  ADD_FAILURE() << "encoded without error";
  return EncodingError(EncodingError::Code::invalidValue, {}, "no error");
}

constexpr const char* kColorJSON =
    R"({"redComponent":1,"greenComponent":0.5,"blueComponent":0,"alphaComponent":1})";

std::string withColor(const std::string& pattern) {
  std::string text = pattern;
  for (std::size_t at = text.find("$C"); at != std::string::npos; at = text.find("$C")) text.replace(at, 2, kColorJSON);
  return text;
}

TEST(TimerStateVOCoding, EmptyObjectMeansNothingKnownAndRecordWithoutValuesWritesNoKeys) {
  TimerStateVO state = decodeWidgetRecord<TimerStateVO>("{}");
  EXPECT_EQ(state, TimerStateVO{});
  EXPECT_EQ(state.timeEntryEffectiveDuration(), 0);
  EXPECT_EQ(encodeWidgetRecord(TimerStateVO{}), "{}");
  EXPECT_EQ(decodeWidgetRecord<TimerStateVO>(encodeWidgetRecord(TimerStateVO{})), TimerStateVO{});
}

TEST(TimerStateVOCoding, EveryFieldRoundTripsUnderItsOwnKey) {
  TimerStateVO state = testing::sampleTimerState();
  std::string text = encodeWidgetRecord(state);
  EXPECT_EQ(decodeWidgetRecord<TimerStateVO>(text), state);
  nlohmann::json object = nlohmann::json::parse(text);
  for (const char* key : {"taskId", "taskName", "taskColor", "taskBackgroundColorOptimizedForLightContent",
                          "startButtonBackgroundOpacity", "folderName", "timeEntryBeginTimestamp",
                          "timeEntryEndTimestamp"}) {
    EXPECT_TRUE(object.contains(key)) << key;
  }
  EXPECT_EQ(object.size(), 8u);
  // Times are plain numbers, never date strings.
  EXPECT_TRUE(object["timeEntryBeginTimestamp"].is_number());
  EXPECT_EQ(object["timeEntryBeginTimestamp"].get<double>(), 1700000000.5);
  EXPECT_EQ(object["taskColor"]["redComponent"].get<double>(), 0.1);
}

TEST(TimerStateVOCoding, NullReadsAsAbsentAndUnknownKeysAreIgnored) {
  TimerStateVO state = decodeWidgetRecord<TimerStateVO>(
      R"({"taskId":null,"taskName":"Writing","taskColor":null,"startButtonBackgroundOpacity":null,)"
      R"("timeEntryBeginTimestamp":1700000000,"timeEntryEndTimestamp":null,)"
      R"("isPinned":true,"tags":["a",{"b":null}],"taskColorV2":"red"})");
  EXPECT_FALSE(state.taskId);
  EXPECT_EQ(state.taskName, "Writing");
  EXPECT_FALSE(state.taskColor);
  EXPECT_FALSE(state.startButtonBackgroundOpacity);
  EXPECT_EQ(state.timeEntryBeginTimestamp, 1700000000.0);
  EXPECT_FALSE(state.timeEntryEndTimestamp);
}

TEST(TimerStateVOCoding, OpacityIsA32BitNumber) {
  TimerStateVO state;
  state.startButtonBackgroundOpacity = 0.1f;
  TimerStateVO back = decodeWidgetRecord<TimerStateVO>(encodeWidgetRecord(state));
  ASSERT_TRUE(back.startButtonBackgroundOpacity);
  EXPECT_EQ(*back.startButtonBackgroundOpacity, 0.1f);

  // A file that says 0.1 gives the nearest 32-bit value, which is not 0.1 as a 64-bit number.
  TimerStateVO written = decodeWidgetRecord<TimerStateVO>(R"({"startButtonBackgroundOpacity":0.1})");
  ASSERT_TRUE(written.startButtonBackgroundOpacity);
  EXPECT_EQ(*written.startButtonBackgroundOpacity, 0.1f);
  EXPECT_NE(static_cast<double>(*written.startButtonBackgroundOpacity), 0.1);

  DecodingError tooLarge = decodingFailure<TimerStateVO>(R"({"startButtonBackgroundOpacity":1e39})");
  EXPECT_EQ(tooLarge.kind(), DecodingError::Code::dataCorrupted);
  EXPECT_EQ(tooLarge.codingPath(), CodingPath{"startButtonBackgroundOpacity"});
}

TEST(TimerStateVOCoding, EffectiveDurationRunsWithTheClockOnlyWhileThereIsNoEnd) {
  ManualClock clock(Date(1700000900));
  ScopedClock scoped(clock);

  TimerStateVO running;
  running.timeEntryBeginTimestamp = 1700000000;
  EXPECT_EQ(running.timeEntryEffectiveDuration(), 900);
  clock.advance(100);
  EXPECT_EQ(running.timeEntryEffectiveDuration(), 1000);
  EXPECT_EQ(running.timeEntryBegin(), Date(1700000000));
  EXPECT_FALSE(running.timeEntryEnd());

  TimerStateVO ended = running;
  ended.timeEntryEndTimestamp = 1700000060.5;
  EXPECT_EQ(ended.timeEntryEffectiveDuration(), 60.5);
  clock.advance(5000);
  EXPECT_EQ(ended.timeEntryEffectiveDuration(), 60.5);

  TimerStateVO endBeforeBegin = running;
  endBeforeBegin.timeEntryEndTimestamp = 1699999990;
  EXPECT_EQ(endBeforeBegin.timeEntryEffectiveDuration(), -10);

  TimerStateVO endWithoutBegin;
  endWithoutBegin.timeEntryEndTimestamp = 1700000000;
  EXPECT_EQ(endWithoutBegin.timeEntryEffectiveDuration(), 0);
}

TEST(RecentTasksWidgetDataVOCoding, TasksAreRequiredAndKeepTheirOrder) {
  DecodingError missing = decodingFailure<RecentTasksWidgetDataVO>("{}");
  EXPECT_EQ(missing.kind(), DecodingError::Code::keyNotFound);
  EXPECT_EQ(missing.codingPath(), CodingPath{"tasks"});

  EXPECT_EQ(decodingFailure<RecentTasksWidgetDataVO>(R"({"tasks":null})").kind(),
            DecodingError::Code::valueNotFound);
  EXPECT_EQ(decodeWidgetRecord<RecentTasksWidgetDataVO>(R"({"tasks":[]})"), RecentTasksWidgetDataVO{});

  RecentTasksWidgetDataVO data = testing::sampleRecentTasks();
  RecentTasksWidgetDataVO back = decodeWidgetRecord<RecentTasksWidgetDataVO>(encodeWidgetRecord(data));
  EXPECT_EQ(back, data);
  ASSERT_EQ(back.tasks.size(), 2u);
  EXPECT_EQ(back.tasks[0].taskName, "Concept");
  EXPECT_FALSE(back.tasks[0].isRunning());
  EXPECT_FALSE(back.tasks[0].runningEntryBegin());
  EXPECT_TRUE(back.tasks[1].isRunning());
  EXPECT_EQ(back.tasks[1].runningEntryBegin(), Date(1700000123.0));
  EXPECT_FALSE(nlohmann::json::parse(encodeWidgetRecord(data))["tasks"][0].contains("runningEntryBeginTimestamp"));
}

TEST(RecentTasksWidgetDataVOCoding, OneBadTaskFailsTheWholeFileWithItsPath) {
  std::string text = withColor(
      R"({"tasks":[{"taskId":"a","taskName":"A","taskColor":$C,"taskBackgroundColorOptimizedForLightContent":$C,)"
      R"("confirmedDuration":60},)"
      R"({"taskId":"b","taskName":"B","taskColor":$C,"taskBackgroundColorOptimizedForLightContent":$C}]})");
  DecodingError error = decodingFailure<RecentTasksWidgetDataVO>(text);
  EXPECT_EQ(error.kind(), DecodingError::Code::keyNotFound);
  EXPECT_EQ(error.codingPath(), (CodingPath{"tasks", "Index 1", "confirmedDuration"}));
  EXPECT_NE(error.localizedDescription().find("tasks.Index 1.confirmedDuration"), std::string::npos);
}

TEST(ChartRecordCoding, CurrentEntryNeedsItsColourButNotItsBegin) {
  TimeTrackedWidgetDataVO withoutBegin = decodeWidgetRecord<TimeTrackedWidgetDataVO>(
      withColor(R"({"bars":[],"currentTimeEntry":{"taskId":"","taskColor":$C},"firstDayOfWeek":2})"));
  ASSERT_TRUE(withoutBegin.currentTimeEntry);
  EXPECT_EQ(withoutBegin.currentTimeEntry->taskId, "");
  EXPECT_FALSE(withoutBegin.currentTimeEntry->begin);
  EXPECT_EQ(withoutBegin.currentTimeEntry->taskColor, (ColorTransferable{1, 0.5, 0, 1}));

  DecodingError error = decodingFailure<RevenueWidgetDataVO>(
      R"({"bars":[],"currentTimeEntry":{"taskId":"t","begin":1700000000},)"
      R"("currencyLocalIdentifier":"en_US","firstDayOfWeek":1})");
  EXPECT_EQ(error.kind(), DecodingError::Code::keyNotFound);
  EXPECT_EQ(error.codingPath(), (CodingPath{"currentTimeEntry", "taskColor"}));

  TimeTrackedWidgetDataVO withoutEntry =
      decodeWidgetRecord<TimeTrackedWidgetDataVO>(R"({"bars":[],"currentTimeEntry":null,"firstDayOfWeek":1})");
  EXPECT_FALSE(withoutEntry.currentTimeEntry);
}

TEST(ChartRecordCoding, SegmentsMayBeEmptyButNotAbsent) {
  TimeTrackedWidgetDataVO data = decodeWidgetRecord<TimeTrackedWidgetDataVO>(
      R"({"bars":[{"date":1699833600,"timeEntryCount":0,"segments":[],"totalValue":0}],"firstDayOfWeek":2})");
  ASSERT_EQ(data.bars.size(), 1u);
  EXPECT_TRUE(data.bars[0].segments.empty());
  EXPECT_EQ(data.bars[0].date, 1699833600);

  DecodingError error = decodingFailure<TimeTrackedWidgetDataVO>(
      R"({"bars":[{"date":1699833600,"timeEntryCount":0,"totalValue":0}],"firstDayOfWeek":2})");
  EXPECT_EQ(error.kind(), DecodingError::Code::keyNotFound);
  EXPECT_EQ(error.codingPath(), (CodingPath{"bars", "Index 0", "segments"}));
}

TEST(ChartRecordCoding, RequiredKeysOfRevenueFiles) {
  const std::string complete = R"({"bars":[],"currencyLocalIdentifier":"en_US","firstDayOfWeek":1})";
  RevenueWidgetDataVO data = decodeWidgetRecord<RevenueWidgetDataVO>(complete);
  EXPECT_FALSE(data.currentTimeEntry);
  EXPECT_FALSE(data.currentTimeEntryHourRate);
  EXPECT_EQ(data.currencyLocalIdentifier, "en_US");

  for (const char* key : {"bars", "currencyLocalIdentifier", "firstDayOfWeek"}) {
    nlohmann::json object = nlohmann::json::parse(complete);
    object.erase(key);
    DecodingError error = decodingFailure<RevenueWidgetDataVO>(object.dump());
    EXPECT_EQ(error.kind(), DecodingError::Code::keyNotFound) << key;
    EXPECT_EQ(error.codingPath(), CodingPath{key});
  }
  // The key is spelled as the files have always spelled it.
  EXPECT_EQ(decodingFailure<RevenueWidgetDataVO>(
                R"({"bars":[],"currencyLocaleIdentifier":"en_US","firstDayOfWeek":1})")
                .codingPath(),
            CodingPath{"currencyLocalIdentifier"});
}

TEST(ChartRecordCoding, ChartRecordsRoundTripAndEmptyRecordsHaveAWhiteEntryWithoutBegin) {
  EXPECT_EQ(decodeWidgetRecord<TimeTrackedWidgetDataVO>(encodeWidgetRecord(testing::sampleTimeTracked())),
            testing::sampleTimeTracked());
  EXPECT_EQ(decodeWidgetRecord<RevenueWidgetDataVO>(encodeWidgetRecord(testing::sampleRevenue())),
            testing::sampleRevenue());

  TimeTrackedWidgetDataVO timeTracked = TimeTrackedWidgetDataVO::empty();
  RevenueWidgetDataVO revenue = RevenueWidgetDataVO::empty();
  CurrentTimeEntryVO emptyEntry{.taskId = "", .begin = std::nullopt, .taskColor = {1, 1, 1, 1}};
  EXPECT_TRUE(timeTracked.bars.empty());
  EXPECT_EQ(timeTracked.firstDayOfWeek, 0);
  EXPECT_EQ(timeTracked.currentTimeEntry, emptyEntry);
  EXPECT_TRUE(revenue.bars.empty());
  EXPECT_EQ(revenue.firstDayOfWeek, 0);
  EXPECT_EQ(revenue.currentTimeEntry, emptyEntry);
  EXPECT_FALSE(revenue.currentTimeEntryHourRate);
  EXPECT_EQ(revenue.currencyLocalIdentifier, "");

  nlohmann::json object = nlohmann::json::parse(encodeWidgetRecord(revenue));
  EXPECT_FALSE(object["currentTimeEntry"].contains("begin"));
  EXPECT_FALSE(object.contains("currentTimeEntryHourRate"));
  EXPECT_EQ(decodeWidgetRecord<RevenueWidgetDataVO>(object.dump()), revenue);
}

TEST(ValueCoding, IntegersMustBeWholeAndFit) {
  auto firstDay = [](const std::string& value) {
    return R"({"bars":[],"firstDayOfWeek":)" + value + "}";
  };
  EXPECT_EQ(decodeWidgetRecord<TimeTrackedWidgetDataVO>(firstDay("7")).firstDayOfWeek, 7);
  EXPECT_EQ(decodeWidgetRecord<TimeTrackedWidgetDataVO>(firstDay("2.0")).firstDayOfWeek, 2);
  EXPECT_EQ(decodeWidgetRecord<TimeTrackedWidgetDataVO>(firstDay("-9223372036854775808")).firstDayOfWeek,
            std::numeric_limits<std::int64_t>::min());
  EXPECT_EQ(decodeWidgetRecord<TimeTrackedWidgetDataVO>(firstDay("9223372036854775807")).firstDayOfWeek,
            std::numeric_limits<std::int64_t>::max());
  for (const char* value : {"2.5", "9223372036854775808", "9.3e18", "-9.3e18"}) {
    DecodingError error = decodingFailure<TimeTrackedWidgetDataVO>(firstDay(value));
    EXPECT_EQ(error.kind(), DecodingError::Code::dataCorrupted) << value;
    EXPECT_EQ(error.codingPath(), CodingPath{"firstDayOfWeek"});
  }
  for (const char* value : {"\"2\"", "true", "[2]", "{}"}) {
    EXPECT_EQ(decodingFailure<TimeTrackedWidgetDataVO>(firstDay(value)).kind(), DecodingError::Code::typeMismatch)
        << value;
  }
  EXPECT_EQ(decodingFailure<TimeTrackedWidgetDataVO>(firstDay("null")).kind(), DecodingError::Code::valueNotFound);
}

TEST(ValueCoding, NumbersAndTextMustBeOfTheirKind) {
  auto color = [](const std::string& red) {
    return R"({"redComponent":)" + red + R"(,"greenComponent":0,"blueComponent":0,"alphaComponent":1})";
  };
  EXPECT_EQ(decodeWidgetRecord<ColorTransferable>(color("1")).redComponent, 1.0);
  EXPECT_EQ(decodeWidgetRecord<ColorTransferable>(color("-0.25")).redComponent, -0.25);
  EXPECT_EQ(decodeWidgetRecord<ColorTransferable>(color("18446744073709551615")).redComponent, 18446744073709551615.0);
  for (const char* red : {"true", "\"1\"", "[1]"}) {
    DecodingError error = decodingFailure<ColorTransferable>(color(red));
    EXPECT_EQ(error.kind(), DecodingError::Code::typeMismatch) << red;
    EXPECT_EQ(error.codingPath(), CodingPath{"redComponent"});
  }
  EXPECT_EQ(decodingFailure<ColorTransferable>(color("null")).kind(), DecodingError::Code::valueNotFound);
  EXPECT_EQ(decodingFailure<ColorTransferable>(color("1e999")).kind(), DecodingError::Code::dataCorrupted);

  EXPECT_EQ(decodingFailure<TimerStateVO>(R"({"taskName":42})").kind(), DecodingError::Code::typeMismatch);
  EXPECT_EQ(decodingFailure<TimerStateVO>(R"({"taskColor":"#ff0000"})").codingPath(), CodingPath{"taskColor"});
  EXPECT_EQ(decodingFailure<RecentTasksWidgetDataVO>(R"({"tasks":{}})").kind(), DecodingError::Code::typeMismatch);
}

TEST(ValueCoding, ValuesThatJSONCannotCarryAreNotWritten) {
  TimeTrackedWidgetDataVO data = testing::sampleTimeTracked();
  data.bars[0].segments[1].value = std::numeric_limits<double>::quiet_NaN();
  EncodingError error = encodingFailure(data);
  EXPECT_EQ(error.kind(), EncodingError::Code::invalidValue);
  EXPECT_EQ(error.codingPath(), (CodingPath{"bars", "Index 0", "segments", "Index 1", "value"}));

  TimerStateVO state;
  state.startButtonBackgroundOpacity = std::numeric_limits<float>::infinity();
  EXPECT_EQ(encodingFailure(state).codingPath(), CodingPath{"startButtonBackgroundOpacity"});

  state = TimerStateVO{};
  state.taskName = std::string("caf\xC3", 4);
  EXPECT_EQ(encodingFailure(state).kind(), EncodingError::Code::invalidValue);
}

TEST(DocumentCoding, DataThatIsNotOneJSONObjectFails) {
  for (const char* text : {"", " ", "{", "{\"taskName\":\"A\"", "{\"taskName\":\"A\"}}", "not json",
                           "{\"taskName\":\"caf\xC3\"}"}) {
    DecodingError error = decodingFailure<TimerStateVO>(text);
    EXPECT_EQ(error.kind(), DecodingError::Code::dataCorrupted) << text;
    EXPECT_TRUE(error.codingPath().empty());
    ASSERT_NE(error.underlyingError(), nullptr);
  }
  for (const char* text : {"[]", "null", "3", "\"{}\""}) {
    DecodingError error = decodingFailure<TimerStateVO>(text);
    EXPECT_NE(error.kind(), DecodingError::Code::dataCorrupted) << text;
  }
  EXPECT_EQ(decodeWidgetRecord<TimerStateVO>(" \n{ \"taskName\" : \"A\" }\n ").taskName, "A");
}

// A reader may meet a file while the application is writing it. No part of
// a record, nor one record followed by the tail of a longer one, may read as
// a record.
TEST(DocumentCoding, PartlyWrittenFilesNeverReadAsARecord) {
  std::string longer = encodeWidgetRecord(testing::sampleTimerState());
  for (std::size_t length = 0; length < longer.size(); ++length) {
    EXPECT_THROW(decodeWidgetRecord<TimerStateVO>(longer.substr(0, length)), DecodingError) << length;
  }
  TimerStateVO shorterState;
  shorterState.taskName = "B";
  std::string shorter = encodeWidgetRecord(shorterState);
  ASSERT_LT(shorter.size(), longer.size());
  std::string overwritten = shorter + longer.substr(shorter.size());
  EXPECT_EQ(decodingFailure<TimerStateVO>(overwritten).kind(), DecodingError::Code::dataCorrupted);
}

TEST(ColorTransferable, ComparesAndHashesFieldByField) {
  std::hash<ColorTransferable> hash;
  ColorTransferable color = sampleColor(0.3);
  EXPECT_EQ(color, sampleColor(0.3));
  EXPECT_EQ(hash(color), hash(sampleColor(0.3)));
  for (ColorTransferable other : {ColorTransferable{0.4, 0.25, 0.7, 0.875}, ColorTransferable{0.3, 0.26, 0.7, 0.875},
                                  ColorTransferable{0.3, 0.25, 0.71, 0.875}, ColorTransferable{0.3, 0.25, 0.7, 0.9}}) {
    EXPECT_NE(color, other);
    EXPECT_NE(hash(color), hash(other));
  }
  // Components are exchanged as they are, out of range included.
  ColorTransferable extended{1.0930663, -0.2267, 0, 1};
  EXPECT_EQ(decodeWidgetRecord<ColorTransferable>(encodeWidgetRecord(extended)), extended);
}

}  // namespace
}  // namespace kestrona
