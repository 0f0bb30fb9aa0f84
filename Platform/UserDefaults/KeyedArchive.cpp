#include "Platform/UserDefaults/KeyedArchive.h"

#include <algorithm>
#include <array>
#include <string>

#include <nlohmann/json.hpp>

#include "Platform/UserDefaults/PropertyValueCoding.h"

namespace kestrona {

namespace {

constexpr std::array<std::uint8_t, 4> kMagic{'K', 'S', 'K', 'A'};

}  // namespace

PropertyValue::Data KeyedArchive::archivedData(const std::optional<PropertyValue>& rootObject,
                                               std::string_view className) {
  nlohmann::json document{{"class", std::string(className)}};
  if (rootObject) document["root"] = encodePropertyValue(*rootObject);
  PropertyValue::Data data(kMagic.begin(), kMagic.end());
  data.push_back(kVersion);
  nlohmann::json::to_cbor(document, data);
  return data;
}

std::optional<PropertyValue> KeyedArchive::unarchivedObject(std::string_view className,
                                                            const PropertyValue::Data& data) {
  if (data.size() < kMagic.size() + 1 || !std::equal(kMagic.begin(), kMagic.end(), data.begin())) {
    throw KeyedArchiveError(KeyedArchiveError::Code::notAnArchive, "The data is not a keyed archive");
  }
  const std::uint8_t version = data[kMagic.size()];
  if (version == 0 || version > kVersion) {
    throw KeyedArchiveError(KeyedArchiveError::Code::unsupportedVersion,
                            "The keyed archive has version " + std::to_string(version) + ", which this program cannot read");
  }
  nlohmann::json document;
  try {
    document = nlohmann::json::from_cbor(data.begin() + static_cast<std::ptrdiff_t>(kMagic.size()) + 1, data.end(),
                                         /*strict=*/true, /*allow_exceptions=*/false);
  } catch (const nlohmann::json::exception&) {
    // Even without exceptions the reader throws for a length that no
    // container could have, as a damaged length field gives.
    document = nlohmann::json::value_t::discarded;
  }
  if (document.is_discarded() || !document.is_object()) {
    throw KeyedArchiveError(KeyedArchiveError::Code::damaged, "The keyed archive is damaged");
  }
  const auto archivedClass = document.find("class");
  if (archivedClass == document.end() || !archivedClass->is_string()) {
    throw KeyedArchiveError(KeyedArchiveError::Code::damaged, "The keyed archive names no class");
  }
  if (archivedClass->get_ref<const std::string&>() != className) {
    throw KeyedArchiveError(KeyedArchiveError::Code::wrongClass, "The keyed archive holds a " +
                                                                     archivedClass->get<std::string>() + ", not a " +
                                                                     std::string(className));
  }
  const auto root = document.find("root");
  if (root == document.end()) return std::nullopt;
  try {
    return decodePropertyValue(*root);
  } catch (const PropertyValueCodingError& error) {
    throw KeyedArchiveError(KeyedArchiveError::Code::damaged, "The keyed archive is damaged: " + error.localizedDescription());
  }
}

}  // namespace kestrona
