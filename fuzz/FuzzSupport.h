// What every fuzz target shares: turning the fuzzer's bytes into wide text, reading small
// numbers off the front of the input, and stopping on a broken promise.
#pragma once

#include "platform/Win32.h"
#include "platform/WideText.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>
#include <unistd.h>

namespace tarnix::fuzz {

// UTF-8 text, or raw UTF-16LE code units after a FF FE mark: seeds stay readable, and the
// fuzzer can still reach every code unit, lone surrogates and zeros included.
inline WString WideFromBytes(const uint8_t* data, size_t size) {
  if (size >= 2 && data[0] == 0xFF && data[1] == 0xFE) {
    WString text;
    for (size_t k = 2; k + 1 < size; k += 2) {
      text.push_back(static_cast<WCHAR>(data[k] | (data[k + 1] << 8)));
    }
    return text;
  }
  return Utf8ToWide(std::string(reinterpret_cast<const char*>(data), size));
}

// Takes bytes off the front of the input; zeros once it runs out.
class Input {
 public:
  Input(const uint8_t* data, size_t size) : data_(data), size_(size) {}

  template <typename T>
  T Take() {
    T value{};
    const size_t n = size_ < sizeof(T) ? size_ : sizeof(T);
    std::memcpy(&value, data_, n);
    data_ += n;
    size_ -= n;
    return value;
  }
  WString RestAsText() {
    WString text = WideFromBytes(data_, size_);
    data_ += size_;
    size_ = 0;
    return text;
  }
  size_t size() const { return size_; }

 private:
  const uint8_t* data_;
  size_t size_;
};

// Makes `bytes` the registry: written to this process's own hive file, which the layer
// then loads in place of what it held. Returns the number of lines it could not read. The
// file goes at once (the targets only read the registry), so that a run that ends in a
// crash leaves none behind.
inline size_t LoadHive(const std::string& bytes) {
  static const std::string path = [] {
    const char* folder = std::getenv("TMPDIR");
    std::string name = std::string(folder && *folder ? folder : "/tmp") + "/tarnix-fuzz-" +
                       std::to_string(getpid()) + ".reg";
    setenv(tarnix::posix::kRegistryFileVariable, name.c_str(), 1);
    return name;
  }();
  {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  }
  const size_t skipped = tarnix::posix::ReloadRegistry();
  std::remove(path.c_str());
  return skipped;
}

[[noreturn]] inline void Fail(const char* file, int line, const char* what) {
  std::fprintf(stderr, "%s:%d: broken promise: %s\n", file, line, what);
  std::abort();
}

}  // namespace tarnix::fuzz

// A property of the code under test that must hold for every input; an abort is a finding.
#define FUZZ_CHECK(condition) \
  ((condition) ? (void)0 : ::tarnix::fuzz::Fail(__FILE__, __LINE__, #condition))
