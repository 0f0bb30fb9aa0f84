#include "SharedCore/Model/Rules/Rule.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <string_view>
#include <utility>

#include "Platform/Bundle/Bundle.h"
#include "Platform/URL/URL.h"
#include "Platform/UserDefaults/KeyedArchive.h"

namespace kestrona {

namespace {

constexpr std::string_view kDictionaryClass = "Dictionary";

// The applications that the toolbox installs under names of its own, by a
// word of the folder name. No word contains another.
constexpr std::array<std::pair<std::string_view, std::string_view>, 11> kToolboxIdentifiers = {{
    {"intellij", "com.jetbrains.intellij"},
    {"webstorm", "com.jetbrains.webstorm"},
    {"appcode", "com.jetbrains.appcode"},
    {"goland", "com.jetbrains.goland"},
    {"phpstorm", "com.jetbrains.phpstorm"},
    {"pycharm", "com.jetbrains.pycharm"},
    {"rubymine", "com.jetbrains.rubymine"},
    {"clion", "com.jetbrains.clion"},
    {"rider", "com.jetbrains.rider"},
    {"projector", "com.electron.projector"},
    {"mps", "com.jetbrains.mps"},
}};

std::optional<std::string> toolboxIdentifier(const std::string& applicationPath) {
  if (applicationPath.find("/JetBrains Toolbox/") == std::string::npos) return std::nullopt;
  std::string name = URL::fileURLWithPath(applicationPath).lastPathComponent();
  std::transform(name.begin(), name.end(), name.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  const auto contains = [&name](std::string_view word) { return name.find(word) != std::string::npos; };
  if (contains("intellij") && contains("community")) return "com.jetbrains.intellij.ce";
  if (contains("pycharm") && contains("community")) return "com.jetbrains.pycharm.ce";
  for (const auto& [word, identifier] : kToolboxIdentifiers) {
    if (contains(word)) return std::string(identifier);
  }
  return std::nullopt;
}

}  // namespace

RuleType Rule::type() { return fromRawValue<RuleType>(typeValue()).value_or(RuleType::kind6); }

TextMatchRelation Rule::textMatchRelation() {
  return fromRawValue<TextMatchRelation>(relationValue()).value_or(TextMatchRelation::contains);
}

FileMatchRelation Rule::fileMatchRelation() {
  return fromRawValue<FileMatchRelation>(relationValue()).value_or(FileMatchRelation::pathIs);
}

std::optional<std::string> Rule::bundleId() {
  const auto path = applicationPath();
  if (!path) return std::nullopt;
  if (auto identifier = toolboxIdentifier(*path)) return identifier;
  const auto bundle = Bundle::fromPath(URL::fileURLWithPath(*path).filesystemPath());
  return bundle ? bundle->bundleIdentifier() : std::nullopt;
}

std::optional<PropertyValue::Dictionary> Rule::userInfoDict() {
  const Value stored = valueForKey("userInfo");
  const auto* data = stored.get<Data>();
  if (!data) return std::nullopt;
  std::optional<PropertyValue> object;
  try {
    object = KeyedArchive::unarchivedObject(kDictionaryClass, data->bytes);
  } catch (const KeyedArchiveError&) {
    // Data that is no dictionary's archive is no dictionary: the same answer
    // as for a value of another kind.
    return std::nullopt;
  }
  const auto* dictionary = object ? object->getIf<PropertyValue::Dictionary>() : nullptr;
  return dictionary ? std::optional<PropertyValue::Dictionary>(*dictionary) : std::nullopt;
}

void Rule::setUserInfoDict(const std::optional<PropertyValue::Dictionary>& dictionary) {
  if (!dictionary) {
    setValue(Value(), "userInfo");
    return;
  }
  setValue(Value(Data{KeyedArchive::archivedData(PropertyValue(*dictionary), kDictionaryClass)}), "userInfo");
}

void Rule::setUserInfo(const std::optional<PropertyValue>& value, const std::string& key) {
  PropertyValue::Dictionary dictionary = userInfoDict().value_or(PropertyValue::Dictionary{});
  if (value) {
    dictionary.insert_or_assign(key, *value);
  } else {
    dictionary.erase(key);
  }
  setUserInfoDict(dictionary);
}

}  // namespace kestrona
