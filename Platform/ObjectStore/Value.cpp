#include "Platform/ObjectStore/Value.h"

#include <cstdio>
#include <type_traits>

#include "Platform/ObjectStore/ManagedObject.h"

namespace kestrona {

Value::Value(Object value) {
  if (value) storage_ = std::move(value);
}

std::optional<double> Value::number() const noexcept {
  if (auto b = get<bool>()) return *b ? 1.0 : 0.0;
  if (auto i = get<std::int64_t>()) return static_cast<double>(*i);
  if (auto d = get<double>()) return *d;
  return std::nullopt;
}

std::optional<ManagedObjectID> Value::objectID() const {
  if (auto id = get<ManagedObjectID>()) return *id;
  if (auto object = get<Object>()) return (*object)->objectID();
  return std::nullopt;
}

bool operator==(const Value& lhs, const Value& rhs) {
  if (lhs.isNil() || rhs.isNil()) return lhs.isNil() && rhs.isNil();
  auto leftNumber = lhs.number();
  auto rightNumber = rhs.number();
  if (leftNumber || rightNumber) {
    if (!leftNumber || !rightNumber) return false;
    // Two integers compare exactly, beyond a double's 53 bits.
    auto li = lhs.get<std::int64_t>();
    auto ri = rhs.get<std::int64_t>();
    if (li && ri) return *li == *ri;
    return *leftNumber == *rightNumber;
  }
  auto leftID = lhs.objectID();
  auto rightID = rhs.objectID();
  if (leftID || rightID) return leftID && rightID && *leftID == *rightID;
  return lhs.storage_ == rhs.storage_;
}

std::partial_ordering operator<=>(const Value& lhs, const Value& rhs) {
  auto leftNumber = lhs.number();
  auto rightNumber = rhs.number();
  if (leftNumber && rightNumber) {
    auto li = lhs.get<std::int64_t>();
    auto ri = rhs.get<std::int64_t>();
    if (li && ri) return *li <=> *ri;
    return *leftNumber <=> *rightNumber;
  }
  if (auto ld = lhs.get<Date>(); ld) {
    if (auto rd = rhs.get<Date>()) return ld->timeIntervalSince1970() <=> rd->timeIntervalSince1970();
  }
  if (auto ls = lhs.get<std::string>(); ls) {
    if (auto rs = rhs.get<std::string>()) {
      int result = ls->compare(*rs);
      return result < 0 ? std::partial_ordering::less
                        : result > 0 ? std::partial_ordering::greater : std::partial_ordering::equivalent;
    }
  }
  return std::partial_ordering::unordered;
}

std::string Value::description() const {
  return std::visit(
      [](const auto& value) -> std::string {
        using T = std::decay_t<decltype(value)>;
        if constexpr (std::is_same_v<T, std::monostate>) {
          return "nil";
        } else if constexpr (std::is_same_v<T, bool>) {
          return value ? "true" : "false";
        } else if constexpr (std::is_same_v<T, std::int64_t>) {
          return std::to_string(value);
        } else if constexpr (std::is_same_v<T, double>) {
          char buffer[32];
          std::snprintf(buffer, sizeof buffer, "%.17g", value);
          return buffer;
        } else if constexpr (std::is_same_v<T, std::string>) {
          return "\"" + value + "\"";
        } else if constexpr (std::is_same_v<T, Date>) {
          char buffer[48];
          std::snprintf(buffer, sizeof buffer, "date(%.6f)", value.timeIntervalSince1970());
          return buffer;
        } else if constexpr (std::is_same_v<T, Data>) {
          std::string text = "<";
          text += std::to_string(value.bytes.size());
          return text + " bytes>";
        } else if constexpr (std::is_same_v<T, ManagedObjectID>) {
          return value.description();
        } else if constexpr (std::is_same_v<T, Value::Object>) {
          std::string text = "object ";
          return text + value->objectID().description();
        } else {
          std::string text = "(";
          for (std::size_t i = 0; i < value.size(); ++i) {
            if (i) text += ", ";
            text += value[i].description();
          }
          return text + ")";
        }
      },
      storage_);
}

}  // namespace kestrona
