#include "SharedCore/Timer/ManagedKeyValueObservable.h"

#include <gtest/gtest.h>

#include "Platform/ObjectStore/ManagedObjectContext.h"
#include "Platform/ObjectStore/ManagedObjectModel.h"
#include "Platform/ObjectStore/PersistentStoreCoordinator.h"
#include "tests/support/TemporaryDirectory.h"

namespace kestrona {
namespace {

namespace Option = KeyValueObservingOption;

constexpr std::string_view kModel = R"({"entities": [
  {"name": "Task", "attributes": [{"name": "name", "type": "string"}],
   "relationships": [{"name": "sessions", "destination": "Session", "inverse": "task", "toMany": true}]},
  {"name": "Session", "attributes": [{"name": "note", "type": "string"}],
   "relationships": [{"name": "task", "destination": "Task", "inverse": "sessions"}]}]})";

// Stands in for the timer: one key that holds the current session.
class Holder : public ManagedKeyValueObservable {
 public:
  void setCurrentSession(std::shared_ptr<ManagedObject> session) {
    willChangeValueForKey("currentSession");
    session_ = std::move(session);
    didChangeValueForKey("currentSession");
  }
  Value valueForKey(std::string_view key) const override {
    return key == "currentSession" && session_ ? Value(session_) : Value();
  }

 private:
  std::shared_ptr<ManagedObject> session_;
};

TEST(ManagedKeyValueObservable, KeyPathsGoOnIntoManagedObjectsAndFollowTheirLinks) {
  testing::TemporaryDirectory directory;
  auto coordinator = PersistentStoreCoordinator::make(ManagedObjectModel::fromJSON(kModel));
  coordinator->addPersistentStore(directory.path() / "Store.sqlite");
  auto context = ManagedObjectContext::make(ManagedObjectContextConcurrencyType::privateQueueConcurrencyType);
  context->setPersistentStoreCoordinator(coordinator);
  auto object = [&](std::string_view entity, std::string_view key, const char* text) {
    auto made = context->insertNewObject(entity);
    made->setValue(text, key);
    return made;
  };
  auto writing = object("Task", "name", "Writing");
  auto reading = object("Task", "name", "Reading");
  auto first = object("Session", "note", "first");
  auto second = object("Session", "note", "second");
  first->setValue(writing, "task");
  second->setValue(reading, "task");

  auto holder = std::make_unique<Holder>();
  holder->setCurrentSession(first);
  std::vector<std::pair<std::string, std::string>> heard;
  auto text = [](const std::optional<Value>& value) {
    auto string = value ? value->get<std::string>() : nullptr;
    return string ? *string : std::string("-");
  };
  auto token = holder->observe("currentSession.task.name", Option::oldValue | Option::newValue,
                              [&](const Holder::Change& change) {
                                heard.emplace_back(text(change.oldValue), text(change.newValue));
                              });
  writing->setValue("Drafting", "name");
  first->setValue(reading, "task");
  writing->setValue("Editing", "name");  // no longer on the path
  holder->setCurrentSession(second);
  first->setValue(writing, "task");  // the old session is not observed any more
  reading->setValue("Studying", "name");
  holder->setCurrentSession(nullptr);
  holder->setCurrentSession(second);
  // The holder's end ends the observers it placed on the session and task.
  holder.reset();
  reading->setValue("Gone", "name");
  EXPECT_FALSE(token.isActive());
  EXPECT_EQ(heard, (std::vector<std::pair<std::string, std::string>>{{"Writing", "Drafting"},
                                                                     {"Drafting", "Reading"},
                                                                     {"Reading", "Reading"},
                                                                     {"Reading", "Studying"},
                                                                     {"Studying", "-"},
                                                                     {"-", "Studying"}}));
}

}  // namespace
}  // namespace kestrona
