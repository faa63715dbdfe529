// The part of the MSVC C runtime a console program needs and this machine lacks: the
// entry point, operator new and delete, and the few hooks the compiler calls. The rest
// (printf, malloc, exit) comes from msvcrt.dll, printf's formatting from mingw-w64 and
// libgcc. Linked into the example host built for the
// MSVC ABI; an engineer's MSVC links its own runtime instead.
#include <windows.h>

#include <stdlib.h>

#include <string>

int main();

extern "C" {
int _fltused = 0;
int _purecall() { ExitProcess(3); }
int atexit(void (*function)(void)) {
  return _onexit(reinterpret_cast<_onexit_t>(function)) ? 0 : -1;
}
// exit, not ExitProcess: msvcrt flushes the console output on the way.
void mainCRTStartup() { exit(main()); }
}

void* operator new(size_t size) {
  void* memory = malloc(size ? size : 1);
  if (!memory) ExitProcess(4);
  return memory;
}
void operator delete(void* memory) noexcept { free(memory); }
void operator delete(void* memory, size_t) noexcept { free(memory); }

// Where the C++ library would throw: without exceptions, the end of the program.
namespace std {
void __throw_length_error(const char*) { ExitProcess(5); }
void __throw_logic_error(const char*) { ExitProcess(5); }
void __throw_out_of_range_fmt(const char*, ...) { ExitProcess(5); }
void __throw_bad_alloc() { ExitProcess(4); }
void __throw_bad_array_new_length() { ExitProcess(4); }
}  // namespace std
