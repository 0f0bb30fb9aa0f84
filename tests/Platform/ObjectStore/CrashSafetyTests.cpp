#include <gtest/gtest.h>

#include <csignal>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/Platform/ObjectStore/StoreTestSupport.h"

namespace kestrona {
namespace {

constexpr int kSessionsPerSave = 20;

// Saves batches of sessions, numbered 1, 2, ... in "sequence", and reports
// each committed number on fd, until killed.
[[noreturn]] void saveForever(const std::filesystem::path& url, int fd) {
  try {
    auto coordinator =
        PersistentStoreCoordinator::make(ManagedObjectModel::loadNamed("Tracker", testing::modelDirectory()));
    coordinator->addPersistentStore(url);
    auto context = ManagedObjectContext::make(ManagedObjectContextConcurrencyType::privateQueueConcurrencyType);
    context->setPersistentStoreCoordinator(coordinator);
    auto task = testing::makeTask(*context, "Crash");
    for (std::int64_t sequence = 1;; ++sequence) {
      for (int i = 0; i < kSessionsPerSave; ++i) {
        auto session = testing::makeSession(*context, task, static_cast<double>(sequence), std::nullopt, 1);
        session->setValue(sequence, "sequence");
      }
      context->save();
      context->reset();
      task = context->existingObjectWithID(task->objectID());
      if (write(fd, &sequence, sizeof sequence) != static_cast<ssize_t>(sizeof sequence)) _exit(3);
    }
  } catch (...) {
    _exit(2);
  }
}

TEST(CrashSafety, AProcessKilledWhileSavingLeavesOnlyWholeSaves) {
  testing::TemporaryDirectory directory;
  auto url = directory.path() / "Store.sqlite";
  ValueTransformer::setValueTransformer(std::make_shared<testing::WordListTransformer>(), "WordListTransformer");
  int fds[2];
  ASSERT_EQ(pipe(fds), 0);
  pid_t child = fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    close(fds[0]);
    saveForever(url, fds[1]);
  }
  close(fds[1]);
  std::int64_t reported = 0;
  while (reported < 40) {
    ASSERT_EQ(read(fds[0], &reported, sizeof reported), static_cast<ssize_t>(sizeof reported))
        << "the saving process ended early";
  }
  kill(child, SIGKILL);
  int status = 0;
  waitpid(child, &status, 0);
  close(fds[0]);
  ASSERT_TRUE(WIFSIGNALED(status));

  auto coordinator = PersistentStoreCoordinator::make(ManagedObjectModel::loadNamed("Tracker", testing::modelDirectory()));
  coordinator->addPersistentStore(url);
  auto context = ManagedObjectContext::make(ManagedObjectContextConcurrencyType::privateQueueConcurrencyType);
  context->setPersistentStoreCoordinator(coordinator);
  FetchRequest request("Session");
  request.resultType = FetchRequestResultType::dictionaryResultType;
  request.propertiesToFetch = {std::string("sequence"),
                               ExpressionDescription{"count",
                                                     Expression::expressionForFunction(
                                                         "count:", {Expression::expressionForKeyPath("sequence")}),
                                                     AttributeType::integer64AttributeType}};
  request.propertiesToGroupBy = {"sequence"};
  request.sortDescriptors = {{"sequence", true}};
  auto groups = context->fetchDictionaries(request);
  // Every reported save is there, whole; a save under way when the process
  // died is there whole or not at all.
  ASSERT_GE(groups.size(), static_cast<std::size_t>(reported));
  for (std::size_t i = 0; i < groups.size(); ++i) {
    EXPECT_EQ(groups[i].at("sequence"), Value(static_cast<std::int64_t>(i + 1)));
    EXPECT_EQ(groups[i].at("count"), Value(kSessionsPerSave)) << "save " << i + 1;
  }
  auto task = context->fetch(FetchRequest("Task"));
  ASSERT_EQ(task.size(), 1u);
  testing::makeSession(*context, task.front(), 0, 1, 1);
  EXPECT_NO_THROW(context->save());
}

}  // namespace
}  // namespace kestrona
