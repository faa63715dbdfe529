// The exported facade: one per process, forwarding to the implementation it creates on
// first use.
#include "tarnix/RMICommManager.h"

#include "common/HResultError.h"
#include "manager/CommManagerImpl.h"
#include "module/HostString.h"

CRMICommManager::CRMICommManager() = default;

// Runs at library unload; the implementation's destructor makes no Java call.
CRMICommManager::~CRMICommManager() { delete implementation_.exchange(nullptr); }

CRMICommManager& CRMICommManager::GetInstance() {
  static CRMICommManager instance;
  return instance;
}

CRMICommManagerImpl* CRMICommManager::GetImpl() {
  if (CRMICommManagerImpl* existing = implementation_.load()) return existing;
  return tarnix::WithResultCodes([this] {
    std::lock_guard<std::mutex> lock(creationLock_);
    CRMICommManagerImpl* current = implementation_.load();
    if (!current) {
      current = new CRMICommManagerImpl();
      delete implementation_.exchange(current);
    }
    return current;
  });
}

// Every export lets out only exceptions that carry a result code.
template <class T>
LONG CRMICommManager::DumpData(const WCHAR* serverUrl, const WCHAR* secondValue,
                               const WCHAR* certificate, ULONGLONG number, unsigned char dataType,
                               T* data) {
  return tarnix::WithResultCodes([&] {
    return GetImpl()->DumpData(serverUrl, secondValue, certificate, number, dataType, data);
  });
}

// The one instance the host links against.
template LONG CRMICommManager::DumpData<IUnknown>(const WCHAR*, const WCHAR*, const WCHAR*,
                                                  ULONGLONG, unsigned char, IUnknown*);

LONG CRMICommManager::RegisterDataDumpCallback(const WCHAR* serverUrl, const WCHAR* secondValue,
                                               const WCHAR* certificate,
                                               IDataDumpCallback* callback) {
  const tarnix::HostString serverUrlCopy(serverUrl), secondValueCopy(secondValue),
      certificateCopy(certificate);
  return tarnix::WithResultCodes([&] {
    return GetImpl()->Register(serverUrlCopy.Get(), secondValueCopy.Get(), certificateCopy.Get(),
                               callback);
  });
}

LONG CRMICommManager::UnregisterDataDumpCallback(const WCHAR* serverUrl, const WCHAR* secondValue,
                                                 const WCHAR* certificate,
                                                 IDataDumpCallback* callback) {
  const tarnix::HostString serverUrlCopy(serverUrl), secondValueCopy(secondValue),
      certificateCopy(certificate);
  return tarnix::WithResultCodes([&] {
    return GetImpl()->Unregister(serverUrlCopy.Get(), secondValueCopy.Get(), certificateCopy.Get(),
                                 callback);
  });
}
