// Typed failures.
//
// Every failure in this system is an Error: a domain (which subsystem or
// error enumeration it comes from), an integer code within that domain, a
// description for people and logs, optional user info, and optionally the
// error that caused it. Callers decide by domain and code, never by the
// description text.
//
// An error enumeration of the design becomes a class derived from
// CodedError<Code>, whose kind() gives the enumeration back; see
// docs/conventions.md. Errors are values: copying one is cheap and safe from
// any thread.
#pragma once

#include <any>
#include <cstdint>
#include <exception>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace kestrona {

// What the plain kinds of user info cannot hold: a live object (a managed
// object, a conflict record), a nested error (std::shared_ptr<const Error>),
// a date, or a list or dictionary of such values (ErrorUserInfoArray,
// ErrorUserInfo). The explicit wrapper keeps text and numbers out of it.
//
// An error that holds a live object belongs to the thread of that object:
// before it leaves that thread it is detached, which turns live objects into
// URI strings (see the store stack's detachedFromManagedObjects). Errors made
// only of the plain kinds may go anywhere.
struct ErrorUserInfoObject {
  explicit ErrorUserInfoObject(std::any object) : value(std::move(object)) {}
  std::any value;
};

// A value in an error's user info: text, an integer, a floating-point
// number, a list of texts, or an object as above.
using ErrorUserInfoValue =
    std::variant<std::string, std::int64_t, double, std::vector<std::string>, ErrorUserInfoObject>;
using ErrorUserInfo = std::map<std::string, ErrorUserInfoValue, std::less<>>;
using ErrorUserInfoArray = std::vector<ErrorUserInfoValue>;

class Error : public std::exception {
 public:
  Error(std::string domain, std::int64_t code, std::string description, ErrorUserInfo userInfo = {},
        std::shared_ptr<const Error> underlying = nullptr);

  const std::string& domain() const noexcept { return domain_; }
  std::int64_t code() const noexcept { return code_; }
  const std::string& localizedDescription() const noexcept { return description_; }
  const ErrorUserInfo& userInfo() const noexcept { return userInfo_; }
  // The error that caused this one, or null.
  const std::shared_ptr<const Error>& underlyingError() const noexcept { return underlying_; }

  // The user-info value under key, or null when absent or of another type.
  template <typename T>
  const T* userInfoValue(std::string_view key) const noexcept {
    auto found = userInfo_.find(key);
    return found == userInfo_.end() ? nullptr : std::get_if<T>(&found->second);
  }
  // The object of type T kept under key as an ErrorUserInfoObject, or null.
  template <typename T>
  const T* userInfoObject(std::string_view key) const noexcept {
    const auto* object = userInfoValue<ErrorUserInfoObject>(key);
    return object == nullptr ? nullptr : std::any_cast<T>(&object->value);
  }

  bool is(std::string_view domain, std::int64_t code) const noexcept {
    return domain_ == domain && code_ == code;
  }

  // "<description> (<domain> <code>)"; for logs.
  const char* what() const noexcept override { return what_.c_str(); }

 private:
  std::string domain_;
  std::int64_t code_;
  std::string description_;
  ErrorUserInfo userInfo_;
  std::shared_ptr<const Error> underlying_;
  std::string what_;
};

// An error whose codes are the cases of an enumeration.
template <typename Code>
class CodedError : public Error {
 public:
  CodedError(std::string domain, Code code, std::string description, ErrorUserInfo userInfo = {},
             std::shared_ptr<const Error> underlying = nullptr)
      : Error(std::move(domain), static_cast<std::int64_t>(code), std::move(description),
              std::move(userInfo), std::move(underlying)) {}

  Code kind() const noexcept { return static_cast<Code>(code()); }
};

}  // namespace kestrona
