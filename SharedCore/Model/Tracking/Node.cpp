#include "SharedCore/Model/Tracking/Node.h"

#include <algorithm>

#include "Platform/ObjectStore/ManagedObjectContext.h"
#include "Platform/ObjectStore/StoreError.h"
#include "Platform/Text/WhitespaceTrimming.h"
#include "SharedCore/Model/CurrentSessionProviding.h"
#include "SharedCore/Model/NodeCollaborators.h"
#include "SharedCore/Model/EntityValues.h"
#include "SharedCore/Model/Tracking/Folder.h"
#include "SharedCore/Model/Tracking/Session.h"
#include "SharedCore/Model/Tracking/Task.h"
#include "SharedCore/Support/Colors/ColorSetManager.h"

namespace kestrona {

namespace {

// The manager of objects whose context carries no collaborators: one per
// process, made on first use.
const ColorSetManager& defaultColorSetManager() {
  static const auto manager = std::make_shared<ColorSetManager>();
  return *manager;
}

}  // namespace

std::string Node::name() { return stringForKey("name").value_or(""); }

std::shared_ptr<Node> Node::parent() { return std::dynamic_pointer_cast<Node>(objectForKey("parent")); }

std::vector<std::shared_ptr<Node>> Node::children() { return objectsOfClass<Node>(objectsForKey("children")); }

void Node::setHasRunningSession(bool hasRunningSession) {
  willChangeValueForKey("hasRunningSession");
  hasRunningSession_ = hasRunningSession;
  didChangeValueForKey("hasRunningSession");
}

std::string Node::nameOrId() { return identifier().value_or("<no identifier>"); }

std::string Node::description() { return identifier().value_or("<" + entityName() + " (no identifier)>"); }

ColorSet Node::colorSet() {
  const ColorSet::ID id = fromRawValue<ColorSet::ID>(colorId()).value_or(ColorSet::ID::red);
  if (auto* context = managedObjectContext()) {
    if (auto collaborators = nodeCollaborators(*context); collaborators && collaborators->colorSetManager()) {
      return collaborators->colorSetManager()->colorSetWithId(id);
    }
  }
  return defaultColorSetManager().colorSetWithId(id);
}

std::string Node::hierarchyKey() {
  if (hierarchyKey_) return *hierarchyKey_;
  // The chain from this node up to the nearest ancestor with a cached key
  // (or the root); each key is built on the one above and cached on the way.
  std::vector<Node*> chain{this};
  std::string key;
  for (const auto& ancestor : allParents()) {
    if (ancestor->hierarchyKey_) {
      key = *ancestor->hierarchyKey_;
      break;
    }
    chain.push_back(ancestor.get());
  }
  for (auto node = chain.rbegin(); node != chain.rend(); ++node) {
    key += ":" + (*node)->objectID().URIRepresentation();
    (*node)->hierarchyKey_ = key;
  }
  return key;
}

double Node::effectiveHourlyRate() {
  if (hourlyRateIsSet()) return hourlyRate();
  for (const auto& ancestor : allParents()) {
    if (ancestor->hourlyRateIsSet()) return ancestor->hourlyRate();
  }
  return 0;
}

bool Node::effectiveIsBillable() {
  if (isBillableSet()) return isBillable();
  for (const auto& ancestor : allParents()) {
    if (ancestor->isBillableSet()) return ancestor->isBillable();
  }
  return false;
}

Node::BillingOption Node::billingOption() {
  if (!isBillableSet()) {
    if (auto above = parent()) return BillingOption::inherited(above->effectiveIsBillable());
  }
  return isBillable() ? BillingOption::billable() : BillingOption::nonBillable();
}

std::array<Node::BillingOption, 3> Node::billingCases() {
  auto above = parent();
  return {BillingOption::inherited(above && above->effectiveIsBillable()), BillingOption::billable(),
          BillingOption::nonBillable()};
}

double Node::effectiveDuration() {
  const double confirmed = confirmedDuration();
  if (!hasRunningSession_) return confirmed;
  auto* context = managedObjectContext();
  auto collaborators = context ? nodeCollaborators(*context) : nullptr;
  auto timer = collaborators ? collaborators->timer() : nullptr;
  auto running = timer ? timer->currentSession() : nullptr;
  return running ? confirmed + running->effectiveDuration() : confirmed;
}

std::vector<std::shared_ptr<Node>> Node::notEmptyChildren() {
  std::vector<std::shared_ptr<Node>> result;
  for (auto& child : childrenArray()) {
    if (isTask(child.get()) || !child->objectsForKey("children").empty()) result.push_back(std::move(child));
  }
  return result;
}

std::unordered_set<std::shared_ptr<Node>> Node::childrenWithSameArchivedState() {
  const bool own = archived();
  std::unordered_set<std::shared_ptr<Node>> result;
  for (auto& child : children()) {
    if (child->archived() == own) result.insert(std::move(child));
  }
  return result;
}

std::vector<std::shared_ptr<Node>> Node::childrenArray() { return sortedByOrder(children()); }

std::vector<std::shared_ptr<Node>> Node::allParents() {
  std::vector<std::shared_ptr<Node>> result;
  for (auto above = parent(); above; above = above->parent()) {
    const bool met = above->objectID() == objectID() ||
                     std::any_of(result.begin(), result.end(),
                                 [&](const auto& node) { return node->objectID() == above->objectID(); });
    if (met) break;
    result.push_back(above);
  }
  return result;
}

bool Node::isParentOf(Node& other) {
  const auto ancestors = other.allParents();
  return std::any_of(ancestors.begin(), ancestors.end(),
                     [&](const auto& ancestor) { return ancestor->objectID() == objectID(); });
}

bool Node::isChildOfNode(Node& other) {
  const auto ancestors = allParents();
  return std::any_of(ancestors.begin(), ancestors.end(),
                     [&](const auto& ancestor) { return ancestor->objectID() == other.objectID(); });
}

Node::CollectionType Node::collectionType(std::size_t tasks, std::size_t folders) {
  if (tasks > 0 && folders > 0) return CollectionType::mixed;
  if (folders > 1) return CollectionType::folders;
  if (folders == 1) return CollectionType::folder;
  if (tasks == 1) return CollectionType::task;
  if (tasks > 1) return CollectionType::tasks;
  return CollectionType::none;
}

bool Node::isTask(const ManagedObject* object) { return dynamic_cast<const Task*>(object) != nullptr; }

bool Node::isFolder(const ManagedObject* object) { return dynamic_cast<const Folder*>(object) != nullptr; }

void Node::setHasRunningTimeEntry(bool flag) {
  // Flags go up from this node; the announcements then come from the root
  // down, each one climbing to the root again, as the timer's observers of
  // every level expect.
  std::vector<std::shared_ptr<Node>> chain{std::static_pointer_cast<Node>(shared_from_this())};
  for (auto& ancestor : allParents()) chain.push_back(std::move(ancestor));
  for (const auto& node : chain) node->setHasRunningSession(flag);
  for (auto node = chain.rbegin(); node != chain.rend(); ++node) (*node)->updateEffectiveDuration();
}

void Node::updateEffectiveDuration() {
  willChangeValueForKey("effectiveDuration");
  didChangeValueForKey("effectiveDuration");
  for (const auto& ancestor : allParents()) {
    ancestor->willChangeValueForKey("effectiveDuration");
    ancestor->didChangeValueForKey("effectiveDuration");
  }
}

std::vector<std::string> Node::keyPathsForValuesAffectingValueForKey(std::string_view key) const {
  if (key == "effectiveDuration") return {"confirmedDuration", "hasRunningSession"};
  if (key == "color") return {"colorId"};
  if (key == "childrenWithSameArchivedState") return {"children"};
  return NSManagedObjectWithIdentifier::keyPathsForValuesAffectingValueForKey(key);
}

void Node::validateValue(Value& value, std::string_view key) const {
  NSManagedObjectWithIdentifier::validateValue(value, key);
  if (key != "name") return;
  const auto* text = value.get<std::string>();
  if (text && !trimmingWhitespacesAndNewlines(*text).empty()) return;
  throw StoreError(StoreErrorCode::validationMissingMandatoryProperty, entity().name() + ".name is required",
                   {{StoreError::kValidationObjectKey,
                     ErrorUserInfoObject(std::const_pointer_cast<ManagedObject>(shared_from_this()))},
                    {StoreError::kKeyKey, "name"}});
}

Value Node::valueForUndefinedKey(std::string_view key) {
  if (key == "effectiveDuration") return Value(effectiveDuration());
  if (key == "hasRunningSession") return Value(hasRunningSession_);
  if (key == "color") return Value(color().name());
  if (key == "childrenWithSameArchivedState") {
    Value::Array objects;
    for (auto& child : childrenWithSameArchivedState()) objects.emplace_back(std::move(child));
    return Value(std::move(objects));
  }
  return NSManagedObjectWithIdentifier::valueForUndefinedKey(key);
}

}  // namespace kestrona
