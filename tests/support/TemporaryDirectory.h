// Test helpers for the file system and the environment.
//
// TemporaryDirectory makes a fresh directory under $TMPDIR (or /tmp) and
// removes it with everything inside when it goes out of scope.
// ScopedEnvironment sets or unsets environment variables for its lifetime
// and restores the previous values. Neither is thread-safe: use them on the
// test's own thread, before starting threads that read the environment.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace kestrona::testing {

class TemporaryDirectory {
 public:
  TemporaryDirectory();
  ~TemporaryDirectory();
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

class ScopedEnvironment {
 public:
  ScopedEnvironment() = default;
  ~ScopedEnvironment();
  ScopedEnvironment(const ScopedEnvironment&) = delete;
  ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

  // Sets name to value, or unsets it when value is none.
  void set(const std::string& name, const std::optional<std::string>& value);

 private:
  std::vector<std::pair<std::string, std::optional<std::string>>> saved_;
};

// Writes text to path, creating parent directories.
void writeFile(const std::filesystem::path& path, const std::string& text);
// The whole content of path; empty when it cannot be read.
std::string readFile(const std::filesystem::path& path);

}  // namespace kestrona::testing
