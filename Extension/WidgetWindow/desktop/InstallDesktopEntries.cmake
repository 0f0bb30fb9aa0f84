# Run by `cmake --install`: writes the widget window's desktop entries, with
# the installed program's path in their Exec lines.
#
# Expects KESTRONA_DESKTOP_TEMPLATE (the entry template),
# KESTRONA_DESKTOP_WORK (a folder of the build tree for the configured
# entries) and KESTRONA_WIDGET_WINDOW (the program's path below the prefix). With
# KESTRONA_AUTOSTART_FOLDER unset it installs both entries into
# <prefix>/share/applications: the launcher "app.kestrona.WidgetWindow.desktop"
# and the one for autostart, "app.kestrona.WidgetWindow.autostart.desktop",
# hidden from menus. With it set (the "autostart" component, installed only
# when asked for) it writes the autostart entry into that folder instead, as
# "app.kestrona.WidgetWindow.desktop".

# The program's path as an Exec value: quoted, with the characters that the
# desktop entry format reserves escaped.
set(path "${CMAKE_INSTALL_PREFIX}/${KESTRONA_WIDGET_WINDOW}")
string(REPLACE "\\" "\\\\\\\\" path "${path}")
foreach(character "\"" "`" "$")
  string(REPLACE "${character}" "\\\\${character}" path "${path}")
endforeach()
string(REPLACE "%" "%%" path "${path}")
set(KESTRONA_DESKTOP_EXEC "\"${path}\"")

set(work "${KESTRONA_DESKTOP_WORK}")
set(KESTRONA_DESKTOP_EXTRA "")
configure_file("${KESTRONA_DESKTOP_TEMPLATE}" "${work}/app.kestrona.WidgetWindow.desktop" @ONLY)
set(KESTRONA_DESKTOP_EXTRA "NoDisplay=true\nX-GNOME-Autostart-enabled=true")
configure_file("${KESTRONA_DESKTOP_TEMPLATE}" "${work}/autostart/app.kestrona.WidgetWindow.desktop" @ONLY)

if(DEFINED KESTRONA_AUTOSTART_FOLDER)
  file(INSTALL "${work}/autostart/app.kestrona.WidgetWindow.desktop" DESTINATION "${KESTRONA_AUTOSTART_FOLDER}")
else()
  file(INSTALL "${work}/app.kestrona.WidgetWindow.desktop" DESTINATION "${CMAKE_INSTALL_PREFIX}/share/applications")
  file(INSTALL "${work}/autostart/app.kestrona.WidgetWindow.desktop" DESTINATION "${CMAKE_INSTALL_PREFIX}/share/applications"
       RENAME "app.kestrona.WidgetWindow.autostart.desktop")
endif()
