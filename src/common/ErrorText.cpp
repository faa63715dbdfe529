#include "common/ErrorText.h"

#include "common/FormatText.h"

namespace tarnix {
namespace {

// Owns a text buffer that the system allocated for the caller.
class SystemBuffer {
 public:
  SystemBuffer() = default;
  SystemBuffer(const SystemBuffer&) = delete;
  SystemBuffer& operator=(const SystemBuffer&) = delete;
  ~SystemBuffer() {
    if (text_) LocalFree(text_);
  }
  LPWSTR* Receive() { return &text_; }
  const WCHAR* Get() const { return text_; }

 private:
  LPWSTR text_ = nullptr;
};

constexpr DWORD kMessageFlags = 0x1300;  // allocate buffer, from system, ignore inserts
constexpr DWORD kNeutralLanguage = 0x400;

}  // namespace

WString SystemMessageText(HRESULT hr) {
  SystemBuffer buffer;
  const DWORD length =
      FormatMessageW(kMessageFlags, nullptr, static_cast<DWORD>(hr), kNeutralLanguage,
                     reinterpret_cast<LPWSTR>(buffer.Receive()), 0, nullptr);
  if (length == 0) return WString();
  return WString(buffer.Get(), length);
}

WString ResultCodeSuffix(HRESULT hr, SuffixStyle style) {
  const WCHAR* lead = style == SuffixStyle::Spaced ? WSTR("  ") : WSTR("");
  const WString text = SystemMessageText(hr);
  if (text.empty()) return FormatText(WSTR("%sError code 0x%08lx."), lead, hr);
  return FormatText(WSTR("%sError code 0x%08lx -- %s"), lead, hr, text);
}

}  // namespace tarnix
