// Events. An unnamed event lives in this process (a condition variable); a named one is a
// POSIX named semaphore, so that other processes opening the same name share it, as with
// Windows' named kernel objects. Its value is 1 while signalled; a manual-reset waiter
// puts the count back after taking it. Whether a named event resets manually is recorded
// by a second, marker semaphore, so that OpenEventW learns it too.
#include "platform/Win32.h"
#include "platform/WideText.h"
#include "Handles.h"

#include <fcntl.h>
#include <semaphore.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <chrono>
#include <condition_variable>
#include <map>
#include <mutex>
#include <string>

using tarnix::posix::KernelObject;

namespace {

class Event : public KernelObject {
 public:
  virtual void Set() = 0;
  virtual void Reset() = 0;
  virtual DWORD Wait(DWORD milliseconds) = 0;
};

class LocalEvent : public Event {
 public:
  LocalEvent(bool manualReset, bool signalled) : manualReset_(manualReset), signalled_(signalled) {}

  void Set() override {
    std::lock_guard<std::mutex> lock(mutex_);
    signalled_ = true;
    if (manualReset_) {
      changed_.notify_all();
    } else {
      changed_.notify_one();
    }
  }
  void Reset() override {
    std::lock_guard<std::mutex> lock(mutex_);
    signalled_ = false;
  }
  DWORD Wait(DWORD milliseconds) override {
    std::unique_lock<std::mutex> lock(mutex_);
    auto ready = [this] { return signalled_; };
    if (milliseconds == INFINITE) {
      changed_.wait(lock, ready);
    } else if (!changed_.wait_for(lock, std::chrono::milliseconds(milliseconds), ready)) {
      return WAIT_TIMEOUT;
    }
    if (!manualReset_) signalled_ = false;
    return WAIT_OBJECT_0;
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  const bool manualReset_;
  bool signalled_;
};

// How many handles of this process hold each name, and which names this process made:
// the maker removes the name when the last of its handles closes.
struct NameUse {
  int handles = 0;
  bool createdHere = false;
};
std::mutex g_namesMutex;
std::map<std::string, NameUse>& Names() {
  static auto* names = new std::map<std::string, NameUse>();
  return *names;
}

class NamedEvent : public Event {
 public:
  NamedEvent(sem_t* semaphore, std::string name, bool manualReset)
      : semaphore_(semaphore), name_(std::move(name)), manualReset_(manualReset) {}
  ~NamedEvent() override {
    sem_close(semaphore_);
    std::lock_guard<std::mutex> lock(g_namesMutex);
    auto it = Names().find(name_);
    if (it != Names().end() && --it->second.handles == 0) {
      if (it->second.createdHere) {
        sem_unlink(name_.c_str());
        sem_unlink(MarkerName(name_).c_str());
      }
      Names().erase(it);
    }
  }

  static std::string MarkerName(const std::string& name) { return name + ".m"; }

  void Set() override {
    int value = 0;
    if (sem_getvalue(semaphore_, &value) == 0 && value <= 0) sem_post(semaphore_);
  }
  void Reset() override {
    while (sem_trywait(semaphore_) == 0) {
    }
  }
  DWORD Wait(DWORD milliseconds) override {
    int result;
    if (milliseconds == INFINITE) {
      while ((result = sem_wait(semaphore_)) != 0 && errno == EINTR) {
      }
    } else {
      timespec deadline;
      clock_gettime(CLOCK_REALTIME, &deadline);
      deadline.tv_sec += milliseconds / 1000;
      deadline.tv_nsec += static_cast<long>(milliseconds % 1000) * 1000000;
      if (deadline.tv_nsec >= 1000000000) {
        deadline.tv_sec += 1;
        deadline.tv_nsec -= 1000000000;
      }
      while ((result = sem_timedwait(semaphore_, &deadline)) != 0 && errno == EINTR) {
      }
    }
    if (result != 0) return errno == ETIMEDOUT ? WAIT_TIMEOUT : WAIT_FAILED;
    if (manualReset_) sem_post(semaphore_);
    return WAIT_OBJECT_0;
  }

 private:
  sem_t* semaphore_;
  const std::string name_;
  const bool manualReset_;
};

// A name sem_open accepts: one leading slash, no other, at most 251 characters. Letters,
// digits, '.', '_' and '-' stay; everything else is escaped, so distinct names stay
// distinct. Names are per user, as a session's names are on Windows.
std::string SemaphoreName(LPCWSTR name) {
  std::string escaped;
  for (const WCHAR* p = name; *p; ++p) {
    const WCHAR c = *p;
    if ((c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || (c >= u'0' && c <= u'9') ||
        c == u'.' || c == u'_' || c == u'-') {
      escaped.push_back(static_cast<char>(c));
    } else {
      char code[8];
      std::snprintf(code, sizeof(code), "%%%04X", static_cast<unsigned>(c));
      escaped += code;
    }
  }
  std::string result = "/tarnix-" + std::to_string(getuid()) + "-ev-" + escaped;
  if (result.size() > 240) {
    uint64_t hash = 1469598103934665603ull;  // FNV-1a
    for (char c : escaped) hash = (hash ^ static_cast<unsigned char>(c)) * 1099511628211ull;
    result = result.substr(0, 200) + "~" + std::to_string(hash);
  }
  return result;
}

HANDLE Publish(sem_t* semaphore, const std::string& name, bool manualReset, bool created) {
  {
    std::lock_guard<std::mutex> lock(g_namesMutex);
    NameUse& use = Names()[name];
    ++use.handles;
    use.createdHere = use.createdHere || created;
  }
  return tarnix::posix::AddHandle(std::make_shared<NamedEvent>(semaphore, name, manualReset));
}

bool MarkerExists(const std::string& name) {
  sem_t* marker = sem_open(NamedEvent::MarkerName(name).c_str(), 0);
  if (marker == SEM_FAILED) return false;
  sem_close(marker);
  return true;
}

DWORD Win32ErrorOf(int error) {
  switch (error) {
    case ENOENT: return ERROR_FILE_NOT_FOUND;
    case EACCES: return ERROR_ACCESS_DENIED;
    case ENAMETOOLONG:
    case EINVAL: return ERROR_INVALID_NAME;
    default: return ERROR_INVALID_HANDLE;
  }
}

std::shared_ptr<Event> FindEvent(HANDLE handle) {
  auto event = tarnix::posix::FindHandleOf<Event>(handle);
  if (!event) SetLastError(ERROR_INVALID_HANDLE);
  return event;
}

}  // namespace

HANDLE CreateEventW(LPSECURITY_ATTRIBUTES lpEventAttributes, BOOL bManualReset, BOOL bInitialState,
                    LPCWSTR lpName) {
  if (!lpName || !*lpName) {
    SetLastError(ERROR_SUCCESS);
    return tarnix::posix::AddHandle(std::make_shared<LocalEvent>(bManualReset, bInitialState));
  }
  const std::string name = SemaphoreName(lpName);
  sem_t* semaphore = sem_open(name.c_str(), O_CREAT | O_EXCL, 0600, bInitialState ? 1u : 0u);
  if (semaphore != SEM_FAILED) {
    if (bManualReset) {
      sem_t* marker = sem_open(NamedEvent::MarkerName(name).c_str(), O_CREAT, 0600, 0u);
      if (marker != SEM_FAILED) sem_close(marker);
    }
    SetLastError(ERROR_SUCCESS);
    return Publish(semaphore, name, bManualReset, true);
  }
  if (errno != EEXIST) {
    SetLastError(Win32ErrorOf(errno));
    return nullptr;
  }
  // The event exists: this is an open, and its own reset mode stands.
  semaphore = sem_open(name.c_str(), 0);
  if (semaphore == SEM_FAILED) {
    SetLastError(Win32ErrorOf(errno));
    return nullptr;
  }
  HANDLE handle = Publish(semaphore, name, MarkerExists(name), false);
  SetLastError(ERROR_ALREADY_EXISTS);
  return handle;
}

HANDLE OpenEventW(DWORD dwDesiredAccess, BOOL bInheritHandle, LPCWSTR lpName) {
  if (!lpName || !*lpName) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return nullptr;
  }
  const std::string name = SemaphoreName(lpName);
  sem_t* semaphore = sem_open(name.c_str(), 0);
  if (semaphore == SEM_FAILED) {
    SetLastError(Win32ErrorOf(errno));
    return nullptr;
  }
  return Publish(semaphore, name, MarkerExists(name), false);
}

BOOL SetEvent(HANDLE hEvent) {
  auto event = FindEvent(hEvent);
  if (!event) return FALSE;
  event->Set();
  return TRUE;
}

BOOL ResetEvent(HANDLE hEvent) {
  auto event = FindEvent(hEvent);
  if (!event) return FALSE;
  event->Reset();
  return TRUE;
}

DWORD WaitForSingleObject(HANDLE hHandle, DWORD dwMilliseconds) {
  auto event = FindEvent(hHandle);
  return event ? event->Wait(dwMilliseconds) : WAIT_FAILED;
}

BOOL CloseHandle(HANDLE hObject) {
  if (tarnix::posix::RemoveHandle(hObject)) return TRUE;
  SetLastError(ERROR_INVALID_HANDLE);
  return FALSE;
}
