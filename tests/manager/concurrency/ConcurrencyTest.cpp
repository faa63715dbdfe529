// Many host threads at once on the real JVM: every kind of data (and some the component
// must refuse) from eight threads while another registers and unregisters callbacks and
// asks where the message server is. Nothing may hang, crash, leak a host or Java reference
// or leave a thread attached, and every call must answer a code its input allows.
#include "JvmHost.h"

#include "HostData.h"
#include "JvmProbe.h"
#include "JvmTestSupport.h"
#include "fixtures/FakeCallbacks.h"
#include "manager/CommManagerImpl.h"
#include "manager/ManagerMessages.h"
#include "tarnix/DataType.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <thread>
#include <vector>

namespace tarnix::testing {
namespace {

constexpr int kHostThreads = 8;
constexpr const char* kRuntimeLibrary = MANAGER_TEST_JAVA_HOME "/lib/server/libjvm.so";

constexpr int kCallsPerThread = 10000;

// One kind of call a host thread makes, and the codes that input allows.
struct Case {
  const char* name;
  unsigned char type;
  ComPtr<IUnknown> data;
  std::set<HRESULT> allowed;
};

// Each host thread makes its own objects, as the host makes one per call.
std::vector<Case> MakeCases() {
  const ComPtr<IUnknown> session = AsUnknown(hostsim::MakeSession(2));
  const ComPtr<IUnknown> sample = hostsim::MakeSample();
  const ComPtr<IUnknown> noItems = AsUnknown(MakeHostObject<NamedValues>());
  // A callback key may or may not be registered at the moment the answer arrives.
  const std::set<HRESULT> answered = {S_OK, E_FAIL};
  return {
      {"start", eUserSessionStart, session, {S_OK}},
      {"logon", eUserSessionLogon, session, answered},
      {"logoff", eUserSessionLogoff, hostsim::MakeLogoff(1), {S_OK}},
      {"refresh", eUserSessionRefresh, session, {S_OK}},
      {"reconnect", eUserSessionReconnect, session, {S_OK}},
      {"disconnect", eUserSessionDisconnect, session, {S_OK}},
      {"end", eUserSessionEnd, session, {S_OK}},
      {"extended", eExtendedData, hostsim::MakeExtendedData(), {S_OK}},
      {"startup", eStartup, nullptr, answered},
      {"sample", eSample, sample, {S_OK}},
      {"trace", eTraceRoute, hostsim::MakeTraceRoute(), {S_OK}},
      {"poll", eDesktopPoll, nullptr, {S_OK}},
      {"logon without data", eUserSessionLogon, nullptr, {E_FAIL}},
      {"end without data", eUserSessionEnd, nullptr, {E_FAIL}},
      {"start of a sample", eUserSessionStart, sample, {E_FAIL}},
      {"logoff of a sample", eUserSessionLogoff, sample, {E_FAIL}},
      {"sample of a session", eSample, session, {E_FAIL}},
      {"sample without data", eSample, nullptr, {E_FAIL}},
      {"extended without items", eExtendedData, noItems, {E_INVALIDARG}},
      {"trace without items", eTraceRoute, noItems, {E_INVALIDARG}},
      {"unknown type", 200, session, {S_OK}},
      {"type without message", kTypeWithoutMessage, nullptr, {S_OK}},
  };
}

bool IsAttached() {
  JavaVM* vm = RunningJavaVM();
  JNIEnv* env = nullptr;
  return vm && vm->GetEnv(reinterpret_cast<void**>(&env), JNI_VERSION_1_6) != JNI_EDETACHED;
}

// What one host thread saw: per case, how often each code came back.
struct Tally {
  std::map<size_t, std::map<HRESULT, long>> results;
  // Codes of calls made after the manager was seen to have ended.
  std::map<HRESULT, long> afterEnd;
  bool attachedAtExit = false;
};

class ManagerConcurrency : public JvmHostTest {
 protected:
  ManagerConcurrency() {
    // The JIT adds compiler threads when the machine is busy, each with a global reference
    // of its own; with a fixed number the JVM's count is the component's to explain.
    const char* options = std::getenv("JAVA_TOOL_OPTIONS");
    setenv(
        "JAVA_TOOL_OPTIONS",
        (std::string(options ? options : "") + " -XX:-UseDynamicNumberOfCompilerThreads").c_str(),
        1);
    WriteSettings({});
    hostsim::DescribeDesktop(SystemInfo());
    Service().Offer(IID_IHostSessionSource, hostsim::MakeSessions(), ServiceRoute::Both);
    executor_ = MakeHostObject<ActionInbox>();
    Service().Offer(IID_IHostActionExecutor, executor_, ServiceRoute::QueryInterface);
  }
  void TearDown() override {
    if (starter_.joinable()) EndStarter();
    manager_.reset();
    Service().Withdraw(IID_IHostSessionSource);
    Service().Withdraw(IID_IHostActionExecutor);
    executor_.Reset();
    JvmHostTest::TearDown();
  }

  LONG Dump(unsigned char type, IUnknown* data, ULONGLONG number) {
    return manager_->DumpData(WSTR("url"), WSTR("token"), WSTR("cert"), number, type, data);
  }

  // Starts Java on a thread of its own that lives until `release` is set: its end is the
  // manager's end. The answers are set and every case is made once before the threads
  // come, so that the JVM's first-use work is not counted against the threads.
  void StartOnStarter() {
    starter_ = std::thread([this] {
      ComApartment apartment;
      const LONG started = Dump(kTypeWithoutMessage, nullptr, 0);
      if (started == S_OK) {
        JavaControl control(*manager_->GetJavaVM());
        control.SetAnswer("onStartup", std::string("policy"));
        control.SetAnswer("onUserLogon", std::string("welcome"));
        control.SetAnswer("onDataCollected", std::string("collect-more"));
        for (const Case& c : MakeCases()) Dump(c.type, c.data.Get(), 1);
        control.ClearCalls();
      }
      std::unique_lock<std::mutex> hold(starterLock_);
      started_ = started;
      starterChanged_.notify_all();
      starterChanged_.wait(hold, [this] { return release_; });
    });
    std::unique_lock<std::mutex> hold(starterLock_);
    starterChanged_.wait(hold, [this] { return started_.has_value(); });
  }
  // Lets the starting thread end, and waits for it.
  void EndStarter() {
    {
      std::lock_guard<std::mutex> hold(starterLock_);
      release_ = true;
    }
    starterChanged_.notify_all();
    starter_.join();
  }

  // Host threads, each cycling through every case from its own place in the list; each
  // call is counted in `progress`. The thread stops after `calls`, and, once it has seen
  // the manager end (when `untilEnd`), after one more round of every case.
  std::vector<Tally> RunHostThreads(int calls, bool untilEnd, std::atomic<long>* progress) {
    std::vector<Tally> tallies(kHostThreads);
    std::vector<std::thread> threads;
    for (int t = 0; t < kHostThreads; ++t) {
      threads.emplace_back([this, t, calls, untilEnd, progress, &tallies] {
        ComApartment apartment;
        Tally& tally = tallies[t];
        {
          const std::vector<Case> cases = MakeCases();
          int afterEnd = -1;
          for (int i = 0; i < calls || (untilEnd && afterEnd < static_cast<int>(cases.size()));
               ++i) {
            const size_t index = (t * 3 + i) % cases.size();
            const bool ended = manager_->GetState() == eStateUninitialized;
            const LONG result = Dump(cases[index].type, cases[index].data.Get(),
                                     static_cast<ULONGLONG>(t) << 32 | i);
            ++tally.results[index][result];
            if (ended) {
              ++tally.afterEnd[result];
              ++afterEnd;
            }
            ++*progress;
          }
        }
        tally.attachedAtExit = IsAttached();
      });
    }
    for (std::thread& thread : threads) thread.join();
    return tallies;
  }

  // Registers and unregisters callbacks under two keys until `stop`. The registry is thus empty,
  // has one key (every answer reaches it) or two (an answer to a third key reaches nobody) as the
  // calls arrive.
  void ChurnCallbacks(const std::atomic<bool>& stop, long* rounds) {
    ComApartment apartment;
    auto first = MakeHostObject<DataDumpInbox>();
    auto second = MakeHostObject<DataDumpInbox>();
    auto stranger = MakeHostObject<DataDumpInbox>();
    CRMICommManagerImpl& manager = *manager_;
    for (*rounds = 0; !stop.load(); ++*rounds) {
      EXPECT_EQ(manager.Register(WSTR("url"), WSTR("a"), nullptr, first.Get()), S_OK);
      EXPECT_EQ(manager.Register(WSTR("url"), WSTR("b"), nullptr, second.Get()), S_OK);
      EXPECT_EQ(manager.Unregister(WSTR("url"), WSTR("b"), nullptr, stranger.Get()), S_OK);
      EXPECT_EQ(manager.Unregister(WSTR("url"), WSTR("b"), nullptr, second.Get()), S_OK);
      std::this_thread::yield();
      EXPECT_EQ(manager.Unregister(WSTR("url"), WSTR("a"), nullptr, first.Get()), S_OK);
    }
  }
  // Every code a thread saw must be one its input allows.
  static void ExpectAllowedCodes(const std::vector<Tally>& tallies,
                                 const std::set<HRESULT>& alsoAllowed) {
    const std::vector<Case> cases = MakeCases();
    for (size_t t = 0; t < tallies.size(); ++t) {
      for (const auto& [index, codes] : tallies[t].results) {
        for (const auto& [code, count] : codes) {
          EXPECT_TRUE(cases[index].allowed.count(code) || alsoAllowed.count(code))
              << "thread " << t << ", " << cases[index].name << ": 0x" << std::hex
              << static_cast<uint32_t>(code) << std::dec << " " << count << " time(s)";
        }
      }
      EXPECT_FALSE(tallies[t].attachedAtExit) << "thread " << t << " ended attached to Java";
    }
  }

  std::unique_ptr<CRMICommManagerImpl> manager_ = std::make_unique<CRMICommManagerImpl>();
  ComPtr<ActionInbox> executor_;
  std::thread starter_;
  std::mutex starterLock_;
  std::condition_variable starterChanged_;
  std::optional<LONG> started_;
  bool release_ = false;
};

TEST_F(ManagerConcurrency, EveryKindOfDataFromManyThreadsWhileCallbacksComeAndGo) {
  const int calls = kCallsPerThread;
  StartOnStarter();
  ASSERT_EQ(started_.value_or(E_UNEXPECTED), S_OK) << Logger().Dump();
  hostsim::JniGlobalReferences(kRuntimeLibrary);  // its own first use makes references
  const long referencesBefore = hostsim::JniGlobalReferences(kRuntimeLibrary);
  ASSERT_GT(referencesBefore, 0);

  std::atomic<long> progress{0};
  std::atomic<bool> stop{false};
  long churnRounds = 0;
  std::thread churn([&] { ChurnCallbacks(stop, &churnRounds); });
  // The stand-ins' call records are emptied as the threads go, or the client's heap fills
  // up with them.
  std::thread janitor([&] {
    RawJava records;
    while (!stop.load()) {
      records.ClearCalls();
      std::this_thread::sleep_for(std::chrono::milliseconds(200));
    }
  });
  const std::vector<Tally> tallies = RunHostThreads(calls, false, &progress);
  stop = true;
  churn.join();
  janitor.join();
  RawJava().ClearCalls();

  ExpectAllowedCodes(tallies, {});
  EXPECT_EQ(progress.load(), long(calls) * kHostThreads);
  EXPECT_GT(churnRounds, 0);
  EXPECT_EQ(manager_->GetState(), eStateInitialized);
  EXPECT_FALSE(executor_->Actions().empty());

  // Nothing the calls made is still held by Java.
  EXPECT_EQ(hostsim::JniGlobalReferences(kRuntimeLibrary), referencesBefore);

  // The starting thread's end is the manager's end, with Java's client disposed of.
  EndStarter();
  EXPECT_EQ(manager_->GetState(), eStateUninitialized);
  EXPECT_LT(hostsim::JniGlobalReferences(kRuntimeLibrary), referencesBefore);
}

TEST_F(ManagerConcurrency, TheStartingThreadEndsWhileOthersAreCalling) {
  const int fewer = kCallsPerThread / 10;
  StartOnStarter();
  ASSERT_EQ(started_.value_or(E_UNEXPECTED), S_OK) << Logger().Dump();
  std::atomic<long> progress{0};
  // The end arrives when the threads are well under way.
  std::thread ender([&] {
    while (progress.load() < long(fewer) * kHostThreads / 4) std::this_thread::yield();
    EndStarter();
  });
  std::vector<Tally> ending = RunHostThreads(fewer, true, &progress);
  ender.join();

  // Before the end, each input answers its own codes; after it, every call is refused.
  ExpectAllowedCodes(ending, {E_FAIL});
  for (size_t t = 0; t < ending.size(); ++t) {
    ASSERT_FALSE(ending[t].afterEnd.empty()) << "thread " << t;
    EXPECT_EQ(ending[t].afterEnd.size(), 1u) << "thread " << t;
    EXPECT_GT(ending[t].afterEnd[E_FAIL], 0) << "thread " << t;
  }
  EXPECT_GT(CountStartingWith(Logger(), U(messages::kRefusedAfterTeardown)), 0u);
  const auto recorded = RawJava().Calls();
  ASSERT_FALSE(recorded.empty());
  EXPECT_EQ(recorded.back(), "dispose()");
}

}  // namespace
}  // namespace tarnix::testing
