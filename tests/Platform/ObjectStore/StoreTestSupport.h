// The store's tests: a store on a test model in a temporary directory, the
// two-context setup of conflicts and merges, and helpers to fill a store,
// read its file and catch its errors.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <ostream>
#include <source_location>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Notifications/NotificationCenter.h"
#include "Platform/ObjectStore/ManagedObjectContext.h"
#include "Platform/ObjectStore/MergeConflict.h"
#include "Platform/ObjectStore/StoreError.h"
#include "Platform/ObjectStore/ValueTransformer.h"
#include "Platform/RunLoop/MainLoop.h"
#include "tests/support/ExpectThrow.h"
#include "tests/support/TemporaryDirectory.h"

namespace kestrona {

// Test failures print values and IDs as text.
inline void PrintTo(const Value& value, std::ostream* stream) { *stream << value.description(); }
inline void PrintTo(const ManagedObjectID& id, std::ostream* stream) { *stream << id.description(); }

}  // namespace kestrona

namespace kestrona::testing {

std::filesystem::path modelDirectory();

// Joins strings with "\n" into binary data and back; registered as
// "WordListTransformer".
class WordListTransformer : public ValueTransformer {
 public:
  Data transformedValue(const Value& value) const override;
  Value reverseTransformedValue(const Data& data) const override;
};

class TestStore {
 public:
  explicit TestStore(const std::string& modelName = "Tracker");

  // Drops the coordinator and the context and opens the same file again.
  void reopen(const std::string& modelName = "");
  std::shared_ptr<ManagedObjectContext> newContext() const;
  // The object as a fresh context reads it from the file now.
  std::shared_ptr<ManagedObject> stored(const ManagedObjectID& id) const;

  std::filesystem::path storeURL() const { return directory.path() / "Store.sqlite"; }

  TemporaryDirectory directory;
  std::string model;
  std::shared_ptr<PersistentStoreCoordinator> coordinator;
  std::shared_ptr<ManagedObjectContext> context;
};

// Two contexts, mine and theirs, that have each read one saved task: name
// "Original", order 1. The setup of every conflict and merge.
class TwoContexts : public ::testing::Test {
 protected:
  void SetUp() override;
  const ManagedObjectID& id() const { return ours->objectID(); }

  TestStore store;
  std::shared_ptr<ManagedObjectContext> mine;
  std::shared_ptr<ManagedObjectContext> theirs;
  std::shared_ptr<ManagedObject> ours;
  std::shared_ptr<ManagedObject> other;
};

std::shared_ptr<ManagedObject> makeTask(ManagedObjectContext& context, const std::string& name,
                                        bool archived = false);
std::shared_ptr<ManagedObject> makeSession(ManagedObjectContext& context, const std::shared_ptr<ManagedObject>& task,
                                           double begin, std::optional<double> end, double duration);

// The kind of the StoreError that work throws; anything else fails the
// test at the caller's line (see thrownBy).
template <typename Work>
std::optional<StoreErrorCode> failureOf(Work&& work, std::source_location where = std::source_location::current()) {
  auto error = thrownBy<StoreError>(std::forward<Work>(work), where);
  return error ? std::optional(error->kind()) : std::nullopt;
}

// The records of a save of context that fails with a conflict (133020);
// a save that goes through fails the test.
std::vector<MergeConflict> saveConflicts(ManagedObjectContext& context);

// The rows of SQL run on a connection of the test's own to a store file
// (it sees committed data only), each column as stored; and a statement run
// there, to age or damage a file. A failure fails the test.
std::vector<std::vector<Value>> storeFileRows(const std::filesystem::path& file, const std::string& sql);
void executeOnStoreFile(const std::filesystem::path& file, const std::string& sql);

// The value of type T under key in a notification's user info; a missing
// key or another type fails the test and gives an empty T.
template <typename T>
const T& userInfoOrFail(const Notification& notification, std::string_view key) {
  static const T none{};
  const T* value = notification.userInfoValue<T>(key);
  EXPECT_NE(value, nullptr) << key;
  return value ? *value : none;
}

// Keeps every notification of one name from one context posted while it
// lives, in order.
class NotificationRecorder {
 public:
  NotificationRecorder(std::string_view name, const ManagedObjectContext* context);
  std::vector<Notification> notifications() const;
  std::size_t count() const;

 private:
  mutable std::mutex mutex_;
  std::vector<Notification> notifications_;
  ObserverToken token_;
};

}  // namespace kestrona::testing
