// Reading one widget file into its record.
//
// WidgetDataReaderProtocol is what the timeline providers read through, so
// that they can be handed a reader of their own in tests. Its one
// operation, readCodableData<Record>(), blocks on the file and gives the
// record or an error; it never throws, never logs and never ends the
// process. The failures, in the order they are met:
//
//   - no store directory (no group container, or a reader made without
//     one): WidgetError cannotAccessDirectory;
//   - the file's bytes can't be had, for any reason, a missing file
//     included: WidgetError cannotReadData, with the file system's error
//     (FileSystemError.h: the path and the operating system's reason)
//     underneath, for messages; callers decide by the WidgetError alone;
//   - the bytes are not the record (damaged or empty JSON, a required key
//     missing, a value of the wrong kind): the DecodingError as it stands,
//     not wrapped in a WidgetError.
//
// Nothing guards against a file that the application is writing at that
// moment: such a file is a prefix of a JSON object and fails to decode,
// which callers treat like any other failure.
//
// WidgetDataReader reads the file named by the raw value of its widget type
// in its store directory. It reads only a regular file (a link to one
// included) of at most kMaximumFileSize bytes, far above any real record;
// a FIFO, a device, a directory or a larger file is cannotReadData, and the
// read never blocks waiting for a writer. It holds nothing but its two immutable fields, so
// it may be used from any thread at once. It is made by one of its two
// factories and shared; it is never copied.
#pragma once

#include <cstddef>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "Platform/URL/URL.h"
#include "WidgetData/Records/RecordCoding.h"
#include "WidgetData/Records/WidgetDataResult.h"
#include "WidgetData/Records/WidgetType.h"

namespace kestrona {

class WidgetDataReaderProtocol {
 public:
  virtual ~WidgetDataReaderProtocol() = default;

  // The record of type Record in the file, or why there is none.
  template <typename Record>
  WidgetDataResult<Record> readCodableData() const {
    WidgetDataResult<std::string> data = readData();
    if (!data.isSuccess()) return WidgetDataResult<Record>::failure(data.sharedError());
    try {
      return WidgetDataResult<Record>::success(decodeWidgetRecord<Record>(data.value()));
    } catch (const DecodingError& error) {
      return WidgetDataResult<Record>::failure(error);
    }
  }

 protected:
  // Every step before decoding: the whole content of the file, or the
  // WidgetError that says why it could not be had.
  virtual WidgetDataResult<std::string> readData() const = 0;
};

class WidgetDataReader final : public WidgetDataReaderProtocol {
 public:
  // A reader of the widget store directory of the application group
  // appGroupName (WidgetStoreDirectory.h); without a container it fails at
  // every read with cannotAccessDirectory.
  static std::shared_ptr<WidgetDataReader> withAppGroupName(std::string_view appGroupName, WidgetType widgetType);
  // A reader of storeDirectoryURL as it stands. None is accepted here and
  // fails at every read with cannotAccessDirectory.
  static std::shared_ptr<WidgetDataReader> withStoreDirectoryURL(std::optional<URL> storeDirectoryURL,
                                                                 WidgetType widgetType);

  WidgetDataReader() = delete;
  WidgetDataReader(const WidgetDataReader&) = delete;
  WidgetDataReader& operator=(const WidgetDataReader&) = delete;

  // 4 MiB.
  static constexpr std::size_t kMaximumFileSize = 4 * 1024 * 1024;

  const std::optional<URL>& storeDirectoryURL() const noexcept { return storeDirectoryURL_; }
  WidgetType widgetType() const noexcept { return widgetType_; }
  // The file this reader reads; none without a directory or when the
  // directory is not a file URL.
  std::optional<std::filesystem::path> filePath() const;

 protected:
  WidgetDataResult<std::string> readData() const override;

 private:
  WidgetDataReader(std::optional<URL> storeDirectoryURL, WidgetType widgetType);

  const std::optional<URL> storeDirectoryURL_;
  const WidgetType widgetType_;
};

}  // namespace kestrona
