// Key-value observation of managed objects.
#include <gtest/gtest.h>

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

  TestStore store{"Timed"};
};

// What one observer heard, one change a line: "old > new", "prior old >",
// "> new" for an initial call, objects by the name of their job or their
// start.
struct Heard {
  std::vector<std::string> lines;
  ManagedObject::ObservationCallback callback() {
    return [this](const KeyValueChange& change) {
      auto text = [](const std::optional<Value>& value) {
        if (!value) return std::string();
        if (auto object = value->get<Value::Object>()) return (*object)->valueForKey("name").description();
        if (auto objects = value->get<Value::Array>()) return std::to_string(objects->size()) + " objects";
        return value->description();
      };
      lines.push_back((change.isPrior ? "prior " : "") + text(change.oldValue) + ">" + text(change.newValue));
    };
  }
};
using Lines = std::vector<std::string>;

constexpr KeyValueObservingOptions kOldAndNew = Option::oldValue | Option::newValue;

TEST_F(Observation, ObserversHearWhatTheirOptionsAskUntilTheirTokenGoes) {
  auto entry = makeEntry(0);
  Heard heard;
  auto token = entry->observe("end", kOldAndNew | Option::initial | Option::prior, heard.callback());
  entry->setValue(Date(60), "end");
  entry->setValue("A note", "note");
  EXPECT_EQ(heard.lines, (Lines{">nil", "prior nil>", "nil>date(60.000000)"}));
  token.invalidate();
  entry->setValue(Date(120), "end");
  EXPECT_EQ(heard.lines.size(), 3u);

  // An observer may remove itself while it is called.
  KeyValueObservation self;
  int calls = 0;
  self = entry->observe("note", Option::newValue, [&](const KeyValueChange&) {
    ++calls;
    self.invalidate();
  });
  entry->setValue("First", "note");
  entry->setValue("Second", "note");
  EXPECT_EQ(calls, 1);

  // A token may outlive its object and the object's context.
  Heard late;
  auto outliving = entry->observe("end", kOldAndNew, late.callback());
  entry.reset();
  store.context.reset();
  EXPECT_FALSE(outliving.isActive());
  outliving.invalidate();
}

// A computed key hears its dependencies; announcements by hand nest, and
// the observer hears once, from before the outermost will to after the
// last did.
TEST_F(Observation, DependentKeysAndManualAnnouncementsReachObserversOnce) {
  auto entry = makeEntry(0, 90);
  Heard heard;
  auto token = entry->observe("effectiveDuration", kOldAndNew, heard.callback());
  entry->setValue(Date(60), "end");
  entry->setValue(30.0, "confirmedDuration");
  entry->setValue("Unrelated", "note");
  entry->updateEffectiveDuration(45);
  entry->willChangeValueForKey("effectiveDuration");
  entry->willChangeValueForKey("effectiveDuration");
  entry->setValue(20.0, "confirmedDuration");
  entry->didChangeValueForKey("effectiveDuration");
  EXPECT_EQ(heard.lines.size(), 3u);
  entry->didChangeValueForKey("effectiveDuration");
  entry->didChangeValueForKey("effectiveDuration");  // without a will: nothing to tell
  EXPECT_EQ(heard.lines, (Lines{"90>60", "60>30", "30>45", "45>20"}));
  EXPECT_EQ(entry->valueForKey("effectiveDuration"), Value(20.0));
  EXPECT_EQ(testing::failureOf([&] { auto value = entry->valueForKey("nothing"); }),
            StoreErrorCode::managedObjectValidation);
}

TEST_F(Observation, KeyPathsThroughAToOneFollowTheRelationship) {
  auto entry = makeEntry(0);
  auto first = makeJob("First");
  auto second = makeJob("Second");
  entry->setValue(Value(first), "job");
  Heard heard;
  auto token = entry->observe("job.name", kOldAndNew, heard.callback());
  std::string path;
  ManagedObject* observed = nullptr;
  auto fields = entry->observe("job.name", Option::newValue, [&](const KeyValueChange& change) {
    path = change.keyPath;
    observed = change.object;
  });
  first->setValue("First renamed", "name");
  EXPECT_EQ(path, "job.name");
  EXPECT_EQ(observed, entry.get());
  entry->setValue(Value(second), "job");
  first->setValue("No longer watched", "name");
  second->setValue("Second renamed", "name");
  entry->setValue(Value(), "job");
  second->setValue("Unwatched again", "name");
  EXPECT_EQ(heard.lines, (Lines{"\"First\">\"First renamed\"", "\"First renamed\">\"Second\"",
                                "\"Second\">\"Second renamed\"", "\"Second renamed\">nil"}));
}

TEST_F(Observation, BothSidesOfARelationshipAnnounce) {
  auto entry = makeEntry(0);
  auto other = makeEntry(10);
  auto first = makeJob("First");
  auto second = makeJob("Second");
  entry->setValue(Value(first), "job");
  Heard firstEntries, secondEntries, entryJob, otherJob;
  auto t1 = first->observe("entries", kOldAndNew, firstEntries.callback());
  auto t2 = second->observe("entries", kOldAndNew, secondEntries.callback());
  auto t3 = entry->observe("job", kOldAndNew, entryJob.callback());
  auto t4 = other->observe("job", kOldAndNew, otherJob.callback());
  entry->setValue(Value(second), "job");
  // Setting the to-many side announces each member whose to-one moves, and
  // the to-many itself once.
  second->setValue(Value(Value::Array{Value(std::shared_ptr<ManagedObject>(other))}), "entries");
  EXPECT_EQ(firstEntries.lines, Lines{"1 objects>0 objects"});
  EXPECT_EQ(secondEntries.lines, (Lines{"0 objects>1 objects", "1 objects>1 objects"}));
  EXPECT_EQ(entryJob.lines, (Lines{"\"First\">\"Second\"", "\"Second\">nil"}));
  EXPECT_EQ(otherJob.lines, Lines{"nil>\"Second\""});
}

// Rollback, refresh, a child's save and a nullifying delete rule each
// announce exactly the keys whose values they change.
TEST_F(Observation, ChangesMadeByTheContextAreAnnounced) {
  auto entry = makeEntry(0);
  auto job = makeJob("Job");
  entry->setValue(Value(job), "job");
  entry->setValue("Saved", "note");
  store.context->save();
  Heard notes, ends, jobs;
  auto t1 = entry->observe("note", kOldAndNew, notes.callback());
  auto t2 = entry->observe("end", kOldAndNew, ends.callback());
  auto t3 = entry->observe("job", kOldAndNew, jobs.callback());
  entry->setValue("Unsaved", "note");
  store.context->rollback();

  auto other = store.newContext();
  other->existingObjectWithID(entry->objectID())->setValue("Elsewhere", "note");
  other->save();
  store.context->refreshObject(entry, false);

  auto child = ManagedObjectContext::make(ManagedObjectContextConcurrencyType::privateQueueConcurrencyType);
  child->setParentContext(store.context);
  child->existingObjectWithID(entry->objectID())->setValue("From the child", "note");
  child->save();
  store.context->deleteObject(job);

  EXPECT_EQ(notes.lines, (Lines{"\"Saved\">\"Unsaved\"", "\"Unsaved\">\"Saved\"", "\"Saved\">\"Elsewhere\"",
                                "\"Elsewhere\">\"From the child\""}));
  EXPECT_TRUE(ends.lines.empty());
  EXPECT_EQ(jobs.lines, Lines{"\"Job\">nil"});
}

}  // namespace
}  // namespace kestrona
