// The outcome of a widget-file read or write: a value or an error.
//
// The reader hands back its record this way instead of throwing, and the
// writer hands its completion the same. The error keeps its own type: test
// it with error().is(domain, code), or get the typed error back with
// errorAs<WidgetError>() to read kind(). Asking a failure for its value, or a
// success for its error, is a fatal error. Immutable once made; safe to
// share between threads when Value is.
#pragma once

#include <concepts>
#include <memory>
#include <utility>
#include <variant>

#include "Platform/Foundation/Error.h"
#include "Platform/Foundation/FatalError.h"

namespace kestrona {

template <typename Value>
class WidgetDataResult {
 public:
  static WidgetDataResult success(Value value) {
    return WidgetDataResult(std::in_place_index<0>, std::move(value));
  }

  template <std::derived_from<Error> E>
  static WidgetDataResult failure(const E& error) {
    return WidgetDataResult(std::in_place_index<1>, std::make_shared<const E>(error));
  }

  // A failure carrying an error that is already shared, keeping its type.
  static WidgetDataResult failure(std::shared_ptr<const Error> error) {
    precondition(error != nullptr, "WidgetDataResult failure without an error");
    return WidgetDataResult(std::in_place_index<1>, std::move(error));
  }

  bool isSuccess() const noexcept { return storage_.index() == 0; }

  const Value& value() const {
    precondition(isSuccess(), "WidgetDataResult: value of a failure");
    return std::get<0>(storage_);
  }

  const Error& error() const { return *sharedError(); }

  const std::shared_ptr<const Error>& sharedError() const {
    precondition(!isSuccess(), "WidgetDataResult: error of a success");
    return std::get<1>(storage_);
  }

  // The error as E, or null for a success or an error of another type.
  template <std::derived_from<Error> E>
  const E* errorAs() const noexcept {
    if (isSuccess()) return nullptr;
    return dynamic_cast<const E*>(std::get<1>(storage_).get());
  }

 private:
  template <std::size_t Index, typename Payload>
  WidgetDataResult(std::in_place_index_t<Index> index, Payload&& payload)
      : storage_(index, std::forward<Payload>(payload)) {}

  std::variant<Value, std::shared_ptr<const Error>> storage_;
};

}  // namespace kestrona
