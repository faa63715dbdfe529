# cmake -P: every DLL the library imports from ships with Windows. A C++ runtime or thread
# library among them would have to be installed beside the host agent.
# -DLIBRARY=<dll> -DOBJDUMP=<objdump>
cmake_minimum_required(VERSION 3.20)

set(system_dlls kernel32 advapi32 ole32 oleaut32 shlwapi user32 msvcrt version shell32 ws2_32)

execute_process(COMMAND ${OBJDUMP} -p ${LIBRARY} OUTPUT_VARIABLE dump COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "DLL Name: [^\n]+" lines "${dump}")
set(imports)
set(foreign)
foreach(line ${lines})
  string(REGEX REPLACE "^DLL Name: " "" name "${line}")
  string(STRIP "${name}" name)
  list(APPEND imports ${name})
  string(TOLOWER "${name}" lower)
  string(REGEX REPLACE "\\.dll$" "" base "${lower}")
  if(NOT base IN_LIST system_dlls AND NOT base MATCHES "^api-ms-win-")
    list(APPEND foreign ${name})
  endif()
endforeach()
message(STATUS "imports: ${imports}")
if(NOT imports)
  message(FATAL_ERROR "No import found in ${LIBRARY}: not a DLL, or the listing changed")
endif()
if(foreign)
  message(FATAL_ERROR "Imports beyond the system's DLLs: ${foreign}")
endif()
