// The exported manager as the host calls it. The facade is one per process, so each test
// here runs in a process of its own.
#include "ManagerTestSupport.h"

#include "fixtures/FakeCallbacks.h"
#include "fixtures/HostTest.h"
#include "fixtures/TestRegistry.h"
#include "manager/AgentRegistry.h"
#include "manager/ManagerMessages.h"
#include "tarnix/RMICommManager.h"

#include "common/HResultError.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <new>

namespace {

// The allocation of this thread that fails: it fails when the count reaches 0 (-1: none).
thread_local long t_allocationsBeforeFailure = -1;

}  // namespace

// This process's allocations, of which one can be made to fail. (GCC cannot see that
// every operator new here is malloc.)
#if defined(__GNUC__) && !defined(__clang__)
#  pragma GCC diagnostic ignored "-Wmismatched-new-delete"
#endif
void* operator new(std::size_t size) {
  if (t_allocationsBeforeFailure >= 0 && t_allocationsBeforeFailure-- == 0) throw std::bad_alloc();
  if (void* memory = std::malloc(size ? size : 1)) return memory;
  throw std::bad_alloc();
}
void* operator new[](std::size_t size) { return operator new(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  try {
    return operator new(size);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}
void* operator new[](std::size_t size, const std::nothrow_t& nothrow) noexcept {
  return operator new(size, nothrow);
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { std::free(memory); }
void operator delete[](void* memory, const std::nothrow_t&) noexcept { std::free(memory); }

namespace tarnix::testing {
namespace {

class FacadeTest : public HostTest {
 protected:
  LONG Dump() {
    return CRMICommManager::GetInstance().DumpData<IUnknown>(WSTR("rmi://127.0.0.1:1099/server"),
                                                             WSTR("unique"), WSTR("certificate"), 1,
                                                             kTypeWithoutMessage, nullptr);
  }
  TestRegistry registry_;
};

// Whichever allocation fails, first the implementation's construction, then its copies of
// the host's strings, what leaves the export is an exception carrying E_OUTOFMEMORY.
TEST_F(FacadeTest, AFailedAllocationLeavesAnExportAsItsResultCode) {
  auto callback = MakeHostObject<DataDumpInbox>();
  CRMICommManager& manager = CRMICommManager::GetInstance();
  for (long failing = 0;; ++failing) {
    SCOPED_TRACE(failing);
    HRESULT thrown = S_OK;
    LONG registered = E_UNEXPECTED;
    t_allocationsBeforeFailure = failing;
    try {
      registered = manager.RegisterDataDumpCallback(WSTR("url"), WSTR("unique"), WSTR("cert"),
                                                    callback.Get());
    } catch (const HResultError& error) {
      thrown = error.Code();
    } catch (...) {
      thrown = E_UNEXPECTED;
    }
    const bool reached = t_allocationsBeforeFailure < 0;
    t_allocationsBeforeFailure = -1;
    if (!reached) {
      EXPECT_EQ(registered, S_OK);
      break;
    }
    EXPECT_EQ(thrown, E_OUTOFMEMORY);
  }
  EXPECT_EQ(
      manager.UnregisterDataDumpCallback(WSTR("url"), WSTR("unique"), WSTR("cert"), callback.Get()),
      S_OK);
  EXPECT_EQ(manager.RegisterDataDumpCallback(nullptr, nullptr, nullptr, nullptr), E_POINTER);
  EXPECT_EQ(&manager, &CRMICommManager::GetInstance());
  // Start-up asks the host for its logger before anything else: callbacks start nothing.
  EXPECT_EQ(Service().Created(), 0);
  EXPECT_EQ(Logger().Count(), 0u);
}

TEST_F(FacadeTest, FailedStartUpIsFinal) {
  SkipReferenceCheck();  // the process-wide manager keeps the host's logger
  const std::filesystem::path nowhere =
      std::filesystem::temp_directory_path() / "tarnix-no-such-runtime";
  registry_.Own(HKEY_LOCAL_MACHINE, AgentKeyPath());
  registry_.SetString(HKEY_LOCAL_MACHINE, AgentKeyPath(), W("JrePath"), W(nowhere.u8string()));
  registry_.SetString(HKEY_LOCAL_MACHINE, AgentKeyPath(), W("ClassPath"), W(nowhere.u8string()));
  const std::string configLine = U(messages::kDumpDataConfigFailed) + "  Error code 0x80004005";

  EXPECT_EQ(Dump(), E_FAIL);
  const auto first = Lines(Logger(), LogOperation::Error);
  ASSERT_GE(first.size(), 3u) << Logger().Dump();
  EXPECT_EQ(first[first.size() - 3].rfind(
                "Failed to create a Java virtual machine instance.  Error code 0x8007007e", 0),
            0u);
  EXPECT_EQ(
      first[first.size() - 2].rfind(U(messages::kStartUpFailed) + "  Error code 0x80004005", 0),
      0u);
  EXPECT_EQ(first.back().rfind(configLine, 0), 0u);

  // No second attempt: the refusal is all there is, on every later call.
  for (int call = 0; call < 2; ++call) {
    Logger().Clear();
    EXPECT_EQ(Dump(), E_FAIL);
    const auto later = Lines(Logger(), LogOperation::Error);
    ASSERT_EQ(later.size(), 2u) << Logger().Dump();
    EXPECT_EQ(later[0], U(messages::kRefusedAfterFailure));
    EXPECT_EQ(later[1].rfind(configLine, 0), 0u);
  }
  EXPECT_EQ(Service().Queries(IID_IHostLogger), 1);

  // Callbacks work in every state.
  auto callback = MakeHostObject<DataDumpInbox>();
  CRMICommManager& manager = CRMICommManager::GetInstance();
  EXPECT_EQ(manager.RegisterDataDumpCallback(WSTR("url"), nullptr, nullptr, callback.Get()), S_OK);
  EXPECT_EQ(manager.UnregisterDataDumpCallback(WSTR("url"), nullptr, nullptr, callback.Get()),
            S_OK);
}

}  // namespace
}  // namespace tarnix::testing
