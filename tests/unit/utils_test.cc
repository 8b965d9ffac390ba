#include <vptz/utils.h>

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "support/recording_log.h"
#include "support/temp_dir.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using vptz_test::RecordingLog;
using vptz_test::TempDir;

std::string Replaced(std::string text, const std::string& pattern, const std::string& replacement) {
  EXPECT_EQ(ReplaceString(&text, pattern, replacement), 0);
  return text;
}

std::string ReplacedOnce(std::string text, const std::string& pattern, const std::string& replacement) {
  EXPECT_EQ(StrReplace(text, pattern, replacement), 0);
  return text;
}

std::string PathOf(const std::string& uri) {
  std::string path = "before";
  EXPECT_EQ(GetFilepathFromUri(uri, &path), 0);
  return path;
}

// ---- texts ------------------------------------------------------------------

TEST(ReplaceStringTest, ReplacesEveryOccurrence) {
  EXPECT_EQ(Replaced("a-b-c", "-", "+"), "a+b+c");
  EXPECT_EQ(Replaced("--", "-", ""), "");
  EXPECT_EQ(Replaced("abc", "abc", "x"), "x");
}

TEST(ReplaceStringTest, NeverMatchesWhatItInserted) {
  EXPECT_EQ(Replaced("aaa", "a", "aa"), "aaaaaa");
  EXPECT_EQ(Replaced("aab", "ab", "b"), "ab");  // the new "ab" is not looked at
  EXPECT_EQ(Replaced("xaay", "aa", "a"), "xay");
}

TEST(ReplaceStringTest, LeavesATextWithoutThePatternAndAnEmptyPatternAlone) {
  EXPECT_EQ(Replaced("abc", "x", "y"), "abc");
  EXPECT_EQ(Replaced("abc", "", "y"), "abc");
  EXPECT_EQ(Replaced("", "a", "y"), "");
}

TEST(ReplaceStringTest, TakesTheTextItselfAsPatternOrReplacement) {
  std::string text = "a";
  EXPECT_EQ(ReplaceString(&text, text, "bc"), 0);
  EXPECT_EQ(text, "bc");
  EXPECT_EQ(ReplaceString(&text, text, ""), 0);
  EXPECT_EQ(text, "");
  text = "a-a";
  EXPECT_EQ(ReplaceString(&text, "a", text), 0);
  EXPECT_EQ(text, "a-a-a-a");
}

TEST(StrReplaceTest, ReplacesTheFirstOccurrenceOnly) {
  EXPECT_EQ(ReplacedOnce("a-b-c", "-", "+"), "a+b-c");
  EXPECT_EQ(ReplacedOnce("abc", "x", "+"), "abc");
}

TEST(StrSplitTest, NeverYieldsEmptyPieces) {
  EXPECT_THAT(StrSplit(",,a,,b,", ","), ElementsAre("a", "b"));
  EXPECT_THAT(StrSplit("a", ","), ElementsAre("a"));
  EXPECT_THAT(StrSplit(",,,", ","), IsEmpty());
  EXPECT_THAT(StrSplit("", ","), IsEmpty());
}

TEST(StrSplitTest, TakesEveryCharacterAsADelimiter) {
  EXPECT_THAT(StrSplit("a:b/c:/d", ":/"), ElementsAre("a", "b", "c", "d"));
}

TEST(StrSplitTest, WithoutDelimitersGivesTheWholeText) {
  EXPECT_THAT(StrSplit("a,b", ""), ElementsAre("a,b"));
  EXPECT_THAT(StrSplit("", ""), IsEmpty());
}

// ---- files ------------------------------------------------------------------

class FilesTest : public testing::Test {
 protected:
  std::string Make(const std::string& name, const std::string& text = "") {
    std::string file = dir.path() + "/" + name;
    std::ofstream(file) << text;
    return file;
  }

  TempDir dir;
  RecordingLog log;
};

TEST_F(FilesTest, IsFileIsTrueForWhateverIsThere) {
  EXPECT_TRUE(IsFile(Make("file")));
  EXPECT_TRUE(IsFile(dir.path()));
  EXPECT_TRUE(IsFile("/dev/null"));
  EXPECT_FALSE(IsFile(dir.path() + "/missing"));
  EXPECT_FALSE(IsFile(""));
}

TEST_F(FilesTest, IsDirIsTrueForFoldersOnly) {
  std::filesystem::create_directory_symlink(dir.path(), dir.path() + "/link");
  EXPECT_TRUE(IsDir(dir.path()));
  EXPECT_TRUE(IsDir(dir.path() + "/link"));
  EXPECT_FALSE(IsDir(Make("file")));
  EXPECT_FALSE(IsDir(dir.path() + "/missing"));
}

TEST_F(FilesTest, RemoveRemovesAFileAndAnEmptyFolder) {
  const std::string file = Make("file");
  EXPECT_EQ(Remove(file), 0);
  EXPECT_FALSE(IsFile(file));
  std::filesystem::create_directory(file);
  EXPECT_EQ(Remove(file), 0);
  EXPECT_FALSE(IsFile(file));
  EXPECT_THAT(log.lines, IsEmpty());
}

TEST_F(FilesTest, RemoveOfNothingSucceedsAndLogsNothing) {
  EXPECT_EQ(Remove(dir.path() + "/missing"), 0);
  EXPECT_THAT(log.lines, IsEmpty());
}

TEST_F(FilesTest, RemoveTakesALinkThatLeadsNowhereForNothing) {
  const std::string link = dir.path() + "/link";
  std::filesystem::create_symlink("nowhere", link);
  EXPECT_EQ(Remove(link), 0);
  EXPECT_TRUE(std::filesystem::is_symlink(link));
}

TEST_F(FilesTest, RemoveThatFailsIsLoggedWithItsResult) {
  Make("file");
  EXPECT_EQ(Remove(dir.path()), -1);
  ASSERT_EQ(log.lines.size(), 1u);
  EXPECT_EQ(log.lines[0].module, 42);
  EXPECT_EQ(log.lines[0].level, 1);
  EXPECT_EQ(log.lines[0].file, "../src/utils.cc");
  EXPECT_EQ(log.lines[0].function, "Remove");
  EXPECT_EQ(log.lines[0].message, "Failed to remove " + dir.path() + " (-1)");
}

TEST_F(FilesTest, FileSizeCountsBytes) {
  EXPECT_EQ(FileSize(Make("file", "12345")), 5);
  EXPECT_EQ(FileSize(Make("empty")), 0);
  EXPECT_EQ(FileSize(dir.path() + "/missing"), -1);
}

TEST_F(FilesTest, FileSizeOfALinkIsItsOwn) {
  Make("file", "12345");
  std::filesystem::create_symlink("file", dir.path() + "/link");
  EXPECT_EQ(FileSize(dir.path() + "/link"), 4);
}

TEST_F(FilesTest, FileSizeIsOf64Bits) {
  const std::string file = Make("sparse");
  std::filesystem::resize_file(file, 5000000000);
  EXPECT_EQ(FileSize(file), 5000000000);
}

// ---- URIs -------------------------------------------------------------------

TEST(GetFilepathFromUriTest, TakesThePathOfAFileUri) {
  EXPECT_EQ(PathOf("file:///mnt/usb/x.mp4"), "/mnt/usb/x.mp4");
  EXPECT_EQ(PathOf("file://relative"), "relative");
  EXPECT_EQ(PathOf("file:///a%20b"), "/a%20b");  // nothing is decoded
  EXPECT_EQ(PathOf("file://"), "");
}

TEST(GetFilepathFromUriTest, LeavesOtherSchemesAlone) {
  EXPECT_EQ(PathOf("http://host/x"), "http://host/x");
  EXPECT_EQ(PathOf("files:///x"), "files:///x");
}

TEST(GetFilepathFromUriTest, LeavesATextWithoutASchemeAlone) {
  EXPECT_EQ(PathOf("/mnt/usb/x.mp4"), "/mnt/usb/x.mp4");
  EXPECT_EQ(PathOf("://x"), "://x");
  EXPECT_EQ(PathOf(""), "");
}

TEST(GetFilepathFromUriTest, SurvivesAFileUriThatIsTooShort) {
  EXPECT_EQ(PathOf("file:"), "file:");
  EXPECT_EQ(PathOf("file:/"), "file:/");
}

TEST(GetFilepathFromUriTest, MayWriteOverItsArgument) {
  std::string text = "file:///x";
  GetFilepathFromUri(text, &text);
  EXPECT_EQ(text, "/x");
}

// ---- folders ----------------------------------------------------------------

using MakeDirTest = FilesTest;

// The slashes in the folder's path, the first one included.
int Depth(const std::string& folder) { return static_cast<int>(std::count(folder.begin(), folder.end(), '/')); }

TEST_F(MakeDirTest, WithoutADepthMakesTheWholeChain) {
  EXPECT_EQ(MakeDirByFilePath(dir.path() + "/a/b/x.mp4", 0755, 0), 0);
  EXPECT_TRUE(IsDir(dir.path() + "/a/b"));
  EXPECT_FALSE(IsFile(dir.path() + "/a/b/x.mp4"));
  EXPECT_EQ(MakeDirByFilePath(dir.path() + "/c/x.mp4", 0755, -1), 0);
  EXPECT_TRUE(IsDir(dir.path() + "/c"));
}

TEST_F(MakeDirTest, GivesTheNewFoldersTheMode) {
  const mode_t mask = umask(0);
  EXPECT_EQ(MakeDirByFilePath(dir.path() + "/a/x.mp4", 0750, 0), 0);
  umask(mask);
  struct stat status {};
  ASSERT_EQ(stat((dir.path() + "/a").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 0750u);
}

TEST_F(MakeDirTest, BelowAnAncestorThatIsThereMakesTheRest) {
  EXPECT_EQ(MakeDirByFilePath(dir.path() + "/a/b/x.mp4", 0755, Depth(dir.path())), 0);
  EXPECT_TRUE(IsDir(dir.path() + "/a/b"));
}

TEST_F(MakeDirTest, BelowAnAncestorThatIsMissingMakesNothing) {
  EXPECT_EQ(MakeDirByFilePath(dir.path() + "/a/b/x.mp4", 0755, Depth(dir.path()) + 1), -1);
  EXPECT_FALSE(IsFile(dir.path() + "/a"));
}

TEST_F(MakeDirTest, OfExactlyTheDepthNeedsTheWholeFolder) {
  EXPECT_EQ(MakeDirByFilePath(dir.path() + "/a/x.mp4", 0755, Depth(dir.path()) + 1), -1);
  std::filesystem::create_directory(dir.path() + "/a");
  EXPECT_EQ(MakeDirByFilePath(dir.path() + "/a/x.mp4", 0755, Depth(dir.path()) + 1), 0);
}

TEST_F(MakeDirTest, WithFewerLevelsThanTheDepthFails) {
  EXPECT_EQ(MakeDirByFilePath("/tmp/x.mp4", 0755, 2), -1);
  EXPECT_EQ(MakeDirByFilePath("x.mp4", 0755, 1), -1);
  EXPECT_EQ(MakeDirByFilePath(dir.path() + "/x.mp4", 0755, Depth(dir.path()) + 1), -1);
}

TEST_F(MakeDirTest, WhereAFileIsInTheWayFails) {
  Make("file");
  EXPECT_EQ(MakeDirByFilePath(dir.path() + "/file/a/x.mp4", 0755, 0), -1);
  EXPECT_EQ(MakeDirByFilePath(dir.path() + "/file/a/x.mp4", 0755, Depth(dir.path()) + 1), -1);
}

TEST_F(MakeDirTest, TakesAFileUri) {
  EXPECT_EQ(MakeDirByFileUri("file://" + dir.path() + "/a/x.mp4", 0755, Depth(dir.path())), 0);
  EXPECT_TRUE(IsDir(dir.path() + "/a"));
  EXPECT_EQ(MakeDirByFileUri("file://" + dir.path() + "/b/c/x.mp4", 0755, Depth(dir.path()) + 1), -1);
  EXPECT_FALSE(IsDir(dir.path() + "/b"));
}

// ---- names ------------------------------------------------------------------

TEST(ConvertModuleStrToIdTest, KnowsTheProtocols) {
  EXPECT_EQ(ConvertModuleStrToId("ONVIF"), 1);
  EXPECT_EQ(ConvertModuleStrToId("RS232"), 2);
  EXPECT_EQ(ConvertModuleStrToId("QX310"), 3);
  EXPECT_EQ(ConvertModuleStrToId("NDI"), 4);
  EXPECT_EQ(ConvertModuleStrToId("VISCA_OVER_IP"), 5);
  EXPECT_EQ(ConvertModuleStrToId("NDIHX"), 6);
}

TEST(ConvertModuleStrToIdTest, KnowsNothingElse) {
  for (const std::string& name :
       {std::string("onvif"), std::string(), std::string("ONVIF "), std::string("NDI\0", 4)}) {
    EXPECT_EQ(ConvertModuleStrToId(name), -1) << name;
  }
}

}  // namespace
