#include "WidgetData/Records/FileSystemError.h"

#include <cerrno>
#include <cstring>
#include <memory>
#include <utility>

namespace kestrona {
namespace {

std::int64_t writeCode(int posixError) {
  switch (posixError) {
    case ENOENT: return kFileNoSuchFileError;
    case EPERM:
    case EACCES: return kFileWriteNoPermissionError;
    case ENAMETOOLONG: return kFileWriteInvalidFileNameError;
    case EEXIST: return kFileWriteFileExistsError;
    case ENOSPC:
    case EDQUOT: return kFileWriteOutOfSpaceError;
    case EROFS: return kFileWriteVolumeReadOnlyError;
    default: return kFileWriteUnknownError;
  }
}

std::int64_t readCode(int posixError) {
  switch (posixError) {
    case ENOENT:
    case ENOTDIR: return kFileReadNoSuchFileError;
    case EPERM:
    case EACCES: return kFileReadNoPermissionError;
    case EFBIG: return kFileReadTooLargeError;
    default: return kFileReadUnknownError;
  }
}

Error fileError(const std::filesystem::path& path, std::int64_t code, std::string_view verb, std::string_view reason,
                std::shared_ptr<const Error> underlying) {
  return Error(std::string(kFileErrorDomain), code,
               "The file \"" + path.string() + "\" could not be " + std::string(verb) + ": " + std::string(reason) +
                   ".",
               ErrorUserInfo{{std::string(kFilePathKey), path.string()}}, std::move(underlying));
}

std::shared_ptr<const Error> posixError(int number) {
  return std::make_shared<const Error>(std::string(kPOSIXErrorDomain), number, std::strerror(number));
}

}  // namespace

Error fileWriteError(const std::filesystem::path& path, int posixErrorNumber) {
  return fileError(path, writeCode(posixErrorNumber), "written", std::strerror(posixErrorNumber),
                   posixError(posixErrorNumber));
}

Error fileReadError(const std::filesystem::path& path, int posixErrorNumber) {
  return fileError(path, readCode(posixErrorNumber), "read", std::strerror(posixErrorNumber),
                   posixError(posixErrorNumber));
}

Error fileReadError(const std::filesystem::path& path, FileErrorCode code, std::string_view reason) {
  return fileError(path, code, "read", reason, nullptr);
}

Error unsupportedSchemeError(const URL& url) {
  return Error(std::string(kFileErrorDomain), kFileWriteUnsupportedSchemeError,
               "The location \"" + url.absoluteString() + "\" is not a file and could not be written.",
               ErrorUserInfo{{"NSURL", url.absoluteString()}});
}

}  // namespace kestrona
