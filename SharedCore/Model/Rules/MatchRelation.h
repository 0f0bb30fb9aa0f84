// How a rule compares its text or its file with what it watches. Both
// relations share the stored Rule.relationValue; a rule uses the one that
// fits its type. Raw values are the stored numbers; fromRawValue gives none
// for any other number, while Rule reads such a number as contains or
// pathIs.
#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "Platform/Foundation/RawRepresentable.h"
#include "SharedCore/Model/StoredRawValues.h"

namespace kestrona {

enum class TextMatchRelation : std::int16_t { isExact = 0, contains = 1, startsWith = 2, endsWith = 3 };

enum class FileMatchRelation : std::int16_t {
  pathIs = 0,
  nameContains = 1,
  pathContains = 2,
  nameMatchesRegex = 3,
  pathMatchesRegex = 4,
};

template <>
struct RawRepresentable<TextMatchRelation> : StoredRawValues<TextMatchRelation, 0, 3> {};

template <>
struct RawRepresentable<FileMatchRelation> : StoredRawValues<FileMatchRelation, 0, 4> {};

template <>
inline constexpr std::array<TextMatchRelation, 4> allCases<TextMatchRelation> = {
    TextMatchRelation::isExact, TextMatchRelation::contains, TextMatchRelation::startsWith,
    TextMatchRelation::endsWith};

template <>
inline constexpr std::array<FileMatchRelation, 5> allCases<FileMatchRelation> = {
    FileMatchRelation::pathIs, FileMatchRelation::nameContains, FileMatchRelation::pathContains,
    FileMatchRelation::nameMatchesRegex, FileMatchRelation::pathMatchesRegex};

}  // namespace kestrona
