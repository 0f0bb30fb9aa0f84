#include "Extension/WidgetWindow/WidgetWindowSettings.h"

#include <algorithm>
#include <cmath>

#include "Platform/Logging/Logger.h"

namespace kestrona {
namespace {

constexpr std::string_view kWidgetsKey = "WidgetWindow.widgets";
constexpr std::string_view kWidthKey = "WidgetWindow.width";
constexpr std::string_view kHeightKey = "WidgetWindow.height";
constexpr double kLargestSide = 16384;

const Logger& settingsLogger() {
  static const Logger logger("WidgetWindow");
  return logger;
}

std::optional<WidgetChoice> choiceFrom(const PropertyValue& value, const std::vector<WidgetConfiguration>& bundle) {
  const PropertyValue::Dictionary* dictionary = value.getIf<PropertyValue::Dictionary>();
  if (!dictionary) return std::nullopt;
  auto text = [dictionary](std::string_view key) -> const std::string* {
    auto found = dictionary->find(key);
    return found == dictionary->end() ? nullptr : found->second.getIf<std::string>();
  };
  const std::string* kind = text("kind");
  const std::string* familyName = text("family");
  if (!kind || !familyName) return std::nullopt;
  std::optional<WidgetFamily> family = fromRawValue<WidgetFamily>(*familyName);
  auto widget = std::find_if(bundle.begin(), bundle.end(), [&](const WidgetConfiguration& w) { return w.kind() == *kind; });
  if (!family || widget == bundle.end() || !widget->isSupported(*family)) return std::nullopt;
  return WidgetChoice{*kind, *family};
}

}  // namespace

WidgetWindowSettings WidgetWindowSettings::read(const UserDefaults& defaults,
                                                const std::vector<WidgetConfiguration>& bundle) {
  WidgetWindowSettings settings;
  if (std::optional<PropertyValue::Array> widgets = defaults.arrayForKey(kWidgetsKey)) {
    for (const PropertyValue& value : *widgets) {
      if (std::optional<WidgetChoice> choice = choiceFrom(value, bundle)) {
        settings.widgets.push_back(std::move(*choice));
      } else {
        settingsLogger().log(Logger::Level::warning,
                             "Left out a widget of \"" + std::string(kWidgetsKey) + "\" that this bundle cannot show");
      }
    }
  }
  const double width = defaults.doubleForKey(kWidthKey);
  const double height = defaults.doubleForKey(kHeightKey);
  auto usable = [](double side) { return std::isfinite(side) && side >= 1 && side <= kLargestSide; };
  if (usable(width) && usable(height)) settings.windowSize = Size{width, height};
  return settings;
}

void WidgetWindowSettings::write(UserDefaults& defaults) const {
  PropertyValue::Array array;
  for (const WidgetChoice& choice : widgets) {
    array.push_back(PropertyValue::Dictionary{{"kind", choice.kind}, {"family", rawValue(choice.family)}});
  }
  defaults.set(std::move(array), kWidgetsKey);
  if (windowSize) {
    defaults.set(static_cast<std::int64_t>(std::lround(windowSize->width)), kWidthKey);
    defaults.set(static_cast<std::int64_t>(std::lround(windowSize->height)), kHeightKey);
  } else {
    defaults.removeObject(kWidthKey);
    defaults.removeObject(kHeightKey);
  }
}

}  // namespace kestrona
