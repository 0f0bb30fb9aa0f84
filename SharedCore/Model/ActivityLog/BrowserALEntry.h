// An activity log entry of a web browser (entity "BrowserALEntry", under
// "ALEntry"): adds the page's url. Two browser entries are the same
// activity when the application and the url's host agree: two pages of one
// site are one activity. Its dictionary adds "type": "browser" and "url"
// (the absolute text). The url is stored as its absolute text.
//
// Threading: only on the context's queue.
#pragma once

#include <optional>
#include <string_view>

#include "Platform/URL/URL.h"
#include "SharedCore/Model/ActivityLog/ALEntry.h"

namespace kestrona {

class BrowserALEntry : public ALEntry {
 public:
  explicit BrowserALEntry(Construction construction) : ALEntry(std::move(construction)) {}

  static std::string_view entityName() { return "BrowserALEntry"; }
  static FetchRequest fetchRequest() { return FetchRequest("BrowserALEntry"); }

  std::optional<URL> url();
  void setUrl(const std::optional<URL>& url);

  bool isSimilar(ALEntry& other) override;
  PropertyValue::Dictionary toDictionary() override;
  void populate(const PropertyValue::Dictionary& dictionary) override;
};

}  // namespace kestrona
