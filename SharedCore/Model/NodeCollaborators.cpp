#include "SharedCore/Model/NodeCollaborators.h"

#include "Platform/ObjectStore/ManagedObjectContext.h"
#include "SharedCore/Model/CurrentSessionProviding.h"
#include "SharedCore/Support/Colors/ColorSetManager.h"

namespace kestrona {

namespace {

// The address is the key: one per process, private to this file, so no other
// association can take the slot.
const char kNodeCollaboratorsKey = 0;

}  // namespace

NodeCollaborators::NodeCollaborators(std::shared_ptr<ColorSetManager> colorSetManager,
                                     std::weak_ptr<CurrentSessionProviding> timer)
    : colorSetManager_(std::move(colorSetManager)), timer_(std::move(timer)) {}

std::shared_ptr<CurrentSessionProviding> NodeCollaborators::timer() const {
  std::lock_guard lock(timerMutex_);
  return timer_.lock();
}

void NodeCollaborators::setTimer(std::weak_ptr<CurrentSessionProviding> timer) {
  std::lock_guard lock(timerMutex_);
  timer_ = std::move(timer);
}

std::shared_ptr<NodeCollaborators> nodeCollaborators(const ManagedObjectContext& context) {
  return std::static_pointer_cast<NodeCollaborators>(context.associatedObject(&kNodeCollaboratorsKey));
}

void setNodeCollaborators(ManagedObjectContext& context, std::shared_ptr<NodeCollaborators> collaborators) {
  context.setAssociatedObject(&kNodeCollaboratorsKey, std::move(collaborators));
}

}  // namespace kestrona
