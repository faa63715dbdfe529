// The registry hive held in memory: keys, values, open handles, and the file behind it.
#pragma once

#include "platform/Win32.h"

#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

namespace tarnix::posix {

struct RegValue {
  WString name;
  DWORD type = REG_NONE;
  std::vector<BYTE> data;
};

struct RegNode {
  WString name;
  bool isVolatile = false;
  bool deleted = false;
  std::vector<RegValue> values;                   // in the order they were first set
  std::vector<std::shared_ptr<RegNode>> subkeys;  // sorted by name, ignoring case

  std::shared_ptr<RegNode> FindSubkey(const WString& name) const;
  // Inserts at its sorted place.
  std::shared_ptr<RegNode> AddSubkey(const WString& name, bool isVolatile);
  bool RemoveSubkey(const RegNode* child);
  RegValue* FindValue(const WString& name);
  void SetValue(const WString& name, DWORD type, const BYTE* data, size_t size);
  bool DeleteValue(const WString& name);
};

// The predefined roots, in the order they are saved.
struct RegRoot {
  HKEY handle;
  const char* name;
  const char* shortName;
};
const std::vector<RegRoot>& RegRoots();

class RegHive {
 public:
  struct Open {
    std::shared_ptr<RegNode> node;
    REGSAM access = 0;
  };

  static RegHive& Instance();

  // Every operation holds this lock; the first one loads the file.
  std::unique_lock<std::mutex> Lock();

  // The key a handle stands for; ERROR_INVALID_HANDLE or ERROR_KEY_DELETED otherwise.
  LONG Resolve(HKEY key, Open* out);
  HKEY AddHandle(std::shared_ptr<RegNode> node, REGSAM access);
  bool CloseHandle(HKEY key);

  std::shared_ptr<RegNode> Root(HKEY predefined);
  // Splits a subkey path at backslashes, dropping empty parts.
  static std::vector<WString> SplitPath(const WCHAR* path);

  // After a change: saves the hive to its file, when there is one.
  void Changed();
  size_t Reload();
  std::string Text();

 private:
  RegHive() = default;
  void EnsureLoaded();
  size_t LoadFile();
  void ResetRoots();

  std::mutex mutex_;
  bool loaded_ = false;
  bool savedAsUtf16_ = false;
  std::string path_;
  std::unordered_map<uintptr_t, std::shared_ptr<RegNode>> roots_;
  std::unordered_map<uintptr_t, Open> handles_;
  uintptr_t nextHandle_ = 0x1000;
};

// The .reg export format. Parse adds what the text holds to the roots and returns the
// number of lines it skipped as not understood.
size_t ParseRegText(const std::string& bytes, RegHive& hive, bool* wasUtf16);
std::string FormatRegText(RegHive& hive, bool asUtf16);

}  // namespace tarnix::posix
