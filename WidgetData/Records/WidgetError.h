// Why a widget file could not be read.
//
// cannotAccessDirectory: there is no widget store directory (no application
// group container, or a reader made without a directory). cannotReadData:
// the file's bytes could not be had, whatever the reason, a missing file
// included; the file system's error may be kept underneath for messages.
// A file that is there but damaged is not a WidgetError: the reader hands
// back the DecodingError as it stands.
//
// The description is a localised text. A value; safe from any thread.
#pragma once

#include <memory>
#include <string_view>

#include "Platform/Foundation/Error.h"

namespace kestrona {

enum class WidgetErrorCode {
  cannotReadData,
  cannotAccessDirectory,
};

class WidgetError : public CodedError<WidgetErrorCode> {
 public:
  using Code = WidgetErrorCode;
  static constexpr std::string_view kDomain = "WidgetError";

  explicit WidgetError(Code code, std::shared_ptr<const Error> underlying = nullptr);
};

}  // namespace kestrona
