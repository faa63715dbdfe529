// Every host call a DumpData of each type makes, failed once in turn: each failure ends in
// the result and the log line the component promises for it, and leaves the host's
// references, the Java thread and the JVM's global references as they were.
#include <gtest/gtest.h>

#include <chrono>
#include <map>
#include <tuple>
#include <memory>
#include <thread>

#include "HostData.h"
#include "JvmHost.h"
#include "JvmProbe.h"
#include "JvmTestSupport.h"
#include "fixtures/FakeCallbacks.h"
#include "fixtures/FakeDataObjects.h"
#include "fixtures/FaultPlan.h"
#include "tarnix/DataType.h"

namespace tarnix::testing {
namespace {

// A host failure code that no step of the component produces itself.
const HRESULT kHostFault = static_cast<HRESULT>(0x80070015);
const std::string kHostSuffix = "  Error code 0x80070015";
const std::string kJoinedHostSuffix = "Error code 0x80070015";

// ---- The host's data for each type (the demo's), made anew for every call.

ComPtr<IUnknown> NoData() { return nullptr; }
ComPtr<IUnknown> SessionData() { return AsUnknown(hostsim::MakeSession(1)); }
ComPtr<IUnknown> LogoffData() { return hostsim::MakeLogoff(2); }

struct Kind {
  unsigned char type;
  const char* name;
  ComPtr<IUnknown> (*data)();
};

const Kind kKinds[] = {
    {eStartup, "Startup", NoData},
    {eDesktopPoll, "DesktopPoll", NoData},
    {eSample, "Sample", hostsim::MakeSample},
    {eExtendedData, "ExtendedData", hostsim::MakeExtendedData},
    {eTraceRoute, "TraceRoute", hostsim::MakeTraceRoute},
    {eUserSessionLogon, "Logon", SessionData},
    {eUserSessionRefresh, "Refresh", SessionData},
    {eUserSessionReconnect, "Reconnect", SessionData},
    {eUserSessionDisconnect, "Disconnect", SessionData},
    {eUserSessionLogoff, "Logoff", LogoffData},
    {eUserSessionStart, "Start", SessionData},
    {eUserSessionEnd, "End", SessionData},
};

// ---- What a failing host call does, as the component promises it.

enum class Outcome { AsClean, HostCode, Fail, InvalidArgument };

struct Expected {
  Outcome outcome = Outcome::AsClean;
  std::string line;  // the start of a line that must be logged; empty when none is
};

bool IsSessionEvent(unsigned char type) { return type <= eUserSessionEnd; }

// The types whose answer from the message server reaches the host and decides the result.
bool AnswerIsHandled(unsigned char type) {
  return type == eStartup || type == eUserSessionLogon || type == eSample ||
         type == eExtendedData || type == eDesktopPoll;
}

// What the host system service made by the call at `index` was asked for next.
bool ServiceIsForActions(const std::vector<std::string>& calls, size_t index) {
  for (size_t i = index + 1; i < calls.size(); ++i) {
    if (calls[i].find("IHostActionExecutor") != std::string::npos) return true;
    if (calls[i].find("IHostSessionSource") != std::string::npos) return false;
  }
  return false;
}

Expected Identity(const std::string& call, unsigned char type) {
  if (call == "ISystemInfo::Refresh") {
    return {Outcome::AsClean,
            "Failed to refresh system info in function long __cdecl "
            "CRMICommManagerImpl::DumpData<struct IUnknown>(const wchar_t *,const wchar_t *,const "
            "wchar_t *,unsigned __int64,unsigned char,struct IUnknown *)" +
                kHostSuffix};
  }
  static const std::map<std::string, std::string> kIdentifiers = {
      {"ISystemInfo::get_machineId", "machine id"},
      {"ISystemInfo::get_virtualMachineId", "virtual machine id"},
      {"ISystemInfo::get_uniqueId", "machine unique id"}};
  if (const auto found = kIdentifiers.find(call); found != kIdentifiers.end()) {
    return {Outcome::HostCode, "Failed to get " + found->second + kHostSuffix};
  }
  // Logged and passed over, but the call answers its code when no answer decides it.
  return {AnswerIsHandled(type) ? Outcome::AsClean : Outcome::HostCode,
          "Failed to get_componentsIdentities" + kHostSuffix};
}

Expected Sample(const std::string& call, unsigned char type) {
  if (call == "IHostSample::get_time") {
    return {Outcome::Fail, "Failed to get time from sample" + kHostSuffix};
  }
  if (call == "IHostSample::get_instances") {
    return {Outcome::Fail, "Failed to get instances from sample" + kHostSuffix};
  }
  if (call == "IHostSample::get_metrics") {
    return {Outcome::AsClean, "Failed to get metrics from sample" + kHostSuffix};
  }
  if (call == "IHostSample::get_collection") {
    return {Outcome::AsClean, "Failed to get instances from sample" + kHostSuffix};
  }
  // QueryInterface(IHostSample): a logoff goes without its last sample.
  if (type == eUserSessionLogoff)
    return {Outcome::AsClean, "Failed to retrieve the sample at log off."};
  return {Outcome::Fail, ""};
}

Expected UserSession(const std::string& call, unsigned char type) {
  if (call == "IHostUserSession::get_propertyBox") {
    return {Outcome::AsClean, "Failed to get property box" + kJoinedHostSuffix};
  }
  if (call == "IHostPropertyBox::get_enumerator") {
    return {Outcome::AsClean, "Failed to get enumerator from property box" + kJoinedHostSuffix};
  }
  // The session itself (or its identity) is missing: a sample leaves that instance out,
  // a session event has nothing to send.
  return {IsSessionEvent(type) ? Outcome::Fail : Outcome::AsClean, ""};
}

Expected NamedValues(const std::string& call, int occurrence, unsigned char type) {
  if (call == "IHostNamedValues::get_Item(Verdant)") return {};
  if (call == "IHostNamedValues::get_Item(meta-data)" ||
      call == "IHostNamedValues::get_Item(metrics)") {
    return {Outcome::HostCode, ""};
  }
  if (call == "IHostNamedValues::get_Item(metadata)") {
    return {Outcome::HostCode,
            "Failed to handle metadata property for traceroute msg" + kHostSuffix};
  }
  if (call == "IHostNamedValues::get_Item(route)") {
    return {Outcome::HostCode, "Failed to handle route property for traceroute msg" + kHostSuffix};
  }
  // The data itself (first query) or the attributes of its item.
  const bool attributes = call == "IHostNamedValues::get_Enumerator" || occurrence > 0;
  return {Outcome::Fail,
          type == eTraceRoute && attributes ? "Failed to GetMetadata for traceroute msg" : ""};
}

Expected ExpectedFor(const std::string& call, int occurrence, unsigned char type,
                     const std::vector<std::string>& calls, size_t index) {
  const auto starts = [&](const char* prefix) { return call.rfind(prefix, 0) == 0; };
  if (call == "ISystemInfo::Refresh" || call == "ISystemInfo::get_machineId" ||
      call == "ISystemInfo::get_virtualMachineId" || call == "ISystemInfo::get_uniqueId" ||
      call == "ISystemInfo::get_componentsIdentities") {
    return Identity(call, type);
  }
  if (call == "ISystemInfo::get_networkInterfaces") {
    return {Outcome::InvalidArgument,
            "Failed to get_networkInterfaces in function class std::shared_ptr<class CJavaObject> "
            "__cdecl CJNIConvertor::GetDesktop(class std::shared_ptr<class CJavaVM>,struct "
            "ISystemInfo *)" +
                kHostSuffix};
  }
  // Values whose failure leaves a default: the machine's name, its domain name, memory
  // and kind, a session the source does not know, the end of an enumeration, an answer
  // the host's callback did not take.
  if (starts("ISystemInfo::") || call == "IHostSessionSource::GetSession" ||
      call == "IHostEnumerator::Next" || call == "IHostSampleEnumerator::Next" ||
      call == "IDataDumpCallback::OnDataDumped") {
    return {};
  }
  if (starts("IHostSample::") || call == "QueryInterface(IHostSample)") return Sample(call, type);
  if (starts("IHostUserSession::") || starts("IHostPropertyBox::") ||
      call == "QueryInterface(IHostUserSession)") {
    return UserSession(call, type);
  }
  if (starts("IHostNamedValues::") || call == "QueryInterface(IHostNamedValues)") {
    return NamedValues(call, occurrence, type);
  }
  // An extended-data item that is no enumerator: the sample goes without its metrics.
  if (call == "QueryInterface(IHostEnumerator)") {
    return {Outcome::AsClean, occurrence == 0 ? "Failed to get extended metrics." : ""};
  }
  // The system service: without it there is no session source (the sample goes without
  // sessions) and no action executor; a service that will not answer a query directly
  // still gives the interface through GetService.
  if (call == "IClassFactory::CreateInstance" || call == "QueryInterface(IClassFactory)") {
    if (!ServiceIsForActions(calls, index)) return {};
    return {Outcome::HostCode, "Failed to get action executor" + kJoinedHostSuffix};
  }
  if (call == "QueryInterface(IHostSessionSource)" ||
      call == "QueryInterface(IHostActionExecutor)") {
    return {};
  }
  if (call == "IHostActionExecutor::ExecuteAction") {
    return {Outcome::HostCode, "Failed to execute action" + kJoinedHostSuffix};
  }
  ADD_FAILURE() << "nothing says what a failing " << call << " does";
  return {};
}

// ---- The walk.

struct DumpRun {
  HRESULT result = S_OK;
  std::vector<std::string> calls;
  std::string failed;
};

class FaultInjection : public ManagerJvmTest, public ::testing::WithParamInterface<Kind> {
 protected:
  FaultInjection() {
    identities_->SetText(W("Verdant"), W("verdant-42"));
    SystemInfo().SetComponentsIdentities(ComPtr<IHostNamedValues>(identities_.Get()));
    Service().Offer(IID_IHostSessionSource, hostsim::MakeSessions(), ServiceRoute::Both);
    Service().Offer(IID_IHostActionExecutor, executor_, ServiceRoute::Both);
  }

  void SetUp() override {
    ASSERT_EQ(manager_->Initialize(), S_OK) << Logger().Dump();
    manager_->Register(WSTR("url"), kAuthToken, kCertificate, callback_.Get());
    JavaControl java(*manager_->GetJavaVM());
    for (const char* method : {"onStartup", "onUserLogon", "onDataCollected",
                               "onExtendedDataCollected", "onDesktopPoll", "onActionPerformed"}) {
      java.SetAnswer(method, std::string("answer"));
    }
  }

  void TearDown() override {
    manager_->Unregister(WSTR("url"), kAuthToken, kCertificate, callback_.Get());
    manager_.reset();
    identities_.Reset();
    executor_.Reset();
    callback_.Reset();
    ManagerJvmTest::TearDown();
  }

  // One DumpData with host call `failAt` failing (0: none), checked for what every run
  // must leave behind.
  DumpRun DumpFailing(int failAt) {
    const ReferenceSnapshot held;
    DumpRun run;
    {
      const ReferenceBalance made;
      ComPtr<IUnknown> data = GetParam().data();
      Logger().Clear();
      {
        const FaultPlan plan(failAt, kHostFault);
        run.result = Dump(GetParam().type, data.Get());
        run.calls = plan.Calls();
        run.failed = plan.Failed();
      }
    }
    EXPECT_EQ(held.Changes(), "") << "references of the host's lasting objects changed";
    EXPECT_FALSE(manager_->GetJavaVM()->GetEnv()->ExceptionCheck());
    manager_->GetJavaVM()->GetEnv()->ExceptionClear();
    return run;
  }

  static long GlobalReferences() {
    return hostsim::JniGlobalReferences(MANAGER_TEST_JAVA_HOME "/lib/server/libjvm.so");
  }
  // The JVM takes global references of its own for a moment now and then (while it
  // compiles); one the component kept is still there a while later.
  static long GlobalReferencesSettlingAt(long expected) {
    long count = GlobalReferences();
    for (int tries = 0; count != expected && tries < 20; ++tries) {
      std::this_thread::sleep_for(std::chrono::milliseconds(25));
      count = GlobalReferences();
    }
    return count;
  }

  ComPtr<FakeNamedValues> identities_ = MakeHostObject<FakeNamedValues>();
  ComPtr<ActionInbox> executor_ = MakeHostObject<ActionInbox>();
  ComPtr<DataDumpInbox> callback_ = MakeHostObject<DataDumpInbox>();
};

TEST_P(FaultInjection, EveryHostCallFailingOnceEndsAsPromised) {
  const DumpRun clean = DumpFailing(0);
  ASSERT_EQ(clean.result, S_OK) << Logger().Dump();
  EXPECT_TRUE(Logger().Messages(LogOperation::Error).empty()) << Logger().Dump();
  const long references = GlobalReferences();
  ASSERT_GT(references, 0);

  std::map<std::string, int> occurrences;
  for (size_t index = 0; index < clean.calls.size(); ++index) {
    const std::string& call = clean.calls[index];
    const int occurrence = occurrences[call]++;
    SCOPED_TRACE("host call " + std::to_string(index + 1) + " of " +
                 std::to_string(clean.calls.size()) + ": " + call);
    const Expected expected = ExpectedFor(call, occurrence, GetParam().type, clean.calls, index);
    const DumpRun run = DumpFailing(static_cast<int>(index + 1));
    ASSERT_EQ(run.failed, call) << "the calls before the failing one changed";

    const HRESULT results[] = {clean.result, kHostFault, E_FAIL, static_cast<HRESULT>(0x80070057)};
    EXPECT_EQ(static_cast<uint32_t>(run.result),
              static_cast<uint32_t>(results[static_cast<int>(expected.outcome)]))
        << Logger().Dump();
    if (!expected.line.empty()) {
      EXPECT_EQ(CountStartingWith(Logger(), expected.line), 1u) << Logger().Dump();
    }
    EXPECT_EQ(GlobalReferencesSettlingAt(references), references);
  }
  RecordProperty("host_calls", static_cast<int>(clean.calls.size()));
}

INSTANTIATE_TEST_SUITE_P(EveryType, FaultInjection, ::testing::ValuesIn(kKinds),
                         [](const ::testing::TestParamInfo<Kind>& info) {
                           return std::string(info.param.name);
                         });

// ---- Each kind of failure the Java client can throw at the component.

using JavaClientFailures = ManagerJvmTest;

TEST_F(JavaClientFailures, EachKindBecomesItsResultAndSendLine) {
  ASSERT_EQ(manager_->Initialize(), S_OK) << Logger().Dump();
  JavaControl java(*manager_->GetJavaVM());
  const HRESULT network = static_cast<HRESULT>(0x800713AB);
  const struct {
    const char* exception;
    const char* message;
    HRESULT result;
  } kinds[] = {
      // Which texts are the connection's is the remote failure text suite's; here, that
      // either kind, an Error as well as an Exception, reaches the host as its code and line.
      {"java.rmi.ConnectException", "Connection refused to host: 127.0.0.1", network},
      {"javax.naming.CommunicationException", "com.sun.jndi.url.rmi.rmiURLContext: refused",
       network},
      {"java.io.IOException", "stream closed", E_FAIL},
      {"java.lang.OutOfMemoryError", "Java heap space", E_FAIL},
  };
  const ComPtr<IUnknown> session = SessionData();
  for (const auto& kind : kinds) {
    SCOPED_TRACE(kind.exception);
    const std::string thrown = std::string(kind.exception) + ": " + kind.message;
    java.ThrowIn("DesktopMessageClient.onStartup", kind.exception, kind.message);
    java.ThrowIn("DesktopMessageClient.onUserDisconnect", kind.exception, kind.message);
    Logger().Clear();
    EXPECT_EQ(Dump(eStartup), kind.result);
    EXPECT_EQ(Dump(eUserSessionDisconnect, session.Get()), kind.result);
    EXPECT_FALSE(manager_->GetJavaVM()->GetEnv()->ExceptionCheck());
    ExpectErrors(Logger(), {"Failed to send data with type eStartup to the message server.  " +
                                thrown + "\r\n\t",
                            "Failed to send user event eUserSessionDisconnect for user anna.berg "
                            "to the message server.  " +
                                thrown + "\r\n\t"});
  }

  // No answer at all is no failure.
  java.ClearFaults();
  java.SetAnswer("onStartup", std::nullopt);
  Logger().Clear();
  EXPECT_EQ(Dump(eStartup), S_OK);
  EXPECT_TRUE(Logger().Messages(LogOperation::Error).empty()) << Logger().Dump();
}

// The thread that started Java never returns to it, so nothing but the component drops
// what a call leaves in its frame: here the JVM's own handles to objects whose
// constructors threw. Many such calls leave its local references as they were.
TEST_F(JavaClientFailures, ConstructorsThatThrowLeaveTheStartingThreadsReferencesAsTheyWere) {
  ASSERT_EQ(manager_->Initialize(), S_OK) << Logger().Dump();
  JavaControl java(*manager_->GetJavaVM());
  const auto locals = [] {
    return hostsim::JniLocalReferencesOfThisThread(MANAGER_TEST_JAVA_HOME "/lib/server/libjvm.so");
  };
  const struct {
    const char* place;
    unsigned char type;
    ComPtr<IUnknown> (*data)();
  } failures[] = {
      {"DesktopConnection.<init>", eStartup, NoData},
      {"BaseSample.<init>", eSample, hostsim::MakeSample},
      {"BaseUserSession.<init>", eUserSessionLogon, SessionData},
      {"DesktopInformation.<init>", eUserSessionLogon, SessionData},
      {"NetworkInterface.<init>", eDesktopPoll, NoData},
      {"BaseRemoteApp.<init>", eUserSessionLogoff, LogoffData},
  };
  const long before = locals();
  ASSERT_GT(before, 0);
  for (const auto& failure : failures) {
    SCOPED_TRACE(failure.place);
    java.ClearFaults();
    java.ThrowIn(failure.place, "java.lang.IllegalStateException", "refused");
    for (int call = 0; call < 20; ++call) {
      const ComPtr<IUnknown> data = failure.data();
      Dump(failure.type, data.Get());
    }
    EXPECT_FALSE(manager_->GetJavaVM()->GetEnv()->ExceptionCheck());
    EXPECT_EQ(locals(), before);
  }
}

}  // namespace
}  // namespace tarnix::testing
