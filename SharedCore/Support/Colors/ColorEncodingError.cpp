#include "SharedCore/Support/Colors/ColorEncodingError.h"

#include <utility>

namespace kestrona {
namespace {

constexpr std::string_view kCodingPathKey = "codingPath";
constexpr std::string_view kDebugDescriptionKey = "debugDescription";

std::string describe(const std::vector<std::string>& codingPath, const std::string& debugDescription) {
  if (codingPath.empty()) return debugDescription;
  std::string path;
  for (const std::string& key : codingPath) {
    if (!path.empty()) path += '.';
    path += key;
  }
  return debugDescription + " (at " + path + ")";
}

}  // namespace

ColorEncodingError::ColorEncodingError(Code code, std::vector<std::string> codingPath, std::string debugDescription)
    : CodedError(std::string(kDomain), code, describe(codingPath, debugDescription),
                 {{std::string(kCodingPathKey), codingPath}, {std::string(kDebugDescriptionKey), debugDescription}}) {}

std::vector<std::string> ColorEncodingError::codingPath() const {
  const auto* path = userInfoValue<std::vector<std::string>>(kCodingPathKey);
  return path ? *path : std::vector<std::string>{};
}

std::string ColorEncodingError::debugDescription() const {
  const auto* text = userInfoValue<std::string>(kDebugDescriptionKey);
  return text ? *text : std::string();
}

}  // namespace kestrona
