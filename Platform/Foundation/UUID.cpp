#include "Platform/Foundation/UUID.h"

#include <sys/random.h>

#include <cerrno>
#include <cstring>

#include "Platform/Foundation/FatalError.h"

namespace kestrona {
namespace {

constexpr char kHexDigits[] = "0123456789ABCDEF";

bool isHyphenPosition(std::size_t index) { return index == 8 || index == 13 || index == 18 || index == 23; }

int hexValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

}  // namespace

UUID UUID::random() {
  Bytes bytes{};
  std::size_t filled = 0;
  while (filled < bytes.size()) {
    ssize_t got = getrandom(bytes.data() + filled, bytes.size() - filled, 0);
    if (got < 0) {
      if (errno == EINTR) continue;
      fatalError("the operating system's random source failed");
    }
    filled += static_cast<std::size_t>(got);
  }
  bytes[6] = static_cast<std::uint8_t>((bytes[6] & 0x0F) | 0x40);
  bytes[8] = static_cast<std::uint8_t>((bytes[8] & 0x3F) | 0x80);
  return UUID(bytes);
}

std::optional<UUID> UUID::fromString(std::string_view text) {
  if (text.size() != 36) return std::nullopt;
  Bytes bytes{};
  std::size_t byteIndex = 0;
  for (std::size_t i = 0; i < text.size();) {
    if (isHyphenPosition(i)) {
      if (text[i] != '-') return std::nullopt;
      ++i;
      continue;
    }
    int high = hexValue(text[i]);
    int low = hexValue(text[i + 1]);
    if (high < 0 || low < 0 || isHyphenPosition(i + 1)) return std::nullopt;
    bytes[byteIndex++] = static_cast<std::uint8_t>(high * 16 + low);
    i += 2;
  }
  return UUID(bytes);
}

std::string UUID::uuidString() const {
  std::string text;
  text.reserve(36);
  for (std::size_t i = 0; i < bytes_.size(); ++i) {
    if (i == 4 || i == 6 || i == 8 || i == 10) text.push_back('-');
    text.push_back(kHexDigits[bytes_[i] >> 4]);
    text.push_back(kHexDigits[bytes_[i] & 0x0F]);
  }
  return text;
}

}  // namespace kestrona

std::size_t std::hash<kestrona::UUID>::operator()(const kestrona::UUID& uuid) const noexcept {
  std::uint64_t high = 0;
  std::uint64_t low = 0;
  std::memcpy(&high, uuid.bytes().data(), 8);
  std::memcpy(&low, uuid.bytes().data() + 8, 8);
  return static_cast<std::size_t>(high ^ (low * 0x9E3779B97F4A7C15ULL));
}
