#include "Platform/UndoManager/UndoManager.h"

#include <algorithm>
#include <deque>
#include <optional>
#include <variant>
#include <vector>

#include "Platform/Foundation/FatalError.h"
#include "Platform/Logging/Logger.h"
#include "Platform/Notifications/NotificationCenter.h"
#include "Platform/RunLoop/Async.h"
#include "Platform/RunLoop/MainLoop.h"

namespace kestrona {
namespace {

struct Action {
  const void* target;
  std::variant<UndoManager::Handler, UndoManager::AsyncHandler> handler;
};

struct Group {
  std::uint64_t id = 0;
  std::string actionName;
  std::vector<Action> actions;
};

enum class Replay { none, undoing, redoing };

// A remainder waiting to run, with what a failure must undo: the step that
// the same undo() or redo() produced.
struct Remainder {
  asio::awaitable<void> work;
  std::uint64_t producedGroup;
  std::string actionName;
  bool undoing;
};

void logFailure(std::exception_ptr error, const std::string& actionName, bool undoing) {
  static const Logger logger("UndoManager");
  std::string description = "unknown error";
  try {
    std::rethrow_exception(error);
  } catch (const std::exception& exception) {
    description = exception.what();
  } catch (...) {
  }
  logger.log(Logger::Level::error, undoing ? "Undo failed" : "Redo failed",
             {{"action", actionName}, {"error", description}});
}

}  // namespace

struct UndoManager::State {
  State(MainLoop& mainLoop, NotificationCenter& notificationCenter) : loop(mainLoop), center(notificationCenter) {}

  MainLoop& loop;
  NotificationCenter& center;
  // Back is the top of each stack.
  std::deque<Group> undoStack;
  std::deque<Group> redoStack;
  // Innermost last. While replaying, the first is the replay's own group.
  std::vector<Group> openGroups;
  std::optional<std::uint64_t> eventGroup;
  bool groupsByEvent = true;
  int levels = 0;
  Replay replay = Replay::none;
  std::uint64_t nextGroupID = 1;
  std::deque<Remainder> remainders;
  bool runningRemainders = false;
  // False once the manager is gone: remainders still run, failures reach nobody.
  bool alive = true;
  FailureHandler failureHandler = logFailure;

  void post(std::string_view name) {
    if (alive) center.post(std::string(name), owner);
  }
  const void* owner = nullptr;

  void trim(std::deque<Group>& stack) const {
    while (levels > 0 && static_cast<int>(stack.size()) > levels) stack.pop_front();
  }
  void push(std::deque<Group>& stack, Group group) {
    if (group.actions.empty()) return;
    stack.push_back(std::move(group));
    trim(stack);
  }

  void begin(std::string actionName = {}) {
    openGroups.push_back(Group{nextGroupID++, std::move(actionName), {}});
    post(NSUndoManagerCheckpointNotification);
    post(NSUndoManagerDidOpenUndoGroupNotification);
  }

  void end() {
    precondition(!openGroups.empty(), "endUndoGrouping without an open group");
    precondition(replay == Replay::none || openGroups.size() > 1, "endUndoGrouping would close the group of an undo");
    post(NSUndoManagerCheckpointNotification);
    post(NSUndoManagerWillCloseUndoGroupNotification);
    Group group = std::move(openGroups.back());
    openGroups.pop_back();
    if (eventGroup == group.id) eventGroup.reset();
    if (openGroups.empty()) {
      push(undoStack, std::move(group));
    } else {
      Group& outer = openGroups.back();
      if (outer.actionName.empty()) outer.actionName = std::move(group.actionName);
      std::move(group.actions.begin(), group.actions.end(), std::back_inserter(outer.actions));
    }
    post(NSUndoManagerDidCloseUndoGroupNotification);
  }

  void registerAction(Action action) {
    if (openGroups.empty()) {
      precondition(groupsByEvent, "registering undo outside a group while groupsByEvent is off");
      begin();
      const std::uint64_t id = openGroups.back().id;
      eventGroup = id;
      std::weak_ptr<State> weak = self;
      loop.post([weak, id] {
        auto state = weak.lock();
        if (state && state->eventGroup == id && state->openGroups.size() == 1) state->end();
      });
    }
    // A new change makes what was undone unreachable; the inverses that
    // undo and redo file do not.
    if (replay == Replay::none) redoStack.clear();
    openGroups.back().actions.push_back(std::move(action));
  }

  bool replayTop(Replay kind) {
    if (eventGroup && openGroups.size() == 1) end();
    const bool undoing = kind == Replay::undoing;
    auto& source = undoing ? undoStack : redoStack;
    if (!openGroups.empty() || source.empty()) return false;
    post(NSUndoManagerCheckpointNotification);
    post(undoing ? NSUndoManagerWillUndoChangeNotification : NSUndoManagerWillRedoChangeNotification);
    Group step = std::move(source.back());
    source.pop_back();
    openGroups.push_back(Group{nextGroupID++, step.actionName, {}});
    const std::uint64_t produced = openGroups.front().id;
    replay = kind;
    std::vector<asio::awaitable<void>> started;
    auto finish = [&] {
      replay = Replay::none;
      Group response = std::move(openGroups.front());
      openGroups.clear();
      push(undoing ? redoStack : undoStack, std::move(response));
      for (auto& work : started) remainders.push_back({std::move(work), produced, step.actionName, undoing});
      runRemainders();
    };
    try {
      for (auto action = step.actions.rbegin(); action != step.actions.rend(); ++action) {
        if (auto* handler = std::get_if<Handler>(&action->handler)) {
          (*handler)();
        } else {
          started.push_back(std::get<AsyncHandler>(action->handler)());
        }
      }
    } catch (...) {
      finish();
      throw;
    }
    finish();
    post(undoing ? NSUndoManagerDidUndoChangeNotification : NSUndoManagerDidRedoChangeNotification);
    return true;
  }

  void runRemainders() {
    if (runningRemainders || remainders.empty()) return;
    runningRemainders = true;
    spawn(loop, drain(self.lock()));
  }

  static asio::awaitable<void> drain(std::shared_ptr<State> state) {
    while (!state->remainders.empty()) {
      Remainder next = std::move(state->remainders.front());
      state->remainders.pop_front();
      std::exception_ptr failure;
      try {
        co_await std::move(next.work);
      } catch (...) {
        failure = std::current_exception();
      }
      if (failure) state->remainderFailed(failure, next);
    }
    state->runningRemainders = false;
  }

  void remainderFailed(std::exception_ptr failure, const Remainder& remainder) {
    if (!alive) return;
    auto produced = [&](const Group& group) { return group.id == remainder.producedGroup; };
    std::erase_if(undoStack, produced);
    std::erase_if(redoStack, produced);
    post(NSUndoManagerCheckpointNotification);
    if (failureHandler) failureHandler(failure, remainder.actionName, remainder.undoing);
  }

  std::weak_ptr<State> self;
};

UndoManager::UndoManager() : UndoManager(MainLoop::main(), NotificationCenter::defaultCenter()) {}

UndoManager::UndoManager(MainLoop& loop, NotificationCenter& center)
    : state_(std::make_shared<State>(loop, center)) {
  state_->self = state_;
  state_->owner = this;
}

UndoManager::~UndoManager() { state_->alive = false; }

void UndoManager::beginUndoGrouping() { state_->begin(); }

void UndoManager::endUndoGrouping() { state_->end(); }

int UndoManager::groupingLevel() const noexcept { return static_cast<int>(state_->openGroups.size()); }

bool UndoManager::groupsByEvent() const noexcept { return state_->groupsByEvent; }

void UndoManager::setGroupsByEvent(bool groupsByEvent) noexcept { state_->groupsByEvent = groupsByEvent; }

int UndoManager::levelsOfUndo() const noexcept { return state_->levels; }

void UndoManager::setLevelsOfUndo(int levels) {
  precondition(levels >= 0, "levelsOfUndo must not be negative");
  state_->levels = levels;
  state_->trim(state_->undoStack);
  state_->trim(state_->redoStack);
}

void UndoManager::registerUndo(const void* target, Handler handler) {
  state_->registerAction({target, std::move(handler)});
}

void UndoManager::registerAsyncUndo(const void* target, AsyncHandler handler) {
  state_->registerAction({target, std::move(handler)});
}

void UndoManager::setActionName(std::string actionName) {
  if (!state_->openGroups.empty()) {
    state_->openGroups.front().actionName = std::move(actionName);
  } else if (!state_->undoStack.empty()) {
    state_->undoStack.back().actionName = std::move(actionName);
  }
}

std::string UndoManager::undoActionName() const {
  return state_->undoStack.empty() ? std::string() : state_->undoStack.back().actionName;
}

std::string UndoManager::redoActionName() const {
  return state_->redoStack.empty() ? std::string() : state_->redoStack.back().actionName;
}

bool UndoManager::canUndo() const noexcept {
  const auto& open = state_->openGroups;
  if (open.empty()) return !state_->undoStack.empty();
  // Only the group of groupsByEvent is closed by undo() itself.
  return state_->eventGroup && open.size() == 1 && (!open.front().actions.empty() || !state_->undoStack.empty());
}

bool UndoManager::canRedo() const noexcept { return state_->openGroups.empty() && !state_->redoStack.empty(); }

bool UndoManager::isUndoing() const noexcept { return state_->replay == Replay::undoing; }

bool UndoManager::isRedoing() const noexcept { return state_->replay == Replay::redoing; }

bool UndoManager::undo() { return state_->replayTop(Replay::undoing); }

bool UndoManager::redo() { return state_->replayTop(Replay::redoing); }

void UndoManager::removeAllActions() {
  state_->undoStack.clear();
  state_->redoStack.clear();
  if (state_->replay == Replay::none) {
    state_->openGroups.clear();
    state_->eventGroup.reset();
  } else {
    // The group of the undo under way stays open until that undo ends it.
    state_->openGroups.resize(1);
    state_->openGroups.front().actions.clear();
  }
  state_->post(NSUndoManagerCheckpointNotification);
}

void UndoManager::removeAllActionsWithTarget(const void* target) {
  auto strip = [target](Group& group) {
    std::erase_if(group.actions, [target](const Action& action) { return action.target == target; });
    return group.actions.empty();
  };
  std::erase_if(state_->undoStack, strip);
  std::erase_if(state_->redoStack, strip);
  for (Group& group : state_->openGroups) strip(group);
  state_->post(NSUndoManagerCheckpointNotification);
}

bool UndoManager::hasPendingChanges() const noexcept {
  return state_->runningRemainders || !state_->remainders.empty();
}

void UndoManager::setFailureHandler(FailureHandler handler) { state_->failureHandler = std::move(handler); }

}  // namespace kestrona
