// System message texts, in the wording of an English Windows: the codes this component
// reports, as HRESULTs and as Win32 errors. Any other code has no text here.
#include "platform/Win32.h"
#include "platform/WideText.h"

#include <cstring>

namespace {

#define ERROR_RESOURCE_LANG_NOT_FOUND 1815L

struct MessageText {
  uint32_t code;
  const char* text;
};

// Win32 errors, also reached through their 0x8007xxxx HRESULTs.
const MessageText kWin32Texts[] = {
    {0, "The operation completed successfully."},
    {2, "The system cannot find the file specified."},
    {3, "The system cannot find the path specified."},
    {5, "Access is denied."},
    {6, "The handle is invalid."},
    {8, "Not enough memory resources are available to process this command."},
    {13, "The data is invalid."},
    {14, "Not enough memory resources are available to complete this operation."},
    {18, "There are no more files."},
    {87, "The parameter is incorrect."},
    {122, "The data area passed to a system call is too small."},
    {123, "The filename, directory name, or volume label syntax is incorrect."},
    {126, "The specified module could not be found."},
    {127, "The specified procedure could not be found."},
    {161, "The specified path is invalid."},
    {183, "Cannot create a file when that file already exists."},
    {234, "More data is available."},
    {259, "No more data is available."},
    {1009, "The configuration registry database is corrupt."},
    {1010, "The configuration registry key is invalid."},
    {1018, "Illegal operation attempted on a registry key that has been marked for deletion."},
    {1168, "Element not found."},
    {1231,
     "The network location cannot be reached. For information about network troubleshooting, see "
     "Windows Help."},
    {1460, "This operation returned because the timeout period expired."},
    {5035, "The cluster network is not available for this operation."},
};

// HRESULTs of other facilities. E_UNEXPECTED is left out on purpose: the component's logs
// show it without text.
const MessageText kHresultTexts[] = {
    {0x80004001, "Not implemented"},
    {0x80004002, "No such interface supported"},
    {0x80004003, "Invalid pointer"},
    {0x80004004, "Operation aborted"},
    {0x80004005, "Unspecified error"},
    {0x80020005, "Type mismatch."},
    {0x80020008, "Bad variable type."},
    {0x8002000A, "Out of present range."},
    {0x8002000B, "Invalid index."},
    {0x80040110, "Class does not support aggregation (or class object is remote)"},
    {0x80040111, "ClassFactory cannot supply requested class"},
    {0x80040154, "Class not registered"},
    {0x800401F3, "Invalid class string"},
};

const char* Find(uint32_t code) {
  uint32_t win32 = code;
  if ((code & 0xFFFF0000u) == 0x80070000u) win32 = code & 0xFFFF;
  if (win32 <= 0xFFFF) {
    for (const auto& entry : kWin32Texts) {
      if (entry.code == win32) return entry.text;
    }
  }
  for (const auto& entry : kHresultTexts) {
    if (entry.code == code) return entry.text;
  }
  return nullptr;
}

bool KnownLanguage(DWORD language) {
  return language == 0 || language == MAKELANGID(LANG_NEUTRAL, SUBLANG_DEFAULT) ||
         language == MAKELANGID(LANG_ENGLISH, SUBLANG_ENGLISH_US) || language == 0x800 ||
         language == 0xC00;
}

}  // namespace

DWORD FormatMessageW(DWORD dwFlags, LPCVOID lpSource, DWORD dwMessageId, DWORD dwLanguageId,
                     LPWSTR lpBuffer, DWORD nSize, va_list* Arguments) {
  if (!(dwFlags & FORMAT_MESSAGE_FROM_SYSTEM) || (dwFlags & FORMAT_MESSAGE_FROM_STRING) ||
      !lpBuffer) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return 0;
  }
  if (!KnownLanguage(dwLanguageId)) {
    SetLastError(ERROR_RESOURCE_LANG_NOT_FOUND);
    return 0;
  }
  const char* found = Find(dwMessageId);
  if (!found) {
    SetLastError(ERROR_MR_MID_NOT_FOUND);
    return 0;
  }
  const WString text = tarnix::Utf8ToWide(std::string(found) + "\r\n");
  const DWORD length = static_cast<DWORD>(text.size());
  if (dwFlags & FORMAT_MESSAGE_ALLOCATE_BUFFER) {
    const DWORD chars = nSize > length + 1 ? nSize : length + 1;
    auto* buffer = static_cast<LPWSTR>(LocalAlloc(LMEM_ZEROINIT, chars * sizeof(WCHAR)));
    if (!buffer) {
      SetLastError(ERROR_NOT_ENOUGH_MEMORY);
      return 0;
    }
    std::memcpy(buffer, text.c_str(), (length + 1) * sizeof(WCHAR));
    *reinterpret_cast<LPWSTR*>(lpBuffer) = buffer;
    return length;
  }
  if (nSize < length + 1) {
    SetLastError(ERROR_INSUFFICIENT_BUFFER);
    return 0;
  }
  std::memcpy(lpBuffer, text.c_str(), (length + 1) * sizeof(WCHAR));
  return length;
}
