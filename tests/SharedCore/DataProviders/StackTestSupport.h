// A store stack over the test models in a temporary folder, and a write that
// waits on the main loop for its completion.
#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include "Platform/Bundle/Bundle.h"
#include "SharedCore/DataProviders/CoreDataStack.h"
#include "tests/support/RunLoopDriving.h"
#include "tests/support/TemporaryDirectory.h"

namespace kestrona::testing {

// The folder of the test models, as a bundle: "StackTest" (ALEntry without
// identifier) and "StackTestSyncedLog" (ALEntry with one).
Bundle modelBundle();

class TestStack {
 public:
  explicit TestStack(const std::string& modelName = "StackTest");

  std::filesystem::path storeDirectory() const { return directory.path() / "Store"; }

  TemporaryDirectory directory;
  // Keeps the colour rotation's user defaults out of the home folder.
  ScopedEnvironment environment;
  std::unique_ptr<CoreDataStack> stack;
};

// Runs block as an untracked write and waits on the main loop for its
// completion; returns the completion's error.
std::exception_ptr writeAndWait(CoreDataStack& stack, std::function<void(ManagedObjectContext&)> block);

std::shared_ptr<ManagedObject> insertTask(ManagedObjectContext& context, const std::string& name);
// The only object of entityName in context; fails the test when there is
// not exactly one.
std::shared_ptr<ManagedObject> onlyObject(ManagedObjectContext& context, const std::string& entityName);

}  // namespace kestrona::testing
