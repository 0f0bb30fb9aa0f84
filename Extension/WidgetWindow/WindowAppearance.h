// Light or dark: the window follows the desktop's preference, as GTK sees
// it, and draws its own surfaces in our colours' dynamic variants.
//
// windowAppearance() is dark when GTK is asked for a dark theme in any of
// the ways GTK 4 knows: the setting "gtk-application-prefer-dark-theme", a
// theme name of a dark variant ("Adwaita-dark", or "Name:dark" as GTK_THEME
// gives it), or a GTK_THEME environment variable naming one (which overrides
// the theme setting, so it wins when present). Otherwise light.
//
// The widgets themselves are drawn in the dark scheme whatever the window's
// appearance, as the design draws them everywhere; what follows the desktop
// is the window's background (NamedColors::systemBackground()) and the focus
// ring (focusRingColor()).
//
// Threading: plain functions and immutable colours; any thread.
#pragma once

#include <optional>
#include <string_view>

#include "Platform/Color/Appearance.h"
#include "Platform/Color/Color.h"

namespace kestrona {

Appearance windowAppearance(bool prefersDarkTheme, std::string_view themeName,
                            std::optional<std::string_view> themeEnvironment);

// The ring around the button that has the keyboard's focus: a blue that
// stands out on the window and on the widgets' black, lighter in dark.
const Color& focusRingColor();

}  // namespace kestrona
