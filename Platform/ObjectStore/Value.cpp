#include "Platform/ObjectStore/Value.h"

#include <cstdio>

#include "Platform/ObjectStore/ManagedObject.h"

namespace kestrona {

Value::Value(std::string value) : kind_(Kind::string) { payload_.box = new TypedBox<std::string>(std::move(value)); }
Value::Value(Data value) : kind_(Kind::data) { payload_.box = new TypedBox<Data>(std::move(value)); }
Value::Value(ManagedObjectID value) : kind_(Kind::objectID) {
  payload_.box = new TypedBox<ManagedObjectID>(std::move(value));
}
Value::Value(Array value) : kind_(Kind::array) { payload_.box = new TypedBox<Array>(std::move(value)); }
Value::Value(Object value) {
  if (!value) return;
  kind_ = Kind::object;
  payload_.box = new TypedBox<Object>(std::move(value));
}

Value::Value(const Value& other) noexcept : payload_(other.payload_), kind_(other.kind_) {
  if (kind_ >= Kind::string) payload_.box->references.fetch_add(1, std::memory_order_relaxed);
}

Value::Value(Value&& other) noexcept : payload_(other.payload_), kind_(other.kind_) { other.kind_ = Kind::nil; }

Value& Value::operator=(const Value& other) noexcept {
  if (this != &other) {
    Value copy(other);
    *this = std::move(copy);
  }
  return *this;
}

Value& Value::operator=(Value&& other) noexcept {
  if (this != &other) {
    release();
    payload_ = other.payload_;
    kind_ = other.kind_;
    other.kind_ = Kind::nil;
  }
  return *this;
}

Value::~Value() { release(); }

void Value::release() noexcept {
  if (kind_ < Kind::string) return;
  // The last holder deletes the box, after every other holder's use of it.
  if (payload_.box->references.fetch_sub(1, std::memory_order_acq_rel) != 1) return;
  switch (kind_) {
    case Kind::string:
      delete static_cast<TypedBox<std::string>*>(payload_.box);
      break;
    case Kind::data:
      delete static_cast<TypedBox<Data>*>(payload_.box);
      break;
    case Kind::objectID:
      delete static_cast<TypedBox<ManagedObjectID>*>(payload_.box);
      break;
    case Kind::object:
      delete static_cast<TypedBox<Object>*>(payload_.box);
      break;
    case Kind::array:
      delete static_cast<TypedBox<Array>*>(payload_.box);
      break;
    default:
      break;
  }
  kind_ = Kind::nil;
}

std::optional<double> Value::number() const noexcept {
  switch (kind_) {
    case Kind::boolean:
      return payload_.boolean ? 1.0 : 0.0;
    case Kind::integer:
      return static_cast<double>(payload_.integer);
    case Kind::real:
      return payload_.real;
    default:
      return std::nullopt;
  }
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
  if (lhs.kind_ != rhs.kind_) return false;
  if (lhs.kind_ >= Value::Kind::string && lhs.payload_.box == rhs.payload_.box) return true;
  switch (lhs.kind_) {
    case Value::Kind::date:
      return lhs.payload_.date == rhs.payload_.date;
    case Value::Kind::string:
      return *lhs.get<std::string>() == *rhs.get<std::string>();
    case Value::Kind::data:
      return *lhs.get<Data>() == *rhs.get<Data>();
    case Value::Kind::array:
      return *lhs.get<Value::Array>() == *rhs.get<Value::Array>();
    default:
      return false;
  }
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
  char buffer[48];
  switch (kind_) {
    case Kind::nil:
      return "nil";
    case Kind::boolean:
      return payload_.boolean ? "true" : "false";
    case Kind::integer:
      return std::to_string(payload_.integer);
    case Kind::real:
      std::snprintf(buffer, sizeof buffer, "%.17g", payload_.real);
      return buffer;
    case Kind::date:
      std::snprintf(buffer, sizeof buffer, "date(%.6f)", payload_.date.timeIntervalSince1970());
      return buffer;
    case Kind::string:
      return "\"" + *get<std::string>() + "\"";
    case Kind::data:
      return "<" + std::to_string(get<Data>()->bytes.size()) + " bytes>";
    case Kind::objectID:
      return get<ManagedObjectID>()->description();
    case Kind::object:
      return "object " + (*get<Object>())->objectID().description();
    case Kind::array: {
      std::string text = "(";
      const auto& items = *get<Array>();
      for (std::size_t i = 0; i < items.size(); ++i) text += (i ? ", " : "") + items[i].description();
      return text + ")";
    }
  }
  return "nil";
}

}  // namespace kestrona
