#include "WidgetData/Records/CodingError.h"

#include <utility>

namespace kestrona {
namespace {

CodingPath prepending(std::string_view key, const CodingPath& path) {
  CodingPath longer;
  longer.reserve(path.size() + 1);
  longer.emplace_back(key);
  longer.insert(longer.end(), path.begin(), path.end());
  return longer;
}

}  // namespace

DecodingError::DecodingError(Code code, CodingPath codingPath, std::string debugDescription,
                             std::shared_ptr<const Error> underlying)
    : CodingError(kDomain, code, std::move(codingPath), std::move(debugDescription), std::move(underlying)) {}

DecodingError DecodingError::prependingCodingKey(std::string_view key) const {
  return DecodingError(kind(), prepending(key, codingPath()), debugDescription(), underlyingError());
}

EncodingError::EncodingError(Code code, CodingPath codingPath, std::string debugDescription)
    : CodingError(kDomain, code, std::move(codingPath), std::move(debugDescription)) {}

EncodingError EncodingError::prependingCodingKey(std::string_view key) const {
  return EncodingError(kind(), prepending(key, codingPath()), debugDescription());
}

}  // namespace kestrona
