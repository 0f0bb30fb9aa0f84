#include "tests/SharedCore/DataProviders/StackTestSupport.h"

#include <gtest/gtest.h>

namespace kestrona::testing {

Bundle modelBundle() { return Bundle::load(std::filesystem::path(KESTRONA_STACK_TEST_MODELS)); }

TestStack::TestStack(const std::string& modelName) {
  environment.set("XDG_CONFIG_HOME", (directory.path() / "config").string());
  stack = std::make_unique<CoreDataStack>(modelName, URL::fileURLWithPath(storeDirectory(), true), "Store.sqlite",
                                          modelBundle());
}

std::exception_ptr writeAndWait(CoreDataStack& stack, std::function<void(ManagedObjectContext&)> block) {
  LoopSignal waiter;
  std::exception_ptr failure;
  stack.executeUntrackedWriteOperation(std::move(block),
                                       [&](std::exception_ptr error, std::optional<std::monostate>) {
                                         failure = error;
                                         waiter.signal();
                                       });
  waiter.wait();
  return failure;
}

std::shared_ptr<ManagedObject> insertTask(ManagedObjectContext& context, const std::string& name) {
  auto task = context.insertNewObject("Task");
  task->setValue(name, "name");
  return task;
}

std::shared_ptr<ManagedObject> onlyObject(ManagedObjectContext& context, const std::string& entityName) {
  auto objects = context.fetch(FetchRequest(entityName));
  EXPECT_EQ(objects.size(), 1u) << entityName;
  return objects.empty() ? nullptr : objects.front();
}

}  // namespace kestrona::testing
