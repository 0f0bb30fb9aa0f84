#include "SharedCore/Model/ActivityLog/ALEntry.h"

#include "SharedCore/Support/TimeText/TimeIntervalStringFormat.h"

namespace kestrona {

namespace {

// Copies dictionary[key] into object's attribute when it holds a T.
template <typename T>
void populateValue(ManagedObject& object, const PropertyValue::Dictionary& dictionary, std::string_view key) {
  const auto found = dictionary.find(key);
  if (found == dictionary.end()) return;
  if (const T* value = found->second.getIf<T>()) object.setValue(Value(*value), key);
}

}  // namespace

bool ALEntry::hasTitle() {
  const auto text = title();
  return text && !text->empty();
}

Date ALEntry::effectiveBegin() {
  const auto date = begin();
  return date ? *date : Date::now();
}

Date ALEntry::effectiveEnd() {
  const auto date = end();
  return date ? *date : Date::now();
}

std::pair<Date, Date> ALEntry::effectiveDates() {
  const auto from = begin();
  const auto to = end();
  const Date now = from && to ? Date() : Date::now();
  return {from.value_or(now), to.value_or(now)};
}

double ALEntry::effectiveDuration() {
  const auto [from, to] = effectiveDates();
  return kestrona::effectiveDuration(from, to);
}

DateInterval ALEntry::dateInterval() {
  const auto [from, to] = effectiveDates();
  return DateInterval(from, to > from ? to : from);
}

bool ALEntry::isRunning() { return begin().has_value() && !end().has_value(); }

bool ALEntry::isSimilar(ALEntry& other) { return bundleId() == other.bundleId(); }

PropertyValue::Dictionary ALEntry::toDictionary() {
  PropertyValue::Dictionary dictionary;
  if (const auto date = begin()) dictionary.emplace("begin", *date);
  if (const auto date = end()) dictionary.emplace("end", *date);
  if (const auto text = bundleId()) dictionary.emplace("bundleId", *text);
  if (const auto text = title()) dictionary.emplace("title", *text);
  return dictionary;
}

void ALEntry::populate(const PropertyValue::Dictionary& dictionary) {
  populateValue<Date>(*this, dictionary, "begin");
  populateValue<Date>(*this, dictionary, "end");
  populateValue<std::string>(*this, dictionary, "bundleId");
  populateValue<std::string>(*this, dictionary, "title");
}

std::optional<URL> ALEntry::urlForKey(std::string_view key) {
  const auto text = stringForKey(key);
  return text ? URL::fromString(*text) : std::nullopt;
}

void ALEntry::setURL(const std::optional<URL>& url, std::string_view key) {
  setValue(url ? Value(url->absoluteString()) : Value(), key);
}

PropertyValue::Dictionary ALEntry::dictionaryWithURL(std::string_view type, std::string_view key) {
  auto dictionary = ALEntry::toDictionary();
  dictionary.emplace("type", std::string(type));
  if (const auto url = urlForKey(key)) dictionary.emplace(std::string(key), url->absoluteString());
  return dictionary;
}

void ALEntry::populateWithURL(const PropertyValue::Dictionary& dictionary, std::string_view key) {
  ALEntry::populate(dictionary);
  const auto found = dictionary.find(key);
  if (found == dictionary.end()) return;
  const auto* text = found->second.getIf<std::string>();
  if (!text) return;
  setURL(URL::fromString(*text), key);
}

}  // namespace kestrona
