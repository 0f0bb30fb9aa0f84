#include "Platform/Text/TextLength.h"

#include <unicode/brkiter.h>
#include <unicode/unistr.h>

#include <memory>

namespace kestrona {
namespace {

icu::UnicodeString unicode(std::string_view text) {
  return icu::UnicodeString::fromUTF8(icu::StringPiece(text.data(), static_cast<int32_t>(text.size())));
}

}  // namespace

std::size_t characterCount(std::string_view text) {
  const icu::UnicodeString unicodeText = unicode(text);
  if (unicodeText.isEmpty()) return 0;
  UErrorCode status = U_ZERO_ERROR;
  std::unique_ptr<icu::BreakIterator> characters(
      icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
  if (U_FAILURE(status)) return static_cast<std::size_t>(unicodeText.countChar32());
  characters->setText(unicodeText);
  std::size_t count = 0;
  characters->first();
  while (characters->next() != icu::BreakIterator::DONE) ++count;
  return count;
}

std::size_t utf16Length(std::string_view text) { return static_cast<std::size_t>(unicode(text).length()); }

}  // namespace kestrona
