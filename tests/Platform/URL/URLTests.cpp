#include "Platform/URL/URL.h"

#include <gtest/gtest.h>

#include <unordered_set>

#include "tests/support/TemporaryDirectory.h"

namespace kestrona {
namespace {

URL parsed(std::string_view text) {
  std::optional<URL> url = URL::fromString(text);
  EXPECT_TRUE(url.has_value()) << text;
  return url.value_or(URL::fileURLWithPath("/", true));
}

TEST(URLParsing, ReadsEveryPartAndKeepsTheText) {
  URL url = parsed("https://user@Example.com:8443/a%20b/c/?x=1&y=%2F#frag%20ment");
  EXPECT_EQ(url.absoluteString(), "https://user@Example.com:8443/a%20b/c/?x=1&y=%2F#frag%20ment");
  EXPECT_EQ(url.scheme(), "https");
  EXPECT_EQ(url.host(), "Example.com");
  EXPECT_EQ(url.port(), 8443);
  EXPECT_EQ(url.path(), "/a b/c");
  EXPECT_TRUE(url.hasDirectoryPath());
  EXPECT_EQ(url.query(), "x=1&y=%2F");
  EXPECT_EQ(url.fragment(), "frag%20ment");
}

TEST(URLParsing, DistinguishesMissingFromEmptyParts) {
  URL noAuthority = parsed("mailto:ada@example.com");
  EXPECT_FALSE(noAuthority.host().has_value());
  EXPECT_EQ(noAuthority.path(), "ada@example.com");

  URL emptyHost = parsed("deeplink-pauseTimer://");
  EXPECT_EQ(emptyHost.host(), "");
  EXPECT_EQ(emptyHost.path(), "");
  EXPECT_FALSE(emptyHost.query().has_value());
  EXPECT_FALSE(emptyHost.fragment().has_value());

  URL emptyQuery = parsed("deeplink-startTimer://?#");
  EXPECT_EQ(emptyQuery.query(), "");
  EXPECT_EQ(emptyQuery.fragment(), "");
}

TEST(URLParsing, KeepsTheSchemeCaseAndComparesTextExactly) {
  URL upper = parsed("Deeplink-startTimer://?taskId=a");
  EXPECT_EQ(upper.scheme(), "Deeplink-startTimer");
  EXPECT_NE(upper, parsed("deeplink-startTimer://?taskId=a"));
  EXPECT_NE(parsed("file:///a"), parsed("file:///a/"));
  EXPECT_EQ(parsed("file:///a"), parsed("file:///a"));
  std::unordered_set<URL> set{parsed("file:///a"), parsed("file:///a"), parsed("file:///b")};
  EXPECT_EQ(set.size(), 2u);
}

TEST(URLParsing, RefusesWhatIsNotAnAbsoluteURL) {
  for (std::string_view text : {"", "relative/path", "/absolute/path", "?taskId=a", "has space://x",
                                "deeplink-startTimer://?taskId=a b", "s://x/%zz", "1abc://x", "http://h:99999/"}) {
    EXPECT_FALSE(URL::fromString(text).has_value()) << text;
  }
}

TEST(FileURL, EncodesThePathAndGivesItBack) {
  URL url = URL::fileURLWithPath("/home/ada/Group Container/100%/timer.json", false);
  EXPECT_EQ(url.absoluteString(), "file:///home/ada/Group%20Container/100%25/timer.json");
  EXPECT_TRUE(url.isFileURL());
  EXPECT_EQ(url.filesystemPath(), "/home/ada/Group Container/100%/timer.json");
  EXPECT_EQ(url.lastPathComponent(), "timer.json");
  EXPECT_EQ(url.pathExtension(), "json");

  URL nonASCII = URL::fileURLWithPath("/tmp/Zeiterfassung \xC3\xBC", false);
  EXPECT_EQ(nonASCII.absoluteString(), "file:///tmp/Zeiterfassung%20%C3%BC");
  EXPECT_EQ(nonASCII.filesystemPath(), "/tmp/Zeiterfassung \xC3\xBC");
}

TEST(FileURL, MarksDirectoriesByTrailingSlashOrByTheFileSystem) {
  testing::TemporaryDirectory directory;
  URL existing = URL::fileURLWithPath(directory.path());
  EXPECT_TRUE(existing.hasDirectoryPath());
  EXPECT_EQ(existing.filesystemPath(), directory.path());

  EXPECT_FALSE(URL::fileURLWithPath(directory.path() / "not-there").hasDirectoryPath());
  EXPECT_TRUE(URL::fileURLWithPath("/not/there/").hasDirectoryPath());
  EXPECT_EQ(URL::fileURLWithPath("/a/./b/../c", false).absoluteString(), "file:///a/c");
  EXPECT_EQ(URL::fileURLWithPath("/", true).absoluteString(), "file:///");
}

TEST(FileURL, MakesRelativePathsAbsolute) {
  URL url = URL::fileURLWithPath("some/file.txt", false);
  EXPECT_EQ(url.filesystemPath(), std::filesystem::current_path() / "some/file.txt");
}

TEST(URLPathOperations, AppendEncodesAndKeepsSeparators) {
  URL group = URL::fileURLWithPath("/data/group", true);
  EXPECT_EQ(group.appendingPathComponent("widgetData").appendingPathComponent("timer.json").absoluteString(),
            "file:///data/group/widgetData/timer.json");
  EXPECT_EQ(group.appendingPathComponent("a b/c#d?").absoluteString(), "file:///data/group/a%20b/c%23d%3F");
  EXPECT_EQ(group.appendingPathComponent("a b/c#d?").lastPathComponent(), "c#d?");
  EXPECT_EQ(group.appendingPathComponent("sub", true).absoluteString(), "file:///data/group/sub/");
  EXPECT_EQ(group.appendingPathComponent("/rooted").absoluteString(), "file:///data/group/rooted");

  URL withoutSlash = URL::fileURLWithPath("/data/file", false);
  EXPECT_EQ(withoutSlash.appendingPathComponent("x").absoluteString(), "file:///data/file/x");
  EXPECT_EQ(parsed("s://host").appendingPathComponent("x").absoluteString(), "s://host/x");
}

TEST(URLPathOperations, DeletingClimbsOneComponentAndStopsAtTheRoot) {
  URL appex = parsed("file:///opt/Kestrona.app/Contents/PlugIns/KestronaWidgets.appex/");
  URL app = appex.deletingLastPathComponent().deletingLastPathComponent().deletingLastPathComponent();
  EXPECT_EQ(app.absoluteString(), "file:///opt/Kestrona.app/");
  EXPECT_EQ(app.lastPathComponent(), "Kestrona.app");
  EXPECT_EQ(app.pathExtension(), "app");

  EXPECT_EQ(parsed("file:///a/b/c").deletingLastPathComponent().absoluteString(), "file:///a/b/");
  EXPECT_EQ(parsed("file:///a").deletingLastPathComponent().absoluteString(), "file:///");
  EXPECT_EQ(parsed("file:///").deletingLastPathComponent().absoluteString(), "file:///");
  EXPECT_EQ(parsed("file:///a?q=1#f").deletingLastPathComponent().absoluteString(), "file:///");
}

TEST(URLPathOperations, ExtensionNeedsADotInsideTheName) {
  EXPECT_EQ(parsed("file:///a/.hidden").pathExtension(), "");
  EXPECT_EQ(parsed("file:///a/name.").pathExtension(), "");
  EXPECT_EQ(parsed("file:///a/archive.tar.gz").pathExtension(), "gz");
  EXPECT_EQ(parsed("file:///a.app/b").pathExtension(), "");
  EXPECT_EQ(parsed("file:///").lastPathComponent(), "/");
  EXPECT_EQ(parsed("file:///").pathExtension(), "");
}

}  // namespace
}  // namespace kestrona
