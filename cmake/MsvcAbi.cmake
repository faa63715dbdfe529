# The host agent is built with MSVC; this build is not. Here we compile for the host's ABI
# with clang in MSVC mode, over the Windows headers this toolchain ships (they stand in for
# the Windows SDK), so that the names and calls a host sees come from the public headers
# themselves:
#
#   tarnix_msvc_compile(<object> <source> [INCLUDES dir...] [DEPENDS file...])
#       compiles <source> for the MSVC ABI into <object>.
#   tarnix_msvc_exports(<target> <source>)
#       gives the DLL <target> a .def, generated at build time, that exports each member
#       named in <source> under its MSVC name, bound to the member as this build names it,
#       and an import library for MSVC hosts, <name>.lib beside the DLL. Properties set on
#       <target>: TARNIX_MSVC_NAMES_OBJECT (the names as clang gives them),
#       TARNIX_MSVC_IMPORT_LIBRARY.

find_program(TARNIX_CLANG NAMES clang-14 clang)
find_program(TARNIX_LLVM_NM NAMES llvm-nm-14 llvm-nm)
find_program(TARNIX_LLVM_UNDNAME NAMES llvm-undname-14 llvm-undname)
find_program(TARNIX_LLVM_CXXFILT NAMES llvm-cxxfilt-14 llvm-cxxfilt c++filt)
find_program(TARNIX_LLVM_DLLTOOL NAMES llvm-dlltool-14 llvm-dlltool)
find_program(TARNIX_LLD_LINK NAMES lld-link-14 lld-link)
set(TARNIX_EXPORTS_DEF_SCRIPT ${CMAKE_CURRENT_LIST_DIR}/WriteExportsDef.cmake)

# The toolchain's C++ library and Windows headers, without the compiler's private ones
# (its intrinsics headers are for GCC alone).
function(tarnix_msvc_system_includes out)
  set(flags)
  foreach(dir ${CMAKE_CXX_IMPLICIT_INCLUDE_DIRECTORIES})
    if(NOT dir MATCHES "/lib/gcc/[^/]+/[^/]+/include(-fixed)?$")
      list(APPEND flags -isystem ${dir})
    endif()
  endforeach()
  set(${out} ${flags} PARENT_SCOPE)
endfunction()

function(tarnix_msvc_compile object source)
  cmake_parse_arguments(C "" "" "INCLUDES;DEPENDS" ${ARGN})
  if(NOT TARNIX_CLANG)
    message(FATAL_ERROR "clang-14 is needed to compile for the host's ABI (scripts/install-deps.sh)")
  endif()
  tarnix_msvc_system_includes(system_includes)
  set(includes)
  foreach(dir ${C_INCLUDES})
    list(APPEND includes -I${dir})
  endforeach()
  # The headers take their GCC paths (clang understands them); __declspec stays the
  # compiler's own keyword. None of this changes how anything is named or called.
  add_custom_command(OUTPUT ${object}
    COMMAND ${TARNIX_CLANG} -target x86_64-pc-windows-msvc -fms-extensions -fno-rtti
            -fno-exceptions -std=gnu++17 -fgnuc-version=4.2.1 -D__declspec=__declspec
            -Wall -Wno-unused-parameter -Werror
            ${includes} ${system_includes} -MD -MF ${object}.d -c ${source} -o ${object}
    DEPENDS ${source} ${C_DEPENDS}
    DEPFILE ${object}.d
    COMMENT "Compiling ${source} for the MSVC ABI"
    VERBATIM)
endfunction()

function(tarnix_msvc_exports target source)
  if(NOT TARNIX_LLVM_NM OR NOT TARNIX_LLVM_UNDNAME OR NOT TARNIX_LLVM_CXXFILT)
    message(FATAL_ERROR "llvm-nm, llvm-undname and llvm-cxxfilt are needed for the exports")
  endif()
  get_target_property(library_name ${target} OUTPUT_NAME)
  if(NOT library_name)
    set(library_name ${target})
  endif()
  # The same source as this build compiles it: the names the members really have here.
  add_library(${target}_exported_members OBJECT ${source})
  target_include_directories(${target}_exported_members PRIVATE
    ${PROJECT_SOURCE_DIR}/include ${PROJECT_SOURCE_DIR}/src/platform/include)
  set(def ${CMAKE_CURRENT_BINARY_DIR}/${library_name}.def)
  if(MSVC)
    # Compiled by MSVC the members already carry the host's names.
    set(msvc_object "$<TARGET_OBJECTS:${target}_exported_members>")
    set(depends ${target}_exported_members)
  else()
    set(msvc_object ${CMAKE_CURRENT_BINARY_DIR}/${target}_exported_members.msvc.obj)
    tarnix_msvc_compile(${msvc_object} ${source}
      INCLUDES ${PROJECT_SOURCE_DIR}/include ${PROJECT_SOURCE_DIR}/src/platform/include)
    set(depends ${msvc_object} ${target}_exported_members)
  endif()
  add_custom_command(OUTPUT ${def}
    COMMAND ${CMAKE_COMMAND}
            -DMSVC_OBJECT=${msvc_object}
            "-DOWN_OBJECTS=$<TARGET_OBJECTS:${target}_exported_members>"
            -DLIBRARY=${library_name}${CMAKE_SHARED_LIBRARY_SUFFIX}
            -DNM=${TARNIX_LLVM_NM} -DUNDNAME=${TARNIX_LLVM_UNDNAME}
            -DCXXFILT=${TARNIX_LLVM_CXXFILT}
            -DOUTPUT=${def}
            -P ${TARNIX_EXPORTS_DEF_SCRIPT}
    DEPENDS ${depends} ${TARNIX_EXPORTS_DEF_SCRIPT}
    COMMENT "Generating ${library_name}.def from the exported members' names"
    VERBATIM)
  target_sources(${target} PRIVATE ${def})
  set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${def})
  set_property(TARGET ${target} PROPERTY TARNIX_MSVC_NAMES_OBJECT ${msvc_object})
  if(NOT MSVC)
    # What an MSVC-built host links against (this toolchain's own import library is in
    # its own format).
    if(NOT TARNIX_LLVM_DLLTOOL)
      message(FATAL_ERROR "llvm-dlltool is needed for the MSVC import library")
    endif()
    set(import_library ${CMAKE_CURRENT_BINARY_DIR}/${library_name}.lib)
    add_custom_command(TARGET ${target} POST_BUILD
      COMMAND ${TARNIX_LLVM_DLLTOOL} -m i386:x86-64 -d ${def} -l ${import_library}
      BYPRODUCTS ${import_library}
      VERBATIM)
    set_property(TARGET ${target} PROPERTY TARNIX_MSVC_IMPORT_LIBRARY ${import_library})
  endif()
endfunction()
