#include <gtest/gtest.h>

#include "Platform/ObjectStore/StoreError.h"
#include "tests/Platform/ObjectStore/StoreTestSupport.h"
#include "tests/support/ChildTestProcess.h"

namespace kestrona {
namespace {

using testing::TestStore;

StoreErrorCode openFailure(const std::filesystem::path& url, const std::string& model,
                           PersistentStoreOptions options = {}) {
  auto coordinator = PersistentStoreCoordinator::make(ManagedObjectModel::loadNamed(model, testing::modelDirectory()));
  try {
    coordinator->addPersistentStore(url, options);
  } catch (const StoreError& error) {
    EXPECT_TRUE(coordinator->persistentStores().empty());
    return error.kind();
  }
  ADD_FAILURE() << "the store opened";
  return StoreErrorCode::managedObjectValidation;
}

TEST(PersistentStoreCoordinator, KeepsItsIdentifierAndMetadataAcrossLaunches) {
  TestStore store;
  auto stores = store.coordinator->persistentStores();
  ASSERT_EQ(stores.size(), 1u);
  EXPECT_EQ(stores[0].type, "SQLite");
  EXPECT_EQ(stores[0].URL, store.storeURL());
  UUID identifier = stores[0].identifier;
  store.coordinator->setMetadata({{"lastSync", "2026-01-01"}, {"NSStoreUUID", "overwritten?"}});

  store.reopen();
  EXPECT_EQ(store.coordinator->persistentStores()[0].identifier, identifier);
  auto metadata = store.coordinator->metadata();
  EXPECT_EQ(metadata["lastSync"], "2026-01-01");
  EXPECT_EQ(metadata["NSStoreUUID"], identifier.uuidString());
  EXPECT_EQ(metadata["NSStoreType"], "SQLite");

  // A second store file is a second identity.
  TestStore other;
  EXPECT_NE(other.coordinator->storeIdentifier(), identifier);
}

TEST(PersistentStoreCoordinator, OpensInWriteAheadLogMode) {
  TestStore store;
  EXPECT_EQ(testing::storeFileRows(store.storeURL(), "PRAGMA journal_mode")[0][0], Value("wal"));
}

TEST(PersistentStoreCoordinator, MigratesAddedPropertiesAndEntitiesInPlace) {
  TestStore store("Small");
  auto note = store.context->insertNewObject("Note");
  note->setValue("kept", "text");
  store.context->save();
  auto uri = note->objectID().URIRepresentation();

  store.reopen("SmallGrown");
  auto id = store.coordinator->managedObjectIDForURIRepresentation(uri);
  ASSERT_TRUE(id.has_value());
  auto migrated = store.context->existingObjectWithID(*id);
  EXPECT_EQ(migrated->stringForKey("text"), "kept");
  EXPECT_EQ(migrated->valueForKey("pinned"), Value(true));
  EXPECT_EQ(migrated->doubleForKey("weight"), 1.5);
  EXPECT_TRUE(migrated->valueForKey("tag").isNil());

  auto tag = store.context->insertNewObject("Tag");
  migrated->setValue(Value(tag), "tag");
  store.context->save();
  store.reopen();
  auto reread = store.context->existingObjectWithID(*id);
  EXPECT_EQ(reread->objectForKey("tag")->objectID(), tag->objectID());
}

TEST(PersistentStoreCoordinator, RefusesStoresItCannotMigrateOrRead) {
  testing::TemporaryDirectory directory;
  auto url = directory.path() / "Store.sqlite";
  {
    auto seed = PersistentStoreCoordinator::make(ManagedObjectModel::loadNamed("Small", testing::modelDirectory()));
    seed->addPersistentStore(url);
  }
  EXPECT_EQ(openFailure(url, "SmallRetyped"), StoreErrorCode::migration);
  PersistentStoreOptions noMigration;
  noMigration.migratePersistentStoresAutomatically = false;
  EXPECT_EQ(openFailure(url, "SmallGrown", noMigration), StoreErrorCode::migration);
  // The refused migrations changed nothing: the old model still opens.
  auto coordinator = PersistentStoreCoordinator::make(ManagedObjectModel::loadNamed("Small", testing::modelDirectory()));
  EXPECT_NO_THROW(coordinator->addPersistentStore(url, noMigration));

  auto garbage = directory.path() / "NotAStore.sqlite";
  testing::writeFile(garbage, std::string(4096, 'x'));
  EXPECT_EQ(openFailure(garbage, "Small"), StoreErrorCode::persistentStoreOpen);
  EXPECT_EQ(openFailure(directory.path() / "missing" / "Store.sqlite", "Small"), StoreErrorCode::persistentStoreOpen);
}

TEST(PersistentStoreCoordinator, RefusingAFileOfAnotherProgramLeavesItAsItWas) {
  testing::TemporaryDirectory directory;
  auto url = directory.path() / "Other.sqlite";
  testing::executeOnStoreFile(url, "CREATE TABLE accounts (id INTEGER PRIMARY KEY, owner TEXT); INSERT INTO accounts VALUES (1, 'me')");
  auto before = testing::readFile(url);
  EXPECT_EQ(openFailure(url, "Small"), StoreErrorCode::persistentStoreOpen);
  EXPECT_TRUE(testing::readFile(url) == before);
  EXPECT_FALSE(std::filesystem::exists(directory.path() / "Other.sqlite-wal"));
}

TEST(PersistentStoreCoordinator, KeepsPlannerStatisticsCurrentWhileAFreshStoreFills) {
  TestStore store;
  auto task = testing::makeTask(*store.context, "Busy");
  for (int save = 0; save < 4; ++save) {
    for (int i = 0; i < 500; ++i) testing::makeSession(*store.context, task, save * 1000 + i, std::nullopt, 1);
    store.context->save();
  }
  auto stats = testing::storeFileRows(store.storeURL(), "SELECT stat FROM sqlite_stat1 WHERE idx = 'Session_begin'");
  ASSERT_EQ(stats.size(), 1u);
  EXPECT_GE(std::stoll(*stats[0][0].get<std::string>()), 1000);
}

constexpr const char* kWriterMarker = "KESTRONA_OBJECTSTORE_WRITER_CHILD";

// Stops the save that calls it in the middle of its transaction, holding the
// store's write lock, until the parent lets it go on.
class StallingTransformer : public ValueTransformer {
 public:
  Data transformedValue(const Value&) const override {
    testing::tellParent("writing");
    testing::waitForEndOfInput();
    return Data{{'w'}};
  }
  Value reverseTransformedValue(const Data&) const override { return Value(); }
};

TEST(TwoProcesses, AStoreOpensAndReadsWhileAnotherProcessWrites) {
  TestStore store;
  testing::makeTask(*store.context, "Before");
  store.context->save();
  store.context.reset();
  store.coordinator.reset();

  testing::ChildTestProcess writer("TwoProcesses.WriterInTheMiddleOfASave", kWriterMarker,
                                   {{"KESTRONA_OBJECTSTORE_WRITER_STORE", store.storeURL().string()}});
  ASSERT_EQ(writer.readLine(), "writing");
  store.reopen();
  EXPECT_EQ(store.context->count(FetchRequest("Task")), 1u);
  EXPECT_EQ(store.context->count(FetchRequest("RuleSet")), 0u);
  writer.closeInput();
  EXPECT_EQ(writer.wait(), 0);
  EXPECT_EQ(store.context->count(FetchRequest("RuleSet")), 1u);
}

TEST(TwoProcesses, WriterInTheMiddleOfASave) {
  const char* path = std::getenv("KESTRONA_OBJECTSTORE_WRITER_STORE");
  if (std::getenv(kWriterMarker) == nullptr || path == nullptr) GTEST_SKIP() << "runs as a child process only";
  ValueTransformer::setValueTransformer(std::make_shared<StallingTransformer>(), "WordListTransformer");
  auto coordinator = PersistentStoreCoordinator::make(ManagedObjectModel::loadNamed("Tracker", testing::modelDirectory()));
  coordinator->addPersistentStore(path);
  auto context = ManagedObjectContext::make(ManagedObjectContextConcurrencyType::privateQueueConcurrencyType);
  context->setPersistentStoreCoordinator(coordinator);
  context->insertNewObject("RuleSet")->setValue(Value(Value::Array{Value("word")}), "words");
  context->save();
}

TEST(PersistentStoreCoordinator, ResolvesOnlyPermanentURIsOfItsOwnStore) {
  TestStore store;
  auto task = testing::makeTask(*store.context, "Write");
  auto temporaryURI = task->objectID().URIRepresentation();
  EXPECT_FALSE(store.coordinator->managedObjectIDForURIRepresentation(temporaryURI).has_value());
  store.context->save();
  auto uri = task->objectID().URIRepresentation();
  auto id = store.coordinator->managedObjectIDForURIRepresentation(uri);
  ASSERT_TRUE(id.has_value());
  EXPECT_EQ(*id, task->objectID());

  TestStore other;
  EXPECT_FALSE(other.coordinator->managedObjectIDForURIRepresentation(uri).has_value());
  std::string prefix = "x-kestrona://" + store.coordinator->storeIdentifier().uuidString();
  for (const auto& bad : {prefix + "/Unknown/p1", prefix + "/Task/p", prefix + "/Task/p12x", prefix + "/Task/q1",
                          prefix + "/Task/p-3", std::string("x-other://") + uri.substr(13), std::string("")}) {
    EXPECT_FALSE(store.coordinator->managedObjectIDForURIRepresentation(bad).has_value()) << bad;
  }
}

}  // namespace
}  // namespace kestrona
