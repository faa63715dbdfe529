# Compiles each installed header on its own, with the install tree as the only include
# folder: a header that leans on another it does not include, or on the source tree,
# fails here.
#   cmake -DINCLUDE=<include dir> -DWORK=<scratch dir> "-DCOMPILE=<compiler;flags...>"
#         -P CheckHeaders.cmake
file(GLOB_RECURSE headers RELATIVE ${INCLUDE} ${INCLUDE}/tarnix/*.h)
if(NOT headers)
  message(FATAL_ERROR "no headers under ${INCLUDE}")
endif()
file(MAKE_DIRECTORY ${WORK})
set(failures 0)
foreach(header ${headers})
  string(MAKE_C_IDENTIFIER ${header} name)
  file(WRITE ${WORK}/${name}.cpp "#include <${header}>\n")
  execute_process(COMMAND ${COMPILE} -I${INCLUDE} ${WORK}/${name}.cpp
    RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT status EQUAL 0)
    message("${header} does not compile alone:\n${output}")
    math(EXPR failures "${failures} + 1")
  endif()
endforeach()
list(LENGTH headers count)
if(failures)
  message(FATAL_ERROR "${failures} of ${count} headers failed")
endif()
message("${count} headers compile alone")
