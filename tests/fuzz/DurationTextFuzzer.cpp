// Feeds arbitrary text to the duration grammar. Every input is either a
// duration or none, and the answer is the same when asked twice (nothing is
// cached between calls).
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "SharedCore/Support/TimeText/TimeIntervalParsing.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  const std::optional<double> first = kestrona::toTimeInterval(text);
  const std::optional<double> second = kestrona::toTimeInterval(text);
  if (first.has_value() != second.has_value()) std::abort();
  return 0;
}
