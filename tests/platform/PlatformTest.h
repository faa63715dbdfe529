// Helpers shared by the conformance tests; the same on both platforms.
#pragma once

#include "hostobjects/DataObjects.h"
#include "platform/Win32.h"
#include "platform/WideText.h"

#include <atomic>
#include <filesystem>
#include <string>

namespace tarnix::test {

inline WString Wide(const std::string& utf8) { return Utf8ToWide(utf8); }

inline WString PathText(const std::filesystem::path& path) {
#ifdef _WIN32
  return path.wstring();
#else
  return Utf8ToWide(path.string());
#endif
}

// A name no other test process uses at the same time.
inline std::string UniqueName(const std::string& stem) {
  static std::atomic<int> counter{0};
  return stem + "-" + std::to_string(GetCurrentProcessId()) + "-" + std::to_string(++counter);
}

// A fresh folder under the system's temporary folder, removed with what it holds.
class ScopedTempDir {
 public:
  ScopedTempDir() : path_(std::filesystem::temp_directory_path() / UniqueName("tarnix-platform")) {
    std::filesystem::create_directories(path_);
  }
  ~ScopedTempDir() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

// A COM object whose references can be counted from outside: one of the host's own.
inline tarnix::ComPtr<tarnix::host::NamedValues> CountedObject() {
  return tarnix::host::MakeHostObject<tarnix::host::NamedValues>();
}

// A class object that hands out its one product, counting the objects it was asked for.
class CountingFactory : public tarnix::host::HostObject<IClassFactory> {
 public:
  CountingFactory() : HostObject("CountingFactory") {}
  HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID riid, void** ppv) override {
    ++created;
    if (outer) return CLASS_E_NOAGGREGATION;
    return product->QueryInterface(riid, ppv);
  }
  HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }

  int created = 0;
  const tarnix::ComPtr<tarnix::host::NamedValues> product = CountedObject();
};

}  // namespace tarnix::test
