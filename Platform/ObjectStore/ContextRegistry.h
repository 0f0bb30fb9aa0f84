// The contexts whose parent is one coordinator, held weakly, so that a save
// of one of them reaches the others (automatic merging).
//
// A context registers itself when it is given the coordinator and
// unregisters in its destructor or when it is given a parent context
// instead. Every member may be called from any thread; the registry has a
// lock of its own, apart from the store's.
#pragma once

#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace kestrona {

class ManagedObjectContext;

class ContextRegistry {
 public:
  // Registers context, or renews the reference of one registered before.
  void add(const ManagedObjectContext* context, std::weak_ptr<ManagedObjectContext> reference);
  void remove(const ManagedObjectContext* context);
  // The registered contexts still alive.
  std::vector<std::shared_ptr<ManagedObjectContext>> contexts() const;

 private:
  mutable std::mutex mutex_;
  std::vector<std::pair<const ManagedObjectContext*, std::weak_ptr<ManagedObjectContext>>> contexts_;
};

}  // namespace kestrona
