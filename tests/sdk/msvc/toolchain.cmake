# Builds for an MSVC host's ABI without MSVC: clang-14 for x86_64-pc-windows-msvc over the
# mingw-w64 headers, linked by lld-link against the system's import libraries and a small
# start-up object in place of the MSVC C runtime. Cache variables given by the caller:
#   TARNIX_MSVC_SYSTEM_INCLUDES  -isystem flags for the C++ library and Windows headers
#   TARNIX_MSVC_LIBRARY_DIR      a folder of <name>.lib import libraries
#   TARNIX_MSVC_STARTUP          the start-up object
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR AMD64)
set(CMAKE_CXX_COMPILER clang++-14)
set(CMAKE_CXX_COMPILER_TARGET x86_64-pc-windows-msvc)
# No MSVC runtime to link a test program against; the example's link is the check.
set(CMAKE_CXX_COMPILER_WORKS TRUE)
set(CMAKE_TRY_COMPILE_PLATFORM_VARIABLES
    TARNIX_MSVC_SYSTEM_INCLUDES TARNIX_MSVC_LIBRARY_DIR TARNIX_MSVC_STARTUP)
string(REPLACE ";" " " system_includes "${TARNIX_MSVC_SYSTEM_INCLUDES}")
set(CMAKE_CXX_FLAGS_INIT
    "-fms-extensions -fno-exceptions -fno-rtti -fgnuc-version=4.2.1 -D__declspec=__declspec ${system_includes}")
set(CMAKE_EXE_LINKER_FLAGS_INIT "-fuse-ld=lld -nostdlib -Xlinker /nodefaultlib")
set(CMAKE_CXX_STANDARD_LIBRARIES
    "${TARNIX_MSVC_STARTUP} -lkernel32 -lmsvcrt -lmingwex -lgcc -luuid -Xlinker /libpath:${TARNIX_MSVC_LIBRARY_DIR}"
    CACHE STRING "" FORCE)
