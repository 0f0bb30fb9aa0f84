#include "Platform/URL/URIText.h"

#include <uriparser/Uri.h>

#include <array>
#include <charconv>

#include "Platform/URL/URLComponents.h"

namespace kestrona::uri {
namespace {

bool isUnreserved(unsigned char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-' || c == '.' ||
         c == '_' || c == '~';
}

bool isSubDelimiter(unsigned char c) {
  switch (c) {
    case '!': case '$': case '&': case '\'': case '(': case ')':
    case '*': case '+': case ',': case ';': case '=':
      return true;
    default:
      return false;
  }
}

bool isAllowed(unsigned char c, CharacterSet set) {
  switch (set) {
    case CharacterSet::queryValue:
      // All that a query allows but "&", which would end the item.
      if (c == '&') return false;
      return isUnreserved(c) || isSubDelimiter(c) || c == ':' || c == '/' || c == '?' || c == '@';
    case CharacterSet::queryName:
      // A name also ends at "=".
      return c != '=' && isAllowed(c, CharacterSet::queryValue);
    case CharacterSet::pathSegment:
      return isUnreserved(c) || isSubDelimiter(c) || c == ':' || c == '@';
    case CharacterSet::path:
      return isAllowed(c, CharacterSet::pathSegment) || c == '/';
    case CharacterSet::host:
      return isUnreserved(c) || isSubDelimiter(c);
    case CharacterSet::fragment:
      return isAllowed(c, CharacterSet::path) || c == '?';
  }
  return false;
}

int hexValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return -1;
}

std::optional<std::string> rangeText(const UriTextRangeA& range) {
  if (range.first == nullptr) return std::nullopt;
  return std::string(range.first, range.afterLast);
}

// Frees a parsed URI on every path out.
struct ParsedURI {
  UriUriA uri{};
  bool parsed = false;
  ~ParsedURI() {
    if (parsed) uriFreeUriMembersA(&uri);
  }
};

}  // namespace

std::optional<RawParts> splitURIReference(std::string_view text) {
  ParsedURI parsed;
  const char* errorPosition = nullptr;
  if (uriParseSingleUriExA(&parsed.uri, text.data(), text.data() + text.size(), &errorPosition) != URI_SUCCESS) {
    return std::nullopt;
  }
  parsed.parsed = true;

  RawParts parts;
  parts.scheme = rangeText(parsed.uri.scheme);
  parts.userInfo = rangeText(parsed.uri.userInfo);
  parts.host = rangeText(parsed.uri.hostText);
  parts.portText = rangeText(parsed.uri.portText);

  // The generic split of RFC 3986, appendix B, on text the parser accepted:
  // scheme ":" ["//" authority] path ["?" query] ["#" fragment].
  std::string_view rest = text;
  if (parts.scheme) rest.remove_prefix(parts.scheme->size() + 1);
  if (rest.starts_with("//")) {
    rest.remove_prefix(2);
    std::size_t end = rest.find_first_of("/?#");
    if (end == std::string_view::npos) end = rest.size();
    parts.authority = std::string(rest.substr(0, end));
    rest.remove_prefix(end);
    // uriparser leaves the host range unset for an empty authority; the text
    // has one all the same.
    if (!parts.host) parts.host = std::string();
  }
  if (std::size_t hash = rest.find('#'); hash != std::string_view::npos) {
    parts.fragment = std::string(rest.substr(hash + 1));
    rest = rest.substr(0, hash);
  }
  if (std::size_t question = rest.find('?'); question != std::string_view::npos) {
    parts.query = std::string(rest.substr(question + 1));
    rest = rest.substr(0, question);
  }
  parts.path = std::string(rest);
  return parts;
}

std::string percentEncode(std::string_view text, CharacterSet allowed) {
  static constexpr std::array<char, 16> kHexDigits = {'0', '1', '2', '3', '4', '5', '6', '7',
                                                      '8', '9', 'A', 'B', 'C', 'D', 'E', 'F'};
  std::string encoded;
  encoded.reserve(text.size());
  for (char character : text) {
    auto byte = static_cast<unsigned char>(character);
    if (isAllowed(byte, allowed)) {
      encoded.push_back(character);
    } else {
      encoded.push_back('%');
      encoded.push_back(kHexDigits[byte >> 4]);
      encoded.push_back(kHexDigits[byte & 0x0F]);
    }
  }
  return encoded;
}

std::string percentDecodeLenient(std::string_view text) {
  std::string decoded;
  decoded.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '%' && i + 2 < text.size() && hexValue(text[i + 1]) >= 0 && hexValue(text[i + 2]) >= 0) {
      decoded.push_back(static_cast<char>(hexValue(text[i + 1]) * 16 + hexValue(text[i + 2])));
      i += 2;
    } else {
      decoded.push_back(text[i]);
    }
  }
  return decoded;
}

std::optional<int> parsePort(std::string_view digits) {
  if (digits.empty() || digits.size() > 5) return std::nullopt;
  int port = 0;
  auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), port);
  if (error != std::errc() || end != digits.data() + digits.size() || port > 65535) return std::nullopt;
  return port;
}

}  // namespace kestrona::uri

namespace kestrona {

std::string percentEncodeQueryValue(std::string_view text) {
  return uri::percentEncode(text, uri::CharacterSet::queryValue);
}

std::optional<std::string> percentDecode(std::string_view text) {
  std::string decoded = uri::percentDecodeLenient(text);
  // Every valid escape shrinks the text by two bytes; a "%" left over in the
  // count means a malformed escape.
  std::size_t escapes = 0;
  for (char c : text) escapes += c == '%' ? 1 : 0;
  if (decoded.size() + 2 * escapes != text.size()) return std::nullopt;
  return decoded;
}

}  // namespace kestrona
