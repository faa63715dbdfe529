// The two classes the host agent links against.
#pragma once

#include "tarnix/Platform.h"
#include "tarnix/DataType.h"

#include <atomic>
#include <mutex>

struct IDataDumpCallback;
class CRMICommManagerImpl;

// One per process. Creates the implementation on first use and forwards to it.
class CRMICommManager {
 public:
  static CRMICommManager& GetInstance();

  template <class T>
  LONG DumpData(const WCHAR* serverUrl, const WCHAR* secondValue, const WCHAR* certificate,
                ULONGLONG number, unsigned char dataType, T* data);

  LONG RegisterDataDumpCallback(const WCHAR* serverUrl, const WCHAR* secondValue,
                                const WCHAR* certificate, IDataDumpCallback* callback);
  LONG UnregisterDataDumpCallback(const WCHAR* serverUrl, const WCHAR* secondValue,
                                  const WCHAR* certificate, IDataDumpCallback* callback);

  CRMICommManager(const CRMICommManager&) = delete;
  CRMICommManager& operator=(const CRMICommManager&) = delete;

 private:
  CRMICommManager();
  ~CRMICommManager();
  CRMICommManagerImpl* GetImpl();

  std::atomic<CRMICommManagerImpl*> implementation_{nullptr};
  std::mutex creationLock_;
};

// Where the message server is. Stateless: every operation is static.
class CRMIConfigLoader {
 public:
  static LONG GetServerInfo(VARIANT config, WCHAR** url, WCHAR** serviceValue, WCHAR** certificate);
  static LONG GetConfigContent(VARIANT config, VARIANT* content);
};
