// Undo and redo: stacks of groups of registered actions.
//
// Groups. Actions are registered into the open group; beginUndoGrouping and
// endUndoGrouping nest, and closing a nested group adds its actions to the
// group around it, so only outermost groups become steps. Closing an
// outermost group that holds actions pushes it onto the undo stack; an empty
// one vanishes. With groupsByEvent (the default) a registration outside any
// group opens one that closes when the main loop finishes its present work,
// so everything registered in one pass is one step; without it, registering
// outside a group is a programming error. setActionName names the outermost
// open group (the last name given wins), or, with none open, the step on top
// of the undo stack. levelsOfUndo (0: no limit) bounds each stack: the
// oldest step falls off past it.
//
// Undo and redo. undo() closes the open group of groupsByEvent first, then
// refuses (false) while any other group is open or when there is nothing to
// undo. Otherwise it pops the top step and runs its actions in reverse order
// of registration inside a group of its own named as the step: what they
// register (the inverse actions) becomes the redo step. redo() is the mirror
// image: its registrations become an undo step and, unlike registrations
// outside undo and redo, do not clear the redo stack. A sync handler that
// throws ends the step there; what it registered so far stays, and the
// exception reaches the caller of undo() or redo().
//
// Asynchronous actions. registerAsyncUndo takes a handler that returns a
// coroutine. The handler itself runs inside undo() or redo() like any other
// (register the inverse there, before returning); the coroutine it returns
// is the step's remainder. Stacks never wait for remainders: they change at
// once, as if every remainder will succeed, so the Edit menu and further
// presses see the state that the user asked for. The remainders run on the
// main loop strictly one after another, in the order of the undo() and
// redo() calls that produced them, so effects apply in the order they were
// asked for even when the user presses faster than they complete. A
// remainder that throws had its inverse filed already: the manager removes
// the step that the same undo() or redo() produced (if it is still on a
// stack; earlier steps stay), posts a checkpoint and hands the exception to
// the failure handler (by default, a log line at error level, label
// "UndoManager"). Registrations made inside a remainder, after it has been
// suspended, are ordinary ones. hasPendingChanges() tells whether
// remainders are still to run.
//
// Targets and removal. Each action names a target (any address, compared by
// identity, never dereferenced). removeAllActionsWithTarget removes its
// actions from both stacks and open groups, and steps left empty vanish.
// removeAllActions empties both stacks and discards the open groups.
//
// Notifications (object: the manager, no user info), for a user interface:
// "NSUndoManagerCheckpointNotification" whenever the stacks or grouping may
// have changed (begin, end, undo, redo, removals, a failed remainder);
// "NSUndoManagerDidOpenUndoGroupNotification", then on closing
// "NSUndoManagerWillCloseUndoGroupNotification" and
// "NSUndoManagerDidCloseUndoGroupNotification"; around undo and redo
// "NSUndoManagerWillUndoChangeNotification"/"...DidUndoChangeNotification"
// and "NSUndoManagerWillRedoChangeNotification"/"...DidRedoChangeNotification".
//
// Threading: main thread only (the loop given); handlers and remainders run
// there. The manager may be destroyed with remainders pending: they still
// run, and their failures reach nobody.
#pragma once

#include <asio/awaitable.hpp>
#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace kestrona {

class MainLoop;
class NotificationCenter;

inline constexpr std::string_view NSUndoManagerCheckpointNotification = "NSUndoManagerCheckpointNotification";
inline constexpr std::string_view NSUndoManagerDidOpenUndoGroupNotification =
    "NSUndoManagerDidOpenUndoGroupNotification";
inline constexpr std::string_view NSUndoManagerWillCloseUndoGroupNotification =
    "NSUndoManagerWillCloseUndoGroupNotification";
inline constexpr std::string_view NSUndoManagerDidCloseUndoGroupNotification =
    "NSUndoManagerDidCloseUndoGroupNotification";
inline constexpr std::string_view NSUndoManagerWillUndoChangeNotification = "NSUndoManagerWillUndoChangeNotification";
inline constexpr std::string_view NSUndoManagerDidUndoChangeNotification = "NSUndoManagerDidUndoChangeNotification";
inline constexpr std::string_view NSUndoManagerWillRedoChangeNotification = "NSUndoManagerWillRedoChangeNotification";
inline constexpr std::string_view NSUndoManagerDidRedoChangeNotification = "NSUndoManagerDidRedoChangeNotification";

class UndoManager {
 public:
  using Handler = std::function<void()>;
  using AsyncHandler = std::function<asio::awaitable<void>()>;
  // Called with a remainder's exception, the step's action name, and
  // whether it was undoing (else redoing).
  using FailureHandler = std::function<void(std::exception_ptr, const std::string& actionName, bool undoing)>;

  // On MainLoop::main() and the default centre.
  UndoManager();
  UndoManager(MainLoop& loop, NotificationCenter& center);
  ~UndoManager();
  UndoManager(const UndoManager&) = delete;
  UndoManager& operator=(const UndoManager&) = delete;

  void beginUndoGrouping();
  void endUndoGrouping();
  int groupingLevel() const noexcept;
  bool groupsByEvent() const noexcept;
  void setGroupsByEvent(bool groupsByEvent) noexcept;
  int levelsOfUndo() const noexcept;
  void setLevelsOfUndo(int levels);

  void registerUndo(const void* target, Handler handler);
  void registerAsyncUndo(const void* target, AsyncHandler handler);
  void setActionName(std::string actionName);
  // The name of the step undo() or redo() would take; empty when none.
  std::string undoActionName() const;
  std::string redoActionName() const;

  bool canUndo() const noexcept;
  bool canRedo() const noexcept;
  bool isUndoing() const noexcept;
  bool isRedoing() const noexcept;
  bool undo();
  bool redo();

  void removeAllActions();
  void removeAllActionsWithTarget(const void* target);

  bool hasPendingChanges() const noexcept;
  void setFailureHandler(FailureHandler handler);

  struct State;

 private:
  std::shared_ptr<State> state_;
};

}  // namespace kestrona
