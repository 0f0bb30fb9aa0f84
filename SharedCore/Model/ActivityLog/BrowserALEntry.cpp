#include "SharedCore/Model/ActivityLog/BrowserALEntry.h"

namespace kestrona {

std::optional<URL> BrowserALEntry::url() { return urlForKey("url"); }

void BrowserALEntry::setUrl(const std::optional<URL>& url) { setURL(url, "url"); }

bool BrowserALEntry::isSimilar(ALEntry& other) {
  auto* browser = dynamic_cast<BrowserALEntry*>(&other);
  if (!browser || !ALEntry::isSimilar(other)) return false;
  const auto host = [](const std::optional<URL>& url) { return url ? url->host() : std::nullopt; };
  return host(url()) == host(browser->url());
}

PropertyValue::Dictionary BrowserALEntry::toDictionary() { return dictionaryWithURL("browser", "url"); }

void BrowserALEntry::populate(const PropertyValue::Dictionary& dictionary) {
  populateWithURL(dictionary, "url");
}

}  // namespace kestrona
