# What `cmake --install` puts in front of a host's engineers, in components a later program
# or file joins by naming one of them:
#   Runtime        the library (and on Linux the POSIX layer it shares with the host)
#   Development    headers, import library and .def, the SONAME links, the CMake package
#   Symbols        tarnix-rmi.pdb and tarnix-rmi.debug (Windows)
#   Documentation  share/doc/tarnix-rmi: the integration guide and the example host
# Tests, fakes and stand-ins never install.
include(CMakePackageConfigHelpers)

set(TARNIX_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/tarnix-rmi)

install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/tarnix
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT Development
  FILES_MATCHING PATTERN "*.h"
  PATTERN posix EXCLUDE)

if(WIN32)
  get_target_property(def_file tarnix-rmi TARNIX_DEF_FILE)
  # The DLL by file: mingw's own import library is of no use to an MSVC host.
  install(FILES $<TARGET_FILE:tarnix-rmi> DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT Runtime)
  if(MSVC)
    set(import_library $<TARGET_LINKER_FILE:tarnix-rmi>)
    set(symbols $<TARGET_PDB_FILE:tarnix-rmi>)
  else()
    get_target_property(import_library tarnix-rmi TARNIX_MSVC_IMPORT_LIBRARY)
    get_target_property(pdb tarnix-rmi TARNIX_PDB)
    get_target_property(debug_file tarnix-rmi TARNIX_DEBUG_FILE)
    set(symbols ${pdb} ${debug_file})
  endif()
  install(FILES ${import_library} ${def_file}
    DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT Development)
  install(FILES ${symbols} DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT Symbols)
  set(targets_file tarnix-rmi-targets.cmake)
  configure_file(${CMAKE_CURRENT_LIST_DIR}/tarnix-rmi-targets-windows.cmake.in
    ${CMAKE_CURRENT_BINARY_DIR}/${targets_file} @ONLY)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${targets_file}
    DESTINATION ${TARNIX_PACKAGE_DIR} COMPONENT Development)
else()
  install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/tarnix/posix
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/tarnix COMPONENT Development
    FILES_MATCHING PATTERN "*.h")
  install(TARGETS tarnix-rmi tarnix_platform EXPORT tarnix-rmi-targets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
      COMPONENT Runtime NAMELINK_COMPONENT Development)
  install(EXPORT tarnix-rmi-targets NAMESPACE tarnix::
    DESTINATION ${TARNIX_PACKAGE_DIR} COMPONENT Development)
endif()

configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/tarnix-rmi-config.cmake.in
  ${CMAKE_CURRENT_BINARY_DIR}/tarnix-rmi-config.cmake
  INSTALL_DESTINATION ${TARNIX_PACKAGE_DIR})
# 6.x hosts take any 6.y: the exports and the host interfaces keep their shape within a
# major version.
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/tarnix-rmi-config-version.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/tarnix-rmi-config.cmake
              ${CMAKE_CURRENT_BINARY_DIR}/tarnix-rmi-config-version.cmake
  DESTINATION ${TARNIX_PACKAGE_DIR} COMPONENT Development)

install(FILES ${PROJECT_SOURCE_DIR}/docs/integration.md ${PROJECT_SOURCE_DIR}/README.md
  DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT Documentation)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/examples/
  DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples COMPONENT Documentation)
