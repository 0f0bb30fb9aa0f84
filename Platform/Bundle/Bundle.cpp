#include "Platform/Bundle/Bundle.h"

#include <nlohmann/json.hpp>

#include <fstream>
#include <mutex>
#include <sstream>

#include "Platform/Bundle/MainBundleLocator.h"

namespace kestrona {
namespace {

constexpr const char* kInfoFileName = "Info.json";

std::string_view caseDescription(BundleErrorCode code) {
  switch (code) {
    case BundleErrorCode::notFound:
      return "There is no bundle folder";
    case BundleErrorCode::infoUnreadable:
      return "The bundle's Info.json cannot be read";
    case BundleErrorCode::infoMalformed:
      return "The bundle's Info.json is malformed";
  }
  return "Bundle error";
}

// The executable path of Info.json, checked to be relative and to stay inside
// the bundle, so that a bundle can only ever start its own program.
std::filesystem::path checkedExecutablePath(const std::string& text, const std::filesystem::path& infoPath) {
  std::filesystem::path relative = std::filesystem::path(text).lexically_normal();
  if (text.empty() || relative.is_absolute() || relative.empty() || *relative.begin() == ".." ||
      relative.filename().empty()) {
    throw BundleError(BundleErrorCode::infoMalformed, infoPath,
                      "\"executable\" must be a file path inside the bundle, not \"" + text + "\"");
  }
  return relative;
}

struct MainBundleState {
  std::mutex mutex;
  std::optional<std::filesystem::path> executableOverride;
  std::optional<Bundle> cached;
};

MainBundleState& mainBundleState() {
  static MainBundleState state;
  return state;
}

std::filesystem::path runningExecutablePath() {
  std::error_code error;
  std::filesystem::path path = std::filesystem::read_symlink("/proc/self/exe", error);
  if (error) return std::filesystem::current_path(error) / "unknown-executable";
  return path;
}

Bundle findMainBundle(const std::filesystem::path& executable) {
  std::error_code error;
  std::filesystem::path canonicalExecutable = std::filesystem::weakly_canonical(executable, error);
  if (error) canonicalExecutable = executable;
  std::filesystem::path folder = canonicalExecutable.parent_path();
  for (int level = 0; level < 3 && !folder.empty(); ++level) {
    if (std::filesystem::exists(folder / kInfoFileName, error)) {
      std::optional<Bundle> candidate = Bundle::fromPath(folder);
      if (candidate && candidate->executableURL() &&
          std::filesystem::weakly_canonical(candidate->executableURL()->filesystemPath(), error) ==
              canonicalExecutable) {
        return *candidate;
      }
    }
    if (folder == folder.root_path()) break;
    folder = folder.parent_path();
  }
  std::optional<Bundle> bare = Bundle::fromPath(canonicalExecutable.parent_path());
  if (bare) return *bare;
  // The executable's own folder is gone (deleted while running): a bundle
  // that names nothing, so that every lookup through it finds nothing.
  return Bundle::fromPath("/").value();
}

}  // namespace

BundleError::BundleError(BundleErrorCode code, const std::filesystem::path& path, const std::string& detail)
    : CodedError("BundleError", code, std::string(caseDescription(code)) + ": " + detail,
                 ErrorUserInfo{{"path", path.string()}}) {}

Bundle Bundle::load(const URL& url) {
  if (!url.isFileURL()) {
    throw BundleError(BundleErrorCode::notFound, url.filesystemPath(),
                      "a bundle is a local folder, not " + url.absoluteString());
  }
  return load(url.filesystemPath());
}

Bundle Bundle::load(const std::filesystem::path& path) {
  std::error_code error;
  if (!std::filesystem::is_directory(path, error)) {
    throw BundleError(BundleErrorCode::notFound, path, path.string() + " is not a folder");
  }
  Bundle bundle(URL::fileURLWithPath(path, true));
  std::filesystem::path infoPath = path / kInfoFileName;
  if (!std::filesystem::exists(infoPath, error)) return bundle;

  std::ifstream stream(infoPath, std::ios::binary);
  std::stringstream text;
  if (stream) text << stream.rdbuf();
  if (!std::filesystem::is_regular_file(infoPath, error) || !stream || stream.bad()) {
    throw BundleError(BundleErrorCode::infoUnreadable, infoPath, infoPath.string() + " cannot be read");
  }
  nlohmann::json info = nlohmann::json::parse(text.str(), nullptr, false);
  if (info.is_discarded() || !info.is_object()) {
    throw BundleError(BundleErrorCode::infoMalformed, infoPath, infoPath.string() + " is not a JSON object");
  }
  if (auto identifier = info.find("identifier"); identifier != info.end()) {
    if (!identifier->is_string() || identifier->get<std::string>().empty()) {
      throw BundleError(BundleErrorCode::infoMalformed, infoPath, "\"identifier\" must be a non-empty string");
    }
    bundle.bundleIdentifier_ = identifier->get<std::string>();
  }
  if (auto executable = info.find("executable"); executable != info.end()) {
    if (!executable->is_string()) {
      throw BundleError(BundleErrorCode::infoMalformed, infoPath, "\"executable\" must be a string");
    }
    std::filesystem::path relative = checkedExecutablePath(executable->get<std::string>(), infoPath);
    bundle.executableURL_ = URL::fileURLWithPath(path / relative, false);
  }
  return bundle;
}

std::optional<Bundle> Bundle::fromURL(const URL& url) {
  try {
    return load(url);
  } catch (const BundleError&) {
    return std::nullopt;
  }
}

std::optional<Bundle> Bundle::fromPath(const std::filesystem::path& path) {
  try {
    return load(path);
  } catch (const BundleError&) {
    return std::nullopt;
  }
}

Bundle Bundle::main() {
  MainBundleState& state = mainBundleState();
  std::lock_guard lock(state.mutex);
  if (!state.cached) {
    state.cached = findMainBundle(state.executableOverride.value_or(runningExecutablePath()));
  }
  return *state.cached;
}

void setMainExecutablePathForTesting(const std::optional<std::filesystem::path>& path) {
  MainBundleState& state = mainBundleState();
  std::lock_guard lock(state.mutex);
  state.executableOverride = path;
  state.cached.reset();
}

}  // namespace kestrona
