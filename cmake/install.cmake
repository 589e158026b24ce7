# Installing Scrivlet: headers, libraries, the CMake package (Scrivlet::scrivlet, ::engine when shared, ::evidence, ::qt, ::quick) and
# pkg-config files, so that a host builds against it with find_package or pkg-config alone.
include(CMakePackageConfigHelpers)

set(SCRIVLET_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/Scrivlet)
set(SCRIVLET_INSTALLED_TARGETS scrivlet)
if(TARGET scrivlet_engine_library)
  list(APPEND SCRIVLET_INSTALLED_TARGETS scrivlet_engine_library)
endif()
if(TARGET scrivlet_qt)
  list(APPEND SCRIVLET_INSTALLED_TARGETS scrivlet_qt)
  install(DIRECTORY ${PROJECT_SOURCE_DIR}/qt/include/scrivlet DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
  install(FILES ${PROJECT_BINARY_DIR}/include/scrivlet/qt_export.h
          DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/scrivlet)
endif()

if(TARGET scrivlet_quick)
  list(APPEND SCRIVLET_INSTALLED_TARGETS scrivlet_quick ${SCRIVLET_QUICK_OUTPUT_TARGETS})
  install(DIRECTORY ${PROJECT_SOURCE_DIR}/qt/quick/include/scrivlet DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
endif()

if(TARGET scrivlet_evidence)
  list(APPEND SCRIVLET_INSTALLED_TARGETS scrivlet_evidence)
  install(FILES ${PROJECT_BINARY_DIR}/include/scrivlet/evidence_export.h
          DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/scrivlet)
endif()

# Installed shared libraries find the ones they depend on beside them, wherever the prefix is.
set_target_properties(${SCRIVLET_INSTALLED_TARGETS} PROPERTIES INSTALL_RPATH "$ORIGIN")

install(TARGETS ${SCRIVLET_INSTALLED_TARGETS} EXPORT ScrivletTargets
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  OBJECTS DESTINATION ${CMAKE_INSTALL_LIBDIR}/scrivlet-objects
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/scrivlet DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(FILES ${PROJECT_BINARY_DIR}/include/scrivlet/export.h
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/scrivlet)

install(EXPORT ScrivletTargets NAMESPACE Scrivlet:: DESTINATION ${SCRIVLET_CMAKE_DIR})
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/ScrivletConfig.cmake.in
  ${PROJECT_BINARY_DIR}/ScrivletConfig.cmake INSTALL_DESTINATION ${SCRIVLET_CMAKE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/ScrivletConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/ScrivletConfig.cmake ${PROJECT_BINARY_DIR}/ScrivletConfigVersion.cmake
        DESTINATION ${SCRIVLET_CMAKE_DIR})

# pkg-config files locate the prefix from their own place, so that `cmake --install --prefix` may
# choose it after configuring.
file(RELATIVE_PATH SCRIVLET_PC_TO_PREFIX /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
string(REGEX REPLACE "/$" "" SCRIVLET_PC_TO_PREFIX "${SCRIVLET_PC_TO_PREFIX}")
string(REPLACE ";" " " SCRIVLET_PC_REQUIRES_PRIVATE "${SCRIVLET_CAIRO_MODULES};${SCRIVLET_PLATFORM_MODULES}")
configure_file(${CMAKE_CURRENT_LIST_DIR}/scrivlet.pc.in ${PROJECT_BINARY_DIR}/scrivlet.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/scrivlet.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
if(TARGET scrivlet_qt)
  configure_file(${CMAKE_CURRENT_LIST_DIR}/scrivlet-qt.pc.in ${PROJECT_BINARY_DIR}/scrivlet-qt.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/scrivlet-qt.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endif()
if(TARGET scrivlet_quick)
  # The QML type registration reaches a host only when something refers to it (see qt/quick).
  configure_file(${CMAKE_CURRENT_LIST_DIR}/scrivlet-quick.pc.in ${PROJECT_BINARY_DIR}/scrivlet-quick.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/scrivlet-quick.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endif()
