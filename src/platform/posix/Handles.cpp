#include "Handles.h"

#include <mutex>
#include <unordered_map>

namespace tarnix::posix {

namespace {

struct HandleTable {
  std::mutex mutex;
  std::unordered_map<uintptr_t, std::shared_ptr<KernelObject>> objects;
  uintptr_t next = 0x100;
};

HandleTable& Table() {
  static HandleTable* table = new HandleTable();  // handles may be closed during exit
  return *table;
}

}  // namespace

HANDLE AddHandle(std::shared_ptr<KernelObject> object) {
  HandleTable& table = Table();
  std::lock_guard<std::mutex> lock(table.mutex);
  const uintptr_t value = table.next;
  table.next += 4;
  table.objects[value] = std::move(object);
  return reinterpret_cast<HANDLE>(value);
}

std::shared_ptr<KernelObject> FindHandle(HANDLE handle) {
  HandleTable& table = Table();
  std::lock_guard<std::mutex> lock(table.mutex);
  auto it = table.objects.find(reinterpret_cast<uintptr_t>(handle));
  return it != table.objects.end() ? it->second : nullptr;
}

bool RemoveHandle(HANDLE handle) {
  std::shared_ptr<KernelObject> object;  // released after the lock
  HandleTable& table = Table();
  std::lock_guard<std::mutex> lock(table.mutex);
  auto it = table.objects.find(reinterpret_cast<uintptr_t>(handle));
  if (it == table.objects.end()) return false;
  object = std::move(it->second);
  table.objects.erase(it);
  return true;
}

}  // namespace tarnix::posix
