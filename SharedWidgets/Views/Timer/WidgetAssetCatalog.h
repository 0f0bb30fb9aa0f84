// The widgets' image assets: named vector icons.
//
// The widgets ask their resource bundle for images by name. Ours holds the
// icons as template symbols of the view layer, each at a fixed edge length:
//   "PlayIcon-36", "PlayIcon-48"     the play triangle, 36 and 48 points
//   "PauseIcon-36", "PauseIcon-48"   the pause sign, 36 and 48 points
//   "RecentTaskPlayIcon"             the plates' small play triangle, 12 points
// An image is a template: the view that shows it gives its tint.
//
// Asking for a name the catalogue does not hold is a programming error (the
// names are fixed in the views) and ends the process with
// "No image named <name> in the widget assets".
//
// Threading: module() is made once, thread-safe; a catalogue is immutable
// and may be read from any thread.
#pragma once

#include <map>
#include <string>
#include <string_view>

#include "Platform/View/View.h"

namespace kestrona {

class WidgetAssetCatalog {
 public:
  // The catalogue of the widgets' module.
  static const WidgetAssetCatalog& module();

  bool containsImage(std::string_view name) const;
  TemplateImage image(std::string_view name) const;

 private:
  struct Asset {
    TemplateSymbol symbol;
    double edge;
  };

  explicit WidgetAssetCatalog(std::map<std::string, Asset, std::less<>> images) : images_(std::move(images)) {}

  std::map<std::string, Asset, std::less<>> images_;
};

}  // namespace kestrona
