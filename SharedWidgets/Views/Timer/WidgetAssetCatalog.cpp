#include "SharedWidgets/Views/Timer/WidgetAssetCatalog.h"

#include "Platform/Foundation/FatalError.h"

namespace kestrona {

const WidgetAssetCatalog& WidgetAssetCatalog::module() {
  static const WidgetAssetCatalog catalog({
      {"PlayIcon-36", {TemplateSymbol::play, 36}},
      {"PlayIcon-48", {TemplateSymbol::play, 48}},
      {"PauseIcon-36", {TemplateSymbol::pause, 36}},
      {"PauseIcon-48", {TemplateSymbol::pause, 48}},
      {"RecentTaskPlayIcon", {TemplateSymbol::smallPlay, naturalEdge(TemplateSymbol::smallPlay)}},
  });
  return catalog;
}

bool WidgetAssetCatalog::containsImage(std::string_view name) const { return images_.find(name) != images_.end(); }

TemplateImage WidgetAssetCatalog::image(std::string_view name) const {
  const auto found = images_.find(name);
  if (found == images_.end()) fatalError("No image named " + std::string(name) + " in the widget assets");
  return TemplateImage(found->second.symbol, found->second.edge);
}

}  // namespace kestrona
