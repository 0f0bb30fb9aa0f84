#include "SharedCore/Model/Tracking/Folder.h"

#include <vector>

#include "SharedCore/Model/Tracking/Task.h"

namespace kestrona {

std::unordered_set<std::shared_ptr<Node>> Folder::allChildren() {
  std::unordered_set<std::shared_ptr<Node>> result;
  std::unordered_set<const Folder*> walked{this};
  std::vector<std::shared_ptr<Node>> pending = children();
  while (!pending.empty()) {
    auto node = std::move(pending.back());
    pending.pop_back();
    if (auto folder = std::dynamic_pointer_cast<Folder>(node); folder && walked.insert(folder.get()).second) {
      for (auto& child : folder->children()) pending.push_back(std::move(child));
    }
    if (node.get() != this) result.insert(std::move(node));
  }
  return result;
}

std::unordered_set<std::shared_ptr<Task>> Folder::allTasks() {
  std::unordered_set<std::shared_ptr<Task>> result;
  for (const auto& node : allChildren()) {
    if (auto task = std::dynamic_pointer_cast<Task>(node)) result.insert(std::move(task));
  }
  return result;
}

}  // namespace kestrona
