#include "tests/Platform/ObjectStore/StoreTestSupport.h"

#include <sqlite3.h>

#include "Platform/RunLoop/MainLoop.h"

namespace kestrona::testing {

std::filesystem::path modelDirectory() { return KESTRONA_OBJECTSTORE_TEST_MODELS; }

Data WordListTransformer::transformedValue(const Value& value) const {
  Data data;
  auto words = value.get<Value::Array>();
  if (!words) throw Error("WordListTransformer", 1, "Not a list of words");
  for (std::size_t i = 0; i < words->size(); ++i) {
    if (i) data.bytes.push_back('\n');
    auto word = (*words)[i].get<std::string>();
    if (!word) throw Error("WordListTransformer", 1, "Not a word");
    data.bytes.insert(data.bytes.end(), word->begin(), word->end());
  }
  return data;
}

Value WordListTransformer::reverseTransformedValue(const Data& data) const {
  Value::Array words;
  std::string word;
  for (auto byte : data.bytes) {
    if (byte == '\n') {
      words.emplace_back(word);
      word.clear();
    } else {
      word += static_cast<char>(byte);
    }
  }
  words.emplace_back(word);
  return Value(std::move(words));
}

TestStore::TestStore(const std::string& modelName) : model(modelName) {
  ValueTransformer::setValueTransformer(std::make_shared<WordListTransformer>(), "WordListTransformer");
  reopen(modelName);
}

void TestStore::reopen(const std::string& modelName) {
  if (!modelName.empty()) model = modelName;
  context.reset();
  coordinator.reset();
  coordinator = PersistentStoreCoordinator::make(ManagedObjectModel::loadNamed(model, modelDirectory()));
  coordinator->addPersistentStore(storeURL());
  context = newContext();
}

std::shared_ptr<ManagedObjectContext> TestStore::newContext() const {
  auto made = ManagedObjectContext::make(ManagedObjectContextConcurrencyType::privateQueueConcurrencyType);
  made->setPersistentStoreCoordinator(coordinator);
  return made;
}

std::shared_ptr<ManagedObject> TestStore::stored(const ManagedObjectID& id) const {
  return newContext()->existingObjectWithID(id);
}

void TwoContexts::SetUp() {
  auto task = makeTask(*store.context, "Original");
  task->setValue(1, "order");
  store.context->save();
  mine = store.newContext();
  theirs = store.newContext();
  ours = mine->existingObjectWithID(task->objectID());
  other = theirs->existingObjectWithID(task->objectID());
}

std::vector<MergeConflict> saveConflicts(ManagedObjectContext& context) {
  try {
    context.save();
  } catch (const StoreError& error) {
    EXPECT_EQ(error.kind(), StoreErrorCode::managedObjectMerge);
    auto conflicts = error.userInfoObject<std::vector<MergeConflict>>(StoreError::kSaveConflictsKey);
    EXPECT_NE(conflicts, nullptr);
    return conflicts ? *conflicts : std::vector<MergeConflict>();
  }
  ADD_FAILURE() << "the save went through";
  return {};
}

std::shared_ptr<ManagedObject> makeTask(ManagedObjectContext& context, const std::string& name, bool archived) {
  auto task = context.insertNewObject("Task");
  task->setValue(name, "name");
  task->setValue(archived, "archived");
  return task;
}

std::shared_ptr<ManagedObject> makeSession(ManagedObjectContext& context, const std::shared_ptr<ManagedObject>& task,
                                           double begin, std::optional<double> end, double duration) {
  auto session = context.insertNewObject("Session");
  session->setValue(Date(begin), "begin");
  session->setValue(end ? Value(Date(*end)) : Value(), "end");
  session->setValue(duration, "confirmedDuration");
  session->setValue(Value(task), "task");
  return session;
}

std::vector<std::vector<Value>> storeFileRows(const std::filesystem::path& file, const std::string& sql) {
  std::vector<std::vector<Value>> rows;
  sqlite3* database = nullptr;
  sqlite3_stmt* statement = nullptr;
  if (sqlite3_open_v2(file.c_str(), &database, SQLITE_OPEN_READWRITE, nullptr) != SQLITE_OK ||
      sqlite3_prepare_v2(database, sql.c_str(), -1, &statement, nullptr) != SQLITE_OK) {
    ADD_FAILURE() << sql << ": " << sqlite3_errmsg(database);
  }
  while (statement && sqlite3_step(statement) == SQLITE_ROW) {
    std::vector<Value> row;
    for (int column = 0; column < sqlite3_column_count(statement); ++column) {
      switch (sqlite3_column_type(statement, column)) {
        case SQLITE_INTEGER:
          row.emplace_back(static_cast<std::int64_t>(sqlite3_column_int64(statement, column)));
          break;
        case SQLITE_FLOAT:
          row.emplace_back(sqlite3_column_double(statement, column));
          break;
        case SQLITE_TEXT:
          row.emplace_back(std::string(reinterpret_cast<const char*>(sqlite3_column_text(statement, column))));
          break;
        default:
          row.emplace_back();
      }
    }
    rows.push_back(std::move(row));
  }
  sqlite3_finalize(statement);
  sqlite3_close(database);
  return rows;
}

void executeOnStoreFile(const std::filesystem::path& file, const std::string& sql) {
  sqlite3* database = nullptr;
  char* message = nullptr;
  if (sqlite3_open_v2(file.c_str(), &database, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr) != SQLITE_OK ||
      sqlite3_exec(database, sql.c_str(), nullptr, nullptr, &message) != SQLITE_OK) {
    ADD_FAILURE() << sql << ": " << (message ? message : sqlite3_errmsg(database));
  }
  sqlite3_free(message);
  sqlite3_close(database);
}

NotificationRecorder::NotificationRecorder(std::string_view name, const ManagedObjectContext* context)
    : token_(NotificationCenter::defaultCenter().addObserver(std::string(name), context,
                                                             [this](const Notification& notification) {
                                                               std::lock_guard lock(mutex_);
                                                               notifications_.push_back(notification);
                                                             })) {}

std::vector<Notification> NotificationRecorder::notifications() const {
  std::lock_guard lock(mutex_);
  return notifications_;
}

std::size_t NotificationRecorder::count() const {
  std::lock_guard lock(mutex_);
  return notifications_.size();
}

}  // namespace kestrona::testing
