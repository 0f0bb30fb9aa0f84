#include "Platform/UndoManager/UndoManager.h"

#include <gtest/gtest.h>

#include <random>
#include <stdexcept>

#include "Platform/Notifications/NotificationCenter.h"
#include "Platform/RunLoop/Async.h"
#include "Platform/RunLoop/MainLoop.h"

namespace kestrona {
namespace {

// A document of numbers whose every edit registers its inverse, as real
// users of the manager do; removing checks that edits are undone in reverse.
class UndoManagerTest : public ::testing::Test {
 protected:
  UndoManagerTest() {
    manager.setGroupsByEvent(false);
    token = center.addObserver(std::nullopt, &manager, [this](const Notification& n) { heard.push_back(n.name); });
  }
  void add(int n) {
    document.push_back(n);
    manager.registerUndo(this, [this, n] { remove(n); });
  }
  void remove(int n) {
    ASSERT_FALSE(document.empty());
    EXPECT_EQ(document.back(), n);
    document.pop_back();
    manager.registerUndo(this, [this, n] { add(n); });
  }
  void edit(std::initializer_list<int> numbers, const std::string& name) {
    manager.beginUndoGrouping();
    for (int n : numbers) add(n);
    manager.setActionName(name);
    manager.endUndoGrouping();
  }

  MainLoop loop;
  NotificationCenter center;
  UndoManager manager{loop, center};
  std::vector<int> document;
  ObserverToken token;
  std::vector<std::string> heard;
};

// Random edits, undos and redos against the plain model of a history: a list
// of states, a cursor, and at most `levels` steps either way of it.
TEST_F(UndoManagerTest, RandomHistoryAgreesWithAListOfStates) {
  constexpr int kLevels = 5;
  manager.setLevelsOfUndo(kLevels);
  std::vector<std::vector<int>> states{{}};
  std::vector<std::string> names{""};
  std::size_t cursor = 0;
  std::mt19937 random(7);
  for (int round = 0; round < 400; ++round) {
    const int choice = static_cast<int>(random() % 5);
    if (choice < 2) {
      const std::string name = "Edit " + std::to_string(round);
      manager.beginUndoGrouping();
      add(round);
      if (choice == 1) {  // a nested group joins the outer one
        manager.beginUndoGrouping();
        add(-round);
        manager.endUndoGrouping();
      }
      manager.setActionName(name);
      manager.endUndoGrouping();
      states.resize(cursor + 1);
      names.resize(cursor + 1);
      states.push_back(document);
      names.push_back(name);
      if (++cursor > kLevels) {
        states.erase(states.begin());
        names.erase(names.begin());
        --cursor;
      }
    } else if (choice < 4) {
      EXPECT_EQ(manager.undo(), cursor > 0);
      if (cursor > 0) --cursor;
    } else {
      const bool redoable = cursor + 1 < states.size();
      EXPECT_EQ(manager.redo(), redoable);
      if (redoable) ++cursor;
    }
    ASSERT_EQ(document, states[cursor]) << "round " << round;
    EXPECT_EQ(manager.canUndo(), cursor > 0);
    EXPECT_EQ(manager.canRedo(), cursor + 1 < states.size());
    EXPECT_EQ(manager.undoActionName(), cursor > 0 ? names[cursor] : "");
    EXPECT_EQ(manager.redoActionName(), cursor + 1 < states.size() ? names[cursor + 1] : "");
  }
}

TEST_F(UndoManagerTest, GroupingRulesAndTheNotificationsOfAnUndo) {
  manager.beginUndoGrouping();
  manager.endUndoGrouping();
  EXPECT_FALSE(manager.canUndo());  // an empty group is no step
  edit({1, 2}, "Add");
  manager.beginUndoGrouping();
  EXPECT_FALSE(manager.undo());  // refused while a group is open
  manager.endUndoGrouping();
  manager.setActionName("Renamed");  // no group open: names the top step
  EXPECT_EQ(manager.undoActionName(), "Renamed");

  heard.clear();
  EXPECT_TRUE(manager.undo());
  EXPECT_EQ(heard, (std::vector<std::string>{std::string(NSUndoManagerCheckpointNotification),
                                             std::string(NSUndoManagerWillUndoChangeNotification),
                                             std::string(NSUndoManagerDidUndoChangeNotification)}));
  EXPECT_EQ(manager.redoActionName(), "Renamed");
}

TEST_F(UndoManagerTest, GroupsByEventMakeOnePassOneStep) {
  manager.setGroupsByEvent(true);
  add(1);
  add(2);
  EXPECT_EQ(manager.groupingLevel(), 1);
  loop.poll();
  EXPECT_EQ(manager.groupingLevel(), 0);
  add(3);
  EXPECT_TRUE(manager.canUndo());
  // undo() closes the open group of this pass first, and takes it alone.
  EXPECT_TRUE(manager.undo());
  EXPECT_EQ(document, (std::vector<int>{1, 2}));
  EXPECT_TRUE(manager.undo());
  EXPECT_TRUE(document.empty());
  loop.poll();
  EXPECT_EQ(manager.groupingLevel(), 0);
}

TEST_F(UndoManagerTest, RemovalByTargetKeepsOtherTargetsSteps) {
  int other = 0;
  int otherUndone = 0;
  manager.beginUndoGrouping();
  add(1);
  manager.registerUndo(&other, [&] { ++otherUndone; });
  manager.endUndoGrouping();
  edit({2}, "Mine only");
  manager.removeAllActionsWithTarget(this);
  EXPECT_EQ(manager.undoActionName(), "");  // the step of this target alone is gone
  EXPECT_TRUE(manager.undo());
  EXPECT_EQ(otherUndone, 1);
  EXPECT_EQ(document, (std::vector<int>{1, 2}));
  EXPECT_FALSE(manager.canUndo());

  edit({3}, "Add");
  manager.beginUndoGrouping();
  add(4);
  manager.removeAllActions();
  EXPECT_EQ(manager.groupingLevel(), 0);
  EXPECT_FALSE(manager.canUndo());
  EXPECT_FALSE(manager.canRedo());
}

// Remainders: each waits for the loop once, then records itself, or fails.
asio::awaitable<void> remainder(std::vector<std::string>* done, std::string what, bool fails) {
  auto executor = co_await asio::this_coro::executor;
  co_await asio::post(executor, asio::use_awaitable);
  if (fails) throw std::runtime_error(what + " failed");
  done->push_back(what);
}

TEST_F(UndoManagerTest, AsynchronousStepsChangeTheStacksAtOnceAndApplyInOrder) {
  std::vector<std::string> done;
  std::string failedName;
  manager.setFailureHandler([&](std::exception_ptr, const std::string& name, bool undoing) {
    EXPECT_TRUE(undoing);
    failedName = name;
  });
  // Each step files its inverse synchronously, then applies later.
  std::function<void(int, bool)> step = [&](int n, bool undoing) {
    manager.registerAsyncUndo(this, [&, n, undoing] {
      step(n, !undoing);
      return remainder(&done, (undoing ? "undo " : "redo ") + std::to_string(n), n == 3 && undoing);
    });
  };
  for (int n : {1, 2, 3}) {
    manager.beginUndoGrouping();
    step(n, true);
    manager.setActionName("Step " + std::to_string(n));
    manager.endUndoGrouping();
  }
  // Three presses before anything has applied.
  EXPECT_TRUE(manager.undo());
  EXPECT_TRUE(manager.undo());
  EXPECT_TRUE(manager.redo());
  EXPECT_EQ(manager.undoActionName(), "Step 2");
  EXPECT_EQ(manager.redoActionName(), "Step 3");
  EXPECT_TRUE(done.empty());
  EXPECT_TRUE(manager.hasPendingChanges());
  loop.poll();
  while (manager.hasPendingChanges()) loop.poll();
  EXPECT_EQ(done, (std::vector<std::string>{"undo 2", "redo 2"}));
  // Undoing step 3 failed: its redo is gone, the other steps stay.
  EXPECT_EQ(failedName, "Step 3");
  EXPECT_FALSE(manager.canRedo());
  EXPECT_EQ(manager.undoActionName(), "Step 2");
}

}  // namespace
}  // namespace kestrona
