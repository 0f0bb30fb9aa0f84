// The store stack: one SQLite store behind one coordinator, one view context
// on the main loop for every reader, and a fresh private context for each
// write and each background calculation.
//
// Contexts it hands out, all merging other contexts' saves by themselves
// (automaticallyMergesChangesFromParent) and carrying nodeCollaborators():
// - viewContext(): one TrackedManagedObjectContext on MainLoop::main(),
//   parent the coordinator, merge policy object trump (its unsaved values
//   win property by property);
// - privateContext(): a new TrackedManagedObjectContext on a private queue,
//   parent the coordinator, default merge policy (a conflict fails the
//   save); a sibling of the view context, never its child;
// - childContext(): a new plain context on the main loop whose parent is the
//   view context, merge policy store trump; for the application only.
//
// Start-up: the constructor builds the view context (which builds the
// coordinator, which loads the model) and opens the store. Every failure
// there ends the process, after a log line of its own (logger "Data"):
// - "[CoreDataManager] unable to find data model": no "<modelName>.kmodel"
//   in the model bundle;
// - "[CoreDataStack] Unable to Load Data Model": the model file is damaged;
// - "[CoreDataManager] Unable to Set Up Core Data Stack": the view context
//   has no coordinator;
// - "[CoreDataManager] Unsresolved error: Expected a folder to store
//   application data, found a file <path>.": the store folder is a file (the
//   misspelling is the message's);
// - "[CoreDataManager] Unresolved error: <error>, <user info>": the store
//   folder cannot be read or made, or the store cannot be opened or
//   migrated. A store folder that does not exist is made with its parents;
//   the store opens with automatic, inferred migration.
// After the constructor the store is open; nothing closes it before the
// stack goes.
//
// The model bundle: a folder whose "<modelName>.kmodel" is the model. When
// none is given it is the resource bundle of the shared core,
// sharedCoreResourceBundle().
//
// Writes: executeUntrackedWriteOperation(block, completion) queues the block
// on queue() and returns at once. On the queue's thread it makes a private
// context, runs the block in it and saves when the context has changes (a
// block that changes nothing saves nothing, so no did-save is posted). A
// failure of block or save is logged ("Error on executing write operation",
// with "error", "domain" and "code"), detached from managed objects
// (DetachedError.h) and the context rolled back. The completion then runs on
// the queue's thread with the error (null on success) and the block's value
// (none on failure). Untracked: no save observers, no undo capture.
// The block's value: a block returning std::optional<T> gives T, none when
// it returns std::nullopt; a block returning T always gives a T; a block
// returning nothing gives std::monostate, never with a value. The error is
// a kestrona::Error: the error raised, of its own class, when it held no
// managed objects; else the detached copy (a plain Error with the same
// domain and code). Other exceptions become an Error of the domain
// "std::exception" with their what(). The coroutine form is in
// UntrackedWriteOperation.h.
//
// Threading: construct on the main thread (the view context belongs to
// MainLoop::main()). Lazy members take no lock: they are built inside the
// constructor, before anyone else holds the stack, and only read afterwards.
// privateContext(), childContext() and executeUntrackedWriteOperation() may
// be called from any thread. The destructor drains the queue (waits for
// queued writes) before the contexts and the coordinator go; it must not run
// on the queue. A completion must not throw: that ends the process.
#pragma once

#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <variant>

#include "Platform/Bundle/Bundle.h"
#include "Platform/Logging/Logger.h"
#include "Platform/ObjectStore/ManagedObjectContext.h"
#include "Platform/ObjectStore/ManagedObjectModel.h"
#include "Platform/ObjectStore/PersistentStoreCoordinator.h"
#include "Platform/RunLoop/SerialQueue.h"
#include "Platform/URL/URL.h"
#include "SharedCore/DataProviders/TrackedManagedObjectContext.h"
#include "SharedCore/Model/NodeCollaborators.h"

namespace kestrona {

namespace detail {

template <typename Result>
struct WriteOperationValueOf {
  using type = Result;
};
template <typename T>
struct WriteOperationValueOf<std::optional<T>> {
  using type = T;
};
template <>
struct WriteOperationValueOf<void> {
  using type = std::monostate;
};

}  // namespace detail

// The value type of a write block (see the header comment).
template <typename Block>
using WriteOperationValue =
    typename detail::WriteOperationValueOf<std::invoke_result_t<Block&, ManagedObjectContext&>>::type;

// Called with (error, value): error null and perhaps a value on success; an
// error and no value on failure.
template <typename T>
using WriteOperationCompletion = std::function<void(std::exception_ptr, std::optional<T>)>;

// The resource bundle of the shared core: "SharedCore.bundle" inside the
// application bundle's "Contents/Resources", else beside the running
// executable (a build tree); the main bundle when neither exists.
Bundle sharedCoreResourceBundle();

class CoreDataStack {
 public:
  CoreDataStack(std::string modelName, URL storeDirectoryURL, std::string storeName,
                std::optional<Bundle> modelBundle = std::nullopt);
  ~CoreDataStack();
  CoreDataStack(const CoreDataStack&) = delete;
  CoreDataStack& operator=(const CoreDataStack&) = delete;

  // The serial write queue: one operation at a time. It has no quality of
  // service: a thread of its own at the process's priority.
  SerialQueue& queue() noexcept { return *queue_; }
  const std::string& modelName() const noexcept { return modelName_; }
  const URL& storeDirectoryURL() const noexcept { return storeDirectoryURL_; }
  const std::string& storeName() const noexcept { return storeName_; }
  const Bundle& modelBundle() const noexcept { return modelBundle_; }
  // Logger "Data", made on first use (thread-safe).
  const Logger& log() const;
  const std::shared_ptr<NodeCollaborators>& nodeCollaborators() const noexcept { return nodeCollaborators_; }
  const std::shared_ptr<TrackedManagedObjectContext>& viewContext();
  const std::shared_ptr<const ManagedObjectModel>& managedObjectModel();
  const std::shared_ptr<PersistentStoreCoordinator>& persistentStoreCoordinator();

  std::shared_ptr<TrackedManagedObjectContext> privateContext();
  std::shared_ptr<ManagedObjectContext> childContext();

  template <typename Block>
  void executeUntrackedWriteOperation(Block block,
                                      WriteOperationCompletion<WriteOperationValue<Block>> completion = nullptr);

 private:
  void setupCoreDataStack();
  void addPersistentStore(PersistentStoreCoordinator& coordinator);
  // Queues body in a private context; finish gets the detached failure.
  void enqueueUntrackedWrite(std::function<void(ManagedObjectContext&)> body,
                             std::function<void(std::exception_ptr)> finish);
  // The failure of a write as it leaves the queue: logged and detached.
  std::exception_ptr writeFailure(std::exception_ptr raised) const;

  std::unique_ptr<SerialQueue> queue_;
  std::string modelName_;
  URL storeDirectoryURL_;
  std::string storeName_;
  Bundle modelBundle_;
  mutable std::once_flag logOnce_;
  mutable std::optional<Logger> log_;
  std::shared_ptr<NodeCollaborators> nodeCollaborators_;
  std::shared_ptr<TrackedManagedObjectContext> viewContext_;
  std::shared_ptr<const ManagedObjectModel> managedObjectModel_;
  std::shared_ptr<PersistentStoreCoordinator> persistentStoreCoordinator_;
};

template <typename Block>
void CoreDataStack::executeUntrackedWriteOperation(Block block,
                                                   WriteOperationCompletion<WriteOperationValue<Block>> completion) {
  using BlockValue = WriteOperationValue<Block>;
  using Result = std::invoke_result_t<Block&, ManagedObjectContext&>;
  // Shared, so that move-only blocks and values fit into std::function.
  auto sharedBlock = std::make_shared<Block>(std::move(block));
  auto value = std::make_shared<std::optional<BlockValue>>();
  enqueueUntrackedWrite(
      [sharedBlock, value](ManagedObjectContext& context) {
        if constexpr (std::is_void_v<Result>) {
          (*sharedBlock)(context);
        } else {
          *value = (*sharedBlock)(context);
        }
      },
      [value, completion = std::move(completion)](std::exception_ptr error) {
        if (!completion) return;
        if (error) {
          completion(error, std::nullopt);
        } else {
          completion(nullptr, std::move(*value));
        }
      });
}

}  // namespace kestrona
