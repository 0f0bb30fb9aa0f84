// User defaults: small typed settings that survive restarts.
//
// Settings live in domains. Each domain is one file,
// "<directory>/<domain>.json", where the directory is
// "$XDG_CONFIG_HOME/kestrona" or, without XDG_CONFIG_HOME,
// "$HOME/.config/kestrona" (the home directory comes from the password
// database when HOME is unset too). The environment is read each time a
// shared instance is asked for, so a process that changes XDG_CONFIG_HOME
// gets the instance of the new directory.
//
// The standard domain of a process is named by setStandardDomain() at the
// start of main (the application passes its bundle identifier), and
// otherwise by the file name of the running executable. standard() and
// forDomain() give one shared instance per directory and domain for the
// life of the process; make() gives an unshared one.
//
// Reading: an instance reads its file once, when it is made, and again at
// each synchronize(). Reads of a missing key, or of a key holding a value of
// another type, give the type's default: false, 0, 0.0, or none for texts,
// data, dates, arrays and dictionaries. The scalar reads convert between
// booleans, integers, numbers and texts as each function says.
//
// Writing: set() and removeObject() change the instance at once and mark
// the key as changed. synchronize() reads the file again, lays this
// instance's changed keys over what it found (so changes that another
// process made to other keys are kept), and writes the result atomically: a
// temporary file in the same directory, flushed to disk, renamed over the
// domain's file. A text (key or value) that is not UTF-8 cannot be held by
// the file as it is: it is written with each invalid byte sequence replaced
// by U+FFFD, reported to the log, and reads back so after the next
// synchronize(). Changes not yet synchronised are written, best effort, when
// the instance is destroyed (shared instances at the normal end of the
// process); a process that aborts loses them.
//
// Damage: a file that cannot be parsed, has the wrong shape, or was written
// by a newer version of the format is reported to the log, renamed aside to
// "<domain>.damaged-<n>.json" with the first n that names no existing file,
// and read as empty. It is never overwritten and never a crash. A failure to
// write is reported to the log and thrown as a UserDefaultsError that says
// why (UserDefaultsError.h); the changes stay pending for the next attempt.
//
// Threading: every member may be called from any thread; an instance
// serialises its callers with a lock of its own. Two processes writing the
// same key at once: the last synchronize() wins.
#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Time/Date.h"
#include "Platform/UserDefaults/PropertyValue.h"
#include "Platform/UserDefaults/UserDefaultsError.h"

namespace kestrona {

class UserDefaults {
 public:
  // The version written into every file; files of a later version are kept
  // aside as damaged rather than misread.
  static constexpr int kFileFormatVersion = 1;

  // The shared instance of the standard domain.
  static std::shared_ptr<UserDefaults> standard();
  // The shared instance of domain; null when domain cannot name a file (it
  // is empty, ".", "..", or contains "/" or a NUL character).
  [[nodiscard]] static std::shared_ptr<UserDefaults> forDomain(std::string_view domain);
  // An unshared instance of domain over a file in directory; null for a bad
  // domain name. Two instances over one file see each other's changes only
  // after synchronize().
  [[nodiscard]] static std::shared_ptr<UserDefaults> make(std::string_view domain, std::filesystem::path directory);

  // Names the standard domain; call before the first standard(). An empty
  // name restores the default, the executable's file name.
  static void setStandardDomain(std::string domain);
  static std::string standardDomain();
  // The directory of the shared instances, by the environment as it is now.
  static std::filesystem::path defaultDirectory();

  ~UserDefaults();
  UserDefaults(const UserDefaults&) = delete;
  UserDefaults& operator=(const UserDefaults&) = delete;

  const std::string& domain() const noexcept { return domain_; }
  // The domain's file.
  std::filesystem::path fileURL() const { return directory_ / (domain_ + ".json"); }

  // The value under key, of any type.
  std::optional<PropertyValue> objectForKey(std::string_view key) const;
  // A boolean; an integer or number is true when not 0; a text is true when
  // it is "true", "yes" or a whole number other than 0 (case ignored).
  bool boolForKey(std::string_view key) const;
  // An integer; a number is truncated towards 0 (0 when out of range); a
  // boolean is 0 or 1; a text that is a whole decimal number is read.
  std::int64_t integerForKey(std::string_view key) const;
  // A number; an integer or boolean converts; a text that is a decimal
  // number is read.
  double doubleForKey(std::string_view key) const;
  // Texts only.
  std::optional<std::string> stringForKey(std::string_view key) const;
  std::optional<PropertyValue::Data> dataForKey(std::string_view key) const;
  std::optional<Date> dateForKey(std::string_view key) const;
  std::optional<PropertyValue::Array> arrayForKey(std::string_view key) const;
  std::optional<PropertyValue::Dictionary> dictionaryForKey(std::string_view key) const;
  // An array whose elements are all texts; none for any other value.
  std::optional<std::vector<std::string>> stringArrayForKey(std::string_view key) const;
  // Every key and value of the domain as this instance sees it.
  PropertyValue::Dictionary dictionaryRepresentation() const;

  void set(PropertyValue value, std::string_view key);
  void removeObject(std::string_view key);

  // Reads the file again and writes this instance's changes into it, as
  // above; with nothing to write it only reads. Throws UserDefaultsError
  // when writing failed.
  void synchronize();

 private:
  UserDefaults(std::string domain, std::filesystem::path directory);

  // The values in the file; empty when it is missing, damaged or unreadable.
  PropertyValue::Dictionary readFileLocked();
  void writeFileLocked(const PropertyValue::Dictionary& values);
  const PropertyValue* findLocked(std::string_view key) const;

  const std::string domain_;
  const std::filesystem::path directory_;
  mutable std::mutex mutex_;
  PropertyValue::Dictionary values_;
  // Keys set or removed since the last successful synchronize().
  std::set<std::string, std::less<>> changedKeys_;
  // The file exists but could neither be read nor kept aside, so writing
  // would destroy what it holds.
  bool fileMustNotBeReplaced_ = false;
};

}  // namespace kestrona
