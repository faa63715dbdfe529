// Helpers shared by the conformance tests; the same on both platforms.
#pragma once

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

// A COM object whose references can be counted from outside; answers IUnknown and, when
// asked to, IDispatch with a default value.
class CountedObject : public IUnknown {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppv) override {
    if (!ppv) return E_POINTER;
    if (IsEqualIID(riid, IID_IUnknown)) {
      *ppv = static_cast<IUnknown*>(this);
      AddRef();
      return S_OK;
    }
    *ppv = nullptr;
    return E_NOINTERFACE;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++refs_; }
  ULONG STDMETHODCALLTYPE Release() override { return --refs_; }
  ULONG refs() const { return refs_; }

 private:
  std::atomic<ULONG> refs_{1};
};

// Makes its one CountedObject, answering IUnknown and IClassFactory; counts the objects it
// was asked for and its own references.
class CountingFactory : public IClassFactory {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppv) override {
    if (IsEqualIID(riid, IID_IUnknown) || IsEqualIID(riid, IID_IClassFactory)) {
      *ppv = static_cast<IClassFactory*>(this);
      AddRef();
      return S_OK;
    }
    *ppv = nullptr;
    return E_NOINTERFACE;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++refs; }
  ULONG STDMETHODCALLTYPE Release() override { return --refs; }
  HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID riid, void** ppv) override {
    ++created;
    if (outer) return CLASS_E_NOAGGREGATION;
    return product.QueryInterface(riid, ppv);
  }
  HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }

  std::atomic<ULONG> refs{1};
  int created = 0;
  CountedObject product;
};

}  // namespace tarnix::test
