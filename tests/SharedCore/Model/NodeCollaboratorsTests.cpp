#include <gtest/gtest.h>

#include "Platform/ObjectStore/ManagedObjectContext.h"
#include "SharedCore/Model/CurrentSessionProviding.h"
#include "SharedCore/Model/NodeCollaborators.h"
#include "SharedCore/Support/Colors/ColorSetManager.h"
#include "tests/support/TemporaryDirectory.h"

namespace kestrona {
namespace {

TEST(NodeCollaborators, AContextKeepsItsCollaboratorsForAsLongAsItLives) {
  auto context = ManagedObjectContext::make(ManagedObjectContextConcurrencyType::privateQueueConcurrencyType);
  EXPECT_EQ(nodeCollaborators(*context), nullptr);

  auto manager = std::make_shared<ColorSetManager>();
  auto collaborators = std::make_shared<NodeCollaborators>(manager);
  setNodeCollaborators(*context, collaborators);
  EXPECT_EQ(nodeCollaborators(*context), collaborators);
  EXPECT_EQ(nodeCollaborators(*context)->colorSetManager(), manager);

  // Another context has a slot of its own.
  auto other = ManagedObjectContext::make(ManagedObjectContextConcurrencyType::privateQueueConcurrencyType);
  EXPECT_EQ(nodeCollaborators(*other), nullptr);

  std::weak_ptr<NodeCollaborators> watched = collaborators;
  collaborators.reset();
  EXPECT_FALSE(watched.expired());
  context.reset();
  EXPECT_TRUE(watched.expired());
}

TEST(NodeCollaborators, ReplacingOrClearingReleasesThePrevious) {
  auto context = ManagedObjectContext::make(ManagedObjectContextConcurrencyType::privateQueueConcurrencyType);
  auto first = std::make_shared<NodeCollaborators>(std::make_shared<ColorSetManager>());
  std::weak_ptr<NodeCollaborators> watched = first;
  setNodeCollaborators(*context, std::move(first));
  auto second = std::make_shared<NodeCollaborators>(std::make_shared<ColorSetManager>());
  setNodeCollaborators(*context, second);
  EXPECT_TRUE(watched.expired());
  EXPECT_EQ(nodeCollaborators(*context), second);
  setNodeCollaborators(*context, nullptr);
  EXPECT_EQ(nodeCollaborators(*context), nullptr);
}

TEST(NodeCollaborators, HoldTheTimerWeakly) {
  NodeCollaborators collaborators(std::make_shared<ColorSetManager>());
  EXPECT_EQ(collaborators.timer(), nullptr);

  struct NoTimer : CurrentSessionProviding {
    std::shared_ptr<Session> currentSession() const override { return nullptr; }
  };
  auto timer = std::make_shared<NoTimer>();
  collaborators.setTimer(timer);
  EXPECT_EQ(collaborators.timer(), timer);
  timer.reset();
  EXPECT_EQ(collaborators.timer(), nullptr);
}

}  // namespace
}  // namespace kestrona
