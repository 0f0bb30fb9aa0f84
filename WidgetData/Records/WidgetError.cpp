#include "WidgetData/Records/WidgetError.h"

#include <string>
#include <utility>

#include "Platform/Foundation/LocalizedString.h"

namespace kestrona {
namespace {

std::string descriptionOf(WidgetErrorCode code) {
  switch (code) {
    case WidgetErrorCode::cannotReadData:
      return localizedString("widget.error.cannotReadData", "Can not read data from storage", "Widget error");
    case WidgetErrorCode::cannotAccessDirectory:
      return localizedString("widget.error.cannotAccessDirectory", "Can not access directory", "Widget error");
  }
  return {};
}

}  // namespace

WidgetError::WidgetError(Code code, std::shared_ptr<const Error> underlying)
    : CodedError(std::string(kDomain), code, descriptionOf(code), {}, std::move(underlying)) {}

}  // namespace kestrona
