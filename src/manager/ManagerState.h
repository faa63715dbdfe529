#pragma once

#include <cstdint>

// Where the manager is in its one-way life: it starts the Java side once, and stops for
// good when the thread that started it ends or when the start failed.
enum ManagerState : uint16_t {
  eStateNotInitialized = 0,
  eStateInitialized = 1,
  eStateInitFailed = 2,
  eStateUninitialized = 3,
};
