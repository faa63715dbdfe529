#include <gtest/gtest.h>

#include "PlatformTest.h"

#include <fstream>
#include <set>

using tarnix::test::PathText;
using tarnix::test::ScopedTempDir;
using tarnix::test::Wide;

namespace {

struct Entry {
  std::string name;
  bool directory;
  DWORD sizeLow;
  bool operator<(const Entry& other) const { return name < other.name; }
  bool operator==(const Entry& other) const {
    return name == other.name && directory == other.directory && sizeLow == other.sizeLow;
  }
};

// Every entry matching the pattern, or the error that ended the search at once.
std::set<Entry> List(const WString& pattern, DWORD* error) {
  std::set<Entry> entries;
  WIN32_FIND_DATAW data;
  HANDLE search = FindFirstFileW(pattern.c_str(), &data);
  if (search == INVALID_HANDLE_VALUE) {
    *error = GetLastError();
    return entries;
  }
  *error = 0;
  do {
    entries.insert({tarnix::WideToUtf8(data.cFileName),
                    (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0, data.nFileSizeLow});
  } while (FindNextFileW(search, &data));
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_NO_MORE_FILES));
  EXPECT_TRUE(FindClose(search));
  return entries;
}

}  // namespace

TEST(Files, WildcardSearchFindsJarsAndMarksFolders) {
  ScopedTempDir dir;
  std::ofstream(dir.path() / "a.jar") << "abc";
  std::ofstream(dir.path() / "B.JAR") << "";
  std::ofstream(dir.path() / "notes.txt") << "x";
  std::ofstream(dir.path() / "a.jar.bak") << "x";
  std::filesystem::create_directory(dir.path() / "lib.jar");
  std::filesystem::create_directory(dir.path() / "sub");

  DWORD error = 0;
  const std::set<Entry> jars = List(PathText(dir.path() / "*.jar"), &error);
  EXPECT_EQ(error, 0u);
  EXPECT_EQ(jars,
            (std::set<Entry>{{"B.JAR", false, 0}, {"a.jar", false, 3}, {"lib.jar", true, 0}}));

  EXPECT_TRUE(List(PathText(dir.path() / "*.war"), &error).empty());
  EXPECT_EQ(error, static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
  EXPECT_TRUE(List(PathText(dir.path() / "missing" / "*.jar"), &error).empty());
  EXPECT_EQ(error, static_cast<DWORD>(ERROR_PATH_NOT_FOUND));

  WIN32_FIND_DATAW data;
  EXPECT_FALSE(FindNextFileW(INVALID_HANDLE_VALUE, &data));
}

TEST(Files, PathsCombineAndBecomeAbsoluteWithDotsFolded) {
  WCHAR combined[MAX_PATH];
#ifdef _WIN32
  const WString dir = WSTR("C:\\agent\\lib"), parent = WSTR("C:\\agent\\lib\\"),
                expected = WSTR("C:\\agent\\lib\\*.jar");
#else
  const WString dir = WSTR("/agent/lib"), parent = WSTR("/agent/lib/"),
                expected = WSTR("/agent/lib/*.jar");
#endif
  ASSERT_NE(PathCombineW(combined, dir.c_str(), WSTR("*.jar")), nullptr);
  EXPECT_EQ(WString(combined), expected);
  ASSERT_NE(PathCombineW(combined, parent.c_str(), WSTR("*.jar")), nullptr);
  EXPECT_EQ(WString(combined), expected);
  ScopedTempDir temp;
  const std::filesystem::path previous = std::filesystem::current_path();
  std::filesystem::current_path(temp.path());
  WCHAR full[MAX_PATH];
  const WCHAR* result = _wfullpath(full, WSTR("x/../y.jar"), MAX_PATH);
  const std::filesystem::path cwd = std::filesystem::current_path();
  std::filesystem::current_path(previous);
  ASSERT_NE(result, nullptr);
  EXPECT_EQ(WString(full), PathText(cwd / "y.jar"));
  EXPECT_EQ(_wfullpath(full, WSTR("a-name-too-long-for-the-buffer"), 4), nullptr);
}
