#include "SharedCore/DataProviders/CoreDataStack.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "Platform/Foundation/FatalError.h"
#include "SharedCore/DataProviders/DetachedError.h"
#include "SharedCore/Model/TrackingModel.h"
#include "SharedCore/Support/Colors/ColorSetManager.h"
#include "SharedCore/Support/Logging/LoggerExtension.h"

namespace kestrona {

namespace {

constexpr std::string_view kModelExtension = "kmodel";
constexpr std::string_view kResourceBundleName = "SharedCore.bundle";

std::optional<Bundle> bundleAt(const std::filesystem::path& path) {
  std::error_code error;
  if (!std::filesystem::is_directory(path, error)) return std::nullopt;
  return Bundle::fromPath(path);
}

// The file of the named resource in bundle, or none when there is none.
std::optional<std::filesystem::path> resourcePath(const Bundle& bundle, std::string_view name,
                                                  std::string_view extension) {
  std::filesystem::path path = bundle.bundleURL().filesystemPath() / (std::string(name) + "." + std::string(extension));
  std::error_code error;
  if (!std::filesystem::is_regular_file(path, error)) return std::nullopt;
  return path;
}

// A file-system failure in the form the store's callers know: the Cocoa
// domain with the path, and the POSIX error underneath.
Error fileSystemError(std::int64_t code, const std::filesystem::path& path, int posixCode) {
  auto underlying = std::make_shared<const Error>("NSPOSIXErrorDomain", posixCode, std::strerror(posixCode));
  return Error("NSCocoaErrorDomain", code,
               "The folder \"" + path.string() + "\" could not be used: " + std::strerror(posixCode),
               ErrorUserInfo{{"NSFilePath", path.string()}}, std::move(underlying));
}

constexpr std::int64_t kFileReadUnknownError = 256;
constexpr std::int64_t kFileWriteUnknownError = 512;
constexpr std::int64_t kFileWriteNoPermissionError = 513;

void appendQuoted(std::string& text, const std::string& value) {
  text += '"';
  text += value;
  text += '"';
}

// User info printed as a dictionary literal: ["NSFilePath": "/a", "n": 2];
// [:] when empty. Objects print by their kind only.
std::string describe(const ErrorUserInfo& userInfo) {
  if (userInfo.empty()) return "[:]";
  std::string text = "[";
  bool first = true;
  for (const auto& [key, value] : userInfo) {
    if (!first) text += ", ";
    first = false;
    appendQuoted(text, key);
    text += ": ";
    if (const auto* string = std::get_if<std::string>(&value)) {
      appendQuoted(text, *string);
    } else if (const auto* integer = std::get_if<std::int64_t>(&value)) {
      text += std::to_string(*integer);
    } else if (const auto* number = std::get_if<double>(&value)) {
      text += std::to_string(*number);
    } else if (const auto* strings = std::get_if<std::vector<std::string>>(&value)) {
      text += "[";
      for (std::size_t index = 0; index < strings->size(); ++index) {
        if (index > 0) text += ", ";
        appendQuoted(text, (*strings)[index]);
      }
      text += "]";
    } else {
      text += "<object>";
    }
  }
  return text + "]";
}

}  // namespace

Bundle sharedCoreResourceBundle() {
  const Bundle main = Bundle::main();
  if (auto inApplication = bundleAt(main.bundleURL().filesystemPath() / "Contents" / "Resources" /
                                    std::string(kResourceBundleName))) {
    return *inApplication;
  }
  std::error_code error;
  const std::filesystem::path executable = std::filesystem::read_symlink("/proc/self/exe", error);
  if (!error) {
    if (auto besideExecutable = bundleAt(executable.parent_path() / std::string(kResourceBundleName))) {
      return *besideExecutable;
    }
  }
  return main;
}

CoreDataStack::CoreDataStack(std::string modelName, URL storeDirectoryURL, std::string storeName,
                             std::optional<Bundle> modelBundle)
    : queue_(std::make_unique<SerialQueue>("CoreDataStack.queue")),
      modelName_(std::move(modelName)),
      storeDirectoryURL_(std::move(storeDirectoryURL)),
      storeName_(std::move(storeName)),
      modelBundle_(modelBundle ? std::move(*modelBundle) : sharedCoreResourceBundle()),
      nodeCollaborators_(std::make_shared<NodeCollaborators>(std::make_shared<ColorSetManager>())) {
  // The contexts look the classes up when they make their first objects.
  registerTrackingModelClasses();
  setupCoreDataStack();
}

CoreDataStack::~CoreDataStack() {
  // Writes still queued use the coordinator and the collaborators: let them
  // finish while both are here.
  queue_->shutdown(SerialQueue::Shutdown::drain);
}

const Logger& CoreDataStack::log() const {
  std::call_once(logOnce_, [this] { log_.emplace("Data"); });
  return *log_;
}

const std::shared_ptr<TrackedManagedObjectContext>& CoreDataStack::viewContext() {
  if (!viewContext_) {
    auto context = TrackedManagedObjectContext::make(ManagedObjectContextConcurrencyType::mainQueueConcurrencyType);
    context->setPersistentStoreCoordinator(persistentStoreCoordinator());
    context->setMergePolicy(MergePolicyType::mergeByPropertyObjectTrumpMergePolicyType);
    context->setAutomaticallyMergesChangesFromParent(true);
    setNodeCollaborators(*context, nodeCollaborators_);
    viewContext_ = std::move(context);
  }
  return viewContext_;
}

const std::shared_ptr<const ManagedObjectModel>& CoreDataStack::managedObjectModel() {
  if (!managedObjectModel_) {
    const std::optional<std::filesystem::path> modelURL = resourcePath(modelBundle_, modelName_, kModelExtension);
    if (!modelURL) {
      logging::error(log(), "Unable to find data model", logging::Data{{"modelName", modelName_}});
      fatalError("[CoreDataManager] unable to find data model");
    }
    try {
      managedObjectModel_ = ManagedObjectModel::fromURL(*modelURL);
    } catch (const std::exception&) {
      logging::error(log(), "Unable to load data model", logging::Data{{"modelUrl", modelURL->string()}});
      fatalError("[CoreDataStack] Unable to Load Data Model");
    }
  }
  return managedObjectModel_;
}

const std::shared_ptr<PersistentStoreCoordinator>& CoreDataStack::persistentStoreCoordinator() {
  if (!persistentStoreCoordinator_) {
    persistentStoreCoordinator_ = PersistentStoreCoordinator::make(managedObjectModel());
  }
  return persistentStoreCoordinator_;
}

void CoreDataStack::setupCoreDataStack() {
  const std::shared_ptr<PersistentStoreCoordinator> coordinator = viewContext()->persistentStoreCoordinator();
  if (!coordinator) {
    logging::error(log(), "Unable to set up Core Data Stack");
    fatalError("[CoreDataManager] Unable to Set Up Core Data Stack");
  }
  addPersistentStore(*coordinator);
}

void CoreDataStack::addPersistentStore(PersistentStoreCoordinator& coordinator) {
  const std::filesystem::path directory = storeDirectoryURL_.filesystemPath();
  std::optional<Error> failure;

  struct stat status {};
  if (::stat(directory.c_str(), &status) == 0) {
    if (!S_ISDIR(status.st_mode)) {
      const std::string reason = "Expected a folder to store application data, found a file " +
                                 storeDirectoryURL_.path() + ".";
      logging::error(log(), "Error on adding the persistent store", logging::Data{{"failureReason", reason}});
      fatalError("[CoreDataManager] Unsresolved error: " + reason);
    }
  } else if (const int readError = errno; readError == ENOENT) {
    std::error_code created;
    std::filesystem::create_directories(directory, created);
    if (created) {
      const bool denied = created == std::errc::permission_denied || created == std::errc::operation_not_permitted;
      failure = fileSystemError(denied ? kFileWriteNoPermissionError : kFileWriteUnknownError, directory,
                                created.value());
    }
  } else {
    failure = fileSystemError(kFileReadUnknownError, directory, readError);
  }

  if (!failure) {
    try {
      const PersistentStoreOptions options{.migratePersistentStoresAutomatically = true,
                                           .inferMappingModelAutomatically = true};
      coordinator.addPersistentStore(directory / storeName_, options);
    } catch (const Error& error) {
      failure = error;
    } catch (const std::exception& error) {
      failure = Error("std::exception", 0, error.what());
    }
  }
  if (failure) {
    logging::error(log(), "Error on adding the persistent store", logging::Data{{"error", *failure}});
    fatalError("[CoreDataManager] Unresolved error: " + std::string(failure->what()) + ", " +
               describe(failure->userInfo()));
  }
}

std::shared_ptr<TrackedManagedObjectContext> CoreDataStack::privateContext() {
  auto context = TrackedManagedObjectContext::make(ManagedObjectContextConcurrencyType::privateQueueConcurrencyType);
  context->setPersistentStoreCoordinator(persistentStoreCoordinator());
  context->setAutomaticallyMergesChangesFromParent(true);
  setNodeCollaborators(*context, nodeCollaborators_);
  return context;
}

std::shared_ptr<ManagedObjectContext> CoreDataStack::childContext() {
  auto context = ManagedObjectContext::make(ManagedObjectContextConcurrencyType::mainQueueConcurrencyType);
  context->setParentContext(viewContext());
  context->setMergePolicy(MergePolicyType::mergeByPropertyStoreTrumpMergePolicyType);
  context->setAutomaticallyMergesChangesFromParent(true);
  setNodeCollaborators(*context, nodeCollaborators_);
  return context;
}

void CoreDataStack::enqueueUntrackedWrite(std::function<void(ManagedObjectContext&)> body,
                                          std::function<void(std::exception_ptr)> finish) {
  queue_->async([this, body = std::move(body), finish = std::move(finish)] {
    std::shared_ptr<TrackedManagedObjectContext> context = privateContext();
    std::exception_ptr failure;
    context->performAndWait([&] {
      try {
        body(*context);
        if (context->hasChanges()) context->save();
      } catch (...) {
        failure = writeFailure(std::current_exception());
        context->rollback();
      }
    });
    // The context goes before the completion runs: what the completion gets
    // must stand without it.
    context.reset();
    finish(failure);
  });
}

std::exception_ptr CoreDataStack::writeFailure(std::exception_ptr raised) const {
  try {
    std::rethrow_exception(raised);
  } catch (const Error& error) {
    logging::error(log(), "Error on executing write operation", [&error] {
      return logging::Data{{"error", error.localizedDescription()}, {"domain", error.domain()}, {"code", error.code()}};
    });
    if (!holdsManagedObjects(error)) return raised;
    return std::make_exception_ptr(detachedFromManagedObjects(error));
  } catch (const std::exception& error) {
    return writeFailure(std::make_exception_ptr(Error("std::exception", 0, error.what())));
  } catch (...) {
    return writeFailure(std::make_exception_ptr(Error("std::exception", 0, "unknown exception")));
  }
}

}  // namespace kestrona
