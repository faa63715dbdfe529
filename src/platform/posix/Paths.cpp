// Paths in the native form ('/' separated). Joining and making absolute fold "." and ".."
// away as the Windows path functions do, without asking the file system.
#include "platform/Win32.h"
#include "platform/WideText.h"

#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <vector>

namespace {

// "." dropped, ".." takes the previous segment with it; above the root it is dropped,
// while a relative path keeps its leading "..".
WString Canonical(const WString& path) {
  const bool absolute = !path.empty() && path[0] == u'/';
  std::vector<WString> segments;
  size_t start = 0;
  while (start <= path.size()) {
    size_t end = path.find(u'/', start);
    if (end == WString::npos) end = path.size();
    const WString segment = path.substr(start, end - start);
    if (segment == u"..") {
      if (!segments.empty() && segments.back() != u"..") {
        segments.pop_back();
      } else if (!absolute) {
        segments.push_back(segment);
      }
    } else if (!segment.empty() && segment != u".") {
      segments.push_back(segment);
    }
    start = end + 1;
  }
  WString out = absolute ? WString(u"/") : WString();
  for (size_t k = 0; k < segments.size(); ++k) {
    if (k > 0) out += u'/';
    out += segments[k];
  }
  // A trailing separator names a folder; keep it.
  if (path.size() > 1 && path.back() == u'/' && !segments.empty()) out += u'/';
  return out;
}

}  // namespace

LPWSTR PathCombineW(LPWSTR pszDest, LPCWSTR pszDir, LPCWSTR pszFile) {
  if (!pszDest) return nullptr;
  if (!pszDir && !pszFile) {
    pszDest[0] = 0;
    return nullptr;
  }
  const WString dir = pszDir ? pszDir : u"";
  const WString file = pszFile ? pszFile : u"";
  WString joined;
  if (file.empty()) {
    joined = dir;
  } else if (file[0] == u'/' || dir.empty()) {
    joined = file;
  } else {
    joined = dir;
    if (joined.back() != u'/') joined += u'/';
    joined += file;
  }
  const WString result = Canonical(joined);
  // The destination may be one of the sources, so it is written only now.
  if (result.size() >= MAX_PATH) {
    pszDest[0] = 0;
    return nullptr;
  }
  std::memcpy(pszDest, result.c_str(), (result.size() + 1) * sizeof(WCHAR));
  return pszDest;
}

WCHAR* _wfullpath(WCHAR* absPath, const WCHAR* relPath, size_t maxLength) {
  WString path = relPath ? relPath : u"";
  if (path.empty() || path[0] != u'/') {
    char* cwd = getcwd(nullptr, 0);
    if (!cwd) return nullptr;
    WString base = tarnix::Utf8ToWide(cwd);
    std::free(cwd);
    path = path.empty() ? base : base + u"/" + path;
  }
  const WString result = Canonical(path);
  if (!absPath) {
    // As the C run-time does: a buffer of its own, at least MAX_PATH characters.
    maxLength = result.size() + 1 > MAX_PATH ? result.size() + 1 : MAX_PATH;
    absPath = static_cast<WCHAR*>(std::malloc(maxLength * sizeof(WCHAR)));
    if (!absPath) return nullptr;
  } else if (result.size() >= maxLength) {
    return nullptr;
  }
  std::memcpy(absPath, result.c_str(), (result.size() + 1) * sizeof(WCHAR));
  return absPath;
}
