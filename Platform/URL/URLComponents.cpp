#include "Platform/URL/URLComponents.h"

#include <cctype>

#include "Platform/URL/URIText.h"

namespace kestrona {
namespace {

bool isValidScheme(std::string_view scheme) {
  if (scheme.empty() || !std::isalpha(static_cast<unsigned char>(scheme.front()))) return false;
  for (char c : scheme) {
    if (!std::isalnum(static_cast<unsigned char>(c)) && c != '+' && c != '-' && c != '.') return false;
  }
  return true;
}

std::optional<URLComponents> componentsFrom(const uri::RawParts& parts) {
  URLComponents components;
  components.setScheme(parts.scheme);
  if (parts.host) components.setHost(uri::percentDecodeLenient(*parts.host));
  if (parts.portText && !parts.portText->empty()) {
    std::optional<int> port = uri::parsePort(*parts.portText);
    if (!port) return std::nullopt;
    components.setPort(port);
  }
  components.setPath(uri::percentDecodeLenient(parts.path));
  components.setPercentEncodedQuery(parts.query);
  if (parts.fragment) components.setFragment(uri::percentDecodeLenient(*parts.fragment));
  return components;
}

}  // namespace

std::optional<URLComponents> URLComponents::fromURL(const URL& url) { return fromString(url.absoluteString()); }

std::optional<URLComponents> URLComponents::fromString(std::string_view string) {
  std::optional<uri::RawParts> parts = uri::splitURIReference(string);
  if (!parts) return std::nullopt;
  std::optional<URLComponents> components = componentsFrom(*parts);
  if (components) components->userInfo_ = parts->userInfo;
  return components;
}

std::optional<std::vector<URLQueryItem>> URLComponents::queryItems() const {
  if (!query_) return std::nullopt;
  std::vector<URLQueryItem> items;
  if (query_->empty()) return items;
  std::string_view rest = *query_;
  while (true) {
    std::size_t ampersand = rest.find('&');
    std::string_view piece = rest.substr(0, ampersand);
    std::size_t equals = piece.find('=');
    if (equals == std::string_view::npos) {
      items.push_back({uri::percentDecodeLenient(piece), std::nullopt});
    } else {
      items.push_back({uri::percentDecodeLenient(piece.substr(0, equals)),
                       uri::percentDecodeLenient(piece.substr(equals + 1))});
    }
    if (ampersand == std::string_view::npos) break;
    rest.remove_prefix(ampersand + 1);
  }
  return items;
}

void URLComponents::setQueryItems(const std::optional<std::vector<URLQueryItem>>& items) {
  if (!items) {
    query_.reset();
    return;
  }
  std::string query;
  bool first = true;
  for (const URLQueryItem& item : *items) {
    if (!first) query.push_back('&');
    first = false;
    query += uri::percentEncode(item.name, uri::CharacterSet::queryName);
    if (item.value) query += "=" + percentEncodeQueryValue(*item.value);
  }
  query_ = std::move(query);
}

std::optional<std::string> URLComponents::string() const {
  std::string text;
  if (scheme_) {
    if (!isValidScheme(*scheme_)) return std::nullopt;
    text += *scheme_ + ":";
  }
  const bool hasAuthority = host_ || port_ || userInfo_;
  if (hasAuthority) {
    text += "//";
    if (userInfo_) text += *userInfo_ + "@";
    if (host_) {
      if (host_->find(':') != std::string::npos) {
        text += "[" + *host_ + "]";
      } else {
        text += uri::percentEncode(*host_, uri::CharacterSet::host);
      }
    }
    if (port_) text += ":" + std::to_string(*port_);
    if (!path_.empty() && !path_.starts_with('/')) return std::nullopt;
  } else {
    // Without an authority a path must not start with "//", and a relative
    // reference's first segment must not look like a scheme.
    if (path_.starts_with("//")) return std::nullopt;
    if (!scheme_ && path_.substr(0, path_.find('/')).find(':') != std::string::npos) return std::nullopt;
  }
  text += uri::percentEncode(path_, uri::CharacterSet::path);
  if (query_) text += "?" + *query_;
  if (fragment_) text += "#" + uri::percentEncode(*fragment_, uri::CharacterSet::fragment);
  // A query set by hand with setPercentEncodedQuery may hold what no URI may.
  if (!uri::splitURIReference(text)) return std::nullopt;
  return text;
}

std::optional<URL> URLComponents::url() const {
  if (!scheme_) return std::nullopt;
  std::optional<std::string> text = string();
  if (!text) return std::nullopt;
  return URL::fromString(*text);
}

}  // namespace kestrona
