#include <gtest/gtest.h>

#include "Platform/ObjectStore/StoreError.h"
#include "tests/Platform/ObjectStore/StoreTestSupport.h"

namespace kestrona {
namespace {

using testing::TestStore;
namespace Option = KeyValueObservingOption;

// An entry whose effective duration is its confirmed duration once one is
// set, and its span until then: a computed key with dependencies.
class Entry : public ManagedObject {
 public:
  using ManagedObject::ManagedObject;

  std::vector<std::string> keyPathsForValuesAffectingValueForKey(std::string_view key) const override {
    if (key == "effectiveDuration") return {"confirmedDuration", "end"};
    return ManagedObject::keyPathsForValuesAffectingValueForKey(key);
  }

  // Sets the confirmed duration announcing the computed key around it, as
  // code that knows the dependency does.
  void updateEffectiveDuration(double duration) {
    willChangeValueForKey("effectiveDuration");
    setValue(duration, "confirmedDuration");
    didChangeValueForKey("effectiveDuration");
  }

 protected:
  Value valueForUndefinedKey(std::string_view key) override {
    if (key != "effectiveDuration") return ManagedObject::valueForUndefinedKey(key);
    if (double confirmed = doubleForKey("confirmedDuration"); confirmed > 0) return Value(confirmed);
    auto start = dateForKey("start");
    auto end = dateForKey("end");
    if (!start || !end) return Value(0.0);
    return Value(end->timeIntervalSince1970() - start->timeIntervalSince1970());
  }
};

class Observation : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    ManagedObject::setClassForEntityName(
        "Entry", [](ManagedObject::Construction construction) { return std::make_shared<Entry>(construction); });
  }

  std::shared_ptr<Entry> makeEntry(double start, std::optional<double> end = std::nullopt) {
    auto entry = std::dynamic_pointer_cast<Entry>(store.context->insertNewObject("Entry"));
    entry->setValue(Date(start), "start");
    if (end) entry->setValue(Date(*end), "end");
    return entry;
  }
  std::shared_ptr<ManagedObject> makeJob(const std::string& name) {
    auto job = store.context->insertNewObject("Job");
    job->setValue(name, "name");
    return job;
  }

  // Keeps what an observer hears.
  struct Heard {
    std::vector<KeyValueChange> changes;
    ManagedObject::ObservationCallback callback() {
      return [this](const KeyValueChange& change) { changes.push_back(change); };
    }
  };

  TestStore store{"Timed"};
};

constexpr KeyValueObservingOptions kOldAndNew = Option::oldValue | Option::newValue;

TEST_F(Observation, ObserversHearOldAndNewValuesUntilTheirTokenGoes) {
  auto entry = makeEntry(0);
  Heard heard;
  auto token = entry->observe("end", kOldAndNew | Option::initial | Option::prior, heard.callback());
  // The initial call carries the value now, and no old value.
  ASSERT_EQ(heard.changes.size(), 1u);
  EXPECT_EQ(heard.changes[0].newValue, Value());
  EXPECT_FALSE(heard.changes[0].oldValue.has_value());

  entry->setValue(Date(60), "end");
  ASSERT_EQ(heard.changes.size(), 3u);
  // Before the change: the old value only.
  EXPECT_TRUE(heard.changes[1].isPrior);
  EXPECT_EQ(heard.changes[1].oldValue, Value());
  EXPECT_FALSE(heard.changes[1].newValue.has_value());
  // After it: both, with the key path and the object.
  EXPECT_FALSE(heard.changes[2].isPrior);
  EXPECT_EQ(heard.changes[2].oldValue, Value());
  EXPECT_EQ(heard.changes[2].newValue, Value(Date(60)));
  EXPECT_EQ(heard.changes[2].keyPath, "end");
  EXPECT_EQ(heard.changes[2].object, entry.get());
  EXPECT_EQ(heard.changes[2].kind, KeyValueChangeKind::setting);

  // Other keys are not this observer's business.
  entry->setValue("A note", "note");
  EXPECT_EQ(heard.changes.size(), 3u);

  token.invalidate();
  EXPECT_FALSE(token.isActive());
  entry->setValue(Date(120), "end");
  EXPECT_EQ(heard.changes.size(), 3u);

  // A token may outlive its object and the object's context.
  Heard late;
  auto outliving = entry->observe("end", kOldAndNew, late.callback());
  entry.reset();
  store.context.reset();
  EXPECT_FALSE(outliving.isActive());
  outliving.invalidate();
  EXPECT_TRUE(late.changes.empty());
}

TEST_F(Observation, AnObserverThatRemovesItselfIsNotCalledAgain) {
  auto entry = makeEntry(0);
  KeyValueObservation token;
  int calls = 0;
  token = entry->observe("note", Option::newValue, [&](const KeyValueChange&) {
    ++calls;
    token.invalidate();
  });
  entry->setValue("First", "note");
  entry->setValue("Second", "note");
  EXPECT_EQ(calls, 1);
}

TEST_F(Observation, DependentKeysAnnounceTheComputedKey) {
  auto entry = makeEntry(0, 90);
  Heard heard;
  auto token = entry->observe("effectiveDuration", kOldAndNew, heard.callback());

  entry->setValue(Date(60), "end");
  ASSERT_EQ(heard.changes.size(), 1u);
  EXPECT_EQ(heard.changes[0].oldValue, Value(90.0));
  EXPECT_EQ(heard.changes[0].newValue, Value(60.0));

  entry->setValue(30.0, "confirmedDuration");
  ASSERT_EQ(heard.changes.size(), 2u);
  EXPECT_EQ(heard.changes[1].oldValue, Value(60.0));
  EXPECT_EQ(heard.changes[1].newValue, Value(30.0));

  // A key it does not depend on says nothing about it.
  entry->setValue("Unrelated", "note");
  EXPECT_EQ(heard.changes.size(), 2u);

  // The computed key is readable, and unknown keys still fail.
  EXPECT_EQ(entry->valueForKey("effectiveDuration"), Value(30.0));
  try {
    entry->valueForKey("nothing");
    ADD_FAILURE() << "an unknown key was read";
  } catch (const StoreError& error) {
    EXPECT_EQ(error.kind(), StoreErrorCode::managedObjectValidation);
  }
}

TEST_F(Observation, ManualAnnouncementsNestAndReachObserversOnce) {
  auto entry = makeEntry(0, 90);
  Heard heard;
  auto token = entry->observe("effectiveDuration", kOldAndNew, heard.callback());

  // The manual announcement wraps the dependency's own: one change, from
  // the value before the outermost will to the value after the last did.
  entry->updateEffectiveDuration(45);
  ASSERT_EQ(heard.changes.size(), 1u);
  EXPECT_EQ(heard.changes[0].oldValue, Value(90.0));
  EXPECT_EQ(heard.changes[0].newValue, Value(45.0));

  entry->willChangeValueForKey("effectiveDuration");
  entry->willChangeValueForKey("effectiveDuration");
  entry->setValue(20.0, "confirmedDuration");
  entry->didChangeValueForKey("effectiveDuration");
  EXPECT_EQ(heard.changes.size(), 1u);
  entry->didChangeValueForKey("effectiveDuration");
  ASSERT_EQ(heard.changes.size(), 2u);
  EXPECT_EQ(heard.changes[1].oldValue, Value(45.0));
  EXPECT_EQ(heard.changes[1].newValue, Value(20.0));

  // A did without a will has nothing to report.
  entry->didChangeValueForKey("effectiveDuration");
  EXPECT_EQ(heard.changes.size(), 2u);
}

TEST_F(Observation, KeyPathsThroughAToOneFollowTheRelationship) {
  auto entry = makeEntry(0);
  auto first = makeJob("First");
  auto second = makeJob("Second");
  entry->setValue(Value(first), "job");
  Heard heard;
  auto token = entry->observe("job.name", kOldAndNew, heard.callback());

  first->setValue("First renamed", "name");
  ASSERT_EQ(heard.changes.size(), 1u);
  EXPECT_EQ(heard.changes[0].keyPath, "job.name");
  EXPECT_EQ(heard.changes[0].object, entry.get());
  EXPECT_EQ(heard.changes[0].oldValue, Value("First"));
  EXPECT_EQ(heard.changes[0].newValue, Value("First renamed"));

  // Pointing elsewhere is a change of the path, and the observer follows.
  entry->setValue(Value(second), "job");
  ASSERT_EQ(heard.changes.size(), 2u);
  EXPECT_EQ(heard.changes[1].oldValue, Value("First renamed"));
  EXPECT_EQ(heard.changes[1].newValue, Value("Second"));
  first->setValue("No longer watched", "name");
  EXPECT_EQ(heard.changes.size(), 2u);
  second->setValue("Second renamed", "name");
  ASSERT_EQ(heard.changes.size(), 3u);
  EXPECT_EQ(heard.changes[2].newValue, Value("Second renamed"));

  entry->setValue(Value(), "job");
  ASSERT_EQ(heard.changes.size(), 4u);
  EXPECT_EQ(heard.changes[3].newValue, Value());
  second->setValue("Unwatched again", "name");
  EXPECT_EQ(heard.changes.size(), 4u);
}

TEST_F(Observation, BothSidesOfARelationshipAnnounce) {
  auto entry = makeEntry(0);
  auto other = makeEntry(10);
  auto first = makeJob("First");
  auto second = makeJob("Second");
  entry->setValue(Value(first), "job");
  Heard firstEntries;
  Heard secondEntries;
  Heard entryJob;
  Heard otherJob;
  auto t1 = first->observe("entries", kOldAndNew, firstEntries.callback());
  auto t2 = second->observe("entries", kOldAndNew, secondEntries.callback());
  auto t3 = entry->observe("job", kOldAndNew, entryJob.callback());
  auto t4 = other->observe("job", kOldAndNew, otherJob.callback());

  entry->setValue(Value(second), "job");
  ASSERT_EQ(firstEntries.changes.size(), 1u);
  EXPECT_EQ(firstEntries.changes[0].oldValue, Value(Value::Array{Value(std::shared_ptr<ManagedObject>(entry))}));
  EXPECT_EQ(firstEntries.changes[0].newValue, Value(Value::Array{}));
  ASSERT_EQ(secondEntries.changes.size(), 1u);
  EXPECT_EQ(secondEntries.changes[0].newValue, Value(Value::Array{Value(std::shared_ptr<ManagedObject>(entry))}));
  ASSERT_EQ(entryJob.changes.size(), 1u);
  EXPECT_EQ(entryJob.changes[0].newValue, Value(second));

  // Setting the to-many side announces each member whose to-one moves,
  // and the to-many itself once.
  second->setValue(Value(Value::Array{Value(std::shared_ptr<ManagedObject>(other))}), "entries");
  EXPECT_EQ(secondEntries.changes.size(), 2u);
  ASSERT_EQ(otherJob.changes.size(), 1u);
  EXPECT_EQ(otherJob.changes[0].newValue, Value(second));
  ASSERT_EQ(entryJob.changes.size(), 2u);
  EXPECT_EQ(entryJob.changes[1].newValue, Value());
}

TEST_F(Observation, RollbackAndRefreshAnnounceEachChangedKey) {
  auto entry = makeEntry(0);
  entry->setValue("Saved", "note");
  store.context->save();

  Heard notes;
  Heard ends;
  auto t1 = entry->observe("note", kOldAndNew, notes.callback());
  auto t2 = entry->observe("end", kOldAndNew, ends.callback());
  entry->setValue("Unsaved", "note");
  store.context->rollback();
  ASSERT_EQ(notes.changes.size(), 2u);
  EXPECT_EQ(notes.changes[1].oldValue, Value("Unsaved"));
  EXPECT_EQ(notes.changes[1].newValue, Value("Saved"));
  EXPECT_TRUE(ends.changes.empty());

  // Another context changes the row; a refresh brings the stored values
  // and announces only what differs.
  auto other = store.newContext();
  other->existingObjectWithID(entry->objectID())->setValue("Elsewhere", "note");
  other->save();
  store.context->refreshObject(entry, false);
  ASSERT_EQ(notes.changes.size(), 3u);
  EXPECT_EQ(notes.changes[2].oldValue, Value("Saved"));
  EXPECT_EQ(notes.changes[2].newValue, Value("Elsewhere"));
  EXPECT_TRUE(ends.changes.empty());
  EXPECT_FALSE(store.context->hasChanges());
}

TEST_F(Observation, ChangesFromAChildAndFromDeleteRulesAreAnnounced) {
  auto entry = makeEntry(0);
  auto job = makeJob("Job");
  entry->setValue(Value(job), "job");
  store.context->save();
  Heard notes;
  Heard jobs;
  auto t1 = entry->observe("note", Option::newValue, notes.callback());
  auto t2 = entry->observe("job", Option::oldValue | Option::newValue, jobs.callback());

  // A child's save changes the parent's objects in front of their observers.
  auto child = ManagedObjectContext::make(ManagedObjectContextConcurrencyType::privateQueueConcurrencyType);
  child->setParentContext(store.context);
  child->existingObjectWithID(entry->objectID())->setValue("From the child", "note");
  child->save();
  ASSERT_EQ(notes.changes.size(), 1u);
  EXPECT_EQ(notes.changes[0].newValue, Value("From the child"));

  // Deleting the job nullifies the entry's to-one, and says so.
  store.context->deleteObject(job);
  ASSERT_EQ(jobs.changes.size(), 1u);
  EXPECT_EQ(jobs.changes[0].oldValue, Value(job));
  EXPECT_EQ(jobs.changes[0].newValue, Value());
}

}  // namespace
}  // namespace kestrona
