// Test hook of Bundle::main(): where the running executable is taken to be.
//
// Bundle::main() reads /proc/self/exe. Tests that need a main bundle laid out
// in a temporary folder set the executable path here first; the main bundle
// is then found again from that path on the next call to Bundle::main(), and
// again after the override is cleared.
//
// Threads: thread-safe, but a test must not change the override while other
// threads ask for the main bundle and expect a stable answer.
#pragma once

#include <filesystem>
#include <optional>

namespace kestrona {

// Sets (or, with none, clears) the path taken as the running executable.
void setMainExecutablePathForTesting(const std::optional<std::filesystem::path>& path);

}  // namespace kestrona
