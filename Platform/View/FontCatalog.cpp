#include "Platform/View/FontCatalog.h"

#include <pango/pangocairo.h>

#include <algorithm>
#include <cctype>
#include <optional>

namespace kestrona {
namespace {

std::string folded(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return text;
}

std::optional<std::string> firstInstalled(const std::vector<std::string>& candidates,
                                          const std::set<std::string>& installed) {
  for (const std::string& family : candidates) {
    if (installed.contains(folded(family))) return family;
  }
  return std::nullopt;
}

// The families the font matcher knows, from the font map that draws text.
std::vector<std::string> installedFamilies() {
  PangoFontMap* fontMap = pango_cairo_font_map_get_default();
  PangoFontFamily** families = nullptr;
  int count = 0;
  pango_font_map_list_families(fontMap, &families, &count);
  std::vector<std::string> names;
  names.reserve(static_cast<std::size_t>(count));
  for (int index = 0; index < count; ++index) {
    names.emplace_back(pango_font_family_get_name(families[index]));
  }
  g_free(families);
  return names;
}

}  // namespace

FontCatalog::FontCatalog(const std::vector<std::string>& installedFamilies) {
  std::set<std::string> installed;
  for (const std::string& family : installedFamilies) installed.insert(folded(family));
  defaultFamily_ = firstInstalled(candidates(Font::Design::defaultDesign), installed).value_or(kGenericFamily);
  roundedFamily_ = firstInstalled(candidates(Font::Design::rounded), installed).value_or(defaultFamily_);

  auto fallbacksOf = [&](const std::string& family, std::vector<std::string> leading) {
    for (const std::string& script : scriptFamilies()) {
      if (installed.contains(folded(script))) leading.push_back(script);
    }
    std::erase(leading, family);
    return leading;
  };
  defaultFallbacks_ = fallbacksOf(defaultFamily_, {});
  roundedFallbacks_ = fallbacksOf(roundedFamily_, {defaultFamily_});
}

const FontCatalog& FontCatalog::system() {
  static const FontCatalog catalog(installedFamilies());
  return catalog;
}

const std::vector<std::string>& FontCatalog::candidates(Font::Design design) {
  static const std::vector<std::string> defaultCandidates{"Inter", "DejaVu Sans"};
  static const std::vector<std::string> roundedCandidates{"Quicksand", "Comfortaa"};
  return design == Font::Design::rounded ? roundedCandidates : defaultCandidates;
}

const std::vector<std::string>& FontCatalog::scriptFamilies() {
  static const std::vector<std::string> families{"Noto Sans Arabic UI", "WenQuanYi Micro Hei", "DejaVu Sans"};
  return families;
}

const std::string& FontCatalog::family(Font::Design design) const {
  return design == Font::Design::rounded ? roundedFamily_ : defaultFamily_;
}

const std::vector<std::string>& FontCatalog::fallbackFamilies(Font::Design design) const {
  return design == Font::Design::rounded ? roundedFallbacks_ : defaultFallbacks_;
}

ResolvedFont FontCatalog::resolve(const Font& font, double scale) const {
  return ResolvedFont{family(font.design()), font.size() * scale, font.weight(), font.hasMonospacedDigits(),
                      fallbackFamilies(font.design())};
}

}  // namespace kestrona
