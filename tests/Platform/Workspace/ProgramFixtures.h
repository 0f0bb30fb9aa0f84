// Test helpers for code that starts programs and waits on a main loop:
// executable shell scripts in a temporary folder, an application bundle laid
// out as installed, and running a loop until a test's work is done.
#pragma once

#include <filesystem>
#include <functional>
#include <string>

#include "Platform/RunLoop/MainLoop.h"

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

// Runs loop until done() holds, or fails the test after a generous guard of
// 30 seconds of the loop's own (which only a hang ever reaches).
void runUntil(MainLoop& loop, const std::function<bool()>& done);

}  // namespace kestrona::testing
