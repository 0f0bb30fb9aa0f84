#include "Platform/Bundle/Bundle.h"

#include <gtest/gtest.h>

#include "Platform/Bundle/MainBundleLocator.h"
#include "tests/support/TemporaryDirectory.h"

namespace kestrona {
namespace {

using testing::TemporaryDirectory;
using testing::writeFile;

BundleErrorCode loadErrorOf(const std::filesystem::path& path) {
  try {
    Bundle::load(path);
  } catch (const BundleError& error) {
    EXPECT_EQ(error.domain(), "BundleError");
    return error.kind();
  }
  ADD_FAILURE() << "loading " << path << " did not fail";
  return BundleErrorCode::notFound;
}

class MainBundleTest : public ::testing::Test {
 protected:
  ~MainBundleTest() override { setMainExecutablePathForTesting(std::nullopt); }
  TemporaryDirectory directory_;
};

TEST(BundleLoading, ReadsIdentifierAndExecutableFromInfo) {
  TemporaryDirectory directory;
  std::filesystem::path app = directory.path() / "Kestrona.app";
  writeFile(app / "Info.json", R"({"identifier": "app.kestrona", "executable": "Contents/bin/kestrona", "x": 1})");

  Bundle bundle = Bundle::load(app);
  EXPECT_EQ(bundle.bundleURL(), URL::fileURLWithPath(app, true));
  EXPECT_TRUE(bundle.bundleURL().hasDirectoryPath());
  EXPECT_EQ(bundle.bundleIdentifier(), "app.kestrona");
  ASSERT_TRUE(bundle.executableURL().has_value());
  EXPECT_EQ(bundle.executableURL()->filesystemPath(), app / "Contents/bin/kestrona");
  EXPECT_EQ(Bundle::fromURL(URL::fileURLWithPath(app)), bundle);
}

TEST(BundleLoading, AFolderWithoutInfoIsABundleThatNamesNothing) {
  TemporaryDirectory directory;
  Bundle bundle = Bundle::load(directory.path());
  EXPECT_FALSE(bundle.bundleIdentifier().has_value());
  EXPECT_FALSE(bundle.executableURL().has_value());
}

TEST(BundleLoading, RefusesMissingFoldersAndBadInfo) {
  TemporaryDirectory directory;
  EXPECT_EQ(loadErrorOf(directory.path() / "missing"), BundleErrorCode::notFound);
  writeFile(directory.path() / "file", "");
  EXPECT_EQ(loadErrorOf(directory.path() / "file"), BundleErrorCode::notFound);

  std::filesystem::create_directories(directory.path() / "unreadable/Info.json");
  EXPECT_EQ(loadErrorOf(directory.path() / "unreadable"), BundleErrorCode::infoUnreadable);

  const std::pair<const char*, const char*> malformed[] = {
      {"notJSON", "{identifier"},
      {"array", "[]"},
      {"numberIdentifier", R"({"identifier": 3})"},
      {"emptyIdentifier", R"({"identifier": ""})"},
      {"absoluteExecutable", R"({"executable": "/bin/sh"})"},
      {"escapingExecutable", R"({"executable": "Contents/../../other/bin"})"},
      {"folderExecutable", R"({"executable": "Contents/bin/"})"},
      {"emptyExecutable", R"({"executable": ""})"},
  };
  for (const auto& [name, info] : malformed) {
    writeFile(directory.path() / name / "Info.json", info);
    EXPECT_EQ(loadErrorOf(directory.path() / name), BundleErrorCode::infoMalformed) << name;
    EXPECT_FALSE(Bundle::fromPath(directory.path() / name).has_value()) << name;
  }
  EXPECT_FALSE(Bundle::fromURL(*URL::fromString("https://example.com/Kestrona.app/")).has_value());
}

TEST_F(MainBundleTest, IsTheBundleWhoseInfoNamesTheRunningExecutable) {
  std::filesystem::path app = directory_.path() / "Kestrona.app";
  std::filesystem::path appex = app / "Contents/PlugIns/KestronaWidgets.appex";
  writeFile(app / "Info.json", R"({"identifier": "app.kestrona", "executable": "Contents/bin/kestrona"})");
  writeFile(app / "Contents/bin/kestrona", "");
  writeFile(appex / "Info.json", R"({"identifier": "app.kestrona.widgets", "executable": "bin/kestrona-widgets"})");
  writeFile(appex / "bin/kestrona-widgets", "");

  setMainExecutablePathForTesting(appex / "bin/kestrona-widgets");
  EXPECT_EQ(Bundle::main().bundleIdentifier(), "app.kestrona.widgets");
  EXPECT_EQ(Bundle::main().bundleURL().filesystemPath(), appex);

  setMainExecutablePathForTesting(app / "Contents/bin/kestrona");
  EXPECT_EQ(Bundle::main().bundleIdentifier(), "app.kestrona");
  EXPECT_EQ(Bundle::main().bundleURL().filesystemPath(), app);
}

TEST_F(MainBundleTest, IsTheExecutablesFolderWhenNoInfoNamesIt) {
  std::filesystem::path tools = directory_.path() / "build/tools";
  writeFile(directory_.path() / "build/Info.json", R"({"identifier": "other", "executable": "tools/other"})");
  writeFile(tools / "kestrona-widgets", "");

  setMainExecutablePathForTesting(tools / "kestrona-widgets");
  EXPECT_EQ(Bundle::main().bundleURL().filesystemPath(), tools);
  EXPECT_FALSE(Bundle::main().bundleIdentifier().has_value());
}

TEST_F(MainBundleTest, WithoutOverrideIsFoundFromTheRunningProcess) {
  Bundle bundle = Bundle::main();
  std::filesystem::path executable = std::filesystem::read_symlink("/proc/self/exe");
  EXPECT_EQ(bundle.bundleURL().filesystemPath(), executable.parent_path());
}

}  // namespace
}  // namespace kestrona
