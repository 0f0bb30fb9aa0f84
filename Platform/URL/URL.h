// A URL: an absolute reference such as "file:///home/ada/Group/timer.json",
// "deeplink-startTimer://?taskId=x-kestrona://3F1C/Task/p12" or
// "https://example.com/a?b=c#d".
//
// A URL is an immutable value holding its text as given (absoluteString) and
// the parts read from it at construction. Parsing follows the generic URI
// syntax; only absolute references (those with a scheme) are URLs. The scheme
// keeps its case as written: callers that must compare it exactly (deep links)
// can, and callers that must not compare it with case folded themselves.
//
// Parts, all read from the text:
//   - scheme(): as written, without the ":".
//   - host(): none when the text has no authority ("mailto:a@b"); the empty
//     string when it has an empty one ("file:///a", "deeplink-pauseTimer://").
//     Percent-decoded.
//   - path(): the path, percent-decoded, with a trailing "/" removed unless the
//     path is "/" itself; the empty string when there is none.
//   - query(), fragment(): as written (still percent-encoded), without "?" or
//     "#"; none when absent, the empty string when present but empty.
//
// File URLs: fileURLWithPath makes a "file://" URL from an absolute path
// (relative paths are taken from the current working directory), escaping
// every byte that may not stand in a path. A directory URL ends in "/".
// filesystemPath gives the path back.
//
// Path operations (appendingPathComponent, deletingLastPathComponent,
// lastPathComponent, pathExtension) work on the path alone and keep scheme
// and host; they drop query and fragment from their result.
//
// Equality compares the text exactly: "file:///a" and "file:///a/" differ, as
// do "A://x" and "a://x".
//
// Threads: a value; any thread, no shared state.
#pragma once

#include <cstddef>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace kestrona {

class URL {
 public:
  // The URL for text; none when the text is not an absolute URI reference
  // (no scheme, bad characters such as an unescaped blank, bad escapes).
  static std::optional<URL> fromString(std::string_view string);

  // The "file://" URL for a filesystem path. A relative path is made absolute
  // against the current working directory. Without isDirectory, the URL is a
  // directory URL when the path ends in "/" or names an existing directory.
  static URL fileURLWithPath(const std::filesystem::path& path);
  static URL fileURLWithPath(const std::filesystem::path& path, bool isDirectory);

  const std::string& absoluteString() const noexcept { return string_; }

  const std::string& scheme() const noexcept { return scheme_; }
  const std::optional<std::string>& host() const noexcept { return host_; }
  const std::optional<int>& port() const noexcept { return port_; }
  const std::string& path() const noexcept { return path_; }
  const std::optional<std::string>& query() const noexcept { return query_; }
  const std::optional<std::string>& fragment() const noexcept { return fragment_; }

  // True when the scheme is "file", with case folded.
  bool isFileURL() const noexcept;
  // True when the path as written ends in "/".
  bool hasDirectoryPath() const noexcept;

  // The path of a file URL as a filesystem path (percent-decoded, without a
  // trailing "/" except for the root). For any other URL: the decoded path.
  std::filesystem::path filesystemPath() const;

  // The last component of the path ("timer.json"; "Kestrona.app" for
  // ".../Kestrona.app/"); "/" for the root; empty when there is no path.
  std::string lastPathComponent() const;
  // What follows the last "." of the last component, when that "." is neither
  // its first nor its last character; otherwise empty.
  std::string pathExtension() const;

  // This URL with one more path component, percent-encoded as a path segment
  // ("/" inside component separates segments). The result is a directory URL
  // when component ends in "/", or when isDirectory says so.
  URL appendingPathComponent(std::string_view component) const;
  URL appendingPathComponent(std::string_view component, bool isDirectory) const;
  // This URL without its last path component, as a directory URL:
  // "file:///a/b/c" and "file:///a/b/c/" both give "file:///a/b/". The root
  // stays the root.
  URL deletingLastPathComponent() const;

  friend bool operator==(const URL& lhs, const URL& rhs) noexcept {
    return lhs.string_ == rhs.string_;
  }

 private:
  URL() = default;

  // Rebuilds the text from the parts after a path operation.
  static URL withPath(const URL& base, std::string_view encodedPath);

  std::string string_;
  std::string scheme_;
  std::optional<std::string> encodedAuthority_;  // user info, host and port as written
  std::optional<std::string> host_;
  std::optional<int> port_;
  std::string encodedPath_;  // as written, including a leading "/"
  std::string path_;
  std::optional<std::string> query_;
  std::optional<std::string> fragment_;
};

}  // namespace kestrona

template <>
struct std::hash<kestrona::URL> {
  std::size_t operator()(const kestrona::URL& url) const noexcept {
    return std::hash<std::string>{}(url.absoluteString());
  }
};
