#include "WidgetData/Records/CodingError.h"

#include <utility>

namespace kestrona {
namespace {

constexpr std::string_view kCodingPathKey = "codingPath";
constexpr std::string_view kDebugDescriptionKey = "debugDescription";

std::string describe(const CodingPath& path, const std::string& debugDescription) {
  if (path.empty()) return debugDescription;
  return debugDescription + " (at " + codingPathText(path) + ")";
}

ErrorUserInfo codingUserInfo(CodingPath path, std::string debugDescription) {
  return {{std::string(kCodingPathKey), std::move(path)},
          {std::string(kDebugDescriptionKey), std::move(debugDescription)}};
}

CodingPath storedPath(const Error& error) {
  const auto* path = error.userInfoValue<std::vector<std::string>>(kCodingPathKey);
  return path ? *path : CodingPath{};
}

std::string storedDebugDescription(const Error& error) {
  const auto* text = error.userInfoValue<std::string>(kDebugDescriptionKey);
  return text ? *text : std::string();
}

CodingPath prepending(std::string_view key, const CodingPath& path) {
  CodingPath longer;
  longer.reserve(path.size() + 1);
  longer.emplace_back(key);
  longer.insert(longer.end(), path.begin(), path.end());
  return longer;
}

}  // namespace

std::string codingPathText(const CodingPath& path) {
  std::string text;
  for (const std::string& key : path) {
    if (!text.empty()) text += '.';
    text += key;
  }
  return text;
}

DecodingError::DecodingError(Code code, CodingPath codingPath, std::string debugDescription,
                             std::shared_ptr<const Error> underlying)
    : CodedError(std::string(kDomain), code, describe(codingPath, debugDescription),
                 codingUserInfo(codingPath, debugDescription), std::move(underlying)) {}

CodingPath DecodingError::codingPath() const { return storedPath(*this); }

std::string DecodingError::debugDescription() const { return storedDebugDescription(*this); }

DecodingError DecodingError::prependingCodingKey(std::string_view key) const {
  return DecodingError(kind(), prepending(key, codingPath()), debugDescription(), underlyingError());
}

EncodingError::EncodingError(Code code, CodingPath codingPath, std::string debugDescription)
    : CodedError(std::string(kDomain), code, describe(codingPath, debugDescription),
                 codingUserInfo(codingPath, debugDescription)) {}

CodingPath EncodingError::codingPath() const { return storedPath(*this); }

std::string EncodingError::debugDescription() const { return storedDebugDescription(*this); }

EncodingError EncodingError::prependingCodingKey(std::string_view key) const {
  return EncodingError(kind(), prepending(key, codingPath()), debugDescription());
}

}  // namespace kestrona
