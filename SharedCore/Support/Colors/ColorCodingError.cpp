#include "SharedCore/Support/Colors/ColorCodingError.h"

namespace kestrona::colorcoding {
namespace {

constexpr std::string_view kCodingPathKey = "codingPath";
constexpr std::string_view kDebugDescriptionKey = "debugDescription";

}  // namespace

std::string describe(const std::vector<std::string>& codingPath, const std::string& debugDescription) {
  if (codingPath.empty()) return debugDescription;
  std::string path;
  for (const std::string& key : codingPath) {
    if (!path.empty()) path += '.';
    path += key;
  }
  return debugDescription + " (at " + path + ")";
}

ErrorUserInfo userInfo(std::vector<std::string> codingPath, std::string debugDescription) {
  return {{std::string(kCodingPathKey), std::move(codingPath)},
          {std::string(kDebugDescriptionKey), std::move(debugDescription)}};
}

std::vector<std::string> codingPath(const Error& error) {
  const auto* path = error.userInfoValue<std::vector<std::string>>(kCodingPathKey);
  return path ? *path : std::vector<std::string>{};
}

std::string debugDescription(const Error& error) {
  const auto* text = error.userInfoValue<std::string>(kDebugDescriptionKey);
  return text ? *text : std::string();
}

}  // namespace kestrona::colorcoding
