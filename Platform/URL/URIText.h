// Internal to Platform/URL: the text-level pieces shared by URL and
// URLComponents. Not part of the area's public contract.
//
// splitURIReference validates text as a URI reference (through uriparser) and
// cuts it into its raw parts, still percent-encoded. percentEncode keeps the
// bytes a given set allows and escapes every other byte as "%XX" in upper
// case.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace kestrona::uri {

struct RawParts {
  std::optional<std::string> scheme;
  std::optional<std::string> userInfo;   // encoded, without "@"
  std::optional<std::string> host;       // encoded, without IPv6 brackets
  std::optional<std::string> portText;   // digits, may be empty
  std::optional<std::string> authority;  // as written, without "//"
  std::string path;                      // encoded, as written
  std::optional<std::string> query;      // encoded, without "?"
  std::optional<std::string> fragment;   // encoded, without "#"
};

// None when text is not a URI reference by RFC 3986.
std::optional<RawParts> splitURIReference(std::string_view text);

enum class CharacterSet {
  queryValue,  // A-Z a-z 0-9 - . _ ~ : / ? @ ! $ ' ( ) * + , ; =
  queryName,   // queryValue without "="
  pathSegment, // unreserved, sub-delims, ":" and "@"
  path,        // pathSegment and "/"
  host,        // unreserved and sub-delims
  fragment,    // path, "?"
};

std::string percentEncode(std::string_view text, CharacterSet allowed);

// Decodes valid "%XX" escapes and leaves malformed ones as written.
std::string percentDecodeLenient(std::string_view text);

// A port from its digits; none when empty or above 65535.
std::optional<int> parsePort(std::string_view digits);

}  // namespace kestrona::uri
