#include <gtest/gtest.h>

#include "Platform/ObjectStore/MergeConflict.h"
#include "Platform/ObjectStore/StoreError.h"
#include "Platform/Time/Date.h"
#include "SharedCore/DataProviders/DetachedError.h"
#include "tests/SharedCore/DataProviders/StackTestSupport.h"

namespace kestrona {
namespace {

// Live objects of a private context, saved so that their URIs are permanent.
class DetachedErrors : public ::testing::Test {
 protected:
  void SetUp() override {
    context = test.stack->privateContext();
    context->performAndWait([&] {
      task = testing::insertTask(*context, "Task");
      session = context->insertNewObject("Session");
      context->save();
    });
  }

  static ErrorUserInfoValue object(std::any value) { return ErrorUserInfoObject(std::move(value)); }

  template <typename T>
  static const T* member(const ErrorUserInfoValue& value) {
    const auto* wrapper = std::get_if<ErrorUserInfoObject>(&value);
    return wrapper == nullptr ? nullptr : std::any_cast<T>(&wrapper->value);
  }

  testing::TestStack test;
  std::shared_ptr<TrackedManagedObjectContext> context;
  std::shared_ptr<ManagedObject> task;
  std::shared_ptr<ManagedObject> session;
};

TEST_F(DetachedErrors, AnErrorWithoutObjectReferencesStaysAsItIs) {
  const Error plain("NSCocoaErrorDomain", 1570, "missing",
                    ErrorUserInfo{{"NSValidationErrorKey", std::string("name")},
                                  {"id", object(task->objectID())},
                                  {"odd", object(1.5f)}});
  EXPECT_FALSE(holdsManagedObjects(plain));
  const Error same = detachedFromManagedObjects(plain);
  EXPECT_EQ(same.userInfo().size(), 3u);
  // Nothing was sanitised: the ID and the unknown value are still there.
  EXPECT_NE(same.userInfoObject<ManagedObjectID>("id"), nullptr);
  EXPECT_NE(same.userInfoObject<float>("odd"), nullptr);
  EXPECT_EQ(same.userInfo().count(std::string(NSLocalizedDescriptionKey)), 0u);
}

TEST_F(DetachedErrors, AValidationObjectBecomesItsURIAndEntityName) {
  const StoreError validation(StoreErrorCode::validationMissingMandatoryProperty, "Task needs a name",
                              ErrorUserInfo{{StoreError::kValidationObjectKey, object(task)},
                                            {StoreError::kKeyKey, std::string("name")}});
  ASSERT_TRUE(holdsManagedObjects(validation));
  const Error detached = detachedFromManagedObjects(validation);
  EXPECT_TRUE(detached.is("NSCocoaErrorDomain", 1570));
  EXPECT_EQ(detached.localizedDescription(), "Task needs a name");
  EXPECT_FALSE(holdsManagedObjects(detached));
  EXPECT_EQ(detached.userInfo().count(StoreError::kValidationObjectKey), 0u);
  EXPECT_EQ(*detached.userInfoValue<std::string>(validationObjectURIKey), task->objectID().URIRepresentation());
  EXPECT_EQ(*detached.userInfoValue<std::string>(validationObjectEntityNameKey), "Task");
  EXPECT_EQ(*detached.userInfoValue<std::string>(StoreError::kKeyKey), "name");
  EXPECT_EQ(*detached.userInfoValue<std::string>(NSLocalizedDescriptionKey), "Task needs a name");
}

TEST_F(DetachedErrors, ConflictRecordsBecomeACountAndTheURIsOfTheirObjects) {
  std::vector<MergeConflict> conflicts(2);
  conflicts[0].sourceObject = task;
  conflicts[1].sourceObject = session;
  const Error merge("NSCocoaErrorDomain", 133020, "conflict",
                    ErrorUserInfo{{StoreError::kSaveConflictsKey, object(conflicts)}});
  const Error detached = detachedFromManagedObjects(merge);
  EXPECT_EQ(*detached.userInfoValue<std::int64_t>(saveConflictCountKey), 2);
  EXPECT_EQ(*detached.userInfoValue<std::vector<std::string>>(saveConflictObjectURIsKey),
            (std::vector<std::string>{task->objectID().URIRepresentation(), session->objectID().URIRepresentation()}));
  EXPECT_EQ(detached.userInfo().count(StoreError::kSaveConflictsKey), 0u);

  std::vector<ConstraintConflict> constraints(1);
  constraints[0].constraint = {"identifier"};
  constraints[0].conflictingObjects = {task, session};
  const Error constraint("NSCocoaErrorDomain", 133021, "constraint",
                         ErrorUserInfo{{StoreError::kSaveConflictsKey, object(constraints)}});
  const Error detachedConstraint = detachedFromManagedObjects(constraint);
  EXPECT_EQ(*detachedConstraint.userInfoValue<std::int64_t>(saveConflictCountKey), 1);
  EXPECT_EQ(detachedConstraint.userInfoValue<std::vector<std::string>>(saveConflictObjectURIsKey)->size(), 2u);
}

TEST_F(DetachedErrors, NestedValuesAreSanitisedAndWhatCannotTravelIsDropped) {
  auto inner = std::make_shared<const Error>("Inner", 1, "inner", ErrorUserInfo{{"object", object(session)}});
  const Date date(1000);
  MergeConflict onlyConflict;
  onlyConflict.sourceObject = task;
  ErrorUserInfoArray array{object(task), object(task->objectID()), object(date), object(MergeConflict{}),
                           std::string("text")};
  ErrorUserInfo dictionary{{"object", object(session)}, {"float", object(2.5f)}, {"number", std::int64_t{3}}};
  const Error outer("Outer", 2, "outer",
                    ErrorUserInfo{{"nested", object(inner)},
                                  {"array", object(array)},
                                  {"dictionary", object(dictionary)},
                                  {"set", object(ManagedObjectSet{task})},
                                  {"only a conflict", object(onlyConflict)},
                                  {"float", object(2.5f)}},
                    std::make_shared<const Error>("Underlying", 3, "underlying",
                                                  ErrorUserInfo{{"object", object(task)}}));
  ASSERT_TRUE(holdsManagedObjects(outer));
  const Error detached = detachedFromManagedObjects(outer);
  EXPECT_FALSE(holdsManagedObjects(detached));
  const std::string taskURI = task->objectID().URIRepresentation();
  const std::string sessionURI = session->objectID().URIRepresentation();

  const auto* nested = detached.userInfoObject<std::shared_ptr<const Error>>("nested");
  ASSERT_NE(nested, nullptr);
  EXPECT_TRUE((*nested)->is("Inner", 1));
  EXPECT_EQ(*(*nested)->userInfoValue<std::string>("object"), sessionURI);

  const auto* sanitisedArray = detached.userInfoObject<ErrorUserInfoArray>("array");
  ASSERT_NE(sanitisedArray, nullptr);
  ASSERT_EQ(sanitisedArray->size(), 4u);
  EXPECT_EQ(std::get<std::string>((*sanitisedArray)[0]), taskURI);
  EXPECT_EQ(std::get<std::string>((*sanitisedArray)[1]), taskURI);
  EXPECT_EQ(*member<Date>((*sanitisedArray)[2]), date);
  EXPECT_EQ(std::get<std::string>((*sanitisedArray)[3]), "text");

  const auto* sanitisedDictionary = detached.userInfoObject<ErrorUserInfo>("dictionary");
  ASSERT_NE(sanitisedDictionary, nullptr);
  EXPECT_EQ(sanitisedDictionary->size(), 2u);
  EXPECT_EQ(std::get<std::string>(sanitisedDictionary->at("object")), sessionURI);
  EXPECT_EQ(std::get<std::int64_t>(sanitisedDictionary->at("number")), 3);

  const auto* set = detached.userInfoObject<ErrorUserInfoArray>("set");
  ASSERT_NE(set, nullptr);
  ASSERT_EQ(set->size(), 1u);
  EXPECT_EQ(std::get<std::string>(set->front()), taskURI);

  EXPECT_EQ(detached.userInfo().count("only a conflict"), 0u);
  EXPECT_EQ(detached.userInfo().count("float"), 0u);
  ASSERT_NE(detached.underlyingError(), nullptr);
  EXPECT_TRUE(detached.underlyingError()->is("Underlying", 3));
  EXPECT_EQ(*detached.underlyingError()->userInfoValue<std::string>("object"), taskURI);
}

}  // namespace
}  // namespace kestrona
