#include "WidgetData/TimerIntent/TimerWidgetDeepLink.h"

#include "Platform/URL/URLComponents.h"
#include "WidgetData/TimerIntent/KestronaWidgetDeepLinkScheme.h"

namespace kestrona {
namespace {

constexpr std::string_view kTaskIdItemName = "taskId";

}  // namespace

std::optional<TimerWidgetDeepLink> TimerWidgetDeepLink::fromURL(const URL& url) {
  std::optional<URLComponents> components = URLComponents::fromURL(url);
  if (!components) return std::nullopt;
  if (!components->scheme()) return std::nullopt;
  std::optional<KestronaWidgetDeepLinkScheme> scheme =
      fromRawValue<KestronaWidgetDeepLinkScheme>(*components->scheme());
  if (!scheme) return std::nullopt;
  if (*scheme != KestronaWidgetDeepLinkScheme::startTimer && *scheme != KestronaWidgetDeepLinkScheme::pauseTimer) {
    return std::nullopt;
  }
  if (*scheme == KestronaWidgetDeepLinkScheme::pauseTimer) return pause();

  std::optional<std::vector<URLQueryItem>> items = components->queryItems();
  if (!items || items->empty()) return std::nullopt;
  for (const URLQueryItem& item : *items) {
    if (item.name != kTaskIdItemName) continue;
    // The first "taskId" decides, even when it is empty.
    if (!item.value || item.value->empty()) return std::nullopt;
    return start(*item.value);
  }
  return std::nullopt;
}

std::optional<std::string> TimerWidgetDeepLink::taskId() const {
  if (const Start* startLink = std::get_if<Start>(&value_)) return startLink->taskId;
  return std::nullopt;
}

std::optional<URL> TimerWidgetDeepLink::url() const {
  URLComponents components;
  // The empty host is what puts "//" after the scheme.
  components.setHost("");
  if (const Start* startLink = std::get_if<Start>(&value_)) {
    components.setScheme(std::string(rawValue(KestronaWidgetDeepLinkScheme::startTimer)));
    components.setQueryItems(std::vector<URLQueryItem>{{std::string(kTaskIdItemName), startLink->taskId}});
  } else {
    components.setScheme(std::string(rawValue(KestronaWidgetDeepLinkScheme::pauseTimer)));
  }
  return components.url();
}

std::string TimerWidgetDeepLink::description() const {
  if (const Start* startLink = std::get_if<Start>(&value_)) {
    std::string quoted;
    for (char c : startLink->taskId) {
      if (c == '"' || c == '\\') quoted.push_back('\\');
      quoted.push_back(c);
    }
    return "start(taskId: \"" + quoted + "\")";
  }
  return "pause";
}

}  // namespace kestrona
