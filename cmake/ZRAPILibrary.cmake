# Common shape of the project's shared libraries.

# The properties that make a shared library a product: SONAME, hidden symbols, name, install set.
# zrapi_shared_library(TARGET EXPORT_NAME)
function(zrapi_shared_library target export_name)
  set_target_properties(
    ${target}
    PROPERTIES OUTPUT_NAME ZRAPI_${export_name}
               EXPORT_NAME ${export_name}
               VERSION ${PROJECT_VERSION}
               SOVERSION ${PROJECT_VERSION_MAJOR}
               # Installed anywhere, the libraries find each other beside themselves.
               INSTALL_RPATH "$ORIGIN"
               CXX_VISIBILITY_PRESET hidden
               C_VISIBILITY_PRESET hidden
               VISIBILITY_INLINES_HIDDEN ON)
  target_compile_features(${target} PUBLIC cxx_std_17)
  target_include_directories(
    ${target} PUBLIC "$<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>"
                     "$<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/zrapi>")
  # Each library resolves all it needs by what it is linked with; a sanitizer's calls by the program.
  if(NOT ZRAPI_SANITIZE)
    target_link_options(${target} PRIVATE LINKER:--no-undefined)
  endif()
  # Sanitizers and coverage need names of their own outside.
  if(NOT ZRAPI_SANITIZE AND NOT ZRAPI_COVERAGE)
    set(exports ${PROJECT_SOURCE_DIR}/cmake/zrapi_exports.map)
    target_link_options(${target} PRIVATE LINKER:--version-script=${exports})
    set_target_properties(${target} PROPERTIES LINK_DEPENDS ${exports})
  endif()
  add_library(ZRAPI::${export_name} ALIAS ${target})
  install(TARGETS ${target} EXPORT ZRAPI_HardwareTargets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
endfunction()

# One subsystem of the hardware library: compiled on its own, linked into the one shared library.
# zrapi_hardware_subsystem(NAME SOURCES... )
function(zrapi_hardware_subsystem name)
  set(target zrapi_hardware_${name})
  add_library(${target} OBJECT ${ARGN})
  set_target_properties(
    ${target} PROPERTIES POSITION_INDEPENDENT_CODE ON CXX_VISIBILITY_PRESET hidden
                         C_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
  # Calls within a source go straight to their function, not through the linkage table: around a
  # system call those hops were a third of the library's own time.
  target_compile_options(${target} PRIVATE -fno-semantic-interposition)
  target_link_libraries(${target} PUBLIC ZRAPI::Common ZRAPI::OS_ABS ZRAPI::Utility)
  target_sources(zrapi_hardware PRIVATE "$<TARGET_OBJECTS:${target}>")
endfunction()
