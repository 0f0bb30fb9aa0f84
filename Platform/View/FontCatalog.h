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

  // The family that draws design.
  const std::string& family(Font::Design design) const;

  // font with its family, at size times scale.
  ResolvedFont resolve(const Font& font, double scale = 1.0) const;

 private:
  std::string defaultFamily_;
  std::string roundedFamily_;
};

}  // namespace kestrona
