// Owns one open registry key (closed when the owner goes), with the reads and writes the
// component makes. Results are the registry's own codes (ERROR_SUCCESS, ERROR_FILE_NOT_FOUND,
// ...), never exceptions.
#pragma once

#include "platform/Win32.h"

#include <cstring>
#include <utility>
#include <vector>
#include <tuple>

namespace tarnix {

class RegKey {
 public:
  RegKey() = default;
  RegKey(HKEY root, const WCHAR* subkey, REGSAM access) {
    std::ignore = Open(root, subkey, access);  // Valid() tells
  }
  RegKey(const RegKey&) = delete;
  RegKey& operator=(const RegKey&) = delete;
  RegKey(RegKey&& other) noexcept : key_(std::exchange(other.key_, nullptr)) {}
  RegKey& operator=(RegKey&& other) noexcept {
    Close();
    key_ = std::exchange(other.key_, nullptr);
    return *this;
  }
  ~RegKey() { Close(); }

  [[nodiscard]] LONG Open(HKEY root, const WCHAR* subkey, REGSAM access) {
    HKEY key = nullptr;
    LONG result = RegOpenKeyExW(root, subkey, 0, access, &key);
    if (result == ERROR_SUCCESS) Attach(key);
    return result;
  }
  [[nodiscard]] LONG Create(HKEY root, const WCHAR* subkey, REGSAM access,
                            DWORD options = REG_OPTION_NON_VOLATILE) {
    HKEY key = nullptr;
    DWORD disposition = 0;
    LONG result =
        RegCreateKeyExW(root, subkey, 0, nullptr, options, access, nullptr, &key, &disposition);
    if (result == ERROR_SUCCESS) Attach(key);
    return result;
  }
  void Close() {
    if (key_) RegCloseKey(std::exchange(key_, nullptr));
  }
  // Takes ownership of an open key.
  void Attach(HKEY key) {
    Close();
    key_ = key;
  }
  HKEY Detach() { return std::exchange(key_, nullptr); }

  HKEY Handle() const { return key_; }
  bool Valid() const { return key_ != nullptr; }

  bool HasValue(const WCHAR* name) const {
    return RegQueryValueExW(key_, name, nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS;
  }

  // The value's bytes and type, whatever its size.
  [[nodiscard]] LONG ReadRaw(const WCHAR* name, std::vector<BYTE>* data, DWORD* type) const {
    DWORD size = 0;
    LONG result = RegQueryValueExW(key_, name, nullptr, type, nullptr, &size);
    // The value can grow between the two calls when another thread writes it.
    for (int attempt = 0; result == ERROR_SUCCESS && attempt < 4; ++attempt) {
      data->resize(size);
      result = RegQueryValueExW(key_, name, nullptr, type, size ? data->data() : nullptr, &size);
      if (result == ERROR_SUCCESS) {
        data->resize(size);
        return result;
      }
      if (result == ERROR_MORE_DATA) result = ERROR_SUCCESS;
    }
    return result == ERROR_SUCCESS ? ERROR_MORE_DATA : result;
  }

  // A REG_SZ or REG_EXPAND_SZ (not expanded), up to its first zero; a value stored without a
  // terminating zero is read whole (an odd last byte is dropped).
  [[nodiscard]] LONG ReadValue(const WCHAR* name, WString* out) const {
    std::vector<BYTE> data;
    DWORD type = REG_NONE;
    LONG result = ReadRaw(name, &data, &type);
    if (result != ERROR_SUCCESS) return result;
    if (type != REG_SZ && type != REG_EXPAND_SZ) return ERROR_INVALID_DATA;
    *out = FirstString(data);
    return ERROR_SUCCESS;
  }

  [[nodiscard]] LONG ReadValueDW(const WCHAR* name, DWORD* out) const {
    DWORD type = REG_NONE, value = 0, size = 0;
    LONG result = RegQueryValueExW(key_, name, nullptr, &type, nullptr, &size);
    if (result != ERROR_SUCCESS) return result;
    if (type != REG_DWORD || size != sizeof(value)) return ERROR_INVALID_DATA;
    result = RegQueryValueExW(key_, name, nullptr, &type, reinterpret_cast<BYTE*>(&value), &size);
    if (result != ERROR_SUCCESS) return result;
    if (type != REG_DWORD || size != sizeof(value)) return ERROR_INVALID_DATA;
    *out = value;
    return ERROR_SUCCESS;
  }

  // A REG_MULTI_SZ as its strings; an empty string ends the list, as Windows reads it.
  [[nodiscard]] LONG ReadValues(const WCHAR* name, std::vector<WString>* out) const {
    std::vector<BYTE> data;
    DWORD type = REG_NONE;
    LONG result = ReadRaw(name, &data, &type);
    if (result != ERROR_SUCCESS) return result;
    if (type != REG_MULTI_SZ) return ERROR_INVALID_DATA;
    *out = MultiStrings(data);
    return ERROR_SUCCESS;
  }

  // String data up to its first zero; data stored without one is read whole (an odd last
  // byte is dropped).
  static WString FirstString(const std::vector<BYTE>& data) {
    WString text = PaddedText(data);
    text.resize(text.find(WCHAR()));
    return text;
  }
  // Multi-string data's strings, up to the first empty one or the end of the data.
  static std::vector<WString> MultiStrings(const std::vector<BYTE>& data) {
    const WString all = PaddedText(data);
    std::vector<WString> strings;
    for (size_t start = 0; start < all.size() && all[start] != WCHAR();) {
      const size_t end = all.find(WCHAR(), start);
      strings.push_back(all.substr(start, end - start));
      start = end + 1;
    }
    return strings;
  }

  [[nodiscard]] LONG WriteValue(const WCHAR* name, const WCHAR* text, DWORD type = REG_SZ) {
    const size_t bytes = (std::char_traits<WCHAR>::length(text) + 1) * sizeof(WCHAR);
    return WriteValue(name, text, static_cast<DWORD>(bytes), type);
  }
  [[nodiscard]] LONG WriteValue(const WCHAR* name, DWORD value) {
    return WriteValue(name, &value, sizeof(value), REG_DWORD);
  }
  [[nodiscard]] LONG WriteValue(const WCHAR* name, const void* data, DWORD size, DWORD type) {
    return RegSetValueExW(key_, name, 0, type, static_cast<const BYTE*>(data), size);
  }
  [[nodiscard]] LONG DeleteValue(const WCHAR* name) { return RegDeleteValueW(key_, name); }

 private:
  // The data as UTF-16 with one zero more than it holds, so that it always ends in one.
  static WString PaddedText(const std::vector<BYTE>& data) {
    WString text(data.size() / sizeof(WCHAR) + 1, WCHAR());
    if (!data.empty())
      std::memcpy(&text[0], data.data(), data.size() - data.size() % sizeof(WCHAR));
    return text;
  }

  HKEY key_ = nullptr;
};

}  // namespace tarnix
