# Configures and builds the example host from its installed copy: the install tree is
# all it sees.
#   cmake -DSOURCE=<example> -DBINARY=<build dir> "-DCONFIGURE=<args>" -P BuildExample.cmake
file(REMOVE_RECURSE ${BINARY})
execute_process(COMMAND ${CMAKE_COMMAND} -S ${SOURCE} -B ${BINARY} -G Ninja ${CONFIGURE}
  RESULT_VARIABLE status)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "the example host does not configure")
endif()
execute_process(COMMAND ${CMAKE_COMMAND} --build ${BINARY} RESULT_VARIABLE status)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "the example host does not build")
endif()
