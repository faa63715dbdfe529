#include "RegistryHive.h"

#include "Internal.h"
#include "platform/WideText.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>

namespace tarnix::posix {

namespace {

bool NameLess(const std::shared_ptr<RegNode>& node, const WString& name) {
  return CompareFolded(node->name.data(), node->name.size(), name.data(), name.size()) < 0;
}

uintptr_t Key(HKEY handle) { return reinterpret_cast<uintptr_t>(handle); }

void MarkDeleted(RegNode* node) {
  node->deleted = true;
  for (auto& child : node->subkeys) MarkDeleted(child.get());
}

}  // namespace

std::shared_ptr<RegNode> RegNode::FindSubkey(const WString& name) const {
  auto it = std::lower_bound(subkeys.begin(), subkeys.end(), name, NameLess);
  return it != subkeys.end() && EqualsFolded((*it)->name, name) ? *it : nullptr;
}

std::shared_ptr<RegNode> RegNode::AddSubkey(const WString& name, bool isVolatile) {
  auto node = std::make_shared<RegNode>();
  node->name = name;
  node->isVolatile = isVolatile;
  subkeys.insert(std::lower_bound(subkeys.begin(), subkeys.end(), name, NameLess), node);
  return node;
}

bool RegNode::RemoveSubkey(const RegNode* child) {
  for (auto it = subkeys.begin(); it != subkeys.end(); ++it) {
    if (it->get() == child) {
      MarkDeleted(it->get());
      subkeys.erase(it);
      return true;
    }
  }
  return false;
}

RegValue* RegNode::FindValue(const WString& name) {
  for (auto& value : values) {
    if (EqualsFolded(value.name, name)) return &value;
  }
  return nullptr;
}

void RegNode::SetValue(const WString& name, DWORD type, const BYTE* data, size_t size) {
  RegValue* value = FindValue(name);
  if (!value) {
    values.push_back(RegValue{name, type, {}});
    value = &values.back();
  }
  value->type = type;
  value->data.assign(data, data + size);
}

bool RegNode::DeleteValue(const WString& name) {
  for (auto it = values.begin(); it != values.end(); ++it) {
    if (EqualsFolded(it->name, name)) {
      values.erase(it);
      return true;
    }
  }
  return false;
}

const std::vector<RegRoot>& RegRoots() {
  // HKEY_CLASSES_ROOT is not a root of its own: it shows HKLM\SOFTWARE\Classes.
  static const std::vector<RegRoot> roots = {
      {HKEY_LOCAL_MACHINE, "HKEY_LOCAL_MACHINE", "HKLM"},
      {HKEY_CURRENT_USER, "HKEY_CURRENT_USER", "HKCU"},
      {HKEY_USERS, "HKEY_USERS", "HKU"},
      {HKEY_CURRENT_CONFIG, "HKEY_CURRENT_CONFIG", "HKCC"},
      {HKEY_PERFORMANCE_DATA, "HKEY_PERFORMANCE_DATA", nullptr},
      {HKEY_DYN_DATA, "HKEY_DYN_DATA", nullptr},
      {HKEY_CURRENT_USER_LOCAL_SETTINGS, "HKEY_CURRENT_USER_LOCAL_SETTINGS", nullptr},
      {HKEY_PERFORMANCE_TEXT, "HKEY_PERFORMANCE_TEXT", nullptr},
      {HKEY_PERFORMANCE_NLSTEXT, "HKEY_PERFORMANCE_NLSTEXT", nullptr},
  };
  return roots;
}

RegHive& RegHive::Instance() {
  static RegHive* hive = new RegHive();  // outlives static destruction: handles may close late
  return *hive;
}

std::unique_lock<std::mutex> RegHive::Lock() {
  std::unique_lock<std::mutex> lock(mutex_);
  EnsureLoaded();
  return lock;
}

void RegHive::EnsureLoaded() {
  if (loaded_) return;
  loaded_ = true;
  LoadFile();
}

void RegHive::ResetRoots() {
  roots_.clear();
  for (const auto& root : RegRoots()) {
    auto node = std::make_shared<RegNode>();
    node->name = Utf8ToWide(root.name);
    roots_[Key(root.handle)] = node;
  }
}

size_t RegHive::LoadFile() {
  ResetRoots();
  savedAsUtf16_ = false;
  const char* path = std::getenv(kRegistryFileVariable);
  path_ = path ? path : "";
  if (path_.empty()) return 0;
  std::ifstream in(path_, std::ios::binary);
  if (!in) return 0;
  std::stringstream bytes;
  bytes << in.rdbuf();
  return ParseRegText(bytes.str(), *this, &savedAsUtf16_);
}

size_t RegHive::Reload() {
  loaded_ = true;
  return LoadFile();
}

std::string RegHive::Text() { return FormatRegText(*this, false); }

std::shared_ptr<RegNode> RegHive::Root(HKEY predefined) {
  if (predefined == HKEY_CLASSES_ROOT) {
    std::shared_ptr<RegNode> node = roots_[Key(HKEY_LOCAL_MACHINE)];
    for (const char* part : {"SOFTWARE", "Classes"}) {
      const WString name = Utf8ToWide(part);
      std::shared_ptr<RegNode> child = node->FindSubkey(name);
      node = child ? child : node->AddSubkey(name, false);
    }
    return node;
  }
  auto it = roots_.find(Key(predefined));
  return it != roots_.end() ? it->second : nullptr;
}

LONG RegHive::Resolve(HKEY key, Open* out) {
  if (std::shared_ptr<RegNode> root = Root(key)) {
    *out = Open{root, KEY_ALL_ACCESS};
    return ERROR_SUCCESS;
  }
  auto it = handles_.find(Key(key));
  if (it == handles_.end()) return ERROR_INVALID_HANDLE;
  if (it->second.node->deleted) return ERROR_KEY_DELETED;
  *out = it->second;
  return ERROR_SUCCESS;
}

HKEY RegHive::AddHandle(std::shared_ptr<RegNode> node, REGSAM access) {
  const uintptr_t value = nextHandle_;
  nextHandle_ += 4;
  handles_[value] = Open{std::move(node), access};
  return reinterpret_cast<HKEY>(value);
}

bool RegHive::CloseHandle(HKEY key) { return handles_.erase(Key(key)) > 0; }

std::vector<WString> RegHive::SplitPath(const WCHAR* path) {
  std::vector<WString> parts;
  if (!path) return parts;
  WString part;
  for (const WCHAR* p = path;; ++p) {
    if (*p == u'\\' || *p == 0) {
      if (!part.empty()) parts.push_back(part);
      part.clear();
      if (*p == 0) break;
    } else {
      part.push_back(*p);
    }
  }
  return parts;
}

// Written to a temporary file and renamed over the old one, so that a reader never sees
// half a hive.
void RegHive::Changed() {
  if (path_.empty()) return;
  const std::string text = FormatRegText(*this, savedAsUtf16_);
  const std::string temporary = path_ + ".tmp";
  {
    std::ofstream out(temporary, std::ios::binary | std::ios::trunc);
    if (!out) return;
    out.write(text.data(), static_cast<std::streamsize>(text.size()));
    if (!out) return;
  }
  std::rename(temporary.c_str(), path_.c_str());
}

size_t ReloadRegistry() {
  RegHive& hive = RegHive::Instance();
  auto lock = hive.Lock();
  return hive.Reload();
}

std::string RegistryText() {
  RegHive& hive = RegHive::Instance();
  auto lock = hive.Lock();
  return hive.Text();
}

}  // namespace tarnix::posix
