#include "Platform/ObjectStore/PersistentStoreCoordinator.h"

#include <charconv>

#include "Platform/Foundation/FatalError.h"
#include "Platform/ObjectStore/SaveTransaction.h"
#include "Platform/ObjectStore/StoreConnection.h"
#include "Platform/ObjectStore/StoreError.h"
#include "Platform/ObjectStore/StoreMigration.h"

namespace kestrona {

namespace {

constexpr std::string_view kURIScheme = "x-kestrona://";
constexpr const char* kUUIDKey = "NSStoreUUID";
constexpr const char* kTypeKey = "NSStoreType";

}  // namespace

std::shared_ptr<PersistentStoreCoordinator> PersistentStoreCoordinator::make(
    std::shared_ptr<const ManagedObjectModel> model) {
  precondition(model != nullptr, "A coordinator needs a model");
  return std::shared_ptr<PersistentStoreCoordinator>(new PersistentStoreCoordinator(std::move(model)));
}

PersistentStoreCoordinator::PersistentStoreCoordinator(std::shared_ptr<const ManagedObjectModel> model)
    : model_(std::move(model)) {}

PersistentStoreCoordinator::~PersistentStoreCoordinator() = default;

const PersistentStore& PersistentStoreCoordinator::addPersistentStore(const std::filesystem::path& url,
                                                                       PersistentStoreOptions options) {
  std::lock_guard lock(mutex_);
  if (store_) {
    throw StoreError(StoreErrorCode::persistentStoreOperation, "The coordinator already has a store");
  }
  auto opened = openStoreFile(url, *model_, options);
  store_ = PersistentStore{std::string(PersistentStore::kSQLiteStoreType), url, opened.identifier};
  connection_ =
      std::make_unique<StoreConnection>(std::move(opened.database), std::move(opened.schema), opened.identifier);
  return *store_;
}

std::vector<PersistentStore> PersistentStoreCoordinator::persistentStores() const {
  std::lock_guard lock(mutex_);
  if (!store_) return {};
  return {*store_};
}

const UUID& PersistentStoreCoordinator::storeIdentifier() const { return connection().storeIdentifier(); }

StoreConnection& PersistentStoreCoordinator::connection() const {
  precondition(connection_ != nullptr, "The coordinator has no store");
  return *connection_;
}

std::optional<ManagedObjectID> PersistentStoreCoordinator::managedObjectIDForURIRepresentation(
    std::string_view uri) const {
  if (!connection_ || uri.substr(0, kURIScheme.size()) != kURIScheme) return std::nullopt;
  uri.remove_prefix(kURIScheme.size());
  auto firstSlash = uri.find('/');
  if (firstSlash == std::string_view::npos) return std::nullopt;
  auto identifier = UUID::fromString(uri.substr(0, firstSlash));
  if (!identifier || *identifier != storeIdentifier()) return std::nullopt;
  uri.remove_prefix(firstSlash + 1);
  auto secondSlash = uri.find('/');
  if (secondSlash == std::string_view::npos) return std::nullopt;
  auto entity = model_->entity(uri.substr(0, secondSlash));
  auto key = uri.substr(secondSlash + 1);
  if (!entity || key.size() < 2 || key[0] != 'p') return std::nullopt;
  std::int64_t primaryKey = 0;
  auto [end, error] = std::from_chars(key.data() + 1, key.data() + key.size(), primaryKey);
  if (error != std::errc() || end != key.data() + key.size() || primaryKey <= 0) return std::nullopt;
  return ManagedObjectID::permanent(*identifier, entity->entityPointer(), primaryKey);
}

std::map<std::string, std::string> PersistentStoreCoordinator::metadata() const {
  std::map<std::string, std::string> result;
  if (!connection_) return result;
  connection().query("SELECT key, value FROM kestrona_metadata", {},
                     [&result](const SQLiteStatement& row) { result[row.text(0)] = row.text(1); });
  result[kTypeKey] = std::string(PersistentStore::kSQLiteStoreType);
  return result;
}

void PersistentStoreCoordinator::setMetadata(const std::map<std::string, std::string>& metadata) {
  auto& store = connection();
  auto lock = store.lock();
  auto& database = store.databaseLocked();
  SQLiteTransaction transaction(database);
  auto& clear = database.prepare("DELETE FROM kestrona_metadata WHERE key != ?");
  clear.bind(1, Value(kUUIDKey));
  clear.step();
  for (const auto& [key, value] : metadata) {
    if (key == kUUIDKey || key == kTypeKey) continue;
    auto& write = database.prepare("INSERT INTO kestrona_metadata (key, value) VALUES (?, ?)");
    write.bind(1, Value(key));
    write.bind(2, Value(value));
    write.step();
  }
  transaction.commit();
}

std::optional<PersistentStoreCoordinator::StoredRow> PersistentStoreCoordinator::loadRow(const ManagedObjectID& id) const {
  if (id.isTemporaryID()) return std::nullopt;
  auto& store = connection();
  auto lock = store.lock();
  return store.loadRowLocked(id);
}

bool PersistentStoreCoordinator::rowExists(const ManagedObjectID& id) const {
  if (id.isTemporaryID()) return false;
  bool exists = false;
  const auto& table = connection().schema().table(id.entity());
  connection().query("SELECT 1 FROM " + quoteIdentifier(table.name) + " WHERE pk = ?", {Value(id.primaryKey())},
                     [&exists](const SQLiteStatement&) { exists = true; });
  return exists;
}

std::vector<ManagedObjectID> PersistentStoreCoordinator::relatedObjectIDs(
    const ManagedObjectID& owner, const RelationshipDescription& relationship) const {
  std::vector<ManagedObjectID> result;
  if (owner.isTemporaryID()) return result;
  auto& store = connection();
  const auto& table = store.schema().table(relationship.destinationEntity());
  store.query("SELECT pk, ent FROM " + quoteIdentifier(table.name) + " WHERE " +
                  quoteIdentifier(relationship.inverseRelationship().name()) + " = ?",
              {Value(owner.primaryKey())}, [&](const SQLiteStatement& row) {
                if (auto id = store.objectID(row.int64(1), row.int64(0))) result.push_back(std::move(*id));
              });
  return result;
}

std::vector<ManagedObjectID> PersistentStoreCoordinator::obtainPermanentIDs(
    const std::vector<ManagedObjectID>& temporaryIDs) {
  auto& store = connection();
  auto lock = store.lock();
  std::vector<ManagedObjectID> result;
  result.reserve(temporaryIDs.size());
  try {
    SQLiteTransaction transaction(store.databaseLocked());
    for (const auto& id : temporaryIDs) {
      if (!id.isTemporaryID()) {
        result.push_back(id);
        continue;
      }
      auto key = store.reserveKeysLocked(store.schema().table(id.entity()).name, 1);
      result.push_back(ManagedObjectID::permanent(store.storeIdentifier(), id.entityPointer(), key));
    }
    transaction.commit();
  } catch (const StoreError& error) {
    throw StoreError(StoreErrorCode::persistentStoreSave,
                     "Permanent IDs cannot be made: " + error.localizedDescription(), error.userInfo());
  }
  return result;
}

PersistentStoreCoordinator::SaveResult PersistentStoreCoordinator::save(const SaveRequest& request) {
  return runSaveTransaction(connection(), request);
}

void PersistentStoreCoordinator::registerContext(const ManagedObjectContext* context,
                                                 std::weak_ptr<ManagedObjectContext> reference) {
  contexts_.add(context, std::move(reference));
}

void PersistentStoreCoordinator::unregisterContext(const ManagedObjectContext* context) { contexts_.remove(context); }

std::vector<std::shared_ptr<ManagedObjectContext>> PersistentStoreCoordinator::registeredContexts() const {
  return contexts_.contexts();
}

}  // namespace kestrona
