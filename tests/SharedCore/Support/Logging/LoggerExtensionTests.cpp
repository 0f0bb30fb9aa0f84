#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "Platform/Foundation/Error.h"
#include "Platform/Logging/LogHandler.h"
#include "Platform/Time/Date.h"
#include "SharedCore/Support/Logging/LoggerExtension.h"
#include "tests/support/RecordingLogHandler.h"

namespace kestrona {
namespace {

using Level = Logger::Level;
using Value = Logger::MetadataValue;

class LoggerExtension : public ::testing::Test {
 protected:
  std::shared_ptr<testing::RecordingLogHandler> handler_ = std::make_shared<testing::RecordingLogHandler>();
  Logger logger_{"DataModifier", handler_};
};

TEST_F(LoggerExtension, MessageAndDataAreNotEvaluatedWhenTheLevelIsOff) {
  int messages = 0;
  int data = 0;
  auto message = [&] {
    ++messages;
    return std::string("expensive");
  };
  auto makeData = [&] {
    ++data;
    return logging::Data{{"task", std::string("T")}};
  };
  logging::debug(logger_, message, makeData);
  EXPECT_EQ(messages, 0);
  EXPECT_EQ(data, 0);
  EXPECT_TRUE(handler_->records().empty());

  logging::info(logger_, message, makeData);
  logging::warning(logger_, message, makeData);
  logging::error(logger_, message, makeData);
  EXPECT_EQ(messages, 3);
  EXPECT_EQ(data, 3);
  ASSERT_EQ(handler_->records().size(), 3u);
  EXPECT_EQ(handler_->records()[0].level, Level::info);
  EXPECT_EQ(handler_->records()[1].level, Level::warning);
  EXPECT_EQ(handler_->records()[2].level, Level::error);
  EXPECT_EQ(handler_->records()[2].metadata, (Logger::Metadata{{"task", "T"}}));

  logger_.setLogLevel(Level::critical);
  logging::error(logger_, message, makeData);
  EXPECT_EQ(messages, 3);
  EXPECT_EQ(data, 3);
}

TEST_F(LoggerExtension, SourceIsTheFileIdentifiersFirstComponent) {
  logging::info(logger_, "given", {}, logging::LogSite("SharedCore/DataModifier", "save()", 42));
  int line = __LINE__ + 1;
  logging::info(logger_, "from here");
  ASSERT_EQ(handler_->records().size(), 2u);
  EXPECT_EQ(handler_->records()[0].source, "SharedCore");
  EXPECT_EQ(handler_->records()[0].file, "SharedCore/DataModifier");
  EXPECT_EQ(handler_->records()[0].function, "save()");
  EXPECT_EQ(handler_->records()[0].line, 42u);
  // The caller's own place, not the extension's.
  EXPECT_EQ(handler_->records()[1].source, "tests");
  EXPECT_EQ(handler_->records()[1].file, "tests/SharedCore/Support/Logging/LoggerExtensionTests.cpp");
  EXPECT_EQ(handler_->records()[1].line, static_cast<std::uint32_t>(line));
}

TEST_F(LoggerExtension, ErrorFormPutsTheErrorUnderItsKey) {
  Error failure("DataProviderError", 2, "The store is gone.");
  logging::error(logger_, "fetch failed", failure);
  logging::error(logger_, "caught", std::make_exception_ptr(std::runtime_error("disk full")));
  logging::error(logger_, "odd", std::make_exception_ptr(42));
  ASSERT_EQ(handler_->records().size(), 3u);
  EXPECT_EQ(handler_->records()[0].message, "fetch failed");
  EXPECT_EQ(handler_->records()[0].level, Level::error);
  EXPECT_EQ(handler_->records()[0].metadata, (Logger::Metadata{{"error", failure.what()}}));
  EXPECT_EQ(handler_->records()[1].metadata, (Logger::Metadata{{"error", "disk full"}}));
  EXPECT_EQ(handler_->records()[2].metadata, (Logger::Metadata{{"error", "unknown error"}}));

  logger_.setLogLevel(Level::critical);
  logging::error(logger_, "dropped", failure);
  EXPECT_EQ(handler_->records().size(), 3u);
}

enum class StoreErrorCode { objectNoLongerExists };

// A typed error of the kind the core's parts define for themselves.
class StoreError : public CodedError<StoreErrorCode> {
 public:
  StoreError() : CodedError("StoreError", StoreErrorCode::objectNoLongerExists, "The object no longer exists.") {}
};

TEST_F(LoggerExtension, ErrorsOfAnyClassInTheDataPrintByTheirDescription) {
  const StoreError typed;
  const Error plain("DataProviderError", 2, "The store is gone.");
  logging::error(logger_, "fetch failed",
                 logging::Data{{"error", typed},
                               {"plain", plain},
                               {"standard", std::runtime_error("disk full")},
                               {"caught", std::make_exception_ptr(std::logic_error("bad state"))}});
  ASSERT_EQ(handler_->records().size(), 1u);
  EXPECT_EQ(handler_->records()[0].metadata, (Logger::Metadata{{"caught", "bad state"},
                                                             {"error", typed.what()},
                                                             {"plain", plain.what()},
                                                             {"standard", "disk full"}}));

  // A lazily made dictionary holds them the same way.
  logging::warning(logger_, "retrying", [&] { return logging::Data{{"error", typed}}; });
  ASSERT_EQ(handler_->records().size(), 2u);
  EXPECT_EQ(handler_->records()[1].metadata, (Logger::Metadata{{"error", typed.what()}}));
}

TEST(MetadataConversion, StringsStayStringsAndOtherValuesArePrinted) {
  EXPECT_EQ(logging::metadataValueFrom(std::string("text")), Value("text"));
  EXPECT_EQ(logging::metadataValueFrom("literal"), Value("literal"));
  EXPECT_EQ(logging::metadataValueFrom(42), Value("42"));
  EXPECT_EQ(logging::metadataValueFrom(-7L), Value("-7"));
  EXPECT_EQ(logging::metadataValueFrom(std::uint64_t{18446744073709551615u}), Value("18446744073709551615"));
  EXPECT_EQ(logging::metadataValueFrom(true), Value("true"));
  EXPECT_EQ(logging::metadataValueFrom(0.1), Value("0.1"));
  EXPECT_EQ(logging::metadataValueFrom(3600.0), Value("3600"));
  EXPECT_EQ(logging::metadataValueFrom(Date(1700000000.5)), Value("1700000000.5"));
  EXPECT_EQ(logging::metadataValueFrom(std::any()), Value("nil"));
  struct Opaque {};
  EXPECT_TRUE(logging::metadataValueFrom(Opaque{}).string()->starts_with("<unprintable "));
}

TEST(MetadataConversion, CollectionsBecomeNestedValuesAndComeBack) {
  logging::Data data{{"ids", std::vector<std::any>{std::string("a"), 2}},
                     {"names", std::vector<std::string>{"x", "y"}},
                     {"inner", logging::Data{{"count", 3}}}};
  Value value = logging::metadataValueFrom(data);
  ASSERT_NE(logging::dict(value), nullptr);
  EXPECT_EQ(*logging::dict(value), (Value::Dictionary{{"ids", Value::List{"a", "2"}},
                                                      {"inner", Value::Dictionary{{"count", "3"}}},
                                                      {"names", Value::List{"x", "y"}}}));
  EXPECT_EQ(logging::toString(value),
            "[\"ids\": \"[\\\"a\\\", \\\"2\\\"]\", \"inner\": \"[\\\"count\\\": \\\"3\\\"]\", "
            "\"names\": \"[\\\"x\\\", \\\"y\\\"]\"]");

  std::optional<logging::Data> back = logging::toDictionary(value);
  ASSERT_TRUE(back.has_value());
  auto* ids = std::any_cast<std::vector<std::any>>(&back->at("ids"));
  ASSERT_NE(ids, nullptr);
  ASSERT_EQ(ids->size(), 2u);
  EXPECT_EQ(std::any_cast<std::string>((*ids)[1]), "2");
  auto* inner = std::any_cast<logging::Data>(&back->at("inner"));
  ASSERT_NE(inner, nullptr);
  EXPECT_EQ(std::any_cast<std::string>(inner->at("count")), "3");
  // Converting back and forth again gives the same value.
  EXPECT_EQ(logging::metadataValueFrom(*back), value);

  EXPECT_EQ(logging::toDictionary(Value("plain")), std::nullopt);
  EXPECT_EQ(logging::dict(Value(Value::List{"a"})), nullptr);
  EXPECT_EQ(logging::toString(Value("plain")), "plain");
}

}  // namespace
}  // namespace kestrona
