#include "HostObjects.h"

#include "HostRuntime.h"

#include <oleauto.h>

namespace host {
namespace {

constexpr unsigned kMaxLines = 24;
LogLine g_lines[kMaxLines];
unsigned g_lineCount = 0;

}  // namespace

bool SameIid(REFIID left, REFIID right) {
  const auto* a = reinterpret_cast<const unsigned char*>(&left);
  const auto* b = reinterpret_cast<const unsigned char*>(&right);
  for (unsigned i = 0; i < sizeof(IID); ++i) {
    if (a[i] != b[i]) return false;
  }
  return true;
}

HRESULT Logger::Record(BSTR component, BSTR message) {
  CheckText(component, L"tarnix-rmi", "the component names itself in every log line");
  // A BSTR knows its length; a line that disagrees was not made as one.
  Check(SysStringLen(message) == Length(message), "a log message is a whole BSTR");
  if (g_lineCount == kMaxLines) {
    Check(false, "more log lines than any call should write");
    return S_OK;
  }
  LogLine& line = g_lines[g_lineCount++];
  unsigned length = 0;
  for (; message && message[length] && length + 1 < sizeof line.message / sizeof(WCHAR); ++length) {
    line.message[length] = message[length];
  }
  line.message[length] = 0;
  return S_OK;
}

HRESULT Logger::Unexpected() {
  Check(false, "the component called an unused slot of the logger");
  return E_NOTIMPL;
}

unsigned Logger::Count() const { return g_lineCount; }

const LogLine& Logger::Line(unsigned index) const {
  static LogLine missing = {};
  return index < g_lineCount ? g_lines[index] : missing;
}

void Logger::CheckCount(unsigned count, const char* what) const {
  if (g_lineCount == count) return;
  Check(false, what);
  Print("  log lines:\n");
  for (unsigned i = 0; i < g_lineCount; ++i) {
    Print("  ");
    PrintWide(g_lines[i].message);
    Print("\n");
  }
}

void Logger::Clear() { g_lineCount = 0; }

HRESULT SystemInfo::get_uniqueId(BSTR* id) {
  if (!id) return E_POINTER;
  *id = SysAllocString(kUniqueId);
  return *id ? S_OK : E_OUTOFMEMORY;
}

HRESULT SystemInfo::Unexpected() {
  Check(false, "the component asked the system information for more than the unique id");
  return E_NOTIMPL;
}

HRESULT SystemService::QueryInterface(REFIID iid, void** object) {
  if (!object) return E_POINTER;
  if (SameIid(iid, IID_IHostLogger)) return logger_->QueryInterface(iid, object);
  if (SameIid(iid, IID_ISystemInfo)) return systemInfo_->QueryInterface(iid, object);
  return Answer(iid, IID_IHostSystemService, object);
}

HRESULT SystemService::GetService(REFIID, IUnknown** object) {
  Check(false, "the component went past the service's own answers to GetService");
  if (object) *object = nullptr;
  return E_NOINTERFACE;
}

HRESULT SystemService::Unexpected() {
  Check(false, "the component called an unused slot of the system service");
  return E_NOTIMPL;
}

HRESULT ServiceFactory::CreateInstance(IUnknown* outer, REFIID iid, void** object) {
  if (!object) return E_POINTER;
  *object = nullptr;
  if (outer) return CLASS_E_NOAGGREGATION;
  ++created_;
  return service_->QueryInterface(iid, object);
}

}  // namespace host
