// An activity log entry of an application with documents (entity
// "DocumentAppALEntry", under "ALEntry"): adds the documentUrl. Two such
// entries are the same activity when the application and the whole document
// URL agree. Its dictionary adds "type": "doc" and "documentUrl" (the
// absolute text). The URL is stored as its absolute text.
//
// Threading: only on the context's queue.
#pragma once

#include <optional>
#include <string_view>

#include "Platform/URL/URL.h"
#include "SharedCore/Model/ActivityLog/ALEntry.h"

namespace kestrona {

class DocumentAppALEntry : public ALEntry {
 public:
  explicit DocumentAppALEntry(Construction construction) : ALEntry(std::move(construction)) {}

  static std::string_view entityName() { return "DocumentAppALEntry"; }
  static FetchRequest fetchRequest() { return FetchRequest("DocumentAppALEntry"); }

  std::optional<URL> documentUrl();
  void setDocumentUrl(const std::optional<URL>& url);

  bool isSimilar(ALEntry& other) override;
  PropertyValue::Dictionary toDictionary() override;
  void populate(const PropertyValue::Dictionary& dictionary) override;
};

}  // namespace kestrona
