// Test helpers for code that starts programs: executable shell scripts in a
// temporary folder and an application bundle laid out as installed. Such
// tests wait on a loop with runUntil (tests/support/RunLoopDriving.h).
#pragma once

#include <filesystem>
#include <string>

#include "tests/support/RunLoopDriving.h"

namespace kestrona::testing {

// Writes an executable "#!/bin/sh" script with body to path.
void writeScript(const std::filesystem::path& path, const std::string& body);

// Lays out root/Kestrona.app with its Info.json naming Contents/bin/kestrona,
// writes applicationBody as that script (unless it is empty: then no
// executable is written), and lays out the widget bundle
// Contents/PlugIns/KestronaWidgets.appex with its Info.json. Returns the
// application bundle's folder.
std::filesystem::path layOutApplication(const std::filesystem::path& root, const std::string& applicationBody);

// The path of the widget bundle inside an application bundle.
std::filesystem::path widgetBundleIn(const std::filesystem::path& application);

}  // namespace kestrona::testing
