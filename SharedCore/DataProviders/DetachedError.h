// Errors that no longer hold managed objects.
//
// A failed save raises an error that holds objects of the context that
// failed (the object a validation is about, conflict records); that context
// is about to go away and the error is about to cross threads. Before it
// leaves the write queue it is detached:
//
// - holdsManagedObjects(error) is the entry rule: whether some user-info
//   value (or the underlying error) holds a std::shared_ptr<ManagedObject>,
//   a MergeConflict or a ConstraintConflict, directly or inside a nested
//   error, an array (ErrorUserInfoArray, std::vector), a set
//   (ManagedObjectSet) or a dictionary (ErrorUserInfo). An object ID is not
//   a reference and does not count.
// - detachedFromManagedObjects(error) gives the error itself when that is
//   false, and otherwise a new Error with the old domain, code and
//   description, whose user info is rebuilt:
//   - "NSValidationErrorObject" holding a managed object becomes
//     "KSValidationObjectURI" (the absolute text of the object's URI) and
//     "KSValidationObjectEntityName";
//   - "NSPersistentStoreSaveConflictsErrorKey" holding a
//     std::vector<MergeConflict> or std::vector<ConstraintConflict> becomes
//     "KSSaveConflictCount" (the number of records, an integer) and
//     "KSSaveConflictObjectURIs" (the URIs of their objects, a list of texts);
//   - every other value is sanitised and kept if anything is left: a nested
//     error is detached in turn; a managed object or an object ID becomes its
//     URI text; texts, numbers, Date, Data, URL, UUID and nil (std::monostate
//     or nullptr) stay; arrays, sets and dictionaries are rebuilt from their
//     sanitised members, leaving out members with nothing left, and come out
//     as ErrorUserInfoArray and ErrorUserInfo; anything else is dropped;
//   - "NSLocalizedDescription" holds the old error's localizedDescription.
//   The underlying error is detached too.
//
// The rebuilt error is a plain Error: callers test it with is(domain, code),
// which it keeps. Free functions of values; call them on the thread that owns
// the objects (the failing context's queue).
#pragma once

#include <string_view>

#include "Platform/Foundation/Error.h"

namespace kestrona {

inline constexpr std::string_view validationObjectURIKey = "KSValidationObjectURI";
inline constexpr std::string_view validationObjectEntityNameKey = "KSValidationObjectEntityName";
inline constexpr std::string_view saveConflictCountKey = "KSSaveConflictCount";
inline constexpr std::string_view saveConflictObjectURIsKey = "KSSaveConflictObjectURIs";
inline constexpr std::string_view NSLocalizedDescriptionKey = "NSLocalizedDescription";

bool holdsManagedObjects(const Error& error);
Error detachedFromManagedObjects(const Error& error);

}  // namespace kestrona
