// A task: a leaf of the tree that time entries are tracked on (entity
// "Task", under "Node").
//
// Adds notes, its time entries (sessions; deleted with the task, cascade)
// and its auto-tracking rule set (deleted with the task, cascade). Its
// parent, when it has one, is always a Folder. hasBlacklistedMatch is a
// per-process flag for an auto-tracking monitor, kept on this instance and
// observable; nothing in the shared core reads it.
//
// Threading: only on the context's queue.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "SharedCore/Model/Tracking/Node.h"

namespace kestrona {

class RuleSet;
class Session;

class Task : public Node {
 public:
  explicit Task(Construction construction) : Node(std::move(construction)) {}

  static std::string_view entityName() { return "Task"; }
  static FetchRequest fetchRequest() { return FetchRequest("Task"); }

  std::optional<std::string> notes() { return stringForKey("notes"); }
  void setNotes(const std::optional<std::string>& notes) { setValue(valueOf(notes), "notes"); }
  // In no defined order.
  std::vector<std::shared_ptr<Session>> sessions();
  std::shared_ptr<RuleSet> ruleSet();
  void setRuleSet(const std::shared_ptr<RuleSet>& ruleSet);

  bool hasBlacklistedMatch() const noexcept { return hasBlacklistedMatch_; }
  void setHasBlacklistedMatch(bool hasMatch);

 protected:
  Value valueForUndefinedKey(std::string_view key) override;

 private:
  bool hasBlacklistedMatch_ = false;
};

}  // namespace kestrona
