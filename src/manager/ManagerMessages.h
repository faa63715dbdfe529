// The manager's fixed log texts that more than one file writes. The host's log readers
// match on them, so they stay exactly as they are, function signatures included.
#pragma once

#include "platform/Win32.h"

namespace tarnix::messages {

inline constexpr const WCHAR* kRefusedAfterFailure = WSTR(
    "Failed to SetCurrentServerConfig in long __cdecl "
    "CRMICommManagerImpl::SetCurrentServerConfig(const wchar_t *,const wchar_t *,const wchar_t *) "
    "because of previous RMI manager initialization failure");
inline constexpr const WCHAR* kRefusedAfterTeardown = WSTR(
    "Failed to SetCurrentServerConfig in long __cdecl "
    "CRMICommManagerImpl::SetCurrentServerConfig(const wchar_t *,const wchar_t *,const wchar_t *) "
    "because RMI manager has been uninitialized");
inline constexpr const WCHAR* kStartUpFailed = WSTR(
    "Failed to initialize CRMICommManagerImpl in long __cdecl "
    "CRMICommManagerImpl::SetCurrentServerConfig(const wchar_t *,const wchar_t *,const wchar_t *)");

inline constexpr const WCHAR* kDumpDataConfigFailed = WSTR(
    "Failed to SetCurrentServerConfig in function long __cdecl "
    "CRMICommManagerImpl::DumpData<struct IUnknown>(const wchar_t *,const wchar_t *,const wchar_t "
    "*,unsigned __int64,unsigned char,struct IUnknown *)");
inline constexpr const WCHAR* kDumpDataRefreshFailed = WSTR(
    "Failed to refresh system info in function long __cdecl "
    "CRMICommManagerImpl::DumpData<struct IUnknown>(const wchar_t *,const wchar_t *,const wchar_t "
    "*,unsigned __int64,unsigned char,struct IUnknown *)");

// The Java string of a text could not be made; the text, then the Java exception text.
inline constexpr const WCHAR* kJavaStringFailed =
    WSTR("Failed to create a new Java string for '%s'.  %s");

}  // namespace tarnix::messages
