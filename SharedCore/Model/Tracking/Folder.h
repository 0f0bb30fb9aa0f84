// A folder: a node that holds tasks and folders (entity "Folder", under
// "Node"); it adds no attribute. Deleting a folder deletes everything below
// it, with the tasks' time entries and rule sets.
//
// allTasks() and allChildren() walk the whole subtree, never including the
// folder itself; a folder met twice (damaged data with a loop) is walked
// once.
//
// Threading: only on the context's queue.
#pragma once

#include <memory>
#include <string_view>
#include <unordered_set>

#include "SharedCore/Model/Tracking/Node.h"

namespace kestrona {

class Task;

class Folder : public Node {
 public:
  explicit Folder(Construction construction) : Node(std::move(construction)) {}

  static std::string_view entityName() { return "Folder"; }
  static FetchRequest fetchRequest() { return FetchRequest("Folder"); }

  // Every task below this folder, at any depth.
  std::unordered_set<std::shared_ptr<Task>> allTasks();
  // Every node below this folder, at any depth.
  std::unordered_set<std::shared_ptr<Node>> allChildren();
};

}  // namespace kestrona
