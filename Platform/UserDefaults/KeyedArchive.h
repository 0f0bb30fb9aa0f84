// Keyed archives: a property value as binary data that reads back exactly.
//
// An archive is what user defaults hold when a caller stores an object that
// is not itself a property value, such as the URI of a stored object, and
// what a transformable attribute of the store holds for a dictionary. Its
// bytes are:
//
//   "KSKA"                 four bytes that mark an archive
//   version                one byte, kVersion
//   CBOR document          {"class": <class name>, "root": <value>}, the
//                          value in the JSON form of PropertyValueCoding.h;
//                          "root" is absent when nothing was archived
//
// The class name stands for the type of the archived object ("URL",
// "Dictionary"); unarchiving asks for the class it expects and refuses any
// other, so a reader never takes one kind of object for another.
//
// Failures are KeyedArchiveError values: data that is not an archive, an
// archive of a later version, a damaged one, or one of another class. They
// are for the caller to log; nothing here crashes on bad data. Pure
// functions, thread-safe.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "Platform/Foundation/Error.h"
#include "Platform/UserDefaults/PropertyValue.h"

namespace kestrona {

enum class KeyedArchiveErrorCode { notAnArchive, unsupportedVersion, damaged, wrongClass };

class KeyedArchiveError : public CodedError<KeyedArchiveErrorCode> {
 public:
  using Code = KeyedArchiveErrorCode;

  KeyedArchiveError(Code code, std::string description)
      : CodedError("KeyedArchiveError", code, std::move(description)) {}
};

struct KeyedArchive {
  static constexpr std::uint8_t kVersion = 1;

  // The archive of rootObject (none archives nothing) as an object of
  // className.
  [[nodiscard]] static PropertyValue::Data archivedData(const std::optional<PropertyValue>& rootObject, std::string_view className);

  // The object in data, which must be an archive of className; none when it
  // holds nothing. Throws KeyedArchiveError.
  [[nodiscard]] static std::optional<PropertyValue> unarchivedObject(std::string_view className, const PropertyValue::Data& data);
};

}  // namespace kestrona
