// A parameter of an intent: a title shown to the user and an optional value.
//
// A parameter starts without a value; assigning a value (or none) sets it.
// Reading it gives the optional value, as the intent's perform() checks
// for absence itself.
//
// Threading: a value; any thread.
#pragma once

#include <optional>
#include <string_view>
#include <utility>

namespace kestrona {

template <typename Value>
class IntentParameter {
 public:
  // title must outlive the parameter (a literal).
  explicit IntentParameter(std::string_view title) : title_(title) {}

  std::string_view title() const noexcept { return title_; }

  const std::optional<Value>& value() const noexcept { return value_; }
  const std::optional<Value>& operator*() const noexcept { return value_; }

  IntentParameter& operator=(std::optional<Value> value) {
    value_ = std::move(value);
    return *this;
  }

  friend bool operator==(const IntentParameter&, const IntentParameter&) = default;

 private:
  std::string_view title_;
  std::optional<Value> value_;
};

}  // namespace kestrona
