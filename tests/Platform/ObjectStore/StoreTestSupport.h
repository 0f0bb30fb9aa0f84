// A store on the test model "Tracker" in a temporary directory, with one
// private-queue context, and helpers to fill it.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <ostream>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Notifications/NotificationCenter.h"
#include "Platform/ObjectStore/ManagedObjectContext.h"
#include "Platform/ObjectStore/ManagedObjectModel.h"
#include "Platform/ObjectStore/PersistentStoreCoordinator.h"
#include "Platform/ObjectStore/ValueTransformer.h"
#include "Platform/RunLoop/MainLoop.h"
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

  std::filesystem::path storeURL() const { return directory.path() / "Store.sqlite"; }

  TemporaryDirectory directory;
  std::string model;
  std::shared_ptr<PersistentStoreCoordinator> coordinator;
  std::shared_ptr<ManagedObjectContext> context;
};

std::shared_ptr<ManagedObject> makeTask(ManagedObjectContext& context, const std::string& name,
                                        bool archived = false);
std::shared_ptr<ManagedObject> makeSession(ManagedObjectContext& context, const std::shared_ptr<ManagedObject>& task,
                                           double begin, std::optional<double> end, double duration);

// The rows of SQL run on a connection of the test's own to a store file
// (it sees committed data only), each column as stored; and a statement run
// there, to age or damage a file. A failure fails the test.
std::vector<std::vector<Value>> storeFileRows(const std::filesystem::path& file, const std::string& sql);
void executeOnStoreFile(const std::filesystem::path& file, const std::string& sql);

// Runs loop's ready work until condition holds or a generous deadline has
// passed; returns whether the condition holds. Nothing is timed: the
// deadline only keeps a broken test from hanging.
bool runLoopUntil(MainLoop& loop, const std::function<bool()>& condition);

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
