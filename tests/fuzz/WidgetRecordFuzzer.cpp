// Feeds arbitrary bytes to the decoder of every widget record, as the widget
// process reads a widget file that may be half written or damaged. Every
// input decodes or throws DecodingError; a record that decodes encodes
// without error and decodes again to an equal record.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "WidgetData/Records/RecentTasksWidgetDataVO.h"
#include "WidgetData/Records/RecordCoding.h"
#include "WidgetData/Records/RevenueWidgetDataVO.h"
#include "WidgetData/Records/TimeTrackedWidgetDataVO.h"
#include "WidgetData/Records/TimerStateVO.h"

namespace {

template <typename Record>
void roundTrip(std::string_view bytes) {
  using namespace kestrona;
  Record record;
  try {
    record = decodeWidgetRecord<Record>(bytes);
  } catch (const DecodingError&) {
    return;
  }
  if (decodeWidgetRecord<Record>(encodeWidgetRecord(record)) != record) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace kestrona;
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  roundTrip<TimerStateVO>(bytes);
  roundTrip<RecentTasksWidgetDataVO>(bytes);
  roundTrip<TimeTrackedWidgetDataVO>(bytes);
  roundTrip<RevenueWidgetDataVO>(bytes);
  return 0;
}
