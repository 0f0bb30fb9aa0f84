// One auto-tracking condition (entity "Rule", under "RuleBase"): which kind
// of activity it matches (typeValue), the application, file, website or
// text it names, how text or file are compared (relationValue), whether
// only the active window counts, and free values (userInfo).
//
// Readers are tolerant: a typeValue without a case reads as kind6, a
// relationValue outside the text relations as contains and outside the
// file relations as pathIs. Writers store the raw value.
//
// userInfo holds a dictionary of property values, stored as the keyed
// archive of class "Dictionary" (binary data). userInfoDict() answers none
// when the stored data is not such an archive; setUserInfo() starts from an
// empty dictionary then, so a value of another kind is thrown away.
//
// bundleId() finds the application identifier of applicationPath: a fixed
// table for the applications of the "/JetBrains Toolbox/" folder, otherwise
// the identifier in the Info.json of the bundle at the path (it reads the
// file system, and gives none when there is no bundle).
//
// Threading: only on the context's queue.
#pragma once

#include <optional>
#include <string>

#include "Platform/UserDefaults/PropertyValue.h"
#include "SharedCore/Model/Rules/MatchRelation.h"
#include "SharedCore/Model/Rules/RuleBase.h"
#include "SharedCore/Model/Rules/RuleType.h"

namespace kestrona {

class Rule : public RuleBase {
 public:
  explicit Rule(Construction construction) : RuleBase(std::move(construction)) {}

  static FetchRequest fetchRequest() { return FetchRequest("Rule"); }

  std::int16_t typeValue() { return static_cast<std::int16_t>(integerForKey("typeValue")); }
  void setTypeValue(std::int16_t value) { setValue(Value(std::int64_t{value}), "typeValue"); }
  std::optional<std::string> applicationPath() { return stringForKey("applicationPath"); }
  void setApplicationPath(const std::optional<std::string>& path) { setValue(valueOf(path), "applicationPath"); }
  std::optional<std::string> filePath() { return stringForKey("filePath"); }
  void setFilePath(const std::optional<std::string>& path) { setValue(valueOf(path), "filePath"); }
  std::optional<std::string> websiteUrl() { return stringForKey("websiteUrl"); }
  void setWebsiteUrl(const std::optional<std::string>& url) { setValue(valueOf(url), "websiteUrl"); }
  std::optional<std::string> text() { return stringForKey("text"); }
  void setText(const std::optional<std::string>& text) { setValue(valueOf(text), "text"); }
  std::int16_t relationValue() { return static_cast<std::int16_t>(integerForKey("relationValue")); }
  void setRelationValue(std::int16_t value) { setValue(Value(std::int64_t{value}), "relationValue"); }
  bool isInActiveWindow() { return boolForKey("isInActiveWindow"); }
  void setIsInActiveWindow(bool flag) { setValue(Value(flag), "isInActiveWindow"); }

  RuleType type();
  void setType(RuleType type) { setTypeValue(static_cast<std::int16_t>(type)); }
  TextMatchRelation textMatchRelation();
  void setTextMatchRelation(TextMatchRelation relation) { setRelationValue(static_cast<std::int16_t>(relation)); }
  FileMatchRelation fileMatchRelation();
  void setFileMatchRelation(FileMatchRelation relation) { setRelationValue(static_cast<std::int16_t>(relation)); }

  std::optional<std::string> bundleId();

  std::optional<PropertyValue::Dictionary> userInfoDict();
  // Stores dictionary whole; none clears userInfo.
  void setUserInfoDict(const std::optional<PropertyValue::Dictionary>& dictionary);
  // Sets one key of userInfo; none removes it. Other keys stay.
  void setUserInfo(const std::optional<PropertyValue>& value, const std::string& key);
};

}  // namespace kestrona
