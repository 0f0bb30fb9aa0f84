#include "tests/SharedCore/Model/ModelTestSupport.h"

#include "SharedCore/Model/TrackingModel.h"

namespace kestrona::testing {

ModelStore::ModelStore() {
  registerTrackingModelClasses();
  coordinator = PersistentStoreCoordinator::make(ManagedObjectModel::fromURL(KESTRONA_TRACKING_MODEL_FILE));
  coordinator->addPersistentStore(directory.path() / "Store.sqlite");
  context = ManagedObjectContext::make(ManagedObjectContextConcurrencyType::privateQueueConcurrencyType);
  context->setPersistentStoreCoordinator(coordinator);
}

std::shared_ptr<Folder> makeFolder(ModelStore& store, const std::string& name, const std::shared_ptr<Node>& parent) {
  auto folder = store.insert<Folder>("Folder");
  folder->setName(name);
  folder->setParent(parent);
  return folder;
}

std::shared_ptr<Task> makeTask(ModelStore& store, const std::string& name, const std::shared_ptr<Node>& parent) {
  auto task = store.insert<Task>("Task");
  task->setName(name);
  task->setParent(parent);
  return task;
}

std::shared_ptr<Session> makeSession(ModelStore& store, const std::shared_ptr<Task>& task, double begin,
                                     std::optional<double> end) {
  auto session = store.insert<Session>("Session");
  session->setBegin(Date(begin));
  session->setEnd(end ? std::optional<Date>(Date(*end)) : std::nullopt);
  session->setTask(task);
  return session;
}

}  // namespace kestrona::testing
