// Writing one widget file.
//
// The application calls a writer at every change that a widget shows, with
// the JSON bytes of the record of the writer's widget type
// (encodeWidgetRecord, RecordCoding.h). write() blocks on the file and calls
// its completion exactly once, on the calling thread, before it returns:
//
//   - with success true when non-empty bytes were written, success false
//     when the bytes were empty or none: none truncates the file to nothing,
//     it does not leave the old content;
//   - with WidgetDataWriterError cannotGetWidgetStoreDirectoryUrl when there
//     is no store directory;
//   - with the file system's own error (domain "NSCocoaErrorDomain", the
//     POSIX error underneath, the path under "NSFilePath") when the file
//     can't be written, including when its directory could not be made.
//
// The store directory is made, with its parents, when its path does not
// exist; a failure to make it is left to the write to report.
//
// The write truncates the file and writes the new bytes in place, not
// through a temporary file and a rename: the exchange with the widgets
// prescribes a plain write, and this follows it. While a write is under way
// the file holds a prefix of the new record, and no proper prefix of a
// compact JSON object, the empty file included, is valid JSON: a reader
// that meets it gets one decoding failure and never another record. What a
// plain write cannot promise is order between writers: two writers of the
// same file at once, or a reader whose read spans two writes in a row, may
// mix the bytes of two records, and for records longer than a page the mix
// can happen to be valid JSON. Callers therefore keep to one writer per file
// at a time; widgets re-read the file at their next timeline anyway.
//
// A writer never logs, and ends the process only when handed an empty
// completion. It holds nothing but its two immutable fields and may be used
// from any thread; writers of the same file on different threads are not
// ordered. Made by one of its two factories and shared; never copied.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string_view>

#include "Platform/Foundation/Error.h"
#include "Platform/URL/URL.h"
#include "WidgetData/Records/WidgetDataResult.h"
#include "WidgetData/Records/WidgetType.h"

namespace kestrona {

enum class WidgetDataWriterErrorCode {
  cannotGetWidgetStoreDirectoryUrl,
};

class WidgetDataWriterError : public CodedError<WidgetDataWriterErrorCode> {
 public:
  using Code = WidgetDataWriterErrorCode;
  static constexpr std::string_view kDomain = "WidgetDataWriterError";

  explicit WidgetDataWriterError(Code code);
};

class WidgetDataWriterProtocol {
 public:
  using Completion = std::function<void(const WidgetDataResult<bool>& result)>;

  virtual ~WidgetDataWriterProtocol() = default;

  // Writes data, or nothing when none, as the file; see above. completion
  // must not be empty.
  virtual void write(std::optional<std::string_view> data, const Completion& completion) const = 0;
};

class WidgetDataWriter final : public WidgetDataWriterProtocol {
 public:
  // A writer to the widget store directory of the application group
  // appGroupName (WidgetStoreDirectory.h); without a container every write
  // fails with cannotGetWidgetStoreDirectoryUrl.
  static std::shared_ptr<WidgetDataWriter> withAppGroupName(std::string_view appGroupName, WidgetType widgetType);
  // A writer to storeDirectoryURL as it stands. None is accepted here and
  // fails at every write with cannotGetWidgetStoreDirectoryUrl.
  static std::shared_ptr<WidgetDataWriter> withStoreDirectoryURL(std::optional<URL> storeDirectoryURL,
                                                                 WidgetType widgetType);

  WidgetDataWriter() = delete;
  WidgetDataWriter(const WidgetDataWriter&) = delete;
  WidgetDataWriter& operator=(const WidgetDataWriter&) = delete;

  const std::optional<URL>& storeDirectoryURL() const noexcept { return storeDirectoryURL_; }
  WidgetType widgetType() const noexcept { return widgetType_; }

  void write(std::optional<std::string_view> data, const Completion& completion) const override;

 private:
  WidgetDataWriter(std::optional<URL> storeDirectoryURL, WidgetType widgetType);

  // The file to write, after making its directory when needed.
  URL prepareFileURL() const;

  const std::optional<URL> storeDirectoryURL_;
  const WidgetType widgetType_;
};

}  // namespace kestrona
