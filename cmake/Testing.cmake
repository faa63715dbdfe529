# GoogleTest is built from Debian's sources so that the native and the mingw builds use
# the same framework. Every test runs in its own process (a JVM cannot be created twice
# in one process).
set(gtest_force_shared_crt ON CACHE BOOL "" FORCE)
set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
set(BUILD_GMOCK OFF CACHE BOOL "" FORCE)
add_subdirectory(/usr/src/googletest ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
include(GoogleTest)

# tarnix_add_test(<name> SOURCES ... [LIBRARIES ...] [LABELS ...] [RESOURCE_LOCK <lock>...])
# RESOURCE_LOCK keeps the suite's tests from running at the same time as each other and as
# other tests holding the same lock (under Wine, every process shares one registry; named
# events are machine-wide on both builds).
function(tarnix_add_test name)
  cmake_parse_arguments(T "" "" "SOURCES;LIBRARIES;LABELS;RESOURCE_LOCK" ${ARGN})
  add_executable(${name} ${T_SOURCES})
  target_link_libraries(${name} PRIVATE ${T_LIBRARIES} GTest::gtest GTest::gtest_main)
  if(NOT T_LABELS)
    set(T_LABELS unit)
  endif()
  gtest_discover_tests(${name}
    DISCOVERY_MODE PRE_TEST
    DISCOVERY_TIMEOUT 120)
  set(properties)
  if(TARNIX_SANITIZER_ENVIRONMENT)  # cmake/Sanitizers.cmake
    list(APPEND properties ENVIRONMENT_MODIFICATION "${TARNIX_SANITIZER_ENVIRONMENT}")
  endif()
  if(T_RESOURCE_LOCK)
    list(APPEND properties RESOURCE_LOCK "${T_RESOURCE_LOCK}")
  endif()
  tarnix_discovered_test_properties(${name} LABELS ${T_LABELS} ${properties})
endfunction()

# tarnix_discovered_test_properties(<target> [LABELS <label>...]
#                                   [ENVIRONMENT_MODIFICATION <value>...]
#                                   [FAIL_REGULAR_EXPRESSION <value>]
#                                   [RESOURCE_LOCK <lock>...])
# Sets properties on every test gtest_discover_tests finds in <target>. Passed through
# gtest_discover_tests, a list value (several labels) is flattened into separate
# arguments; this applies them after discovery instead, to the test names that discovery
# leaves in <target>_TESTS.
function(tarnix_discovered_test_properties target)
  cmake_parse_arguments(P "" "FAIL_REGULAR_EXPRESSION" "LABELS;ENVIRONMENT_MODIFICATION;RESOURCE_LOCK"
                        ${ARGN})
  set(script "if(DEFINED ${target}_TESTS)\n  set_tests_properties(\${${target}_TESTS} PROPERTIES")
  foreach(property LABELS ENVIRONMENT_MODIFICATION FAIL_REGULAR_EXPRESSION RESOURCE_LOCK)
    if(DEFINED P_${property})
      string(APPEND script "\n    ${property} [==[${P_${property}}]==]")
    endif()
  endforeach()
  string(APPEND script ")\nendif()\n")
  set(file "${CMAKE_CURRENT_BINARY_DIR}/${target}_properties.cmake")
  file(WRITE "${file}" "${script}")
  set_property(DIRECTORY APPEND PROPERTY TEST_INCLUDE_FILES "${file}")
endfunction()

# tarnix_add_jvm_test(<name> SOURCES ... [LIBRARIES ...] [LABELS ...] [RESOURCE_LOCK <lock>...])
# A suite that starts a real JVM (label "jvm"). Each test process leaves a crash log in
# the build folder, and a test fails on any complaint of the JVM's JNI checks, which the
# second pass of scripts/test.sh switches on through JAVA_TOOL_OPTIONS. There is no Java
# runtime for the Windows build here, so such suites are native only.
function(tarnix_add_jvm_test name)
  cmake_parse_arguments(T "" "" "SOURCES;LIBRARIES;LABELS;RESOURCE_LOCK" ${ARGN})
  if(WIN32)
    return()
  endif()
  add_executable(${name} ${T_SOURCES})
  target_link_libraries(${name} PRIVATE ${T_LIBRARIES} GTest::gtest GTest::gtest_main)
  add_dependencies(${name} tarnix_agent_jars)
  gtest_discover_tests(${name}
    DISCOVERY_MODE PRE_TEST
    DISCOVERY_TIMEOUT 120)
  set(environment "JAVA_TOOL_OPTIONS=string_append: -XX:ErrorFile=${CMAKE_BINARY_DIR}/hs_err_%p.log")
  list(APPEND environment ${TARNIX_SANITIZER_JVM_ENVIRONMENT})  # cmake/Sanitizers.cmake
  set(lock)
  if(T_RESOURCE_LOCK)
    set(lock RESOURCE_LOCK "${T_RESOURCE_LOCK}")
  endif()
  tarnix_discovered_test_properties(${name}
    LABELS jvm ${T_LABELS}
    ENVIRONMENT_MODIFICATION "${environment}" ${lock}
    FAIL_REGULAR_EXPRESSION "WARNING in native method|FATAL ERROR in native method|WARNING: JNI local refs")
endfunction()
