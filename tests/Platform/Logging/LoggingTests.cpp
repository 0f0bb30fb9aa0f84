#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "Platform/Logging/LogHandler.h"
#include "Platform/Logging/Logger.h"
#include "Platform/Logging/LoggingSystem.h"
#include "Platform/Logging/StreamLogHandler.h"
#include "Platform/Time/Clock.h"
#include "tests/support/RecordingLogHandler.h"
#include "tests/support/TemporaryDirectory.h"

namespace kestrona {
namespace {

using Level = Logger::Level;
using Value = Logger::MetadataValue;

// A FILE* whose written bytes the test reads back.
class MemoryStream {
 public:
  MemoryStream() : file_(open_memstream(&buffer_, &size_)) {}
  ~MemoryStream() {
    std::fclose(file_);
    std::free(buffer_);
  }
  std::FILE* file() const { return file_; }
  std::string text() {
    std::fflush(file_);
    return std::string(buffer_, size_);
  }

 private:
  char* buffer_ = nullptr;
  std::size_t size_ = 0;
  std::FILE* file_;
};

// 2023-11-14T22:13:20Z.
constexpr Date kInstant(1700000000.25);

class StreamLineFormat : public ::testing::Test {
 protected:
  void SetUp() override { environment_.set("TZ", "UTC0"); }

  std::string lineFor(const std::string& label, Level level, const std::string& message,
                      const Logger::Metadata& metadata, const std::string& source) {
    MemoryStream stream;
    ManualClock clock(kInstant);
    Logger logger(label, std::make_shared<StreamLogHandler>(stream.file(), &clock, Level::trace));
    logger.log(level, message, metadata, source);
    return stream.text();
  }

  testing::ScopedEnvironment environment_;
};

TEST_F(StreamLineFormat, LabelMetadataInKeyOrderSourceAndMessage) {
  struct Row {
    const char* label;
    Level level;
    Logger::Metadata metadata;
    const char* line;
  };
  const Row rows[] = {
      {"Data", Level::error, {}, "2023-11-14T22:13:20+0000 error Data: [s] m\n"},
      {"", Level::notice, {}, "2023-11-14T22:13:20+0000 notice: [s] m\n"},
      {"D",
       Level::warning,
       {{"task", "ABC"}, {"error", "disk full"}, {"ids", Value::List{"1", "2"}}},
       "2023-11-14T22:13:20+0000 warning D: error=disk full ids=[\"1\", \"2\"] task=ABC [s] m\n"},
  };
  for (const Row& row : rows) EXPECT_EQ(lineFor(row.label, row.level, "m", row.metadata, "s"), row.line);
}

TEST_F(StreamLineFormat, TimestampIsLocalTimeWithItsOffset) {
  environment_.set("TZ", "XYZ-5:30");
  EXPECT_EQ(StreamLogHandler::timestamp(kInstant), "2023-11-15T03:43:20+0530");
  environment_.set("TZ", "ABC+3");
  EXPECT_EQ(StreamLogHandler::timestamp(kInstant), "2023-11-14T19:13:20-0300");
}

TEST_F(StreamLineFormat, TimestampIsUnknownWhenLocalTimeCannotBeHad) {
  EXPECT_EQ(StreamLogHandler::timestamp(Date(1e30)), "<unknown>");
  EXPECT_EQ(StreamLogHandler::timestamp(Date(-1e30)), "<unknown>");
  EXPECT_EQ(StreamLogHandler::timestamp(Date(std::numeric_limits<double>::quiet_NaN())), "<unknown>");
}

TEST_F(StreamLineFormat, EveryLevelPrintsItsCaseName) {
  const char* names[] = {"trace", "debug", "info", "notice", "warning", "error", "critical"};
  for (Level level : allCases<Level>) {
    std::string name = names[rawValue(level)];
    EXPECT_EQ(lineFor("L", level, "m", {}, "s"), "2023-11-14T22:13:20+0000 " + name + " L: [s] m\n");
  }
}

TEST_F(StreamLineFormat, LinesFromManyThreadsNeverInterleave) {
  MemoryStream stream;
  ManualClock clock(kInstant);
  auto handler = std::make_shared<StreamLogHandler>(stream.file(), &clock);
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([handler, t] {
      Logger logger("T" + std::to_string(t), handler);
      for (int i = 0; i < 200; ++i) logger.log(Level::info, std::string(40, static_cast<char>('a' + t)), {}, "s");
    });
  }
  for (auto& thread : threads) thread.join();
  std::istringstream lines(stream.text());
  std::string line;
  int count = 0;
  while (std::getline(lines, line)) {
    ++count;
    char letter = line[line.size() - 1];
    std::string expected = "2023-11-14T22:13:20+0000 info T" + std::to_string(letter - 'a') + ": [s] " +
                           std::string(40, letter);
    ASSERT_EQ(line, expected);
  }
  EXPECT_EQ(count, 800);
}

TEST(MetadataValue, PrintsListsAndDictionariesWithQuotedElements) {
  EXPECT_EQ(Value("plain text").description(), "plain text");
  EXPECT_EQ(Value(Value::List{}).description(), "[]");
  EXPECT_EQ(Value(Value::Dictionary{}).description(), "[:]");
  EXPECT_EQ(Value(Value::Dictionary{{"b", "2"}, {"a", Value::List{"x"}}}).description(),
            "[\"a\": \"[\\\"x\\\"]\", \"b\": \"2\"]");
  EXPECT_EQ(Value(Value::List{"say \"hi\"", "back\\slash", "two\nlines"}).description(),
            "[\"say \\\"hi\\\"\", \"back\\\\slash\", \"two\\nlines\"]");
}

TEST(LoggerLevels, MessagesBelowTheLevelAreDropped) {
  auto handler = std::make_shared<testing::RecordingLogHandler>(Level::warning);
  Logger logger("Data", handler);
  EXPECT_EQ(logger.logLevel(), Level::warning);
  logger.log(Level::info, "dropped");
  logger.log(Level::notice, "dropped");
  logger.log(Level::warning, "kept");
  logger.critical("kept too");
  ASSERT_EQ(handler->records().size(), 2u);
  EXPECT_EQ(handler->records()[0].message, "kept");
  EXPECT_EQ(handler->records()[1].level, Level::critical);

  logger.setLogLevel(Level::trace);
  logger.trace("now kept");
  EXPECT_EQ(handler->records().size(), 3u);
  EXPECT_TRUE(logger.isEnabled(Level::trace));
}

TEST(LoggerMetadata, CallMetadataWinsOverTheLoggersAndCopiesAreIndependent) {
  auto handler = std::make_shared<testing::RecordingLogHandler>();
  Logger logger("Data", handler);
  logger["store"] = "main";
  logger["task"] = "old";
  Logger copy = logger;
  copy.removeMetadata("store");
  copy.setLogLevel(Level::critical);

  logger.log(Level::info, "m", {{"task", "new"}});
  copy.log(Level::info, "dropped by the copy's level");
  copy.setLogLevel(Level::info);
  copy.log(Level::info, "from copy");

  ASSERT_EQ(handler->records().size(), 2u);
  EXPECT_EQ(handler->records()[0].metadata, (Logger::Metadata{{"store", "main"}, {"task", "new"}}));
  EXPECT_EQ(handler->records()[1].metadata, (Logger::Metadata{{"task", "old"}}));
  EXPECT_EQ(logger.logLevel(), Level::info);
}

TEST(LoggerSource, ComesFromTheFileIdentifierBeforeTheFirstSlash) {
  EXPECT_EQ(Logger::sourceFromFileID("SharedCore/DataModifier"), "SharedCore");
  EXPECT_EQ(Logger::sourceFromFileID("SharedCore/Data Providers/CoreDataStack.cpp"), "SharedCore");
  EXPECT_EQ(Logger::sourceFromFileID("main.cpp"), "n/a");
  EXPECT_EQ(Logger::sourceFromFileID(""), "n/a");
  EXPECT_EQ(Logger::fileIDFromPath(__FILE__), "tests/Platform/Logging/LoggingTests.cpp");
  EXPECT_EQ(Logger::fileIDFromPath("/elsewhere/x.cpp"), "/elsewhere/x.cpp");
  EXPECT_EQ(Logger::fileIDFromPath("../../SharedCore/x.cpp"), "SharedCore/x.cpp");

  auto handler = std::make_shared<testing::RecordingLogHandler>();
  Logger logger("Data", handler);
  logger.log(Level::error, "explicit", {}, "Widgets");
  logger.log(Level::error, "derived");
  ASSERT_EQ(handler->records().size(), 2u);
  EXPECT_EQ(handler->records()[0].source, "Widgets");
  EXPECT_EQ(handler->records()[1].source, "tests");
  EXPECT_EQ(handler->records()[1].file, "tests/Platform/Logging/LoggingTests.cpp");
}

using LoggingSystemDeathTest = ::testing::Test;

TEST_F(LoggingSystemDeathTest, SecondBootstrapEndsTheProcess) {
  EXPECT_DEATH(
      {
        LoggingSystem::bootstrap([](const std::string&) { return StreamLogHandler::standardError(); });
        LoggingSystem::bootstrap([](const std::string&) { return StreamLogHandler::standardError(); });
      },
      "Fatal error: logging system can only be initialized once per process\\.");
}

// The bootstrap is once per process, so it is tried in a child process.
TEST_F(LoggingSystemDeathTest, BootstrappedFactoryMakesTheHandlerOfNewLoggers) {
  EXPECT_EXIT(
      {
        auto handler = std::make_shared<testing::RecordingLogHandler>(Level::debug);
        std::vector<std::string> labels;
        LoggingSystem::bootstrap([&](const std::string& label) {
          labels.push_back(label);
          return handler;
        });
        Logger logger("Report");
        logger.log(Level::debug, "through the factory");
        bool ok = labels == std::vector<std::string>{"Report"} && logger.logLevel() == Level::debug &&
                  handler->records().size() == 1 && handler->records()[0].label == "Report";
        std::fprintf(stderr, ok ? "factory used\n" : "factory not used\n");
        std::exit(ok ? 0 : 1);
      },
      ::testing::ExitedWithCode(0), "factory used");
}

}  // namespace
}  // namespace kestrona
