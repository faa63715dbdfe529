// What the stand-in Java runtime was asked, shared by the runtime and the programs that
// load it. A test may own the record and pass its address as the option
// "-Dstub.record=<address>", so that it outlives the library's unloading. Plain types, for
// every compiler and ABI that includes it.
#pragma once

struct StubRecord {
  int createCalls;
  int destroyCalls;
  int attachCalls;
  int detachCalls;
  int getEnvCalls;
  int findClassCalls;
  int version;
  int optionCount;
  int optionsWereNull;
  int ignoreUnrecognized;
  int extraInfoAllNull;
  char options[8][512];
  // The DLL search directory while the library was being loaded (Windows only).
  unsigned short dllDirectoryAtLoad[300];
};

// Exported by the stand-in: its own record, for calls made without a record option.
typedef struct StubRecord* (*StubRecordFunction)(void);
#define TARNIX_STUB_RECORD_FUNCTION "TarnixStub_Record"
