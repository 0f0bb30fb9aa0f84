// Feeds arbitrary text as a URL to the deep-link reader. A command read back
// from any URL must write a link that reads back as the same command.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "Platform/URL/URL.h"
#include "WidgetData/TimerIntent/TimerWidgetDeepLink.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace kestrona;
  const std::optional<URL> url = URL::fromString(std::string_view(reinterpret_cast<const char*>(data), size));
  if (!url) return 0;
  const std::optional<TimerWidgetDeepLink> link = TimerWidgetDeepLink::fromURL(*url);
  if (!link) return 0;
  (void)link->description();
  const std::optional<URL> written = link->url();
  if (!written || TimerWidgetDeepLink::fromURL(*written) != link) std::abort();
  return 0;
}
