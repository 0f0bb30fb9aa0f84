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
// exist; a failure to make it is left to the write to report. The write
// replaces the file's content in place, not through a temporary file and a
// rename, so a reader may meet the file half-written. That costs one failed
// read and no more: the records are written as compact JSON objects, and any
// proper prefix of one, like the empty file, is not valid JSON; two writers
// racing leave either one record whole or a record followed by the other's
// tail, which is not valid JSON either. No reader can take a partly written
// file for a different record.
//
// A writer never logs and never ends the process. It holds nothing but its
// two immutable fields and may be used from any thread; writers of the same
// file on different threads are not ordered. Made by one of its two
// factories and shared; never copied.
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
