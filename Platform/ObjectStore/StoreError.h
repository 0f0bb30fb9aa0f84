// The object store's failures.
//
// Every failure of the store is a StoreError in the domain
// "NSCocoaErrorDomain" with one of the codes below, the numbers that the
// callers of the store test for (133000 for an object that is gone). The
// description names the entity, property or file involved; callers decide
// by kind(), never by the text. A predicate format that cannot be parsed is
// a PredicateFormatError instead (see Predicate.h).
#pragma once

#include <cstdint>
#include <string>

#include "Platform/Foundation/Error.h"

namespace kestrona {

enum class StoreErrorCode : std::int64_t {
  fileReadCorruptFile = 259,
  fileReadNoSuchFile = 260,
  managedObjectValidation = 1550,
  validationMissingMandatoryProperty = 1570,
  validationRelationshipDeniedDelete = 1600,
  managedObjectReferentialIntegrity = 133000,
  managedObjectMerge = 133020,
  persistentStoreSave = 134030,
  persistentStoreOperation = 134070,
  persistentStoreOpen = 134080,
  migration = 134110,
};

class StoreError : public CodedError<StoreErrorCode> {
 public:
  static constexpr const char* kDomain = "NSCocoaErrorDomain";
  // User-info keys: the entity and the property a validation error is about,
  // the URI of an object that is gone (referential integrity, 133000), and
  // the SQLite result code.
  static constexpr const char* kEntityKey = "NSValidationErrorEntity";
  static constexpr const char* kKeyKey = "NSValidationErrorKey";
  static constexpr const char* kObjectURIKey = "NSValidationErrorObjectURI";
  static constexpr const char* kSQLiteCodeKey = "NSSQLiteErrorDomain";
  // The conflict records of a failed save (see MergeConflict.h).
  static constexpr const char* kSaveConflictsKey = "NSPersistentStoreSaveConflictsErrorKey";
  // The object a validation error is about, as an ErrorUserInfoObject
  // holding its std::shared_ptr<ManagedObject>.
  static constexpr const char* kValidationObjectKey = "NSValidationErrorObject";

  StoreError(StoreErrorCode code, std::string description, ErrorUserInfo userInfo = {})
      : CodedError(kDomain, code, std::move(description), std::move(userInfo)) {}
};

}  // namespace kestrona
