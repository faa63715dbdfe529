// What the stand-in runtime library saw. The test owns the record and passes its address
// as the option "-Dstub.record=<address>", so that it outlives the library's unloading.
#pragma once

#include <jni.h>

#include <cstdint>

struct StubRecord {
  int createCalls;
  int destroyCalls;
  int attachCalls;
  int detachCalls;
  jint version;
  jint optionCount;
  int optionsWereNull;
  int ignoreUnrecognized;
  int extraInfoAllNull;
  char options[8][512];
  // The DLL search directory while the library was being loaded (Windows only).
  uint16_t dllDirectoryAtLoad[300];
};

// Exported by the stand-in: its own record, for calls made without a record option.
using StubRecordFunction = StubRecord* (*)();
inline constexpr const char kStubRecordFunction[] = "TarnixStub_Record";
