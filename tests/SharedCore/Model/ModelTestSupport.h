// A store on the application's model in a temporary folder, with one
// private context whose objects are the entity classes, and helpers that
// make nodes and entries in it.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "Platform/ObjectStore/ManagedObjectContext.h"
#include "SharedCore/Model/Tracking/Folder.h"
#include "SharedCore/Model/Tracking/Session.h"
#include "SharedCore/Model/Tracking/Task.h"
#include "tests/support/TemporaryDirectory.h"

namespace kestrona::testing {

class ModelStore {
 public:
  ModelStore();

  // A new object of entityName in context, as its class.
  template <typename Class>
  std::shared_ptr<Class> insert(std::string_view entityName) {
    return std::dynamic_pointer_cast<Class>(context->insertNewObject(entityName));
  }

  TemporaryDirectory directory;
  std::shared_ptr<PersistentStoreCoordinator> coordinator;
  std::shared_ptr<ManagedObjectContext> context;
};

std::shared_ptr<Folder> makeFolder(ModelStore& store, const std::string& name,
                                   const std::shared_ptr<Node>& parent = nullptr);
std::shared_ptr<Task> makeTask(ModelStore& store, const std::string& name,
                               const std::shared_ptr<Node>& parent = nullptr);
std::shared_ptr<Session> makeSession(ModelStore& store, const std::shared_ptr<Task>& task, double begin,
                                     std::optional<double> end);

}  // namespace kestrona::testing
