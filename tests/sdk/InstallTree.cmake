# Installs the build into PREFIX afresh and holds the tree to what the agent's engineers
# are promised: the library, its headers, import library, symbols, CMake package and
# guide, and nothing of the tests, fakes or stand-ins.
#   cmake -DBUILD=<build dir> -DPREFIX=<folder> -DWINDOWS=<bool> -P InstallTree.cmake
file(REMOVE_RECURSE ${PREFIX})
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD} --prefix ${PREFIX}
  RESULT_VARIABLE status OUTPUT_QUIET)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "cmake --install failed: ${status}")
endif()
set(expected
  include/tarnix/RMICommManager.h include/tarnix/HostInterfaces.h
  include/tarnix/DataInterfaces.h include/tarnix/DataType.h include/tarnix/Platform.h
  lib/cmake/tarnix-rmi/tarnix-rmi-config.cmake
  lib/cmake/tarnix-rmi/tarnix-rmi-config-version.cmake
  lib/cmake/tarnix-rmi/tarnix-rmi-targets.cmake
  share/doc/tarnix-rmi/integration.md share/doc/tarnix-rmi/examples/host/ExampleHost.cpp)
if(WINDOWS)
  list(APPEND expected bin/tarnix-rmi.dll bin/tarnix-rmi.pdb bin/tarnix-rmi.debug
       lib/tarnix-rmi.lib lib/tarnix-rmi.def bin/tarnix-rmi-check.exe)
else()
  list(APPEND expected lib/libtarnix-rmi.so lib/libtarnix-platform.so bin/tarnix-rmi-check
       include/tarnix/posix/Types.h include/tarnix/posix/Com.h)
endif()
foreach(file ${expected})
  if(NOT EXISTS ${PREFIX}/${file})
    message(SEND_ERROR "missing from the install tree: ${file}")
  endif()
endforeach()
file(GLOB_RECURSE installed RELATIVE ${PREFIX} ${PREFIX}/*)
foreach(file ${installed})
  if(file MATCHES "[Ff]ake|[Ss]tub|[Tt]est|gtest|jvm\\.dll|libjvm|\\.jar$|\\.a$")
    message(SEND_ERROR "the install tree holds what nobody receives: ${file}")
  endif()
  if(WINDOWS AND file MATCHES "posix/")
    message(SEND_ERROR "the Windows tree holds the POSIX layer: ${file}")
  endif()
endforeach()
if(NOT WINDOWS)
  # The SONAME a host records is the major version's.
  execute_process(COMMAND objdump -p ${PREFIX}/lib/libtarnix-rmi.so OUTPUT_VARIABLE dynamic)
  if(NOT dynamic MATCHES "SONAME +libtarnix-rmi\\.so\\.6\n")
    message(SEND_ERROR "libtarnix-rmi.so names itself otherwise:\n${dynamic}")
  endif()
  # The operator runs the tool from the installed tree, with no library path set.
  execute_process(COMMAND ${CMAKE_COMMAND} -E env --unset=LD_LIBRARY_PATH
    ${PREFIX}/bin/tarnix-rmi-check --help RESULT_VARIABLE help OUTPUT_QUIET ERROR_VARIABLE why)
  if(NOT help EQUAL 0)
    message(SEND_ERROR "the installed tarnix-rmi-check does not run: ${help} ${why}")
  endif()
endif()
list(LENGTH installed count)
message("${count} files installed in ${PREFIX}")
