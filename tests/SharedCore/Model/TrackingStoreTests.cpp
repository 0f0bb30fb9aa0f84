// The application's model in a real store: found by the stack without a
// bundle, written by one process and read back by another, and deleted by
// its delete rules.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include "SharedCore/DataProviders/CoreDataStack.h"
#include "SharedCore/Model/ActivityLog/ALEntry.h"
#include "SharedCore/Model/Rules/RuleBase.h"
#include "SharedCore/Model/Rules/RuleSet.h"
#include "SharedCore/Model/Tracking/Folder.h"
#include "SharedCore/Model/Tracking/Session.h"
#include "SharedCore/Model/Tracking/Task.h"
#include "SharedCore/Model/TrackingModel.h"
#include "tests/support/ChildTestProcess.h"
#include "tests/support/TemporaryDirectory.h"

namespace kestrona {
namespace {

constexpr const char* kChildMarker = "KESTRONA_MODEL_CHILD";
constexpr const char* kChildStoreVariable = "KESTRONA_MODEL_CHILD_STORE";

// A stack on the application's model, found beside this executable.
std::unique_ptr<CoreDataStack> openStack(const std::filesystem::path& folder) {
  return std::make_unique<CoreDataStack>(std::string(kTrackingModelName), URL::fileURLWithPath(folder, true),
                                         "Kestrona.sqlite");
}

template <typename Class>
std::shared_ptr<Class> insert(ManagedObjectContext& context, std::string_view entityName) {
  return std::dynamic_pointer_cast<Class>(context.insertNewObject(entityName));
}

// Every object of the store, one sorted line each: its entity, whether it
// is of an entity class, every attribute, and every relationship as the
// identifiers of its destinations.
std::vector<std::string> describeStore(ManagedObjectContext& context) {
  std::vector<std::string> lines;
  for (const char* root : {"Node", "Session", "RuleSet", "RuleBase", "ALEntry"}) {
    for (const auto& object : context.fetch(FetchRequest(root))) {
      const bool ofClass = dynamic_cast<NSManagedObjectWithIdentifier*>(object.get()) != nullptr ||
                           dynamic_cast<ALEntry*>(object.get()) != nullptr;
      std::string line = object->entity().name() + (ofClass ? "" : " (no class)");
      for (const auto& [name, attribute] : object->entity().attributesByName()) {
        const Value value = object->valueForKey(name);
        line += " " + name + "=" + value.description();
        if (const auto* data = value.get<Data>()) {
          for (const auto byte : data->bytes) line += " " + std::to_string(byte);
        }
      }
      for (const auto& [name, relationship] : object->entity().relationshipsByName()) {
        auto destinations = relationship->isToMany() ? object->objectsForKey(name)
                                                     : std::vector{object->objectForKey(name)};
        std::vector<std::string> identifiers;
        for (const auto& destination : destinations) {
          if (destination) identifiers.push_back(destination->stringForKey("identifier").value_or("?"));
        }
        std::sort(identifiers.begin(), identifiers.end());
        line += " " + name + "=[";
        for (const auto& identifier : identifiers) line += identifier + ";";
        line += "]";
      }
      lines.push_back(std::move(line));
    }
  }
  std::sort(lines.begin(), lines.end());
  return lines;
}

class TrackingStoreTest : public ::testing::Test {
 protected:
  TrackingStoreTest() {
    environment.set("XDG_CONFIG_HOME", (directory.path() / "config").string());
    stack = openStack(directory.path() / "Store");
    context = stack->privateContext();
  }

  // A folder with a task, two entries (one without a task), a rule set of a
  // combination holding a rule, and a browser log entry; every attribute
  // holds a value of its own, never its default.
  void fill() {
    auto& c = *context;
    int seed = 0;
    const auto make = [&](std::string_view entity) {
      auto object = c.insertNewObject(entity);
      for (const auto& [name, attribute] : object->entity().attributesByName()) {
        object->setValue(valueFor(*attribute, ++seed), name);
      }
      return object;
    };
    auto folder = make("Folder");
    auto task = make("Task");
    task->setValue(Value(folder), "parent");
    make("Session")->setValue(Value(task), "task");
    make("Session");
    auto set = make("RuleSet");
    set->setValue(Value(task), "task");
    auto combination = make("RuleCombination");
    combination->setValue(Value(set), "set");
    make("Rule")->setValue(Value(combination), "parent");
    make("BrowserALEntry");
    c.save();
  }

  static Value valueFor(const AttributeDescription& attribute, int seed) {
    switch (attribute.attributeType()) {
      case AttributeType::booleanAttributeType:
        return Value(true);
      case AttributeType::integer16AttributeType:
        return Value(seed);
      case AttributeType::doubleAttributeType:
        return Value(seed + 0.25);
      case AttributeType::dateAttributeType:
        return Value(Date(1'700'000'000.5 + seed));
      case AttributeType::binaryDataAttributeType:
        return Value(Data{{static_cast<std::uint8_t>(seed), 0, 255}});
      default:
        return Value(attribute.name() + " " + std::to_string(seed));
    }
  }

  testing::TemporaryDirectory directory;
  testing::ScopedEnvironment environment;
  std::unique_ptr<CoreDataStack> stack;
  std::shared_ptr<ManagedObjectContext> context;
};

TEST_F(TrackingStoreTest, EveryAttributeAndRelationshipSurvivesARestartOfTheProcess) {
  EXPECT_EQ(stack->modelBundle().bundleURL().lastPathComponent(), "SharedCore.bundle");
  std::vector<std::string> written;
  context->performAndWait([&] {
    fill();
    written = describeStore(*context);
  });
  ASSERT_EQ(written.size(), 8u);
  EXPECT_TRUE(std::none_of(written.begin(), written.end(),
                           [](const auto& line) { return line.find("(no class)") != std::string::npos; }));
  stack.reset();
  testing::ChildTestProcess child("TrackingStoreChildProcess.DescribesWhatTheParentWrote", kChildMarker,
                                 {{kChildStoreVariable, (directory.path() / "Store").string()}});
  std::vector<std::string> read;
  while (auto line = child.readLine()) read.push_back(*line);
  EXPECT_EQ(child.wait(), 0);
  EXPECT_EQ(read, written);
}

TEST(TrackingStoreChildProcess, DescribesWhatTheParentWrote) {
  if (std::getenv(kChildMarker) == nullptr) GTEST_SKIP() << "runs as a child process only";
  auto stack = openStack(std::getenv(kChildStoreVariable));
  auto context = stack->privateContext();
  context->performAndWait([&] {
    for (const auto& line : describeStore(*context)) testing::tellParent(line);
  });
}

TEST_F(TrackingStoreTest, DeletingAFolderTakesItsSubtreeWithEntriesAndRulesAndLeavesTheRestAlone) {
  context->performAndWait([&] {
    fill();
    auto folder = context->fetch(Folder::fetchRequest()).at(0);
    auto outside = insert<Task>(*context, "Task");
    outside->setName("Outside");
    auto kept = insert<Session>(*context, "Session");
    kept->setBegin(Date(0));
    kept->setTask(outside);

    context->deleteObject(folder);
    context->save();
    // Left: the outside task, its entry, the entry without a task, the log entry.
    EXPECT_EQ(describeStore(*context).size(), 4u);
    EXPECT_EQ(context->count(Session::fetchRequest()), 2u);
    EXPECT_EQ(context->count(RuleSet::fetchRequest()) + context->count(RuleBase::fetchRequest()), 0u);

    context->deleteObject(kept);
    context->save();
    EXPECT_TRUE(outside->sessions().empty());
    EXPECT_FALSE(outside->isDeleted());
  });
}

}  // namespace
}  // namespace kestrona
