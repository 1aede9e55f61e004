# What an application links against after `cmake --install`: headers, CMake package, pkg-config files.

include(CMakePackageConfigHelpers)

# Headers named *_internal.h belong to the library's own sources.
install(DIRECTORY common hardware DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/zrapi
        FILES_MATCHING PATTERN "*.h" PATTERN "*_internal.h" EXCLUDE)

set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/ZRAPI_Hardware)
install(EXPORT ZRAPI_HardwareTargets NAMESPACE ZRAPI:: DESTINATION ${package_folder})
set(ZRAPI_INCLUDE_FOLDER ${CMAKE_INSTALL_INCLUDEDIR}/zrapi)
configure_package_config_file(cmake/ZRAPI_HardwareConfig.cmake.in
                              ${PROJECT_BINARY_DIR}/ZRAPI_HardwareConfig.cmake
                              INSTALL_DESTINATION ${package_folder}
                              PATH_VARS ZRAPI_INCLUDE_FOLDER)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/ZRAPI_HardwareConfigVersion.cmake
                                 COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/ZRAPI_HardwareConfig.cmake
              ${PROJECT_BINARY_DIR}/ZRAPI_HardwareConfigVersion.cmake DESTINATION ${package_folder})

# The pkg-config files find the installation from where they lie, so that it can be moved.
file(RELATIVE_PATH ZRAPI_PC_UP "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")

# zrapi_install_pkg_config(EXPORT_NAME DESCRIPTION REQUIRES [LIBRARY...])
function(zrapi_install_pkg_config name description requires)
  set(ZRAPI_PC_NAME ZRAPI_${name})
  set(ZRAPI_PC_DESCRIPTION "${description}")
  set(ZRAPI_PC_REQUIRES "${requires}")
  list(TRANSFORM ARGN PREPEND " -l" OUTPUT_VARIABLE ZRAPI_PC_LIBS)
  list(JOIN ZRAPI_PC_LIBS "" ZRAPI_PC_LIBS)
  # Qt's headers refuse to be compiled without, and Qt's own pkg-config files do not say so.
  if(requires MATCHES Qt5Core)
    set(ZRAPI_PC_CFLAGS " -fPIC")
  endif()
  configure_file(cmake/zrapi.pc.in ${PROJECT_BINARY_DIR}/ZRAPI_${name}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/ZRAPI_${name}.pc
          DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endfunction()

if(ZRAPI_PLATFORM_LIBRARIES STREQUAL "open")
  zrapi_install_pkg_config(Common "Debug sections, result codes, EEPROM, end points and events of the terminal" "")
  zrapi_install_pkg_config(OS_ABS "Tick and thread services of the terminal" "")
  zrapi_install_pkg_config(Utility "File and text services of the terminal" "")
  zrapi_install_pkg_config(Hardware "${PROJECT_DESCRIPTION}"
                           "ZRAPI_Common ZRAPI_OS_ABS ZRAPI_Utility Qt5Core")
else()
  # The maker's libraries bring no pkg-config files: they are named to the linker. No folder goes
  # with them, because the one of this machine is not the one of the terminal.
  zrapi_install_pkg_config(Hardware "${PROJECT_DESCRIPTION}" "Qt5Core" ZRAPI_Common ZRAPI_OS_ABS
                           ZRAPI_Utility)
endif()
