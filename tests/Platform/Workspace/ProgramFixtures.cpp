#include "tests/Platform/Workspace/ProgramFixtures.h"

#include "tests/support/TemporaryDirectory.h"

namespace kestrona::testing {

void writeScript(const std::filesystem::path& path, const std::string& body) {
  writeFile(path, "#!/bin/sh\n" + body + "\n");
  std::filesystem::permissions(path, std::filesystem::perms::owner_all | std::filesystem::perms::group_read |
                                         std::filesystem::perms::group_exec);
}

std::filesystem::path widgetBundleIn(const std::filesystem::path& application) {
  return application / "Contents/PlugIns/KestronaWidgets.appex";
}

std::filesystem::path layOutApplication(const std::filesystem::path& root, const std::string& applicationBody) {
  std::filesystem::path application = root / "Kestrona.app";
  writeFile(application / "Info.json", R"({"identifier": "app.kestrona", "executable": "Contents/bin/kestrona"})");
  if (!applicationBody.empty()) writeScript(application / "Contents/bin/kestrona", applicationBody);
  std::filesystem::path widgets = widgetBundleIn(application);
  writeFile(widgets / "Info.json", R"({"identifier": "app.kestrona.widgets", "executable": "bin/kestrona-widgets"})");
  writeScript(widgets / "bin/kestrona-widgets", "exit 0");
  return application;
}

}  // namespace kestrona::testing
