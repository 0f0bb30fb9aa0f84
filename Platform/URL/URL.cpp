#include "Platform/URL/URL.h"

#include <algorithm>
#include <cctype>

#include "Platform/Foundation/FatalError.h"
#include "Platform/URL/URIText.h"

namespace kestrona {
namespace {

std::string withoutTrailingSlash(std::string path) {
  if (path.size() > 1 && path.back() == '/') path.pop_back();
  return path;
}

}  // namespace

std::optional<URL> URL::fromString(std::string_view string) {
  std::optional<uri::RawParts> parts = uri::splitURIReference(string);
  if (!parts || !parts->scheme) return std::nullopt;

  URL url;
  url.string_ = std::string(string);
  url.scheme_ = *parts->scheme;
  url.encodedAuthority_ = parts->authority;
  if (parts->host) url.host_ = uri::percentDecodeLenient(*parts->host);
  if (parts->portText && !parts->portText->empty()) {
    url.port_ = uri::parsePort(*parts->portText);
    if (!url.port_) return std::nullopt;
  }
  url.encodedPath_ = parts->path;
  url.path_ = withoutTrailingSlash(uri::percentDecodeLenient(parts->path));
  url.query_ = parts->query;
  url.fragment_ = parts->fragment;
  return url;
}

URL URL::fileURLWithPath(const std::filesystem::path& path) {
  std::error_code error;
  bool isDirectory = path.native().ends_with('/') || std::filesystem::is_directory(path, error);
  return fileURLWithPath(path, isDirectory);
}

URL URL::fileURLWithPath(const std::filesystem::path& path, bool isDirectory) {
  std::error_code error;
  std::filesystem::path absolute = path.is_absolute() ? path : std::filesystem::absolute(path, error);
  if (error) absolute = std::filesystem::path("/") / path;
  std::string encoded = uri::percentEncode(absolute.lexically_normal().native(), uri::CharacterSet::path);
  if (isDirectory && !encoded.ends_with('/')) encoded.push_back('/');
  if (!isDirectory) encoded = withoutTrailingSlash(std::move(encoded));
  std::optional<URL> url = fromString("file://" + encoded);
  if (!url) fatalError("a file URL made from an encoded path did not parse: file://" + encoded);
  return *url;
}

bool URL::isFileURL() const noexcept {
  return std::equal(scheme_.begin(), scheme_.end(), std::string_view("file").begin(),
                    std::string_view("file").end(),
                    [](char a, char b) { return std::tolower(static_cast<unsigned char>(a)) == b; });
}

bool URL::hasDirectoryPath() const noexcept { return encodedPath_.ends_with('/'); }

std::filesystem::path URL::filesystemPath() const { return std::filesystem::path(path_); }

std::string URL::lastPathComponent() const {
  if (path_.empty() || path_ == "/") return path_;
  std::size_t slash = path_.rfind('/');
  return slash == std::string::npos ? path_ : path_.substr(slash + 1);
}

std::string URL::pathExtension() const {
  std::string component = lastPathComponent();
  std::size_t dot = component.rfind('.');
  if (dot == std::string::npos || dot == 0 || dot + 1 == component.size()) return {};
  return component.substr(dot + 1);
}

URL URL::appendingPathComponent(std::string_view component) const {
  return appendingPathComponent(component, component.ends_with('/'));
}

URL URL::appendingPathComponent(std::string_view component, bool isDirectory) const {
  // A leading "/" in the component would make "//", which reads as an
  // authority when there is none; the component is relative by definition.
  while (component.starts_with('/')) component.remove_prefix(1);
  std::string path = encodedPath_;
  if (!component.empty()) {
    if (path.empty() && encodedAuthority_) path = "/";
    if (!path.empty() && !path.ends_with('/')) path.push_back('/');
    path += uri::percentEncode(component, uri::CharacterSet::path);
  }
  if (isDirectory && !path.ends_with('/')) path.push_back('/');
  return withPath(*this, path);
}

URL URL::deletingLastPathComponent() const {
  std::string path = encodedPath_;
  if (path.empty() || path == "/") return withPath(*this, path);
  if (path.ends_with('/')) path.pop_back();
  std::size_t slash = path.rfind('/');
  path = slash == std::string::npos ? std::string() : path.substr(0, slash + 1);
  return withPath(*this, path);
}

URL URL::withPath(const URL& base, std::string_view encodedPath) {
  std::string text = base.scheme_ + ":";
  if (base.encodedAuthority_) text += "//" + *base.encodedAuthority_;
  text += encodedPath;
  std::optional<URL> url = fromString(text);
  if (!url) fatalError("a URL rebuilt from its own parts did not parse: " + text);
  return *url;
}

}  // namespace kestrona
