// One entry of the activity log (entity "ALEntry"): which application was in
// use, under which window title, from begin to end; a nil end means the
// activity goes on. It has no identifier. BrowserALEntry and
// DocumentAppALEntry add the page or the document.
//
// The effective dates put the present moment in for a missing begin or end;
// effectiveDuration and dateInterval read the present once per call, so an
// entry with neither date lasts 0 seconds. Durations are whole seconds, as
// for time entries. dateInterval never runs backwards: an end before begin
// gives a zero interval at begin.
//
// isSimilar() says whether two entries are the same activity: the same
// application (two missing identifiers count as equal) and, in the
// subclasses, an other entry of the same class with the same host (browser)
// or the same document. It is not symmetric across classes.
//
// toDictionary() and populate() are the exchange form: "begin" and "end"
// (dates), "bundleId" and "title" (texts), each written only when set;
// populate() takes a key only when it holds a value of the right type and
// leaves the attribute alone otherwise.
//
// Threading: only on the context's queue.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "Platform/ObjectStore/FetchRequest.h"
#include "Platform/ObjectStore/ManagedObject.h"
#include "Platform/Time/DateInterval.h"
#include "Platform/URL/URL.h"
#include "Platform/UserDefaults/PropertyValue.h"
#include "SharedCore/Model/EntityValues.h"

namespace kestrona {

class ALEntry : public ManagedObject {
 public:
  explicit ALEntry(Construction construction) : ManagedObject(std::move(construction)) {}

  static FetchRequest fetchRequest() { return FetchRequest("ALEntry"); }

  std::optional<Date> begin() { return dateForKey("begin"); }
  void setBegin(std::optional<Date> begin) { setValue(valueOf(begin), "begin"); }
  std::optional<Date> end() { return dateForKey("end"); }
  void setEnd(std::optional<Date> end) { setValue(valueOf(end), "end"); }
  std::optional<std::string> bundleId() { return stringForKey("bundleId"); }
  void setBundleId(const std::optional<std::string>& bundleId) { setValue(valueOf(bundleId), "bundleId"); }
  std::optional<std::string> title() { return stringForKey("title"); }
  void setTitle(const std::optional<std::string>& title) { setValue(valueOf(title), "title"); }

  bool hasTitle();
  Date effectiveBegin();
  Date effectiveEnd();
  double effectiveDuration();
  DateInterval dateInterval();
  // begin set and end nil.
  bool isRunning();

  virtual bool isSimilar(ALEntry& other);
  virtual PropertyValue::Dictionary toDictionary();
  virtual void populate(const PropertyValue::Dictionary& dictionary);

 protected:
  // The URL attributes of the subclasses, stored as their absolute text.
  std::optional<URL> urlForKey(std::string_view key);
  void setURL(const std::optional<URL>& url, std::string_view key);
  // toDictionary() with "type" and the absolute text of the URL under key.
  PropertyValue::Dictionary dictionaryWithURL(std::string_view type, std::string_view key);
  // Runs populate() and then sets key to the URL in dictionary[key] when that
  // is a text (none when it is no valid URL); leaves it when the key is
  // missing or not a text.
  void populateWithURL(const PropertyValue::Dictionary& dictionary, std::string_view key);

 private:
  // The effective dates with one reading of the present.
  std::pair<Date, Date> effectiveDates();
};

}  // namespace kestrona
