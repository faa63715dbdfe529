# TARNIX_SANITIZE: a comma-separated list for -fsanitize= (address,undefined or thread),
# applied to everything the project compiles and links. The JVM the tests start runs in
# the same process, so the run-time options below are chosen to live with it.
set(TARNIX_SANITIZE "" CACHE STRING "Sanitizers for g++/clang (-fsanitize=), empty for none")

if(NOT TARNIX_SANITIZE)
  return()
endif()
if(NOT CMAKE_CXX_COMPILER_ID MATCHES "GNU|Clang" OR WIN32)
  message(FATAL_ERROR "TARNIX_SANITIZE needs a native g++ or clang build")
endif()

set(sanitize_flags -fsanitize=${TARNIX_SANITIZE} -fno-omit-frame-pointer)
if(TARNIX_SANITIZE MATCHES "undefined")
  list(APPEND sanitize_flags -fno-sanitize-recover=undefined)
endif()
add_compile_options(${sanitize_flags})
add_link_options(${sanitize_flags})

# The JVM takes SIGSEGV for its own purposes (null checks, safepoint polls) and must keep
# its handler; it also keeps memory the leak checker cannot see through. Suites without a
# JVM keep leak detection on: a leak there is the component's.
set(ubsan "UBSAN_OPTIONS=set:print_stacktrace=1:halt_on_error=1")
set(TARNIX_SANITIZER_ENVIRONMENT "ASAN_OPTIONS=set:detect_leaks=1" "${ubsan}")
set(TARNIX_SANITIZER_JVM_ENVIRONMENT
  "ASAN_OPTIONS=set:detect_leaks=0:handle_segv=0:allow_user_segv_handler=1"
  "${ubsan}"
  "TSAN_OPTIONS=set:ignore_noninstrumented_modules=1")
message(STATUS "Sanitizers: ${TARNIX_SANITIZE}")
