#pragma once

#include "manager/CallbackKey.h"
#include "platform/ComPtr.h"
#include "tarnix/HostInterfaces.h"

#include <map>
#include <vector>

namespace tarnix {

// The host's callbacks by the key they were registered under. Each entry holds a
// reference of its own; a key is dropped with its last callback. Not locked: the manager
// serialises every use.
class CallbackRegistry {
 public:
  using Callbacks = std::vector<ComPtr<IDataDumpCallback>>;

  // Registering the same callback twice under one key keeps one entry.
  void Add(const CallbackKey& key, IDataDumpCallback* callback);
  // Removes the callback from the key; anything not registered is left as it is.
  void Remove(const CallbackKey& key, IDataDumpCallback* callback);

  // The callbacks of `key`, in the registry's order. A host that registered under one key
  // only gets every answer, whatever key the answer came with. False when neither applies.
  [[nodiscard]] bool Find(const CallbackKey& key, Callbacks* callbacks) const;

  size_t KeyCount() const { return keys_.size(); }
  size_t CallbackCount(const CallbackKey& key) const;

 private:
  // Ordered by the interface pointer, as the host's own registry orders them.
  using Collection = std::map<IDataDumpCallback*, ComPtr<IDataDumpCallback>>;

  static Callbacks Copy(const Collection& collection);

  std::map<CallbackKey, Collection> keys_;
};

}  // namespace tarnix
