// The host simulator: an agent in miniature. It gives the component a host (system
// service with a logger, system information and an action executor; the registry; a
// callback), starts a real message server, and hands the component one piece of data of
// every kind, printing what happened to each. With --soak N it instead makes N sample
// calls and reports the JVM's global references and the process's memory.
#include "HostData.h"
#include "JvmProbe.h"
#include "MessageServerProcess.h"

#include "hostobjects/HostService.h"
#include "hostobjects/MemoryLogger.h"
#include "hostobjects/Receivers.h"
#include "manager/AgentRegistry.h"
#include "platform/WideText.h"
#include "tarnix/RMICommManager.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>

namespace tarnix::hostsim {
namespace {

using namespace tarnix::host;

struct Paths {
  std::string javaHome = HOSTSIM_JAVA_HOME;
  std::string agentJars = HOSTSIM_AGENT_JAR_DIR;
  std::string serverClassPath = HOSTSIM_SERVER_CLASSPATH;
  std::string work;  // the hive, the agent's log and configuration folders
};

std::string Hex(LONG code) {
  char text[16];
  std::snprintf(text, sizeof text, "0x%08X", static_cast<unsigned>(code));
  return text;
}

std::string CodeText(LONG code) {
  switch (static_cast<unsigned>(code)) {
    case 0: return "0x00000000 S_OK";
    case 0x80004005u: return "0x80004005 E_FAIL";
    case 0x800713ABu: return "0x800713AB network unavailable";
    default: return Hex(code);
  }
}

std::string Shortened(const std::string& text, size_t most = 480) {
  return text.size() <= most ? text : text.substr(0, most) + " ...";
}

// The registry the component reads, as a .reg file: the agent's Java settings and the
// message server (the legacy value: URL | second value | certificate).
std::string WriteHive(const Paths& paths, const std::string& url) {
  const auto quoted = [](std::string text) {
    std::string out;
    for (char c : text) {
      if (c == '\\' || c == '"') out += '\\';
      out += c;
    }
    return '"' + out + '"';
  };
  const std::string hive = paths.work + "/registry.reg";
  std::ofstream file(hive);
  file << "Windows Registry Editor Version 5.00\r\n\r\n"
       << "[HKEY_LOCAL_MACHINE\\" << WideToUtf8(AgentKeyPath()) << "]\r\n"
       << "\"JrePath\"=" << quoted(paths.javaHome) << "\r\n"
       << "\"ClassPath\"=" << quoted(paths.agentJars) << "\r\n"
       << "\"LogDirectory\"=" << quoted(paths.work + "/logs") << "\r\n"
       << "\"ConfigDirectory\"=" << quoted(paths.work + "/config") << "\r\n\r\n"
       << "[HKEY_LOCAL_MACHINE\\Software\\Corvane, Inc.\\Corvane Palisade\\Node Manager]\r\n"
       << "\"Zelmar Server URL\"=" << quoted(url + "|agent-token-5f3a|MIIBdemoCertificate")
       << "\r\n";
  return hive;
}

struct ServerInfo {
  WString url, second, certificate;
};

// Where the message server is, asked of the component as the agent asks it.
bool LoadServerInfo(ServerInfo* info) {
  VARIANT config;
  VariantInit(&config);
  WCHAR* url = nullptr;
  WCHAR* second = nullptr;
  WCHAR* certificate = nullptr;
  const LONG hr = CRMIConfigLoader::GetServerInfo(config, &url, &second, &certificate);
  if (hr >= 0)
    *info = {url ? url : WSTR(""), second ? second : WSTR(""),
             certificate ? certificate : WSTR("")};
  SysFreeString(url);
  SysFreeString(second);
  SysFreeString(certificate);
  return hr >= 0;
}

class Demo {
 public:
  explicit Demo(Paths paths) : paths_(std::move(paths)) {}

  int Run(long soakCalls, unsigned char soakType);

 private:
  bool StartServer(int port);
  bool SetUpHost();
  LONG Dump(unsigned char type, const char* name, ULONGLONG number, IUnknown* data,
            const char* what);
  void PrintNewLogLines();
  std::string WithoutRepeatedConnection(const std::string& call);
  int Soak(long calls, unsigned char type);

  Paths paths_;
  ComApartment apartment_;
  HostServiceRegistration service_;
  ComPtr<MemoryLogger> logger_ = MakeHostObject<MemoryLogger>();
  ComPtr<SystemInformation> system_ = MakeHostObject<SystemInformation>();
  ComPtr<ActionInbox> executor_ = MakeHostObject<ActionInbox>();
  ComPtr<DataDumpInbox> callback_ = MakeHostObject<DataDumpInbox>();
  ComPtr<SessionSource> sessions_ = MakeSessions();
  std::unique_ptr<MessageServerProcess> server_;
  ServerInfo info_;
  size_t logSeen_ = 0;
  std::string connectionShown_;
};

bool Demo::StartServer(int port) {
  MessageServerOptions options;
  options.java = paths_.javaHome + "/bin/java";
  options.classPath = paths_.serverClassPath;
  options.port = port;
  options.answers = {
      {"onStartup", "<policy version=\"12\"><collect interval=\"60\"/></policy>"},
      {"onUserLogon", "<policy version=\"12\" scope=\"session\"/>"},
      {"onDataCollected", "<actions><refreshNetworkInfo/></actions>"},
      {"onExtendedDataCollected", "<actions/>"},
      {"onDesktopPoll", "<actions><traceRoute target=\"msgserver.corp.example\"/></actions>"},
      {"onActionPerformed", "<ack/>"},
  };
  server_.reset();
  server_ = std::make_unique<MessageServerProcess>(options);
  if (!server_->Running()) {
    std::printf("The message server did not start: %s\n", server_->Failure().c_str());
    return false;
  }
  std::printf("Message server listening at %s (pid of its own, 127.0.0.1 only)\n",
              server_->Url().c_str());
  return true;
}

bool Demo::SetUpHost() {
  service_.Offers().Offer(IID_IHostLogger, logger_, ServiceRoute::Both);
  service_.Offers().Offer(IID_ISystemInfo, system_, ServiceRoute::Both);
  service_.Offers().Offer(IID_IHostActionExecutor, executor_, ServiceRoute::Both);
  service_.Offers().Offer(IID_IHostSessionSource, sessions_, ServiceRoute::Both);
  DescribeDesktop(*system_.Get());
  std::filesystem::create_directories(paths_.work + "/logs");
  std::filesystem::create_directories(paths_.work + "/config");
  const std::string hive = WriteHive(paths_, server_->Url());
  setenv(posix::kRegistryFileVariable, hive.c_str(), 1);
  posix::ReloadRegistry();
  std::printf("Registry hive:  %s (TARNIX_RMI_REGISTRY)\n", hive.c_str());
  if (!LoadServerInfo(&info_)) {
    std::printf("CRMIConfigLoader::GetServerInfo found no message server\n");
    return false;
  }
  std::printf("Server info:    url=%s  second=%s\n\n", WideToUtf8(info_.url).c_str(),
              WideToUtf8(info_.second).c_str());
  CRMICommManager::GetInstance().RegisterDataDumpCallback(
      info_.url.c_str(), info_.second.c_str(), info_.certificate.c_str(), callback_.Get());
  return true;
}

void Demo::PrintNewLogLines() {
  const std::vector<LogLine> lines = logger_->Lines();
  for (; logSeen_ < lines.size(); ++logSeen_) {
    const LogLine& line = lines[logSeen_];
    if (line.operation == LogOperation::Level || line.operation == LogOperation::Info) continue;
    // The first line; a Java stack trace follows it in the host's log.
    const std::string message = WideToUtf8(line.message);
    const size_t end = message.find_first_of("\r\n");
    std::printf("   log     %s: %s%s\n", OperationName(line.operation),
                Shortened(message.substr(0, end), 300).c_str(),
                end == std::string::npos ? "" : " [stack trace follows in the log]");
  }
}

// Every call names the machine the same way; after the first time it is shown as "...".
std::string Demo::WithoutRepeatedConnection(const std::string& call) {
  const std::string name = "DesktopConnection{";
  const size_t start = call.find(name);
  const size_t end = start == std::string::npos ? start : call.find('}', start);
  if (end == std::string::npos) return call;
  const std::string connection = call.substr(start, end + 1 - start);
  if (connectionShown_ != connection) {
    connectionShown_ = connection;
    return call;
  }
  return call.substr(0, start) + name + "...}" + call.substr(end + 1);
}

LONG Demo::Dump(unsigned char type, const char* name, ULONGLONG number, IUnknown* data,
                const char* what) {
  std::printf("== %s (%u), number 0x%llX: %s\n", name, static_cast<unsigned>(type),
              static_cast<unsigned long long>(number), what);
  if (server_ && server_->Running()) server_->ClearReceived();
  const size_t answers = callback_->Answers().size();
  const size_t actions = executor_->Actions().size();
  const LONG result = CRMICommManager::GetInstance().DumpData(
      info_.url.c_str(), info_.second.c_str(), info_.certificate.c_str(), number, type, data);
  std::printf("   result  %s\n", CodeText(result).c_str());
  if (server_ && server_->Running()) {
    const std::vector<std::string> received = server_->Received();
    if (received.empty()) std::printf("   server  received nothing\n");
    for (const std::string& call : received) {
      std::printf("   server  %s\n", Shortened(WithoutRepeatedConnection(call)).c_str());
    }
  } else {
    std::printf("   server  (stopped)\n");
  }
  const std::vector<DumpedAnswer> delivered = callback_->Answers();
  for (size_t i = answers; i < delivered.size(); ++i) {
    std::printf("   answer  to the host's callback: %s\n", WideToUtf8(delivered[i].text).c_str());
  }
  const std::vector<ExecutedAction> executed = executor_->Actions();
  for (size_t i = actions; i < executed.size(); ++i) {
    std::printf("   answer  to the host's action executor: %s\n",
                WideToUtf8(executed[i].text).c_str());
  }
  if (answers == delivered.size() && actions == executed.size()) {
    std::printf("   answer  none for the host\n");
  }
  PrintNewLogLines();
  std::printf("\n");
  return result;
}

int Demo::Run(long soakCalls, unsigned char soakType) {
  if (!StartServer(0) || !SetUpHost()) return 1;
  if (soakCalls > 0) return Soak(soakCalls, soakType);
  int failures = 0;
  const auto expect = [&failures](bool ok) { failures += ok ? 0 : 1; };

  expect(Dump(eStartup, "eStartup", 0, nullptr, "the agent starts and describes itself") >= 0);
  ComPtr<UserSession> anna = MakeSession(1);
  expect(Dump(eUserSessionLogon, "eUserSessionLogon", 0x8000000000000001ull, anna.Get(),
              "anna.berg logs on; the desktop has two network adapters") >= 0);
  ComPtr<IUnknown> sample = MakeSample();
  expect(Dump(eSample, "eSample", 9, sample.Get(),
              "a sample of three sessions with metrics and published applications") >= 0);
  ComPtr<IUnknown> extended = MakeExtendedData();
  expect(Dump(eExtendedData, "eExtendedData", 7, extended.Get(), "extended GPU metrics") >= 0);
  ComPtr<IUnknown> route = MakeTraceRoute();
  expect(Dump(eTraceRoute, "eTraceRoute", 10, route.Get(), "a trace route to the message server") >=
         0);
  expect(Dump(eDesktopPoll, "eDesktopPoll", 255, nullptr, "the server's poll of the desktop") >= 0);
  ComPtr<UserSession> li = MakeSession(2);
  expect(Dump(eUserSessionRefresh, "eUserSessionRefresh", 3, li.Get(),
              "li.wei's session refreshed") >= 0);
  expect(Dump(eUserSessionDisconnect, "eUserSessionDisconnect", 5, li.Get(),
              "li.wei's client disconnects") >= 0);
  expect(Dump(eUserSessionReconnect, "eUserSessionReconnect", 4, li.Get(),
              "li.wei's client reconnects") >= 0);
  ComPtr<IUnknown> logoff = MakeLogoff(3);
  expect(Dump(eUserSessionLogoff, "eUserSessionLogoff", 2, logoff.Get(),
              "omar.haddad logs off with his last sample") >= 0);
  expect(Dump(eUserSessionStart, "eUserSessionStart", 0, anna.Get(),
              "a session starts (nothing is sent)") >= 0);
  expect(Dump(eUserSessionEnd, "eUserSessionEnd", 6, anna.Get(),
              "a session ends (nothing is sent)") >= 0);

  const int port = server_->Port();
  std::printf("-- Stopping the message server.\n\n");
  server_->Stop();
  expect(Dump(eStartup, "eStartup", 0, nullptr, "with the message server down") ==
         static_cast<LONG>(0x800713AB));
  std::printf("-- Restarting the message server on port %d.\n", port);
  if (!StartServer(port)) return 1;
  std::printf("\n");
  expect(Dump(eStartup, "eStartup", 0, nullptr, "the same host, the server back") >= 0);

  CRMICommManager::GetInstance().UnregisterDataDumpCallback(
      info_.url.c_str(), info_.second.c_str(), info_.certificate.c_str(), callback_.Get());
  server_->Stop();
  std::printf("%s\n", failures == 0 ? "Demo finished: every call behaved as expected."
                                    : "Demo finished with unexpected results.");
  return failures == 0 ? 0 : 1;
}

int Demo::Soak(long calls, unsigned char type) {
  const std::string runtime = paths_.javaHome + "/lib/server/libjvm.so";
  const auto sample = [type] { return type == eSample ? MakeSample() : ComPtr<IUnknown>(); };
  const auto dump = [&](IUnknown* data) {
    return CRMICommManager::GetInstance().DumpData(info_.url.c_str(), info_.second.c_str(),
                                                   info_.certificate.c_str(), type, type, data);
  };
  // The host's receivers keep the answers they get; without answers the soak
  // measures the component, not them.
  for (const char* method : {"onStartup", "onUserLogon", "onDataCollected",
                             "onExtendedDataCollected", "onDesktopPoll", "onActionPerformed"}) {
    server_->ClearAnswer(method);
  }
  for (int i = 0; i < 200; ++i) dump(sample().Get());
  server_->ClearReceived();
  const long refsBefore = JniGlobalReferences(runtime);
  const long rssBefore = ResidentKilobytes();
  std::printf("soak: %ld calls of type %u; before: %ld JNI global refs, %ld kB resident\n", calls,
              static_cast<unsigned>(type), refsBefore, rssBefore);
  const auto start = std::chrono::steady_clock::now();
  long failed = 0;
  for (long i = 1; i <= calls; ++i) {
    if (dump(sample().Get()) < 0) ++failed;
    if (i % 1000 == 0) {
      logger_->Clear();
      server_->ClearReceived();
    }
    if (i % (calls / 10 > 0 ? calls / 10 : 1) == 0) {
      std::printf("soak: %7ld calls  %ld JNI global refs  %ld kB resident\n", i,
                  JniGlobalReferences(runtime), ResidentKilobytes());
      std::fflush(stdout);
    }
  }
  const double seconds =
      std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  std::printf(
      "soak: after: %ld JNI global refs, %ld kB resident; %ld failed; %.1f s, %.1f us/call\n",
      JniGlobalReferences(runtime), ResidentKilobytes(), failed, seconds,
      seconds * 1e6 / static_cast<double>(calls));
  server_->Stop();
  return failed == 0 ? 0 : 1;
}

}  // namespace
}  // namespace tarnix::hostsim

int main(int argc, char** argv) {
  tarnix::hostsim::Paths paths;
  long soak = 0;
  unsigned char soakType = eSample;
  for (int i = 1; i < argc; ++i) {
    if (!std::strcmp(argv[i], "--soak") && i + 1 < argc)
      soak = std::atol(argv[++i]);
    else if (!std::strcmp(argv[i], "--work") && i + 1 < argc)
      paths.work = argv[++i];
    else if (!std::strcmp(argv[i], "--soak-startup"))
      soakType = eStartup;
    else {
      std::fprintf(stderr, "usage: %s [--work DIR] [--soak CALLS [--soak-startup]]\n", argv[0]);
      return 2;
    }
  }
  if (paths.work.empty()) {
    char pattern[] = "/tmp/tarnix-hostsim-XXXXXX";
    paths.work = mkdtemp(pattern) ? pattern : "/tmp";
  }
  setvbuf(stdout, nullptr, _IOLBF, 0);
  std::printf("tarnix-rmi host simulator\n  JDK:        %s\n  agent jars: %s\n  work:       %s\n\n",
              paths.javaHome.c_str(), paths.agentJars.c_str(), paths.work.c_str());
  tarnix::hostsim::Demo demo(paths);
  return demo.Run(soak, soakType);
}
