#include "Platform/Foundation/CodingError.h"

namespace kestrona {
namespace {

constexpr std::string_view kCodingPathKey = "codingPath";
constexpr std::string_view kDebugDescriptionKey = "debugDescription";

}  // namespace

std::string codingPathText(const CodingPath& path) {
  std::string text;
  for (const std::string& key : path) {
    if (!text.empty()) text += '.';
    text += key;
  }
  return text;
}

namespace coding {

std::string describe(const CodingPath& path, const std::string& debugDescription) {
  if (path.empty()) return debugDescription;
  return debugDescription + " (at " + codingPathText(path) + ")";
}

ErrorUserInfo userInfo(CodingPath path, std::string debugDescription) {
  return {{std::string(kCodingPathKey), std::move(path)},
          {std::string(kDebugDescriptionKey), std::move(debugDescription)}};
}

CodingPath codingPath(const Error& error) {
  const auto* path = error.userInfoValue<std::vector<std::string>>(kCodingPathKey);
  return path ? *path : CodingPath{};
}

std::string debugDescription(const Error& error) {
  const auto* text = error.userInfoValue<std::string>(kDebugDescriptionKey);
  return text ? *text : std::string();
}

}  // namespace coding
}  // namespace kestrona
