#include "MessageServerProcess.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace tarnix::hostsim {
namespace {

using Clock = std::chrono::steady_clock;

// The server needs none of the host's JVM options (JNI checks, error files); it gets the
// host's environment without them.
std::vector<std::string> ServerEnvironment() {
  std::vector<std::string> environment;
  for (char** entry = environ; *entry; ++entry) {
    if (std::strncmp(*entry, "JAVA_TOOL_OPTIONS=", 18) != 0) environment.emplace_back(*entry);
  }
  return environment;
}

std::vector<char*> Pointers(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  for (std::string& text : texts) pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

// Waits for the child until the deadline; true when it ended, with its status.
bool WaitUntil(pid_t pid, Clock::time_point deadline, int* status) {
  for (;;) {
    const pid_t done = waitpid(pid, status, WNOHANG);
    if (done == pid || (done < 0 && errno != EINTR)) return true;
    if (Clock::now() >= deadline) return false;
    usleep(10000);
  }
}

}  // namespace

MessageServerProcess::MessageServerProcess(MessageServerOptions options)
    : options_(std::move(options)) {
  signal(SIGPIPE, SIG_IGN);  // a server that went away must not end the host
  Start();
}

MessageServerProcess::~MessageServerProcess() { Stop(); }

std::string MessageServerProcess::Url() const {
  return "rmi://127.0.0.1:" + std::to_string(port_) + "/MessageServer";
}

bool MessageServerProcess::Start() {
  int input[2], output[2];
  if (pipe2(input, O_CLOEXEC) != 0) return Failed("pipe");
  if (pipe2(output, O_CLOEXEC) != 0) {
    close(input[0]);
    close(input[1]);
    return Failed("pipe");
  }
  std::vector<std::string> arguments = {options_.java,
                                        "-Djava.rmi.server.hostname=127.0.0.1",
                                        "-cp",
                                        options_.classPath,
                                        "com.tarnix.messageserver.Main",
                                        "--port",
                                        std::to_string(options_.port)};
  for (const auto& [method, text] : options_.answers) {
    arguments.push_back("--answer");
    arguments.push_back(method + "=" + text);
  }
  std::vector<std::string> environment = ServerEnvironment();
  std::vector<char*> argv = Pointers(arguments), envp = Pointers(environment);

  pid_ = fork();
  if (pid_ == 0) {
    dup2(input[0], STDIN_FILENO);
    dup2(output[1], STDOUT_FILENO);
    execve(argv[0], argv.data(), envp.data());
    _exit(127);
  }
  close(input[0]);
  close(output[1]);
  in_ = input[1];
  out_ = output[0];
  if (pid_ < 0) return Failed("fork");

  std::string line;
  if (!ReadLine(&line)) return Failed("no LISTENING line from the message server");
  const std::string prefix = "LISTENING 127.0.0.1:";
  if (line.rfind(prefix, 0) != 0) return Failed("unexpected first line: " + line);
  port_ = std::stoi(line.substr(prefix.size()));
  return true;
}

bool MessageServerProcess::Stop() {
  if (pid_ <= 0) return false;
  if (in_ >= 0) close(in_);
  in_ = -1;
  int status = 0;
  bool ended = WaitUntil(pid_, Clock::now() + options_.timeout, &status);
  if (!ended) {
    kill(pid_, SIGKILL);
    WaitUntil(pid_, Clock::now() + std::chrono::seconds(10), &status);
  }
  if (out_ >= 0) close(out_);
  out_ = -1;
  pid_ = -1;
  port_ = 0;
  return ended && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

std::vector<std::string> MessageServerProcess::Received() {
  std::vector<std::string> received;
  if (!Send("received")) return received;
  const std::string prefix = "RECEIVED ";
  for (std::string line; ReadLine(&line) && line != "END";) {
    if (line.rfind(prefix, 0) == 0) received.push_back(line.substr(prefix.size()));
  }
  return received;
}

bool MessageServerProcess::SetAnswer(const std::string& method, const std::string& text) {
  return Command("answer " + method + " " + text);
}

bool MessageServerProcess::ClearAnswer(const std::string& method) {
  return Command("noanswer " + method);
}

bool MessageServerProcess::ClearReceived() { return Command("clear"); }

bool MessageServerProcess::Command(const std::string& line) {
  std::string answer;
  if (!Send(line) || !ReadLine(&answer)) return false;
  if (answer == "OK") return true;
  Fail(answer);
  return false;
}

bool MessageServerProcess::Send(const std::string& line) {
  if (in_ < 0) return Failed("the message server is not running");
  const std::string text = line + "\n";
  for (size_t written = 0; written < text.size();) {
    const ssize_t n = write(in_, text.data() + written, text.size() - written);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) return Failed("the message server does not listen");
    written += static_cast<size_t>(n);
  }
  return true;
}

bool MessageServerProcess::ReadLine(std::string* line) {
  const Clock::time_point deadline = Clock::now() + options_.timeout;
  for (;;) {
    const size_t end = buffer_.find('\n');
    if (end != std::string::npos) {
      *line = buffer_.substr(0, end);
      buffer_.erase(0, end + 1);
      return true;
    }
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
    if (out_ < 0 || left.count() <= 0) return false;
    pollfd ready{out_, POLLIN, 0};
    const int polled = poll(&ready, 1, static_cast<int>(left.count()));
    if (polled < 0 && errno == EINTR) continue;
    if (polled <= 0) return false;
    char chunk[4096];
    const ssize_t n = read(out_, chunk, sizeof chunk);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) return false;
    buffer_.append(chunk, static_cast<size_t>(n));
  }
}

void MessageServerProcess::Fail(const std::string& what) { failure_ = what; }

bool MessageServerProcess::Failed(const std::string& what) {
  Fail(what);
  return false;
}

std::string Unescaped(const std::string& line) {
  std::string text;
  for (size_t i = 0; i < line.size(); ++i) {
    if (line[i] != '\\' || i + 1 == line.size()) {
      text += line[i];
      continue;
    }
    const char next = line[++i];
    text += next == 'n' ? '\n' : next == 'r' ? '\r' : next;
  }
  return text;
}

}  // namespace tarnix::hostsim
