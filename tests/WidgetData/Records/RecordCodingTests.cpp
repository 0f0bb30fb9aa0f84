#include "WidgetData/Records/RecordCoding.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "Platform/Time/Clock.h"
#include "WidgetData/Records/ColorTransferable.h"
#include "tests/WidgetData/Records/RecordSamples.h"

namespace kestrona {
namespace {

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

// "$C" in a pattern stands for a complete colour object.
std::string withColor(std::string text) {
  constexpr std::string_view kColor = R"({"redComponent":1,"greenComponent":0.5,"blueComponent":0,"alphaComponent":1})";
  for (std::size_t at = text.find("$C"); at != std::string::npos; at = text.find("$C")) text.replace(at, 2, kColor);
  return text;
}

// A timer record with only the given times.
TimerStateVO timerState(std::optional<double> begin, std::optional<double> end = std::nullopt) {
  TimerStateVO state;
  state.timeEntryBeginTimestamp = begin;
  state.timeEntryEndTimestamp = end;
  return state;
}

std::string chart(const std::string& firstDayOfWeek) { return R"({"bars":[],"firstDayOfWeek":)" + firstDayOfWeek + "}"; }

TEST(RecordCoding, EveryRecordRoundTripsAndKeepsItsKeys) {
  EXPECT_EQ(decodeWidgetRecord<TimerStateVO>(encodeWidgetRecord(testing::sampleTimerState())),
            testing::sampleTimerState());
  EXPECT_EQ(decodeWidgetRecord<RecentTasksWidgetDataVO>(encodeWidgetRecord(testing::sampleRecentTasks())),
            testing::sampleRecentTasks());
  EXPECT_EQ(decodeWidgetRecord<TimeTrackedWidgetDataVO>(encodeWidgetRecord(testing::sampleTimeTracked())),
            testing::sampleTimeTracked());
  EXPECT_EQ(decodeWidgetRecord<RevenueWidgetDataVO>(encodeWidgetRecord(testing::sampleRevenue())),
            testing::sampleRevenue());
  EXPECT_EQ(decodeWidgetRecord<RevenueWidgetDataVO>(encodeWidgetRecord(RevenueWidgetDataVO::empty())),
            RevenueWidgetDataVO::empty());

  nlohmann::json timer = nlohmann::json::parse(encodeWidgetRecord(testing::sampleTimerState()));
  EXPECT_EQ(timer.size(), 8u);
  EXPECT_EQ(timer["timeEntryBeginTimestamp"], 1700000000.5) << "times are plain numbers";
  // Absent optionals write no key, and an object without keys is a timer record.
  EXPECT_EQ(encodeWidgetRecord(TimerStateVO{}), "{}");
  EXPECT_EQ(decodeWidgetRecord<TimerStateVO>("{}"), TimerStateVO{});
  nlohmann::json revenue = nlohmann::json::parse(encodeWidgetRecord(RevenueWidgetDataVO::empty()));
  EXPECT_FALSE(revenue.contains("currentTimeEntryHourRate"));
  EXPECT_FALSE(revenue["currentTimeEntry"].contains("begin"));
}

TEST(RecordCoding, NullReadsAsAbsentAndUnknownKeysAreIgnored) {
  TimerStateVO state = decodeWidgetRecord<TimerStateVO>(
      R"({"taskId":null,"taskName":"Writing","taskColor":null,"timeEntryBeginTimestamp":1700000000,)"
      R"("isPinned":true,"tags":["a",{"b":null}],"taskColorV2":"red"})");
  TimerStateVO expected = timerState(1700000000);
  expected.taskName = "Writing";
  EXPECT_EQ(state, expected);
  EXPECT_FALSE(decodeWidgetRecord<TimeTrackedWidgetDataVO>(
                   R"({"bars":[],"currentTimeEntry":null,"firstDayOfWeek":1})").currentTimeEntry);
  TimeTrackedWidgetDataVO withoutBegin = decodeWidgetRecord<TimeTrackedWidgetDataVO>(
      withColor(R"({"bars":[],"currentTimeEntry":{"taskId":"","taskColor":$C},"firstDayOfWeek":2})"));
  EXPECT_EQ(withoutBegin.currentTimeEntry,
            (CurrentTimeEntryVO{.taskId = "", .begin = std::nullopt, .taskColor = {1, 0.5, 0, 1}}));
}

// Whole numbers fit their 64-bit field; 32-bit opacities read back as the
// nearest 32-bit value.
TEST(RecordCoding, NumbersReadIntoTheirTypes) {
  EXPECT_EQ(decodeWidgetRecord<TimeTrackedWidgetDataVO>(chart("2.0")).firstDayOfWeek, 2);
  EXPECT_EQ(decodeWidgetRecord<TimeTrackedWidgetDataVO>(chart("-9223372036854775808")).firstDayOfWeek,
            std::numeric_limits<std::int64_t>::min());
  EXPECT_EQ(decodeWidgetRecord<TimeTrackedWidgetDataVO>(chart("9223372036854775807")).firstDayOfWeek,
            std::numeric_limits<std::int64_t>::max());
  TimerStateVO opacity = decodeWidgetRecord<TimerStateVO>(R"({"startButtonBackgroundOpacity":0.1})");
  EXPECT_EQ(opacity.startButtonBackgroundOpacity, 0.1f);
  EXPECT_EQ(decodeWidgetRecord<TimerStateVO>(encodeWidgetRecord(opacity)), opacity);
  EXPECT_EQ(decodeWidgetRecord<ColorTransferable>(
                R"({"redComponent":1.0930663,"greenComponent":-0.2267,"blueComponent":0,"alphaComponent":1})"),
            (ColorTransferable{1.0930663, -0.2267, 0, 1}))
      << "colour components out of 0...1 are exchanged as they are";
  EXPECT_EQ(decodeWidgetRecord<TimerStateVO>(R"({"timeEntryBeginTimestamp":253402300799.5})").timeEntryBeginTimestamp,
            253402300799.5) << "the last moment of 9999";
}

TEST(RecordCoding, FailuresNameTheirKindAndPath) {
  using Code = DecodingError::Code;
  struct Case {
    DecodingError (*decode)(std::string_view);
    std::string text;
    Code code;
    CodingPath path;
  };
  const auto timer = &decodingFailure<TimerStateVO>;
  const auto recent = &decodingFailure<RecentTasksWidgetDataVO>;
  const auto timeTracked = &decodingFailure<TimeTrackedWidgetDataVO>;
  const auto revenue = &decodingFailure<RevenueWidgetDataVO>;
  const Case cases[] = {
      {recent, "{}", Code::keyNotFound, {"tasks"}},
      {recent, R"({"tasks":null})", Code::valueNotFound, {"tasks"}},
      {recent, R"({"tasks":{}})", Code::typeMismatch, {"tasks"}},
      {recent,
       withColor(R"({"tasks":[{"taskId":"a","taskName":"A","taskColor":$C,)"
                 R"("taskBackgroundColorOptimizedForLightContent":$C,"confirmedDuration":60},)"
                 R"({"taskId":"b","taskName":"B","taskColor":$C,"taskBackgroundColorOptimizedForLightContent":$C}]})"),
       Code::keyNotFound,
       {"tasks", "Index 1", "confirmedDuration"}},
      {revenue, R"({"bars":[],"currentTimeEntry":{"taskId":"t","begin":1700000000},"currencyLocalIdentifier":"",)"
                R"("firstDayOfWeek":1})",
       Code::keyNotFound, {"currentTimeEntry", "taskColor"}},
      {revenue, R"({"bars":[],"currencyLocaleIdentifier":"en_US","firstDayOfWeek":1})", Code::keyNotFound,
       {"currencyLocalIdentifier"}},
      {revenue, R"({"currencyLocalIdentifier":"en_US","firstDayOfWeek":1})", Code::keyNotFound, {"bars"}},
      {timeTracked, R"({"bars":[{"date":1699833600,"timeEntryCount":0,"totalValue":0}],"firstDayOfWeek":2})",
       Code::keyNotFound, {"bars", "Index 0", "segments"}},
      {timeTracked, chart("2.5"), Code::dataCorrupted, {"firstDayOfWeek"}},
      {timeTracked, chart("9223372036854775808"), Code::dataCorrupted, {"firstDayOfWeek"}},
      {timeTracked, chart("-9223372036854775809"), Code::dataCorrupted, {"firstDayOfWeek"}},
      {timeTracked, chart("9.3e18"), Code::dataCorrupted, {"firstDayOfWeek"}},
      {timeTracked, chart("\"2\""), Code::typeMismatch, {"firstDayOfWeek"}},
      {timeTracked, chart("null"), Code::valueNotFound, {"firstDayOfWeek"}},
      {timer, R"({"startButtonBackgroundOpacity":1e39})", Code::dataCorrupted, {"startButtonBackgroundOpacity"}},
      {timer, R"({"taskName":42})", Code::typeMismatch, {"taskName"}},
      {timer, R"({"taskColor":"#ff0000"})", Code::typeMismatch, {"taskColor"}},
      {timer, withColor(R"({"taskColor":{"redComponent":true,"greenComponent":0,"blueComponent":0,)"
                        R"("alphaComponent":1}})"),
       Code::typeMismatch, {"taskColor", "redComponent"}},
      {timer, R"({"taskColor":{"redComponent":1e999}})", Code::dataCorrupted, {}},
      {timer, R"({"timeEntryBeginTimestamp":-1e300})", Code::dataCorrupted, {"timeEntryBeginTimestamp"}},
      {timer, R"({"timeEntryEndTimestamp":1e30})", Code::dataCorrupted, {"timeEntryEndTimestamp"}},
      {timer, R"({"timeEntryBeginTimestamp":-1})", Code::dataCorrupted, {"timeEntryBeginTimestamp"}},
      {timer, R"({"timeEntryBeginTimestamp":253402300800})", Code::dataCorrupted, {"timeEntryBeginTimestamp"}},
      {timeTracked, R"({"bars":[{"date":1e300,"timeEntryCount":0,"segments":[],"totalValue":0}],"firstDayOfWeek":2})",
       Code::dataCorrupted, {"bars", "Index 0", "date"}},
      {recent, withColor(R"({"tasks":[{"taskId":"a","taskName":"A","taskColor":$C,)"
                         R"("taskBackgroundColorOptimizedForLightContent":$C,"confirmedDuration":60,)"
                         R"("runningEntryBeginTimestamp":-5e9}]})"),
       Code::dataCorrupted, {"tasks", "Index 0", "runningEntryBeginTimestamp"}},
      {timer, "[]", Code::typeMismatch, {}},
      {timer, "null", Code::valueNotFound, {}},
  };
  for (const Case& wrong : cases) {
    DecodingError error = wrong.decode(wrong.text);
    EXPECT_EQ(error.kind(), wrong.code) << wrong.text;
    EXPECT_EQ(error.codingPath(), wrong.path) << wrong.text;
  }
  EXPECT_NE(decodingFailure<TimerStateVO>(R"({"timeEntryBeginTimestamp":-1e300})").localizedDescription().find(
                "outside the years 1970 to 9999"),
            std::string::npos);
}

TEST(RecordCoding, TextThatIsNotOneJSONValueIsDataCorrupted) {
  for (const char* text : {"", " ", "{", "{\"taskName\":\"A\"", "{\"taskName\":\"A\"}}", "not json",
                           "{\"taskName\":\"caf\xC3\"}"}) {
    DecodingError error = decodingFailure<TimerStateVO>(text);
    EXPECT_EQ(error.kind(), DecodingError::Code::dataCorrupted) << text;
    EXPECT_NE(error.underlyingError(), nullptr) << text;
  }
  EXPECT_EQ(decodeWidgetRecord<TimerStateVO>(" \n{ \"taskName\" : \"A\" }\n ").taskName, "A");
}

// A reader may meet a file while the application writes it: no part of a
// record, nor one record followed by the tail of a longer one, reads as a
// record.
TEST(RecordCoding, PartlyWrittenFilesNeverReadAsARecord) {
  std::string longer = encodeWidgetRecord(testing::sampleTimerState());
  for (std::size_t length = 0; length < longer.size(); ++length) {
    EXPECT_THROW(decodeWidgetRecord<TimerStateVO>(longer.substr(0, length)), DecodingError) << length;
  }
  TimerStateVO shorterState;
  shorterState.taskName = "B";
  std::string shorter = encodeWidgetRecord(shorterState);
  EXPECT_THROW(decodeWidgetRecord<TimerStateVO>(shorter + longer.substr(shorter.size())), DecodingError);
}

// What the reader would refuse is never written.
TEST(RecordCoding, ValuesThatAFileCannotCarryAreNotWritten) {
  TimeTrackedWidgetDataVO chartData = testing::sampleTimeTracked();
  chartData.bars[0].segments[1].value = std::numeric_limits<double>::quiet_NaN();
  EXPECT_EQ(encodingFailure(chartData).codingPath(), (CodingPath{"bars", "Index 0", "segments", "Index 1", "value"}));
  chartData = testing::sampleTimeTracked();
  chartData.bars[1].date = -86400;
  EXPECT_EQ(encodingFailure(chartData).codingPath(), (CodingPath{"bars", "Index 1", "date"}));

  TimerStateVO state = timerState(1700000000, 1e30);
  EXPECT_EQ(encodingFailure(state).codingPath(), CodingPath{"timeEntryEndTimestamp"});
  state = TimerStateVO{};
  state.startButtonBackgroundOpacity = std::numeric_limits<float>::infinity();
  EXPECT_EQ(encodingFailure(state).codingPath(), CodingPath{"startButtonBackgroundOpacity"});
  state = TimerStateVO{};
  state.taskName = std::string("caf\xC3", 4);
  EXPECT_EQ(encodingFailure(state).kind(), EncodingError::Code::invalidValue);
}

TEST(RecordCoding, EffectiveDurationRunsWithTheClockOnlyWhileThereIsNoEnd) {
  ManualClock clock(Date(1700000900));
  ScopedClock scoped(clock);
  EXPECT_EQ(timerState(1700000000).timeEntryEffectiveDuration(), 900);
  clock.advance(100);
  EXPECT_EQ(timerState(1700000000).timeEntryEffectiveDuration(), 1000);
  EXPECT_EQ(timerState(1700000000, 1700000060.5).timeEntryEffectiveDuration(), 60.5);
  EXPECT_EQ(timerState(1700000000, 1699999990).timeEntryEffectiveDuration(), -10) << "not clamped";
  EXPECT_EQ(timerState(std::nullopt, 1700000000).timeEntryEffectiveDuration(), 0);
}

}  // namespace
}  // namespace kestrona
