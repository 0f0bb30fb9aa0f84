#include "WidgetData/Records/WidgetStoreDirectory.h"

#include <cstdlib>
#include <filesystem>
#include <string>

namespace kestrona {
namespace {

// The value of an environment variable when it holds an absolute path.
std::optional<std::filesystem::path> absolutePathFromEnvironment(const char* name) {
  const char* value = std::getenv(name);
  if (value == nullptr || *value == '\0') return std::nullopt;
  std::filesystem::path path(value);
  if (!path.is_absolute()) return std::nullopt;
  return path;
}

std::optional<std::filesystem::path> dataHome() {
  if (auto xdgDataHome = absolutePathFromEnvironment("XDG_DATA_HOME")) return xdgDataHome;
  if (auto home = absolutePathFromEnvironment("HOME")) return *home / ".local" / "share";
  return std::nullopt;
}

bool isSinglePathComponent(std::string_view name) {
  return !name.empty() && name != "." && name != ".." && name.find('/') == std::string_view::npos &&
         name.find('\0') == std::string_view::npos;
}

}  // namespace

std::optional<URL> applicationGroupContainerURL(std::string_view groupIdentifier) {
  if (!isSinglePathComponent(groupIdentifier)) return std::nullopt;
  std::optional<std::filesystem::path> home = dataHome();
  if (!home) return std::nullopt;
  return URL::fileURLWithPath(*home / std::string(groupIdentifier), /*isDirectory=*/true);
}

std::optional<URL> widgetStoreDirectoryUrl(std::string_view appGroupIdentifier) {
  std::optional<URL> container = applicationGroupContainerURL(appGroupIdentifier);
  if (!container) return std::nullopt;
  return container->appendingPathComponent("widgetData", /*isDirectory=*/true);
}

}  // namespace kestrona
