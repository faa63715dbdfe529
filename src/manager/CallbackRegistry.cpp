#include "manager/CallbackRegistry.h"

namespace tarnix {

void CallbackRegistry::Add(const CallbackKey& key, IDataDumpCallback* callback) {
  if (!callback) return;
  ComPtr<IDataDumpCallback> reference(callback);
  Collection& collection = keys_[key];
  collection.emplace(callback, std::move(reference));
}

void CallbackRegistry::Remove(const CallbackKey& key, IDataDumpCallback* callback) {
  const auto found = keys_.find(key);
  if (found == keys_.end()) return;
  found->second.erase(callback);
  if (found->second.empty()) keys_.erase(found);
}

bool CallbackRegistry::Find(const CallbackKey& key, Callbacks* callbacks) const {
  auto found = keys_.find(key);
  if (found == keys_.end()) {
    if (keys_.size() != 1) return false;
    found = keys_.begin();
  }
  *callbacks = Copy(found->second);
  return true;
}

size_t CallbackRegistry::CallbackCount(const CallbackKey& key) const {
  const auto found = keys_.find(key);
  return found == keys_.end() ? 0 : found->second.size();
}

CallbackRegistry::Callbacks CallbackRegistry::Copy(const Collection& collection) {
  Callbacks callbacks;
  for (const auto& entry : collection) callbacks.push_back(entry.second);
  return callbacks;
}

}  // namespace tarnix
