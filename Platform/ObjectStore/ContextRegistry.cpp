#include "Platform/ObjectStore/ContextRegistry.h"

#include <algorithm>

namespace kestrona {

void ContextRegistry::add(const ManagedObjectContext* context, std::weak_ptr<ManagedObjectContext> reference) {
  std::lock_guard lock(mutex_);
  for (auto& [registered, weak] : contexts_) {
    if (registered == context) {
      weak = std::move(reference);
      return;
    }
  }
  contexts_.emplace_back(context, std::move(reference));
}

void ContextRegistry::remove(const ManagedObjectContext* context) {
  std::lock_guard lock(mutex_);
  std::erase_if(contexts_, [context](const auto& entry) { return entry.first == context; });
}

std::vector<std::shared_ptr<ManagedObjectContext>> ContextRegistry::contexts() const {
  std::lock_guard lock(mutex_);
  std::vector<std::shared_ptr<ManagedObjectContext>> result;
  result.reserve(contexts_.size());
  for (const auto& [registered, weak] : contexts_) {
    if (auto context = weak.lock()) result.push_back(std::move(context));
  }
  return result;
}

}  // namespace kestrona
