#include <gtest/gtest.h>

#include <thread>

#include "Platform/RunLoop/MainLoop.h"
#include "tests/Platform/ObjectStore/StoreTestSupport.h"

namespace kestrona {
namespace {

TEST(MainQueueContext, RunsBlocksOnTheMainLoopAndAtOnceWhenAlreadyThere) {
  testing::TestStore store;
  MainLoop loop;
  auto context = ManagedObjectContext::make(ManagedObjectContextConcurrencyType::mainQueueConcurrencyType,
                                            std::make_unique<MainContextQueue>(loop));
  context->setPersistentStoreCoordinator(store.coordinator);
  EXPECT_EQ(context->concurrencyType(), ManagedObjectContextConcurrencyType::mainQueueConcurrencyType);

  // On the loop's own thread the block runs inline, without the loop running.
  bool ranInline = false;
  context->performAndWait([&] { ranInline = true; });
  EXPECT_TRUE(ranInline);

  // From another thread it waits for the loop to run it on the main thread.
  std::thread::id ranOn;
  std::size_t count = 0;
  std::thread worker([&] {
    context->performAndWait([&] {
      ranOn = std::this_thread::get_id();
      testing::makeTask(*context, "From a worker");
      count = context->insertedObjects().size();
    });
    loop.stop();
  });
  loop.run();
  worker.join();
  EXPECT_EQ(ranOn, std::this_thread::get_id());
  EXPECT_EQ(count, 1u);
}

}  // namespace
}  // namespace kestrona
