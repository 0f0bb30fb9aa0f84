// Helpers for the timeline tests: a reader that serves a widget file from
// memory and counts its reads, and synchronous forms of the provider
// operations.
#pragma once

#include <atomic>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "Platform/WidgetHost/Timeline.h"
#include "WidgetData/Records/RecordCoding.h"
#include "WidgetData/Records/WidgetDataReader.h"
#include "WidgetData/Records/WidgetError.h"

namespace kestrona::testing {

class InMemoryWidgetFile final : public WidgetDataReaderProtocol {
 public:
  // No content: every read fails as a missing file does.
  void setContent(std::optional<std::string> content) { content_ = std::move(content); }
  template <typename Record>
  void setRecord(const Record& record) {
    content_ = encodeWidgetRecord(record);
  }
  int readCount() const { return readCount_.load(); }

 protected:
  WidgetDataResult<std::string> readData() const override {
    ++readCount_;
    if (!content_) return WidgetDataResult<std::string>::failure(WidgetError(WidgetError::Code::cannotReadData));
    return WidgetDataResult<std::string>::success(*content_);
  }

 private:
  std::optional<std::string> content_;
  mutable std::atomic<int> readCount_ = 0;
};

template <typename Provider>
Timeline<typename Provider::Entry> timelineOf(const Provider& provider) {
  std::optional<Timeline<typename Provider::Entry>> result;
  int calls = 0;
  provider.getTimeline(TimelineProviderContext{}, [&](Timeline<typename Provider::Entry> timeline) {
    ++calls;
    result = std::move(timeline);
  });
  EXPECT_EQ(calls, 1) << "the completion runs exactly once, before getTimeline returns";
  return *result;
}

template <typename Provider>
typename Provider::Entry snapshotOf(const Provider& provider) {
  std::optional<typename Provider::Entry> result;
  int calls = 0;
  provider.getSnapshot(TimelineProviderContext{}, [&](typename Provider::Entry entry) {
    ++calls;
    result = std::move(entry);
  });
  EXPECT_EQ(calls, 1) << "the completion runs exactly once, before getSnapshot returns";
  return *result;
}

}  // namespace kestrona::testing
