// The file system's failures, as the callers of widget-file reads and writes
// know them.
//
// Every such failure is an Error in the domain "NSCocoaErrorDomain" with a
// code that says what went wrong (a missing file, no permission, a full
// disk, a file too large ...), the path under "NSFilePath", and, when the
// operating system gave a reason, that reason underneath as an error of the
// domain "NSPOSIXErrorDomain" whose code is the errno. The description names
// the path and the reason: `The file "/x/timer" could not be written: No
// space left on device.`
//
// Plain functions over values; any thread.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

#include "Platform/Foundation/Error.h"
#include "Platform/URL/URL.h"

namespace kestrona {

inline constexpr std::string_view kFileErrorDomain = "NSCocoaErrorDomain";
inline constexpr std::string_view kPOSIXErrorDomain = "NSPOSIXErrorDomain";
inline constexpr std::string_view kFilePathKey = "NSFilePath";

enum FileErrorCode : std::int64_t {
  kFileNoSuchFileError = 4,
  kFileReadUnknownError = 256,
  kFileReadNoPermissionError = 257,
  kFileReadNoSuchFileError = 260,
  kFileReadTooLargeError = 263,
  kFileWriteUnknownError = 512,
  kFileWriteNoPermissionError = 513,
  kFileWriteInvalidFileNameError = 514,
  kFileWriteFileExistsError = 516,
  kFileWriteUnsupportedSchemeError = 518,
  kFileWriteOutOfSpaceError = 640,
  kFileWriteVolumeReadOnlyError = 642,
};

// path could not be written; posixError is the errno of the failing call.
Error fileWriteError(const std::filesystem::path& path, int posixError);
// path could not be read; posixError is the errno of the failing call.
Error fileReadError(const std::filesystem::path& path, int posixError);
// path could not be read for a reason of this system's own (not a regular
// file, too large): code and reason as given, no POSIX error underneath.
Error fileReadError(const std::filesystem::path& path, FileErrorCode code, std::string_view reason);
// url names no file, so nothing could be written there.
Error unsupportedSchemeError(const URL& url);

}  // namespace kestrona
