// What the stand-in Java runtime was asked, shared by the runtime and the programs that
// load it. Plain C, for every compiler and ABI that includes it.
#pragma once

struct StubCounts {
  int createCalls;
  int destroyCalls;
  int attachCalls;
  int detachCalls;
  int getEnvCalls;
  int findClassCalls;
};

// Exported by the runtime; answers its one record.
typedef struct StubCounts* (*StubCountsFunction)(void);
#define TARNIX_STUB_COUNTS_FUNCTION "TarnixAbiStub_Counts"
