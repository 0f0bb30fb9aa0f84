#include <gtest/gtest.h>

#include "Platform/ObjectStore/ManagedObjectModel.h"
#include "SharedCore/DataProviders/ContextChanges.h"
#include "SharedCore/DataProviders/StoreNotifications.h"
#include "tests/SharedCore/DataProviders/StackTestSupport.h"

namespace kestrona {
namespace {

using Entity = ContextChanges::Entity;

class ContextChangesFromNotifications : public ::testing::Test {
 protected:
  std::shared_ptr<const ManagedObjectModel> model =
      ManagedObjectModel::loadNamed("StackTest", KESTRONA_STACK_TEST_MODELS);
  UUID store = UUID::random();

  ManagedObjectID id(const std::string& entityName, std::int64_t key = 1) const {
    return ManagedObjectID::permanent(store, model->entity(entityName)->entityPointer(), key);
  }
  ManagedObjectIDSet ids(std::initializer_list<std::string> entityNames) const {
    ManagedObjectIDSet result;
    std::int64_t key = 1;
    for (const auto& name : entityNames) result.insert(id(name, key++));
    return result;
  }
};

TEST_F(ContextChangesFromNotifications, AMergeClassifiesIDsByTheEntityNameInTheirText) {
  Notification merge;
  merge.userInfo[std::string(NSInsertedObjectIDsKey)] = ids({"Task", "Session"});
  merge.userInfo[std::string(NSUpdatedObjectIDsKey)] = ids({"Folder", "RuleSet"});
  merge.userInfo[std::string(NSDeletedObjectIDsKey)] = ids({"RuleBase"});
  auto changes = ContextChanges::fromMergeNotification(merge);
  EXPECT_EQ(changes.inserts, Entity::task | Entity::session);
  EXPECT_EQ(changes.updates, Entity::folder | Entity::ruleSet);
  EXPECT_EQ(changes.deletes, Entity::rule);

  // Sub-entities of RuleBase print their own names and set no bit, nor do
  // entities outside the tracked ones; absent keys are empty.
  Notification rulesOnly;
  rulesOnly.userInfo[std::string(NSUpdatedObjectIDsKey)] = ids({"Rule", "RuleCombination", "ALEntry"});
  EXPECT_TRUE(ContextChanges::fromMergeNotification(rulesOnly).areEmtpy());

  // A temporary ID prints the entity name as well.
  Notification temporary;
  temporary.userInfo[std::string(NSInsertedObjectIDsKey)] =
      ManagedObjectIDSet{ManagedObjectID::makeTemporary(store, model->entity("Folder")->entityPointer())};
  EXPECT_EQ(ContextChanges::fromMergeNotification(temporary).inserts, Entity::folder);

  // A value of another type under a key counts as empty.
  Notification wrongType;
  wrongType.userInfo[std::string(NSInsertedObjectIDsKey)] = std::string("/Task");
  EXPECT_TRUE(ContextChanges::fromMergeNotification(wrongType).areEmtpy());
}

TEST_F(ContextChangesFromNotifications, ADidSaveClassifiesObjectsByTheirKind) {
  testing::TestStack test;
  auto context = test.stack->privateContext();
  context->performAndWait([&] {
    auto object = [&](const char* entityName) { return context->insertNewObject(entityName); };
    Notification didSave;
    didSave.userInfo[std::string(NSInsertedObjectsKey)] =
        ManagedObjectSet{object("Task"), object("Session"), object("ALEntry")};
    didSave.userInfo[std::string(NSUpdatedObjectsKey)] =
        ManagedObjectSet{object("Folder"), object("Rule"), object("RuleCombination")};
    didSave.userInfo[std::string(NSDeletedObjectsKey)] = ManagedObjectSet{object("RuleSet"), object("Folder")};
    auto changes = ContextChanges::fromDidSaveNotification(didSave);
    // Unlike the merge form, rules are RuleBases by kind.
    EXPECT_EQ(changes.inserts, Entity::task | Entity::session);
    EXPECT_EQ(changes.updates, Entity::folder | Entity::rule);
    EXPECT_EQ(changes.deletes, Entity::ruleSet | Entity::folder);

    Notification deletes;
    deletes.userInfo[std::string(NSDeletedObjectsKey)] =
        ManagedObjectSet{object("Task"), object("Session"), object("Rule"), object("ALEntry")};
    EXPECT_EQ(ContextChanges::fromDidSaveNotification(deletes).deletes,
              Entity::task | Entity::session | Entity::rule);

    Notification logOnly;
    logOnly.userInfo[std::string(NSInsertedObjectsKey)] = ManagedObjectSet{object("ALEntry")};
    EXPECT_TRUE(ContextChanges::fromDidSaveNotification(logOnly).areEmtpy());
    context->rollback();
  });
}

TEST(ContextChangesMembers, TellWhichKindsChanged) {
  const ContextChanges rulesOnly{Entity{}, Entity::ruleSet, Entity{}};
  EXPECT_FALSE(rulesOnly.haveTrackedDataChanges());
  EXPECT_FALSE(rulesOnly.areEmtpy());
  EXPECT_FALSE(rulesOnly.haveInserts());
  EXPECT_TRUE(rulesOnly.haveUpdates());
  EXPECT_FALSE(rulesOnly.haveDeletes());

  const ContextChanges empty;
  EXPECT_TRUE(empty.areEmtpy());
  EXPECT_FALSE(empty.haveTrackedDataChanges());

  for (Entity tracked : {Entity::session, Entity::task, Entity::folder}) {
    EXPECT_TRUE((ContextChanges{Entity{}, Entity{}, tracked}).haveTrackedDataChanges()) << tracked.rawValue;
  }
  EXPECT_FALSE((ContextChanges{Entity::rule, Entity::ruleSet, Entity::rule}).haveTrackedDataChanges());

  // have() needs every bit of its argument within one of the sets.
  const ContextChanges mixed{Entity::task | Entity::folder, Entity::session, Entity{}};
  EXPECT_TRUE(mixed.have(Entity::task | Entity::folder));
  EXPECT_FALSE(mixed.have(Entity::task | Entity::session));
  EXPECT_TRUE(mixed.haveAny({Entity::rule, Entity::session}));
  EXPECT_FALSE(mixed.haveAny({Entity::rule, Entity::ruleSet}));
  EXPECT_FALSE(mixed.haveAny({}));
  EXPECT_TRUE(mixed.haveAll({Entity::task, Entity::session}));
  EXPECT_FALSE(mixed.haveAll({Entity::task, Entity::rule}));
  EXPECT_TRUE(mixed.haveAll({}));
}

TEST(ContextChangesMembers, DescribeEachSetAsAnArrayOfNames) {
  EXPECT_EQ(ContextChanges().description(), "ContextChanges(inserts: [], updates: [], deletes: [])");
  const ContextChanges changes{Entity::task | Entity::session, Entity::rule, Entity::folder | Entity::ruleSet};
  EXPECT_EQ(changes.description(),
            "ContextChanges(inserts: [\"session\", \"task\"], updates: [\"rule\"], deletes: [\"folder\", "
            "\"ruleSet\"])");
}

TEST_F(ContextChangesFromNotifications, NotificationHelpersReadTheirKeysAndToleratePoorUserInfo) {
  const ContextChanges changes{Entity::task, Entity{}, Entity{}};
  Notification posted;
  posted.userInfo[std::string(ContextChangesKey)] = changes;
  posted.userInfo[std::string(NSDeletedObjectIDsKey)] = ManagedObjectIDSet{id("Task", 7)};
  EXPECT_EQ(contextChanges(posted), changes);
  EXPECT_TRUE(hasDeletedObject(posted, id("Task", 7)));
  // The same row read through the parent entity is the same object.
  EXPECT_TRUE(hasDeletedObject(posted, id("Node", 7)));
  EXPECT_FALSE(hasDeletedObject(posted, id("Task", 8)));

  Notification empty;
  EXPECT_EQ(contextChanges(empty), std::nullopt);
  EXPECT_FALSE(hasDeletedObject(empty, id("Task", 7)));
  Notification wrongTypes;
  wrongTypes.userInfo[std::string(ContextChangesKey)] = std::string("changes");
  wrongTypes.userInfo[std::string(NSDeletedObjectIDsKey)] = std::vector<ManagedObjectID>{id("Task", 7)};
  EXPECT_EQ(contextChanges(wrongTypes), std::nullopt);
  EXPECT_FALSE(hasDeletedObject(wrongTypes, id("Task", 7)));
}

TEST_F(ContextChangesFromNotifications, MainContextDidChangeTakesIDSetsFromIDsElseFromObjectsElseEmpty) {
  testing::TestStack test;
  auto context = test.stack->privateContext();
  context->performAndWait([&] {
    auto folder = context->insertNewObject("Folder");
    Notification source;
    source.userInfo[std::string(NSInsertedObjectIDsKey)] = ManagedObjectIDSet{id("Task", 3)};
    // Ignored: the ID key of the same set wins.
    source.userInfo[std::string(NSInsertedObjectsKey)] = ManagedObjectSet{folder};
    source.userInfo[std::string(NSUpdatedObjectsKey)] = ManagedObjectSet{folder};
    const ContextChanges changes{Entity::task, Entity::folder, Entity{}};

    Notification posted{std::string(mainContextDidChange), nullptr, mainContextDidChangeUserInfo(source, changes)};
    EXPECT_EQ(contextChanges(posted), changes);
    EXPECT_EQ(*posted.userInfoValue<ManagedObjectIDSet>(NSInsertedObjectIDsKey), ManagedObjectIDSet{id("Task", 3)});
    EXPECT_EQ(*posted.userInfoValue<ManagedObjectIDSet>(NSUpdatedObjectIDsKey),
              ManagedObjectIDSet{folder->objectID()});
    ASSERT_NE(posted.userInfoValue<ManagedObjectIDSet>(NSDeletedObjectIDsKey), nullptr);
    EXPECT_TRUE(posted.userInfoValue<ManagedObjectIDSet>(NSDeletedObjectIDsKey)->empty());
    context->rollback();
  });
}

}  // namespace
}  // namespace kestrona
