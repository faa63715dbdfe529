// File enumeration with Windows wildcards over readdir, in the order the directory gives.
#include "platform/Win32.h"
#include "platform/WideText.h"
#include "Handles.h"
#include "Internal.h"

#include <dirent.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>

namespace {

// '*' any run, '?' any one character; letters match regardless of case, as on Windows.
bool Matches(const WCHAR* pattern, const WCHAR* name) {
  const WCHAR* star = nullptr;
  const WCHAR* resume = nullptr;
  while (*name) {
    if (*pattern == u'*') {
      star = pattern++;
      resume = name;
    } else if (*pattern == u'?' ||
               (*pattern && tarnix::posix::FoldCase(*pattern) == tarnix::posix::FoldCase(*name))) {
      ++pattern;
      ++name;
    } else if (star) {
      pattern = star + 1;
      name = ++resume;
    } else {
      return false;
    }
  }
  while (*pattern == u'*') ++pattern;
  return *pattern == 0;
}

// "*.*" is the Windows spelling of "everything", names without a dot included.
bool MatchesWindowsPattern(const WString& pattern, const WString& name) {
  if (pattern == u"*.*") return true;
  return Matches(pattern.c_str(), name.c_str());
}

FILETIME ToFileTime(const timespec& time) {
  const int64_t ticks =
      (static_cast<int64_t>(time.tv_sec) + 11644473600LL) * 10000000LL + time.tv_nsec / 100;
  return FILETIME{static_cast<DWORD>(ticks),
                  static_cast<DWORD>(static_cast<uint64_t>(ticks) >> 32)};
}

DWORD AttributesOf(const struct stat& info, const std::string& name) {
  DWORD attributes = S_ISDIR(info.st_mode) ? FILE_ATTRIBUTE_DIRECTORY : FILE_ATTRIBUTE_ARCHIVE;
  if (!(info.st_mode & S_IWUSR)) attributes |= FILE_ATTRIBUTE_READONLY;
  if (name.size() > 1 && name[0] == '.' && name != "..") attributes |= FILE_ATTRIBUTE_HIDDEN;
  return attributes;
}

DWORD ErrorOf(int error) {
  switch (error) {
    case ENOENT:
    case ENOTDIR: return ERROR_PATH_NOT_FOUND;
    case EACCES:
    case EPERM: return ERROR_ACCESS_DENIED;
    case ENAMETOOLONG: return ERROR_INVALID_NAME;
    default: return ERROR_PATH_NOT_FOUND;
  }
}

class Search : public tarnix::posix::KernelObject {
 public:
  Search(DIR* dir, std::string folder, WString pattern)
      : dir_(dir), folder_(std::move(folder)), pattern_(std::move(pattern)) {}
  ~Search() override { closedir(dir_); }

  // The next entry that matches; false at the end.
  bool Next(WIN32_FIND_DATAW* data) {
    while (dirent* entry = readdir(dir_)) {
      const WString name = tarnix::Utf8ToWide(entry->d_name);
      if (name.size() >= MAX_PATH || !MatchesWindowsPattern(pattern_, name)) continue;
      Fill(entry->d_name, name, data);
      return true;
    }
    return false;
  }

 private:
  void Fill(const std::string& rawName, const WString& name, WIN32_FIND_DATAW* data) const {
    std::memset(data, 0, sizeof(*data));
    struct stat info;
    const std::string path = folder_ + "/" + rawName;
    if (stat(path.c_str(), &info) != 0 && lstat(path.c_str(), &info) != 0)
      std::memset(&info, 0, sizeof(info));
    data->dwFileAttributes = AttributesOf(info, rawName);
    data->ftCreationTime = ToFileTime(info.st_ctim);
    data->ftLastAccessTime = ToFileTime(info.st_atim);
    data->ftLastWriteTime = ToFileTime(info.st_mtim);
    if (!S_ISDIR(info.st_mode)) {
      const uint64_t size = static_cast<uint64_t>(info.st_size);
      data->nFileSizeHigh = static_cast<DWORD>(size >> 32);
      data->nFileSizeLow = static_cast<DWORD>(size);
    }
    std::memcpy(data->cFileName, name.c_str(), (name.size() + 1) * sizeof(WCHAR));
  }

  DIR* dir_;
  const std::string folder_;
  const WString pattern_;
};

}  // namespace

HANDLE FindFirstFileW(LPCWSTR lpFileName, LPWIN32_FIND_DATAW lpFindFileData) {
  if (!lpFileName || !*lpFileName || !lpFindFileData) {
    SetLastError(ERROR_PATH_NOT_FOUND);
    return INVALID_HANDLE_VALUE;
  }
  const WString full(lpFileName);
  const size_t cut = full.find_last_of(u"/\\");
  const WString pattern = cut == WString::npos ? full : full.substr(cut + 1);
  std::string folder = cut == WString::npos ? "." : tarnix::WideToUtf8(full.substr(0, cut));
  if (cut == 0) folder = "/";
  DIR* dir = opendir(folder.c_str());
  if (!dir) {
    SetLastError(ErrorOf(errno));
    return INVALID_HANDLE_VALUE;
  }
  auto search = std::make_shared<Search>(dir, folder, pattern);
  if (pattern.empty() || !search->Next(lpFindFileData)) {
    SetLastError(ERROR_FILE_NOT_FOUND);
    return INVALID_HANDLE_VALUE;
  }
  return tarnix::posix::AddHandle(search);
}

BOOL FindNextFileW(HANDLE hFindFile, LPWIN32_FIND_DATAW lpFindFileData) {
  auto search = tarnix::posix::FindHandleOf<Search>(hFindFile);
  if (!search || !lpFindFileData) {
    SetLastError(ERROR_INVALID_HANDLE);
    return FALSE;
  }
  if (!search->Next(lpFindFileData)) {
    SetLastError(ERROR_NO_MORE_FILES);
    return FALSE;
  }
  return TRUE;
}

BOOL FindClose(HANDLE hFindFile) {
  if (tarnix::posix::FindHandleOf<Search>(hFindFile) && tarnix::posix::RemoveHandle(hFindFile))
    return TRUE;
  SetLastError(ERROR_INVALID_HANDLE);
  return FALSE;
}

DWORD GetFileAttributesW(LPCWSTR lpFileName) {
  struct stat info;
  if (!lpFileName || stat(tarnix::WideToUtf8(lpFileName).c_str(), &info) != 0) {
    SetLastError(lpFileName && errno == ENOENT ? ERROR_FILE_NOT_FOUND : ERROR_PATH_NOT_FOUND);
    return INVALID_FILE_ATTRIBUTES;
  }
  const std::string path = tarnix::WideToUtf8(lpFileName);
  return AttributesOf(info, path.substr(path.find_last_of('/') + 1));
}
