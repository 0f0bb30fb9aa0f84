#include <gtest/gtest.h>

#include "Platform/ObjectStore/ManagedObjectModel.h"
#include "Platform/ObjectStore/StoreError.h"
#include "tests/Platform/ObjectStore/StoreTestSupport.h"

namespace kestrona {
namespace {

using testing::modelDirectory;

StoreErrorCode loadFailure(const std::string& name) {
  try {
    auto model = ManagedObjectModel::loadNamed(name, modelDirectory());
    ADD_FAILURE() << "the model " << name << " loaded with " << model->entities().size() << " entities";
  } catch (const StoreError& error) {
    EXPECT_EQ(error.domain(), "NSCocoaErrorDomain");
    return error.kind();
  }
  return StoreErrorCode::managedObjectValidation;
}

TEST(ManagedObjectModel, LoadsEntitiesWithInheritedPropertiesAndRelationships) {
  auto model = ManagedObjectModel::loadNamed("Tracker", modelDirectory());
  const auto& entities = model->entitiesByName();
  ASSERT_EQ(entities.size(), 7u);
  const auto* task = entities.at("Task");
  const auto* node = entities.at("Node");
  EXPECT_EQ(task->superentity(), node);
  EXPECT_TRUE(node->isAbstract());
  EXPECT_EQ(node->subentities().size(), 2u);
  EXPECT_TRUE(task->isKindOfEntity(*node));
  EXPECT_FALSE(node->isKindOfEntity(*task));
  EXPECT_EQ(&task->rootEntity(), node);

  // Inherited attributes come with their own slots first; own ones follow.
  ASSERT_NE(task->attribute("name"), nullptr);
  ASSERT_NE(task->attribute("notes"), nullptr);
  EXPECT_EQ(node->attribute("notes"), nullptr);
  EXPECT_EQ(task->attribute("name"), node->attribute("name"));
  EXPECT_LT(task->attribute("name")->slot(), node->slotCount());
  EXPECT_GE(task->attribute("notes")->slot(), node->slotCount());
  EXPECT_EQ(task->attribute("archived")->defaultValue(), Value(false));
  EXPECT_FALSE(task->attribute("name")->isOptional());
  EXPECT_EQ(entities.at("RuleSet")->attribute("words")->valueTransformerName(), "WordListTransformer");

  const auto* sessions = task->relationshipsByName().at("sessions");
  EXPECT_TRUE(sessions->isToMany());
  EXPECT_EQ(&sessions->destinationEntity(), entities.at("Session"));
  EXPECT_EQ(sessions->inverseRelationship().name(), "task");
  EXPECT_EQ(sessions->deleteRule(), DeleteRule::cascadeDeleteRule);
  EXPECT_FALSE(entities.at("Session")->relationship("task")->isToMany());
  EXPECT_EQ(task->relationship("children")->deleteRule(), DeleteRule::cascadeDeleteRule);
  EXPECT_EQ(entities.at("Client")->relationship("projects")->deleteRule(), DeleteRule::denyDeleteRule);
}

TEST(ManagedObjectModel, MissingAndUnreadableModelsAreDistinctErrors) {
  EXPECT_EQ(loadFailure("NoSuchModel"), StoreErrorCode::fileReadNoSuchFile);
  EXPECT_EQ(loadFailure("Truncated"), StoreErrorCode::fileReadCorruptFile);
  EXPECT_EQ(loadFailure("DanglingInverse"), StoreErrorCode::fileReadCorruptFile);
  EXPECT_EQ(loadFailure("UnknownType"), StoreErrorCode::fileReadCorruptFile);
}

TEST(ManagedObjectModel, RejectsModelsTheStoreCannotKeep) {
  auto corrupt = [](const char* json) {
    try {
      return ManagedObjectModel::fromJSON(json) == nullptr;
    } catch (const StoreError& error) {
      return error.kind() == StoreErrorCode::fileReadCorruptFile;
    }
  };
  // Many-to-many has no column to live in.
  EXPECT_TRUE(corrupt(R"({"entities": [
      {"name": "A", "relationships": [{"name": "bs", "destination": "B", "inverse": "as", "toMany": true}]},
      {"name": "B", "relationships": [{"name": "as", "destination": "A", "inverse": "bs", "toMany": true}]}]})"));
  EXPECT_TRUE(corrupt(R"({"entities": [{"name": "A", "parent": "Missing"}]})"));
  EXPECT_TRUE(corrupt(R"({"entities": [{"name": "A"}, {"name": "A"}]})"));
  EXPECT_TRUE(corrupt(R"({"entities": [{"name": "A", "attributes": [{"name": "x", "type": "boolean", "default": "yes"}]}]})"));
  EXPECT_TRUE(corrupt(R"({"entities": [{"name": "A", "attributes": [{"name": "x", "type": "transformable"}]}]})"));
  EXPECT_TRUE(corrupt(R"({"entities": [{"name": "A", "parent": "B"}, {"name": "B", "parent": "A"}]})"));
  EXPECT_TRUE(corrupt(R"({"entity": []})"));
}

}  // namespace
}  // namespace kestrona
