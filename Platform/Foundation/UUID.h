// Universally unique identifiers (RFC 4122).
//
// A UUID is a 16-byte value. Its text form is the canonical 36-character
// one in upper case ("E621E1F8-C36C-495A-93FC-0C247A3E6E5F"), which is what
// entities store as their identifier and stores keep as their identity.
// Parsing accepts either case. random() draws version-4 identifiers from the
// operating system's random source. Values are immutable and thread-safe.
#pragma once

#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kestrona {

class UUID {
 public:
  using Bytes = std::array<std::uint8_t, 16>;

  // A new random (version 4, variant 1) identifier.
  static UUID random();
  // The identifier of a 36-character text with hyphens at 8, 13, 18 and 23,
  // or none for any other text.
  static std::optional<UUID> fromString(std::string_view text);

  explicit constexpr UUID(const Bytes& bytes) : bytes_(bytes) {}

  const Bytes& bytes() const noexcept { return bytes_; }
  std::string uuidString() const;

  friend bool operator==(const UUID&, const UUID&) = default;
  friend auto operator<=>(const UUID&, const UUID&) = default;

 private:
  Bytes bytes_;
};

}  // namespace kestrona

template <>
struct std::hash<kestrona::UUID> {
  std::size_t operator()(const kestrona::UUID& uuid) const noexcept;
};
