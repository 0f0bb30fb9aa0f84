// The coordinator and its file: identity, metadata, opening, migration,
// planner statistics, and a second process on the same file.
#include <gtest/gtest.h>

#include "tests/Platform/ObjectStore/StoreTestSupport.h"
#include "tests/support/ChildTestProcess.h"

namespace kestrona {
namespace {

using testing::TestStore;

std::shared_ptr<PersistentStoreCoordinator> coordinatorOf(const std::string& model) {
  return PersistentStoreCoordinator::make(ManagedObjectModel::loadNamed(model, testing::modelDirectory()));
}

std::optional<StoreErrorCode> openFailure(const std::filesystem::path& url, const std::string& model,
                           PersistentStoreOptions options = {}) {
  auto coordinator = coordinatorOf(model);
  auto kind = testing::failureOf([&] { coordinator->addPersistentStore(url, options); });
  EXPECT_TRUE(coordinator->persistentStores().empty());
  return kind;
}

std::int64_t storedVersion(const TestStore& store, const ManagedObjectID& id) {
  auto rows = testing::storeFileRows(store.storeURL(), "SELECT _version FROM Note WHERE pk = " +
                                                           std::to_string(id.primaryKey()));
  return rows.size() == 1 ? *rows[0][0].get<std::int64_t>() : -1;
}

TEST(PersistentStoreCoordinator, KeepsItsIdentifierAndMetadataAcrossLaunches) {
  TestStore store;
  auto stores = store.coordinator->persistentStores();
  ASSERT_EQ(stores.size(), 1u);
  EXPECT_EQ(stores[0].URL, store.storeURL());
  UUID identifier = stores[0].identifier;
  EXPECT_EQ(testing::storeFileRows(store.storeURL(), "PRAGMA journal_mode")[0][0], Value("wal"));
  store.coordinator->setMetadata({{"lastSync", "2026-01-01"}, {"NSStoreUUID", "overwritten?"}});

  store.reopen();
  EXPECT_EQ(store.coordinator->storeIdentifier(), identifier);
  EXPECT_EQ(store.coordinator->metadata(), (std::map<std::string, std::string>{{"lastSync", "2026-01-01"},
                                                                               {"NSStoreType", "SQLite"},
                                                                               {"NSStoreUUID", identifier.uuidString()}}));
  EXPECT_NE(TestStore().coordinator->storeIdentifier(), identifier);
}

// A file made before rows had versions, and before the model grew: the
// open adds the columns (with their defaults), the entity and the versions.
TEST(PersistentStoreCoordinator, MigratesAnOlderFileInPlace) {
  TestStore store("Small");
  auto note = store.context->insertNewObject("Note");
  note->setValue("kept", "text");
  store.context->save();
  auto uri = note->objectID().URIRepresentation();
  store.context.reset();
  store.coordinator.reset();
  testing::executeOnStoreFile(store.storeURL(), "ALTER TABLE Note DROP COLUMN _version");
  PersistentStoreOptions noMigration;
  noMigration.migratePersistentStoresAutomatically = false;
  EXPECT_EQ(openFailure(store.storeURL(), "Small", noMigration), StoreErrorCode::migration);

  store.reopen("SmallGrown");
  auto id = *store.coordinator->managedObjectIDForURIRepresentation(uri);
  EXPECT_EQ(storedVersion(store, id), 1);
  auto migrated = store.context->existingObjectWithID(id);
  EXPECT_EQ(migrated->stringForKey("text"), "kept");
  EXPECT_EQ(migrated->valueForKey("pinned"), Value(true));
  EXPECT_EQ(migrated->doubleForKey("weight"), 1.5);
  auto tag = store.context->insertNewObject("Tag");
  migrated->setValue(Value(tag), "tag");
  store.context->save();
  EXPECT_EQ(storedVersion(store, id), 2);
  store.reopen();
  EXPECT_EQ(store.context->existingObjectWithID(id)->objectForKey("tag")->objectID(), tag->objectID());
}

// A refused open changes nothing in the file, whatever the reason.
TEST(PersistentStoreCoordinator, RefusesFilesItCannotMigrateOrReadAndLeavesThemAsTheyWere) {
  testing::TemporaryDirectory directory;
  auto url = directory.path() / "Store.sqlite";
  coordinatorOf("Small")->addPersistentStore(url);
  PersistentStoreOptions noMigration;
  noMigration.inferMappingModelAutomatically = false;
  auto garbage = directory.path() / "Garbage.sqlite";
  testing::writeFile(garbage, std::string(4096, 'x'));
  auto foreign = directory.path() / "Other.sqlite";
  testing::executeOnStoreFile(foreign, "CREATE TABLE accounts (id INTEGER PRIMARY KEY); INSERT INTO accounts VALUES (1)");
  struct Case {
    std::filesystem::path file;
    const char* model;
    PersistentStoreOptions options;
    StoreErrorCode code;
  };
  for (const auto& [file, model, options, code] : std::vector<Case>{
           {url, "SmallRetyped", {}, StoreErrorCode::migration},
           {url, "SmallGrown", noMigration, StoreErrorCode::migration},
           {garbage, "Small", {}, StoreErrorCode::persistentStoreOpen},
           {foreign, "Small", {}, StoreErrorCode::persistentStoreOpen},
           {directory.path() / "missing" / "Store.sqlite", "Small", {}, StoreErrorCode::persistentStoreOpen}}) {
    auto before = testing::readFile(file);
    EXPECT_EQ(openFailure(file, model, options), code) << file << " " << model;
    EXPECT_TRUE(testing::readFile(file) == before) << file;
  }
  EXPECT_FALSE(std::filesystem::exists(directory.path() / "Other.sqlite-wal"));
  EXPECT_NO_THROW(coordinatorOf("Small")->addPersistentStore(url, noMigration));
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

TEST(PersistentStoreCoordinator, ResolvesOnlyPermanentURIsOfItsOwnStore) {
  TestStore store;
  auto task = testing::makeTask(*store.context, "Write");
  auto temporaryURI = task->objectID().URIRepresentation();
  store.context->save();
  auto uri = task->objectID().URIRepresentation();
  EXPECT_EQ(store.coordinator->managedObjectIDForURIRepresentation(uri), task->objectID());
  EXPECT_FALSE(TestStore().coordinator->managedObjectIDForURIRepresentation(uri).has_value());
  std::string prefix = "x-kestrona://" + store.coordinator->storeIdentifier().uuidString();
  for (const auto& bad : {temporaryURI, prefix + "/Unknown/p1", prefix + "/Task/p", prefix + "/Task/p12x",
                          prefix + "/Task/q1", prefix + "/Task/p-3", "x-other://" + uri.substr(13), std::string()}) {
    EXPECT_FALSE(store.coordinator->managedObjectIDForURIRepresentation(bad).has_value()) << bad;
  }
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
  auto coordinator = coordinatorOf("Tracker");
  coordinator->addPersistentStore(path);
  auto context = ManagedObjectContext::make(ManagedObjectContextConcurrencyType::privateQueueConcurrencyType);
  context->setPersistentStoreCoordinator(coordinator);
  context->insertNewObject("RuleSet")->setValue(Value(Value::Array{Value("word")}), "words");
  context->save();
}

}  // namespace
}  // namespace kestrona
