# cmake -P: the library exports exactly the names clang gives the members when it compiles
# the public header for the MSVC ABI: nothing missing, nothing besides.
# -DLIBRARY=<dll> -DOBJDUMP=<objdump> -DNM=<llvm-nm> -DMSVC_OBJECT=<names compiled for MSVC>
cmake_minimum_required(VERSION 3.20)

execute_process(COMMAND ${NM} --undefined-only --format=just-symbols ${MSVC_OBJECT}
  OUTPUT_VARIABLE listing COMMAND_ERROR_IS_FATAL ANY)
string(REPLACE "\n" ";" expected "${listing}")
list(FILTER expected INCLUDE REGEX "^\\?")
list(SORT expected)

execute_process(COMMAND ${OBJDUMP} -p ${LIBRARY} OUTPUT_VARIABLE dump COMMAND_ERROR_IS_FATAL ANY)
# One name a line after the table's heading; brackets stay out of the list (CMake would
# not split it at a semicolon between them).
string(REGEX MATCH "\\[Ordinal/Name Pointer\\] Table\n([^\n]+\n)*" table "${dump}")
string(REPLACE "[Ordinal/Name Pointer] Table\n" "" table "${table}")
string(REGEX REPLACE "[ \t]*\\[ *[0-9]+\\] ([^\n]*)\n" "\\1;" exported "${table}")
list(FILTER exported INCLUDE REGEX ".")
list(SORT exported)

list(LENGTH expected count)
message(STATUS "${count} names from the public header; exported: ${exported}")
if(count EQUAL 0)
  message(FATAL_ERROR "clang named no member in ${MSVC_OBJECT}")
endif()
if(NOT exported STREQUAL expected)
  set(missing ${expected})
  list(REMOVE_ITEM missing ${exported})
  set(extra ${exported})
  list(REMOVE_ITEM extra ${expected})
  message(FATAL_ERROR "Export table differs from the header's MSVC names.\n"
                      "missing: ${missing}\nbesides: ${extra}")
endif()
