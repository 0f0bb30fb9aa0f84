#include "SharedCore/Model/ActivityLog/DocumentAppALEntry.h"

namespace kestrona {

std::optional<URL> DocumentAppALEntry::documentUrl() { return urlForKey("documentUrl"); }

void DocumentAppALEntry::setDocumentUrl(const std::optional<URL>& url) { setURL(url, "documentUrl"); }

bool DocumentAppALEntry::isSimilar(ALEntry& other) {
  auto* document = dynamic_cast<DocumentAppALEntry*>(&other);
  return document && ALEntry::isSimilar(other) && documentUrl() == document->documentUrl();
}

PropertyValue::Dictionary DocumentAppALEntry::toDictionary() { return dictionaryWithURL("doc", "documentUrl"); }

void DocumentAppALEntry::populate(const PropertyValue::Dictionary& dictionary) {
  populateWithURL(dictionary, "documentUrl");
}

}  // namespace kestrona
