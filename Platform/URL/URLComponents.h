// URL components: a URL taken apart into scheme, host, path and query items,
// or put together from them.
//
// The parts are held decoded, except the query, which is held as written
// (percentEncodedQuery) so that reading a URL and asking for it back changes
// nothing. queryItems() reads that query as items; setQueryItems() writes it.
//
// Encoding when composing (url(), string()):
//   - A query item's value keeps every character that a query allows
//     literally, A-Z a-z 0-9 - . _ ~ : / ? @ ! $ ' ( ) * + , ; =, but "&",
//     which would end the item; every other byte (UTF-8) is percent-encoded,
//     so "&", "#", "%" and the blank are escaped and ":" and "/" stay
//     readable: the item ("taskId", "x-kestrona://3F1C/Task/p12") becomes
//     "taskId=x-kestrona://3F1C/Task/p12", ("taskId", "k=v") "taskId=k=v".
//     A name is encoded alike and escapes "=" too.
//   - Items are joined by "&"; an item without a value is written as its name
//     alone, with no "=".
//   - host and path are percent-encoded with the characters allowed in them;
//     "/" in the path stays a separator.
//   - Setting the host, even to the empty string, writes "//": scheme "s" and
//     host "" give "s://".
//
// Decoding when reading queryItems(): the query is split at "&", each piece
// at its first "="; name and value are percent-decoded; "+" stays "+"; a piece
// without "=" has no value; "a=" has the empty value. An empty query ("s://?")
// gives an empty list; no query gives none.
//
// Failures: fromString / fromURL give none when the text is not a URI
// reference; url() gives none when the parts cannot form one (a scheme that
// does not start with a letter or has characters other than letters, digits,
// "+", "-", "."; a path that does not start with "/" next to a host).
//
// Threads: a value; any thread, no shared state.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/URL/URL.h"

namespace kestrona {

struct URLQueryItem {
  std::string name;
  std::optional<std::string> value;

  friend bool operator==(const URLQueryItem&, const URLQueryItem&) = default;
};

class URLComponents {
 public:
  // Empty components: no scheme, no host, empty path, no query.
  URLComponents() = default;

  // The components of url. There is never a base to resolve against here:
  // a URL is absolute. Gives none only if url's text cannot be taken apart.
  static std::optional<URLComponents> fromURL(const URL& url);
  // The components of a URI reference, which may be relative ("?a=b", "/x").
  static std::optional<URLComponents> fromString(std::string_view string);

  const std::optional<std::string>& scheme() const noexcept { return scheme_; }
  void setScheme(std::optional<std::string> scheme) { scheme_ = std::move(scheme); }

  const std::optional<std::string>& host() const noexcept { return host_; }
  void setHost(std::optional<std::string> host) { host_ = std::move(host); }

  const std::optional<int>& port() const noexcept { return port_; }
  void setPort(std::optional<int> port) { port_ = port; }

  // Decoded.
  const std::string& path() const noexcept { return path_; }
  void setPath(std::string path) { path_ = std::move(path); }

  const std::optional<std::string>& percentEncodedQuery() const noexcept { return query_; }
  void setPercentEncodedQuery(std::optional<std::string> query) { query_ = std::move(query); }

  // The query read as items, decoded; none when there is no query.
  std::optional<std::vector<URLQueryItem>> queryItems() const;
  // Writes the query from items (encoded as above); none removes the query.
  void setQueryItems(const std::optional<std::vector<URLQueryItem>>& items);

  // Decoded.
  const std::optional<std::string>& fragment() const noexcept { return fragment_; }
  void setFragment(std::optional<std::string> fragment) { fragment_ = std::move(fragment); }

  // The text of the components, which may be a relative reference; none when
  // the parts cannot form one.
  std::optional<std::string> string() const;
  // The URL of the components; none without a scheme or when string() is none.
  std::optional<URL> url() const;

  friend bool operator==(const URLComponents&, const URLComponents&) = default;

 private:
  std::optional<std::string> scheme_;
  std::optional<std::string> host_;
  std::optional<int> port_;
  std::string path_;
  std::optional<std::string> query_;
  std::optional<std::string> fragment_;
  // User info as written ("user:password"); kept so that a URL taken apart
  // and put together again is unchanged. Not offered for editing.
  std::optional<std::string> userInfo_;
};

// Percent-encodes every byte of text that is not in the query-value set given
// above. Exposed for callers that assemble a query by hand.
std::string percentEncodeQueryValue(std::string_view text);
// Decodes "%XX" escapes; none when an escape is malformed. "+" is kept.
std::optional<std::string> percentDecode(std::string_view text);

}  // namespace kestrona
