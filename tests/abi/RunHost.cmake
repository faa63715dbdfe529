# Runs the MSVC host under Wine and asks for both its exit status and its closing line: a
# host that dies without a word must not pass, and neither must one whose process end,
# with the library still loaded, turns a clean run into a failing status.
#   cmake -DWINE=... -DHOST=... -DARGUMENTS=... -P RunHost.cmake
execute_process(COMMAND ${WINE} ${HOST} ${ARGUMENTS}
  RESULT_VARIABLE status
  OUTPUT_VARIABLE output
  ERROR_VARIABLE errors)
message("${output}${errors}")
if(NOT status EQUAL 0)
  message(FATAL_ERROR "the host ended with status ${status}")
endif()
if(NOT output MATCHES "every check held")
  message(FATAL_ERROR "the host did not report its checks as held")
endif()
