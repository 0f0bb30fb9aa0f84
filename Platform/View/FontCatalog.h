// Which installed font family draws each font design.
//
// Every design has a list of candidate families, most wanted first; the
// catalog takes the first one that is installed. When none is, the design
// falls back on the default design's choice, and that in turn on the
// generic family "sans-serif", which the font matcher always satisfies with
// some face. So drawing never fails for want of a font; it only looks
// plainer.
//
// The candidates (the packages are installed by scripts/setup):
//   default design: "Inter" (fonts-inter), then "DejaVu Sans" (fonts-dejavu-core);
//   rounded design: "Quicksand" (fonts-quicksand), then "Comfortaa" (fonts-comfortaa).
//
// Inter draws Latin, Greek and Cyrillic; Quicksand Latin. Every character a
// design's face lacks is drawn by the first of its fallback families that
// has it: for the rounded design the default design's family, then for
// both designs these script families, where installed, in this order:
//   "Noto Sans Arabic UI" (fonts-noto-ui-core): Arabic, and the scripts of
//     India and South-East Asia;
//   "WenQuanYi Micro Hei" (fonts-wqy-microhei): Chinese, Japanese, Korean;
//   "DejaVu Sans" (fonts-dejavu-core): Hebrew, and symbols the others lack.
// Arabic comes before DejaVu Sans, whose Arabic letters are plainer.
// Emoji are not in the list: Pango draws a character with emoji
// presentation in the font matcher's "emoji" family, Noto Color Emoji
// (fonts-noto-color-emoji), and one with text presentation (a plain heart
// or star) in the fallbacks. Naming the emoji face in the list would draw
// every symbol it has as a colour picture, and would give empty texts its
// odd line height. What no family has falls to the font matcher's choice.
//
// A resolved font keeps the requested weight; the font matcher picks the
// nearest face of the family (a family with regular and bold faces only
// draws semibold in bold).
//
// FontCatalog::system() asks the font matcher once, on first use, which
// families are installed. Tests make a catalog from an explicit list.
//
// Threading: a catalog is immutable once made; system() is made once,
// thread-safe, and may be read from any thread.
#pragma once

#include <set>
#include <string>
#include <vector>

#include "Platform/View/Font.h"

namespace kestrona {

// A font with its family chosen: what a text measurer and a renderer draw.
struct ResolvedFont {
  std::string family;
  double size = 0;  // points
  Font::Weight weight = Font::Weight::regular;
  bool monospacedDigit = false;
  // The families that draw what family lacks, in order.
  std::vector<std::string> fallbackFamilies;

  friend bool operator==(const ResolvedFont&, const ResolvedFont&) = default;
};

class FontCatalog {
 public:
  static constexpr const char* kGenericFamily = "sans-serif";

  // A catalog for the given installed families (matched without regard to case).
  explicit FontCatalog(const std::vector<std::string>& installedFamilies);

  // The catalog of this machine's installed fonts.
  static const FontCatalog& system();

  // The candidate families of design, most wanted first.
  static const std::vector<std::string>& candidates(Font::Design design);
  // The script families that follow the design faces, in order.
  static const std::vector<std::string>& scriptFamilies();

  // The family that draws design.
  const std::string& family(Font::Design design) const;
  // The installed families that draw what family(design) lacks, in order.
  const std::vector<std::string>& fallbackFamilies(Font::Design design) const;

  // font with its family, at size times scale.
  ResolvedFont resolve(const Font& font, double scale = 1.0) const;

 private:
  std::string defaultFamily_;
  std::string roundedFamily_;
  std::vector<std::string> defaultFallbacks_;
  std::vector<std::string> roundedFallbacks_;
};

}  // namespace kestrona
