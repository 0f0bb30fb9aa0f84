// Optimistic locking: saves and merges of a row another context changed
// since this one read it.
#include <gtest/gtest.h>

#include "tests/Platform/ObjectStore/StoreTestSupport.h"

namespace kestrona {
namespace {

using OptimisticLocking = testing::TwoContexts;

TEST_F(OptimisticLocking, AStaleSaveFailsWithRecordsAndWritesNothingUntilItTakesTheStoredRow) {
  other->setValue("Theirs", "name");
  other->setValue(3, "order");
  theirs->save();
  ours->setValue("Mine", "name");
  auto conflicts = testing::saveConflicts(*mine);
  ASSERT_EQ(conflicts.size(), 1u);
  const auto& conflict = conflicts[0];
  EXPECT_EQ(conflict.sourceObject, ours);
  EXPECT_EQ(conflict.objectSnapshot.at("name"), Value("Mine"));
  EXPECT_EQ(conflict.cachedSnapshot.at("name"), Value("Original"));
  EXPECT_EQ(conflict.persistedSnapshot.at("name"), Value("Theirs"));
  EXPECT_EQ(conflict.persistedSnapshot.at("order"), Value(3));
  EXPECT_EQ(conflict.oldVersionNumber, 1);
  EXPECT_EQ(conflict.newVersionNumber, 2);
  EXPECT_EQ(store.stored(id())->stringForKey("name"), "Theirs");
  EXPECT_TRUE(mine->hasChanges());

  mine->refreshObject(ours, true);
  EXPECT_EQ(ours->integerForKey("order"), 3);
  mine->save();
  EXPECT_EQ(store.stored(id())->stringForKey("name"), "Mine");
  EXPECT_EQ(store.stored(id())->integerForKey("order"), 3);
}

// Versions see what a comparison of values cannot: a row changed and
// changed back is still a row this context did not read.
TEST_F(OptimisticLocking, AChangeUndoneMeanwhileIsStillAConflict) {
  other->setValue("Briefly", "name");
  theirs->save();
  other->setValue("Original", "name");
  theirs->save();
  ours->setValue(9, "order");
  auto conflicts = testing::saveConflicts(*mine);
  ASSERT_EQ(conflicts.size(), 1u);
  EXPECT_EQ(conflicts[0].newVersionNumber, 3);
}

// Batch requests tell no context, but they count: the stale save fails.
TEST_F(OptimisticLocking, BatchRequestsCountAsChangesOfTheirRows) {
  BatchUpdateRequest rename("Task");
  rename.propertiesToUpdate = {{"name", Value("Batch")}};
  theirs->execute(rename);
  ours->setValue("Mine", "name");
  auto conflicts = testing::saveConflicts(*mine);
  ASSERT_EQ(conflicts.size(), 1u);
  EXPECT_EQ(conflicts[0].persistedSnapshot.at("name"), Value("Batch"));

  mine->refreshObject(ours, true);
  theirs->execute(BatchDeleteRequest{FetchRequest("Task")});
  conflicts = testing::saveConflicts(*mine);
  ASSERT_EQ(conflicts.size(), 1u);
  EXPECT_TRUE(conflicts[0].persistedSnapshot.empty());
}

// Theirs renames the task to "Theirs" and sets its order to 5; mine renames
// it to "Mine". Each policy resolves mine's save, and a merge of theirs
// into mine's pending change, alike; the error policy fails the save.
struct PolicyCase {
  MergePolicyType policy;
  const char* name;
  int order;
  const char* label;
};

class MergePolicies : public testing::TwoContexts, public ::testing::WithParamInterface<PolicyCase> {
 protected:
  void theyWriteAndIEdit() {
    mine->setMergePolicy(GetParam().policy);
    other->setValue("Theirs", "name");
    other->setValue(5, "order");
    theirs->save();
    ours->setValue("Mine", "name");
  }
  void expectStored(const std::shared_ptr<ManagedObject>& object) {
    EXPECT_EQ(object->stringForKey("name"), GetParam().name);
    EXPECT_EQ(object->integerForKey("order"), GetParam().order);
  }
};

TEST_P(MergePolicies, ResolveAStaleSave) {
  theyWriteAndIEdit();
  if (GetParam().policy == MergePolicyType::errorMergePolicyType) {
    EXPECT_EQ(testing::saveConflicts(*mine).size(), 1u);
    return;
  }
  mine->save();
  expectStored(store.stored(id()));
  expectStored(ours);
}

TEST_P(MergePolicies, ResolveAMergeIntoAPendingChange) {
  mine->setAutomaticallyMergesChangesFromParent(true);
  theyWriteAndIEdit();
  mine->performAndWait([] {});
  if (GetParam().policy == MergePolicyType::errorMergePolicyType) {
    // Both edits are kept: mine in the object, theirs in the store.
    EXPECT_EQ(ours->stringForKey("name"), "Mine");
    EXPECT_EQ(testing::saveConflicts(*mine).size(), 1u);
    return;
  }
  expectStored(ours);
  // The merge took the stored version: what is left saves without conflict.
  mine->save();
  expectStored(store.stored(id()));
}

// A row deleted meanwhile cannot be updated under any policy; deleting a
// row changed meanwhile fails under the error policy only.
TEST_P(MergePolicies, MeetARowDeletedOrChangedMeanwhile) {
  mine->setMergePolicy(GetParam().policy);
  theirs->deleteObject(other);
  theirs->save();
  ours->setValue("Mine", "name");
  EXPECT_EQ(testing::saveConflicts(*mine).size(), 1u);

  auto again = store.newContext();
  again->setMergePolicy(GetParam().policy);
  auto task = testing::makeTask(*store.context, "Shared");
  store.context->save();
  auto held = again->existingObjectWithID(task->objectID());
  task->setValue("Changed", "name");
  store.context->save();
  again->deleteObject(held);
  if (GetParam().policy == MergePolicyType::errorMergePolicyType) {
    EXPECT_EQ(testing::saveConflicts(*again).size(), 1u);
  } else {
    again->save();
    EXPECT_EQ(store.newContext()->count(FetchRequest("Task")), 0u);
  }
}

INSTANTIATE_TEST_SUITE_P(EachPolicy, MergePolicies,
                         ::testing::Values(
                             PolicyCase{MergePolicyType::errorMergePolicyType, nullptr, 0, "error"},
                             PolicyCase{MergePolicyType::mergeByPropertyObjectTrumpMergePolicyType, "Mine", 5,
                                        "objectTrump"},
                             PolicyCase{MergePolicyType::mergeByPropertyStoreTrumpMergePolicyType, "Theirs", 5,
                                        "storeTrump"},
                             PolicyCase{MergePolicyType::overwriteMergePolicyType, "Mine", 1, "overwrite"},
                             PolicyCase{MergePolicyType::rollbackMergePolicyType, "Theirs", 5, "rollback"}),
                         [](const ::testing::TestParamInfo<PolicyCase>& instance) { return std::string(instance.param.label); });

}  // namespace
}  // namespace kestrona
