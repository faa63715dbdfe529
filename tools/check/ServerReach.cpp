// Check 6: does the message server answer? A plain connection with a deadline first (the
// RMI client itself waits as long as the system lets a connect take), then a lookup of the
// URL through java.rmi.Naming with the RMI response timeout set. Nothing the agent would
// send is sent: a lookup only asks the server's registry for the name.
#include "CheckText.h"
#include "Checks.h"

#include "jni/JavaObject.h"
#include "jni/JavaVM.h"
#include "jni/LocalRef.h"
#include "manager/JavaStartup.h"

namespace tarnix::check {
namespace {

constexpr MethodEntry kSocketMethods[] = {
    {"ctor()", "<init>", "()V"},
    {"connect", "connect", "(Ljava/net/SocketAddress;I)V"},
    {"close", "close", "()V"},
};
constexpr MethodEntry kSocketAddressMethods[] = {
    {"ctor(host,port)", "<init>", "(Ljava/lang/String;I)V"},
};
struct Socket {
  static constexpr auto ctor = ConstructorOf<void()>(kSocketMethods, "ctor()");
  static constexpr auto connect = MethodOf<void(jobject, jint)>(kSocketMethods, "connect");
  static constexpr auto close = MethodOf<void()>(kSocketMethods, "close");
};
struct SocketAddress {
  static constexpr auto ctorHostPort =
      ConstructorOf<void(jstring, jint)>(kSocketAddressMethods, "ctor(host,port)");
};

struct ServerAddress {
  WString host;
  int port = 1099;
};

// Host and port as java.rmi.Naming reads an URL: "[rmi:]//host[:port]/name", the local
// host and the registry's own port when they are left out.
ServerAddress ParseAddress(const WString& url) {
  ServerAddress address;
  size_t start = url.rfind(WSTR("rmi:"), 0) == 0 ? 4 : 0;
  if (url.compare(start, 2, WSTR("//")) == 0) start += 2;
  const size_t end = url.find_first_of(WSTR(":/"), start);
  address.host = url.substr(start, end == WString::npos ? WString::npos : end - start);
  if (address.host.empty()) address.host = WSTR("localhost");
  if (end != WString::npos && url[end] == ':') {
    int port = 0;
    for (size_t i = end + 1; i < url.size() && url[i] >= '0' && url[i] <= '9'; ++i) {
      port = port * 10 + (url[i] - '0');
      if (port > 65535) break;
    }
    address.port = port;
  }
  return address;
}

// Takes the pending exception into *failure; always false.
bool Thrown(CJavaVM& machine, std::string* failure) {
  *failure = FirstLine(machine.TakeException().value_or(WString()));
  return false;
}

// False, with the exception's first line in *failure, when the connection is not made.
bool Connect(CJavaVM& machine, const ServerAddress& address, int timeoutMs, std::string* failure) {
  const auto socketClass = machine.LoadClass("java/net/Socket", kSocketMethods);
  if (!socketClass) return Thrown(machine, failure);
  const auto addressClass = machine.LoadClass("java/net/InetSocketAddress", kSocketAddressMethods);
  if (!addressClass) return Thrown(machine, failure);
  const auto host = machine.NewLocalString(address.host);
  if (!host) return Thrown(machine, failure);
  const auto target =
      addressClass->NewLocalObject(SocketAddress::ctorHostPort, *host, address.port);
  if (!target) return Thrown(machine, failure);
  const auto socket = socketClass->NewLocalObject(Socket::ctor);
  if (!socket) return Thrown(machine, failure);
  socket->CallVoidMethod(Socket::connect, *target, timeoutMs);
  const WString connectFailure = machine.TakeException().value_or(WString());
  socket->CallVoidMethod(Socket::close);
  machine.TakeException();
  if (connectFailure.empty()) return true;
  *failure = FirstLine(connectFailure);
  return false;
}

// Calls a static method that takes text arguments and answers an object (dropped at
// once). False, with the exception's first line in *failure, when it throws.
bool CallStatic(CJavaVM& machine, const char* className, const char* method, const char* signature,
                std::initializer_list<WString> arguments, std::string* failure) {
  JNIEnv* env = machine.GetEnv();
  const LocalRef<jclass> javaClass(env, env->FindClass(className));
  if (!javaClass) return Thrown(machine, failure);
  const jmethodID id = env->GetStaticMethodID(javaClass.Get(), method, signature);
  if (!id) return Thrown(machine, failure);
  std::vector<CJavaString> texts;
  std::vector<jvalue> values;
  for (const WString& argument : arguments) {
    std::optional<CJavaString> text = machine.NewLocalString(argument);
    if (!text) return Thrown(machine, failure);
    texts.push_back(std::move(*text));
    values.emplace_back();
    values.back().l = texts.back().Get();
  }
  const LocalRef<jobject> answer(env,
                                 env->CallStaticObjectMethodA(javaClass.Get(), id, values.data()));
  return env->ExceptionCheck() ? Thrown(machine, failure) : true;
}

bool LookUp(CJavaVM& machine, const WString& url, int timeoutMs, std::string* failure) {
  // Read once, when RMI's transport first runs: that is the lookup just below.
  return CallStatic(
             machine, "java/lang/System", "setProperty",
             "(Ljava/lang/String;Ljava/lang/String;)Ljava/lang/String;",
             {WSTR("sun.rmi.transport.tcp.responseTimeout"), Utf8ToWide(std::to_string(timeoutMs))},
             failure) &&
         CallStatic(machine, "java/rmi/Naming", "lookup", "(Ljava/lang/String;)Ljava/rmi/Remote;",
                    {url}, failure);
}

}  // namespace

StepReport CheckServerReachable(CheckHost& host, Findings* findings, int timeoutSeconds) {
  StepReport step = StartedStep(6, "server-reachable", "server reachable");
  const ServerAddress address = ParseAddress(findings->serverUrl);
  const std::string where = ToUtf8(address.host) + ":" + std::to_string(address.port);
  step.facts = {{"url", ToUtf8(findings->serverUrl)},
                {"address", where},
                {"timeout", std::to_string(timeoutSeconds) + " s"}};
  std::string failure;
  const int timeoutMs = timeoutSeconds * 1000;
  if (!findings->machine) {
    step.summary = "not tried";
    FailStep(&step, "no Java machine to look the server up from (see check 5)");
  } else if (findings->serverUrl.empty()) {
    step.summary = "not tried";
    FailStep(&step, "no message server URL (see check 4)");
  } else if (!Connect(*findings->machine, address, timeoutMs, &failure)) {
    step.summary = "no connection to " + where;
    FailStep(&step, "connecting to " + where + " failed: " + failure);
  } else if (!LookUp(*findings->machine, findings->serverUrl, timeoutMs, &failure)) {
    step.summary = where + " accepts connections, but the lookup failed";
    FailStep(&step, "the lookup of the URL failed: " + failure);
  } else {
    step.summary = "the server at " + where + " answers the lookup";
  }
  step.log = host.TakeLines();
  return step;
}

}  // namespace tarnix::check
