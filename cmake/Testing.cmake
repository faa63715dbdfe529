# GoogleTest is built from Debian's sources so that the native and the mingw builds use
# the same framework. Every test runs in its own process (a JVM cannot be created twice
# in one process).
set(gtest_force_shared_crt ON CACHE BOOL "" FORCE)
set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
set(BUILD_GMOCK OFF CACHE BOOL "" FORCE)
add_subdirectory(/usr/src/googletest ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
include(GoogleTest)

# tarnix_add_test(<name> SOURCES ... [LIBRARIES ...] [LABELS ...])
function(tarnix_add_test name)
  cmake_parse_arguments(T "" "" "SOURCES;LIBRARIES;LABELS" ${ARGN})
  add_executable(${name} ${T_SOURCES})
  target_link_libraries(${name} PRIVATE ${T_LIBRARIES} GTest::gtest GTest::gtest_main)
  if(NOT T_LABELS)
    set(T_LABELS unit)
  endif()
  gtest_discover_tests(${name}
    DISCOVERY_MODE PRE_TEST
    DISCOVERY_TIMEOUT 120
    PROPERTIES LABELS "${T_LABELS}")
endfunction()
