// The communication manager behind the exported facade: it starts the Java side on first
// use, keeps the message server configuration of the Java client current, routes every
// piece of host data to the client and hands the server's answers back to the host.
#pragma once

#include "common/HostLog.h"
#include "manager/CallbackKey.h"
#include "manager/CallbackRegistry.h"
#include "manager/ManagerState.h"
#include "platform/ComPtr.h"
#include "platform/Win32.h"
#include "tarnix/HostInterfaces.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>

class CJavaVM;
class CJavaObject;

class CRMICommManagerImpl {
 public:
  // Starts nothing: no Java, no logger, no host interface until the first DumpData.
  CRMICommManagerImpl();
  // Makes no Java call and destroys no Java machine (see the definition for why).
  ~CRMICommManagerImpl();
  CRMICommManagerImpl(const CRMICommManagerImpl&) = delete;
  CRMICommManagerImpl& operator=(const CRMICommManagerImpl&) = delete;

  [[nodiscard]] LONG DumpData(const WCHAR* serverUrl, const WCHAR* secondValue,
                              const WCHAR* certificate, ULONGLONG number, unsigned char dataType,
                              IUnknown* data);

  // Starts the Java side on the first call, then pushes the server configuration into the
  // Java client when it differs from the last one pushed. S_FALSE when it did not differ.
  [[nodiscard]] LONG SetCurrentServerConfig(const WCHAR* serverUrl, const WCHAR* secondValue,
                                            const WCHAR* certificate);

  // The host's callbacks; they work in every state and never start Java.
  LONG Register(const WCHAR* serverUrl, const WCHAR* secondValue, const WCHAR* certificate,
                IDataDumpCallback* callback);
  LONG Unregister(const WCHAR* serverUrl, const WCHAR* secondValue, const WCHAR* certificate,
                  IDataDumpCallback* callback);
  // Calls every callback of the key (or of the only key there is) with the answer text.
  // E_FAIL when there is none to call.
  [[nodiscard]] LONG CallCallback(const WCHAR* serverUrl, const WCHAR* secondValue,
                                  const WCHAR* certificate, unsigned char dataType,
                                  const WCHAR* text);

  // The Java start-up. Attempted once: a second call answers S_OK without doing anything,
  // also after a failure.
  [[nodiscard]] HRESULT Initialize();
  // Disposes of the Java client and lets go of the Java side. Runs on the thread that
  // started Java, as that thread ends.
  [[nodiscard]] LONG Teardown();

  // The host's process is ending (its other threads are already gone), while the
  // starting thread's teardown may still be to come: that teardown then leaves Java alone.
  static void ProcessEnding();

  ManagerState GetState() const { return static_cast<ManagerState>(state_.load()); }
  std::shared_ptr<CJavaVM> GetJavaVM() const;
  std::shared_ptr<CJavaObject> GetMessageClient() const;

 private:
  // Runs the one start-up attempt, or refuses when the state says there is no Java side.
  [[nodiscard]] HRESULT EnsureStarted();
  [[nodiscard]] HRESULT StartUp();
  // Start-up's parts: the host's logger and system information, then the Java side.
  [[nodiscard]] HRESULT ObtainHostInterfaces();
  [[nodiscard]] HRESULT StartJava();
  void ArmCleaner();
  [[nodiscard]] HRESULT PushServerConfig(const tarnix::CallbackKey& config);
  bool IsCurrentConfig(const WCHAR* serverUrl, const WCHAR* secondValue, const WCHAR* certificate);
  [[nodiscard]] HRESULT StartLoggerFactory();
  [[nodiscard]] HRESULT StartMessageClient();
  // At unload the Java side is left to the process as it is; see the destructor.
  void AbandonJava();

  std::shared_ptr<CJavaVM> javaVM_;
  std::shared_ptr<CJavaObject> messageClient_;
  // The Java logger factory start-up makes: the Java client logs through it.
  std::shared_ptr<CJavaObject> loggerFactory_;
  mutable std::recursive_mutex lock_;
  tarnix::HostLog log_;
  tarnix::ComPtr<ISystemInfo> systemInfo_;
  std::atomic<uint16_t> state_{eStateNotInitialized};
  // True while Initialize runs; read and written under the lock, so only the starting
  // thread itself, called back by the host from inside start-up, can see it set.
  bool startUpRunning_ = false;
  tarnix::CallbackRegistry callbacks_;
  // The configuration last pushed into the Java client.
  tarnix::CallbackKey currentConfig_;
  // Expires with this object, so that a starting thread that outlives it (a library
  // unloaded while that thread still runs) does not tear down a destroyed manager.
  std::shared_ptr<int> alive_ = std::make_shared<int>(0);
};
