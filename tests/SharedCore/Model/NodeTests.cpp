#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "Platform/ObjectStore/StoreError.h"
#include "Platform/Time/Clock.h"
#include "SharedCore/Model/CurrentSessionProviding.h"
#include "SharedCore/Model/NodeCollaborators.h"
#include "SharedCore/Support/Colors/ColorSetManager.h"
#include "tests/SharedCore/Model/ModelTestSupport.h"

namespace kestrona {
namespace {

using testing::makeFolder;
using testing::makeSession;
using testing::makeTask;
using BillingOption = Node::BillingOption;
using Nodes = std::vector<std::shared_ptr<Node>>;

class NodeTest : public ::testing::Test {
 protected:
  testing::ModelStore store;
};

void state(Node& node, std::optional<bool> billable, std::optional<double> rate) {
  node.setIsBillableSet(billable.has_value());
  node.setIsBillable(billable.value_or(true));  // meaningless unless set, except at the root
  node.setHourlyRateIsSet(rate.has_value());
  node.setHourlyRate(rate.value_or(999));
}

// A root that says billable without setting it is not billable, yet its
// option reads billable; below it, options follow the parent's effective value.
TEST_F(NodeTest, TheBillingOptionOfARootReadsItsOwnFlagAndBelowItFollowsTheParent) {
  auto root = makeFolder(store, "Root");
  auto inheriting = makeFolder(store, "Inheriting", root);
  auto stating = makeTask(store, "Stating", inheriting);
  state(*root, std::nullopt, std::nullopt);
  state(*stating, false, std::nullopt);
  EXPECT_EQ(root->billingOption(), BillingOption::billable());
  EXPECT_EQ(inheriting->billingOption(), BillingOption::inherited(false));
  EXPECT_EQ(stating->billingOption(), BillingOption::nonBillable());
  EXPECT_EQ(root->billingCases()[0], BillingOption::inherited(false));
  root->setIsBillableSet(true);
  EXPECT_EQ(inheriting->billingOption(), BillingOption::inherited(true));
  EXPECT_EQ(stating->billingCases()[0], BillingOption::inherited(true));
}

// Random trees, with long chains and wide fans, against a recomputation from
// plain parent indices; roots that do not set billable carry isBillable true.
TEST_F(NodeTest, InheritanceOfRandomTreesMatchesAFreshRecomputation) {
  std::mt19937 random(7);
  for (int round = 0; round < 20; ++round) {
    Nodes nodes;
    std::vector<int> parents;
    std::vector<std::optional<bool>> billable;
    std::vector<std::optional<double>> rates;
    for (int index = 0; index < 60; ++index) {
      const int parent = random() % 2 == 0 ? index - 1 : static_cast<int>(random() % (index + 1)) - 1;
      parents.push_back(index == 0 || random() % 8 == 0 ? -1 : parent);
      billable.push_back(random() % 3 == 0 ? std::optional<bool>(random() % 2 == 0) : std::nullopt);
      rates.push_back(random() % 3 == 0 ? std::optional<double>(random() % 200) : std::nullopt);
      nodes.push_back(makeFolder(store, "Node", parents.back() < 0 ? nullptr : nodes[parents.back()]));
      state(*nodes.back(), billable.back(), rates.back());
    }
    for (std::size_t index = 0; index < nodes.size(); ++index) {
      int at = static_cast<int>(index);
      while (at >= 0 && !billable[at]) at = parents[at];
      EXPECT_EQ(nodes[index]->effectiveIsBillable(), at >= 0 && *billable[at]);
      at = static_cast<int>(index);
      while (at >= 0 && !rates[at]) at = parents[at];
      EXPECT_EQ(nodes[index]->effectiveHourlyRate(), at >= 0 ? *rates[at] : 0);
    }
  }
}

TEST_F(NodeTest, ABlankNameFailsTheSaveWithCode1570AndAValidNameKeepsItsSpaces) {
  const std::pair<std::optional<std::string>, bool> cases[] = {
      {std::nullopt, false}, {"", false}, {" \t\n", false}, {"\u00A0\u3000", false}, {" a ", true}};
  for (const auto& [name, valid] : cases) {
    auto task = store.insert<Task>("Task");
    if (name) task->setName(*name);
    try {
      store.context->save();
      EXPECT_TRUE(valid && task->name() == *name) << name.value_or("nil");
    } catch (const StoreError& error) {
      const auto* key = error.userInfoValue<std::string>(StoreError::kKeyKey);
      const auto* object = error.userInfoObject<std::shared_ptr<ManagedObject>>(StoreError::kValidationObjectKey);
      EXPECT_FALSE(valid) << name.value_or("nil");
      EXPECT_EQ(error.kind(), StoreErrorCode::validationMissingMandatoryProperty);
      EXPECT_TRUE(key && *key == "name" && object && *object == task);
      store.context->rollback();
    }
  }
}

TEST_F(NodeTest, WalksUpTheTreeEndAtAParentLoop) {
  auto self = makeFolder(store, "Self");
  self->setParent(self);
  EXPECT_TRUE(self->allParents().empty());
  EXPECT_EQ(self->hierarchyKey(), ":" + self->objectID().URIRepresentation());

  auto a = makeFolder(store, "A");
  auto b = makeFolder(store, "B", a);
  auto task = makeTask(store, "T", b);
  a->setParent(b);
  EXPECT_EQ(task->allParents(), (Nodes{b, a}));
  EXPECT_EQ(a->allParents(), (Nodes{b}));
  EXPECT_EQ(a->effectiveHourlyRate(), 0);
  EXPECT_EQ(a->allTasks(), (std::unordered_set<std::shared_ptr<Task>>{task}));
  EXPECT_TRUE(b->isParentOf(*task) && task->isChildOfNode(*a) && !task->isParentOf(*a));
  task->setHasRunningTimeEntry(true);
  EXPECT_TRUE(a->hasRunningSession() && b->hasRunningSession());
}

TEST_F(NodeTest, NodeTypesOfAListCountTasksAndFoldersOnly) {
  auto task = makeTask(store, "T");
  auto folder = makeFolder(store, "F");
  auto session = makeSession(store, task, 0, 1);
  using List = std::vector<std::shared_ptr<ManagedObject>>;
  const std::pair<List, Node::CollectionType> cases[] = {
      {{task, folder}, Node::CollectionType::mixed},     {{}, Node::CollectionType::none},
      {{session}, Node::CollectionType::none},           {{folder}, Node::CollectionType::folder},
      {{folder, folder}, Node::CollectionType::folders}, {{task, session}, Node::CollectionType::task},
      {{task, task, task}, Node::CollectionType::tasks},
  };
  for (const auto& [list, type] : cases) EXPECT_EQ(Node::nodeTypesIn(list), type) << list.size();
  EXPECT_TRUE(Node::listContainsOnly<Task>(Nodes{task}) && Node::listContainsOnly<Folder>(Nodes{}));
  EXPECT_FALSE(Node::listContainsOnly<Task>(Nodes{task, folder}));
}

TEST_F(NodeTest, AColorIdWithoutAColourShowsTheRedSet) {
  auto task = makeTask(store, "T");
  const std::pair<std::int16_t, ColorSet::ID> cases[] = {
      {7, ColorSet::ID::violett}, {99, ColorSet::ID::red}, {-5, ColorSet::ID::red}, {-1, ColorSet::ID::gray}};
  for (const auto& [colorId, id] : cases) {
    task->setColorId(colorId);
    EXPECT_EQ(task->color(), ColorSet(id).baseColor()) << colorId;
  }
}

TEST_F(NodeTest, ChildListsSortByOrderAndLookOneLevelDown) {
  auto root = makeFolder(store, "Root");
  auto empty = makeFolder(store, "Empty", root);
  auto holder = makeFolder(store, "Holds an empty folder", root);
  makeFolder(store, "Inner", holder);
  auto task = makeTask(store, "T", root);
  auto archived = makeTask(store, "Old", root);
  archived->setArchived(true);
  const std::pair<std::shared_ptr<Node>, std::int16_t> orders[] = {{empty, 0}, {task, 1}, {holder, 2}, {archived, -1}};
  for (const auto& [node, order] : orders) node->setOrder(order);

  EXPECT_EQ(root->childrenArray(), (Nodes{archived, empty, task, holder}));
  EXPECT_EQ(root->notEmptyChildren(), (Nodes{archived, task, holder}));
  EXPECT_EQ(root->childrenWithSameArchivedState(), (std::unordered_set<std::shared_ptr<Node>>{empty, holder, task}));
  EXPECT_EQ(root->allChildren().size(), 5u);
  EXPECT_EQ(root->allTasks(), (std::unordered_set<std::shared_ptr<Task>>{task, archived}));
}

TEST_F(NodeTest, TheHierarchyKeyJoinsURIsFromTheRootAndStaysCachedUntilCleared) {
  auto root = makeFolder(store, "Root");
  auto task = makeTask(store, "T", root);
  const std::string rootKey = ":" + root->objectID().URIRepresentation();
  EXPECT_EQ(task->hierarchyKey(), rootKey + ":" + task->objectID().URIRepresentation());
  task->setParent(nullptr);
  EXPECT_EQ(task->hierarchyKey().substr(0, rootKey.size()), rootKey);
  task->updateHierarchyKey();
  EXPECT_EQ(task->hierarchyKey(), ":" + task->objectID().URIRepresentation());
  const auto identifier = task->identifier().value_or("");
  EXPECT_EQ(identifier, UUID::fromString(identifier).value_or(UUID::random()).uuidString());
}

class FakeTimer : public CurrentSessionProviding {
 public:
  std::shared_ptr<Session> currentSession() const override { return session; }
  std::shared_ptr<Session> session;
};

class RunningNodeTest : public NodeTest {
 protected:
  void SetUp() override {
    timer->session = running;
    folder->setConfirmedDuration(500);
    task->setConfirmedDuration(200);
  }

  ManualClock clock{Date(10'000)};
  ScopedClock scopedClock{clock};
  std::shared_ptr<Folder> folder = makeFolder(store, "Clients");
  std::shared_ptr<Task> task = makeTask(store, "Design", folder);
  std::shared_ptr<Session> running = makeSession(store, task, 9'000, std::nullopt);
  std::shared_ptr<FakeTimer> timer = std::make_shared<FakeTimer>();
};

TEST_F(RunningNodeTest, AFolderObserverHearsTheRunningEntryBelowItAndItsOwnConfirmedDuration) {
  std::vector<double> heard;
  auto observation = folder->observe("effectiveDuration", KeyValueObservingOption::newValue,
                                     [&](const KeyValueChange& change) { heard.push_back(*change.newValue->number()); });
  task->setHasRunningTimeEntry(true);
  EXPECT_EQ(folder->effectiveDuration(), 500);  // the context has no collaborators yet
  setNodeCollaborators(*store.context, std::make_shared<NodeCollaborators>(nullptr, timer));
  task->setHasRunningTimeEntry(true);
  EXPECT_EQ(heard.back(), 1'500);
  EXPECT_EQ(task->effectiveDuration(), 1'200);

  heard.clear();
  clock.advance(30);
  running->updateEffectiveDuration();  // the tick
  auto finished = makeSession(store, task, 5'000, 5'100);
  finished->setEnd(Date(5'200));
  finished->updateEffectiveDuration();  // an edit of an entry below
  folder->setConfirmedDuration(700);
  EXPECT_EQ(heard, (std::vector<double>{1'530, 1'530, 1'730}));
  timer.reset();
  EXPECT_EQ(folder->effectiveDuration(), 700);
  task->setHasRunningTimeEntry(false);
  EXPECT_FALSE(folder->hasRunningSession());
}

}  // namespace
}  // namespace kestrona
