# The install rules of the widget window, run as a user runs them:
#   cmake -DBUILD=<build tree> -DWORK=<scratch folder> -P InstallTest.cmake
# A plain install puts the program in its bundle and both desktop entries in
# share/applications, valid by desktop-file-validate, and nothing into the
# user's autostart folder; the "autostart" component puts the entry there.
file(REMOVE_RECURSE "${WORK}")
set(ENV{XDG_CONFIG_HOME} "${WORK}/config")
set(prefix "${WORK}/prefix")

function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT status EQUAL 0)
    message(FATAL_ERROR "${ARGN} failed (${status}):\n${output}")
  endif()
endfunction()

function(expect_file path)
  if(NOT EXISTS "${path}")
    message(FATAL_ERROR "missing: ${path}")
  endif()
endfunction()

run(${CMAKE_COMMAND} --install "${BUILD}" --prefix "${prefix}" --component widget-window)
set(bundle "${prefix}/Kestrona.app/Contents/PlugIns/KestronaWidgetWindow.appex")
expect_file("${bundle}/Info.json")
expect_file("${bundle}/bin/kestrona-widget-window")
set(launcher "${prefix}/share/applications/app.kestrona.WidgetWindow.desktop")
set(autostart "${prefix}/share/applications/app.kestrona.WidgetWindow.autostart.desktop")
expect_file("${launcher}")
expect_file("${autostart}")
run(desktop-file-validate "${launcher}" "${autostart}")
file(READ "${launcher}" entry)
if(NOT entry MATCHES "\nExec=\"${bundle}/bin/kestrona-widget-window\"\n")
  message(FATAL_ERROR "the launcher does not start the installed program:\n${entry}")
endif()
if(EXISTS "${WORK}/config/autostart")
  message(FATAL_ERROR "a plain install wrote into the user's autostart folder")
endif()

run(${CMAKE_COMMAND} --install "${BUILD}" --prefix "${prefix}" --component autostart)
file(READ "${WORK}/config/autostart/app.kestrona.WidgetWindow.desktop" entry)
if(NOT entry MATCHES "X-GNOME-Autostart-enabled=true" OR NOT entry MATCHES "Exec=\"${bundle}/bin/")
  message(FATAL_ERROR "the autostart entry is not the installed one:\n${entry}")
endif()
