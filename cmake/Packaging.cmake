# The archives handed to the agent's engineers (scripts/package.sh): a ZIP of the Windows
# install tree; a TGZ and a DEB of the Linux one.
set(CPACK_PACKAGE_NAME tarnix-rmi)
set(CPACK_PACKAGE_VENDOR "tarnix")
set(CPACK_PACKAGE_CONTACT "tarnix-rmi maintainers <tarnix-rmi@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY
  "In-process component of the desktop agent: forwards host data to the message server over Java RMI")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_STRIP_FILES OFF)

if(WIN32)
  set(CPACK_GENERATOR ZIP)
  set(CPACK_SYSTEM_NAME win64)
else()
  set(CPACK_GENERATOR TGZ DEB)
  set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
  set(CPACK_DEBIAN_PACKAGE_SECTION libs)
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
  # The component loads the Java runtime it finds through the registry, not by linking.
  set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "default-jre-headless | java8-runtime-headless")
endif()
include(CPack)
