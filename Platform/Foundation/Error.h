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

#include <cstdint>
#include <exception>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace kestrona {

// A value in an error's user info: text, an integer, a floating-point number
// or a list of texts. Never a live object, so errors outlive what failed.
using ErrorUserInfoValue = std::variant<std::string, std::int64_t, double, std::vector<std::string>>;
using ErrorUserInfo = std::map<std::string, ErrorUserInfoValue, std::less<>>;

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
