// The Java message server as a child process on 127.0.0.1: started with a port (0 for a
// free one) and answers, asked over its stdin what it received, stopped by closing its
// stdin. Used by the demo and by the end-to-end tests. POSIX only.
#pragma once

#include <chrono>
#include <map>
#include <string>
#include <sys/types.h>
#include <vector>

namespace tarnix::hostsim {

struct MessageServerOptions {
  std::string java;                            // the java launcher
  std::string classPath;                       // the server's jars
  int port = 0;                                // 0: a free port
  std::map<std::string, std::string> answers;  // method -> text
  // How long start-up and each command may take.
  std::chrono::seconds timeout{60};
};

class MessageServerProcess {
 public:
  // Starts the server and waits for its "LISTENING" line; Running() tells whether it came.
  explicit MessageServerProcess(MessageServerOptions options);
  ~MessageServerProcess();
  MessageServerProcess(const MessageServerProcess&) = delete;
  MessageServerProcess& operator=(const MessageServerProcess&) = delete;

  bool Running() const { return pid_ > 0 && port_ > 0; }
  int Port() const { return port_; }
  // "rmi://127.0.0.1:PORT/MessageServer"
  std::string Url() const;
  // What went wrong at start-up or in the last command, if anything.
  const std::string& Failure() const { return failure_; }

  // Every call received so far, one line each, with "\\n", "\\r" and "\\\\" escaped.
  std::vector<std::string> Received();
  bool SetAnswer(const std::string& method, const std::string& text);
  bool ClearAnswer(const std::string& method);
  bool ClearReceived();

  // Closes the server's stdin and waits for it to end (killing it when it does not);
  // true when it ended by itself with status 0.
  bool Stop();

 private:
  bool Start();
  bool Send(const std::string& line);
  bool ReadLine(std::string* line);
  bool Command(const std::string& line);
  void Fail(const std::string& what);
  bool Failed(const std::string& what);  // false, after Fail

  MessageServerOptions options_;
  pid_t pid_ = -1;
  int in_ = -1;   // the server's stdin
  int out_ = -1;  // the server's stdout
  int port_ = 0;
  std::string buffer_;
  std::string failure_;
};

// The text of a received line without its escapes.
std::string Unescaped(const std::string& line);

}  // namespace tarnix::hostsim
