// A bundle: a folder that holds a program and what it needs, described by an
// "Info.json" at its root.
//
// Info.json is a JSON object; the keys read here are
//   "identifier": the bundle identifier, a non-empty string, and
//   "executable": the bundle's executable, a path relative to the bundle
//                 folder that stays inside it ("Contents/bin/kestrona").
// Both are optional; other keys are ignored. A folder without an Info.json is
// still a bundle, with neither.
//
// The installed layout of this system:
//
//   Kestrona.app/                              the application's bundle
//     Info.json                                {"identifier": "app.kestrona",
//                                               "executable": "Contents/bin/kestrona"}
//     Contents/bin/kestrona                    the application
//     Contents/PlugIns/KestronaWidgets.appex/  the widget process's bundle
//       Info.json                              {"identifier": "app.kestrona.widgets",
//                                               "executable": "bin/kestrona-widgets"}
//       bin/kestrona-widgets                   the widget process
//
// so the widget bundle sits three folders below the application's bundle.
//
// Bundle::main() is the bundle around the running executable (read from
// /proc/self/exe): the nearest of the executable's folder and its two parent
// folders whose Info.json names that executable. When there is none (a
// program run from a build tree), the main bundle is the executable's folder,
// with no identifier. It is found once and kept for the life of the process.
//
// Failures: load() throws BundleError (notFound, infoUnreadable,
// infoMalformed); fromURL()/fromPath() give none in those cases instead.
//
// Threads: Bundle is a value, usable from any thread. main() is thread-safe.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "Platform/Foundation/Error.h"
#include "Platform/URL/URL.h"

namespace kestrona {

enum class BundleErrorCode { notFound = 0, infoUnreadable, infoMalformed };

// Domain "BundleError". User info "path": the folder or Info.json concerned.
class BundleError : public CodedError<BundleErrorCode> {
 public:
  BundleError(BundleErrorCode code, const std::filesystem::path& path, const std::string& detail);
};

class Bundle {
 public:
  // The bundle at url (a file URL of a folder), or at path. Throws
  // BundleError.
  static Bundle load(const URL& url);
  static Bundle load(const std::filesystem::path& path);
  // The same, but none instead of an error.
  static std::optional<Bundle> fromURL(const URL& url);
  static std::optional<Bundle> fromPath(const std::filesystem::path& path);

  // The bundle around the running executable.
  static Bundle main();

  // A directory URL: it ends in "/".
  const URL& bundleURL() const noexcept { return bundleURL_; }
  const std::optional<std::string>& bundleIdentifier() const noexcept { return bundleIdentifier_; }
  // The executable named in Info.json; none when Info.json names none. The
  // file itself may be missing: callers that start it find out then.
  const std::optional<URL>& executableURL() const noexcept { return executableURL_; }

  friend bool operator==(const Bundle&, const Bundle&) = default;

 private:
  explicit Bundle(URL bundleURL) : bundleURL_(std::move(bundleURL)) {}

  URL bundleURL_;
  std::optional<std::string> bundleIdentifier_;
  std::optional<URL> executableURL_;
};

}  // namespace kestrona
