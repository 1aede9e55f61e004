# libmediactl and libv4l2subdev as one target, MediaController::MediaController.
#
# v4l-utils installs both on the terminal's Linux and Debian has neither: the system's are taken where
# they are, else platform/media_controller is built. ZRAPI_MEDIA_CONTROLLER forces one of the two.
# The target defines ZRAPI_SUBDEV_FORMATS_TAKE_WHICH: 1 where v4l2_subdev_parse_setup_formats has the
# `which` argument that v4l-utils 1.28 put before the text, else 0.

set(ZRAPI_MEDIA_CONTROLLER auto CACHE STRING
    "Who provides libmediactl and libv4l2subdev: auto (the system if it can), system or own")
set_property(CACHE ZRAPI_MEDIA_CONTROLLER PROPERTY STRINGS auto system own)
if(NOT ZRAPI_MEDIA_CONTROLLER MATCHES "^(auto|system|own)$")
  message(FATAL_ERROR "ZRAPI_MEDIA_CONTROLLER is auto, system or own, not ${ZRAPI_MEDIA_CONTROLLER}")
endif()

# Sets RESULT to whether a C source with this call compiles against the system's headers. Nothing is
# kept: another installation may be found the next time.
function(_media_controller_compiles result call)
  set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)
  try_compile(
    compiles
    SOURCE_FROM_CONTENT
    formats.c
    "#include <mediactl/mediactl.h>
#include <mediactl/v4l2subdev.h>
int set_formats(struct media_device *media); int set_formats(struct media_device *media)
{ return v4l2_subdev_parse_setup_formats(${call}); }
"
    CMAKE_FLAGS "-DINCLUDE_DIRECTORIES=${MediaController_INCLUDE_DIR}" NO_CACHE)
  set(${result} ${compiles} PARENT_SCOPE)
endfunction()

# The system's headers declare C functions without saying so to C++: these say it for them.
function(_media_controller_wrap_headers folder)
  foreach(header mediactl v4l2subdev)
    file(
      CONFIGURE
      OUTPUT
      "${folder}/mediactl/${header}.h"
      CONTENT
      "#ifdef __cplusplus
extern \"C\" {
#endif
#include \"@MediaController_INCLUDE_DIR@/mediactl/@header@.h\"
#ifdef __cplusplus
}
#endif
"
      @ONLY)
  endforeach()
endfunction()

# Makes the target of what the system has, if it is whole and its form is known.
function(_media_controller_use_system)
  find_path(MediaController_INCLUDE_DIR NAMES mediactl/v4l2subdev.h)
  find_library(MediaController_mediactl_LIBRARY NAMES mediactl)
  find_library(MediaController_v4l2subdev_LIBRARY NAMES v4l2subdev)
  mark_as_advanced(MediaController_INCLUDE_DIR MediaController_mediactl_LIBRARY
                   MediaController_v4l2subdev_LIBRARY)
  if(NOT MediaController_INCLUDE_DIR OR NOT MediaController_mediactl_LIBRARY
     OR NOT MediaController_v4l2subdev_LIBRARY)
    return()
  endif()
  _media_controller_compiles(takes_two "media, \"\"")
  _media_controller_compiles(takes_three "media, V4L2_SUBDEV_FORMAT_ACTIVE, \"\"")
  if(takes_two AND NOT takes_three)
    set(takes_which 0)
  elseif(takes_three AND NOT takes_two)
    set(takes_which 1)
  else()
    message(STATUS "v4l2_subdev_parse_setup_formats of ${MediaController_INCLUDE_DIR} is not usable")
    return()
  endif()
  set(headers "${PROJECT_BINARY_DIR}/media_controller_headers")
  _media_controller_wrap_headers("${headers}")
  # Paths, not targets: what uses it privately must not name it to those who link that. The order is
  # the one that static libraries need.
  add_library(MediaController::MediaController INTERFACE IMPORTED GLOBAL)
  set_target_properties(
    MediaController::MediaController
    PROPERTIES INTERFACE_INCLUDE_DIRECTORIES "${headers};${MediaController_INCLUDE_DIR}"
               INTERFACE_COMPILE_DEFINITIONS "ZRAPI_SUBDEV_FORMATS_TAKE_WHICH=${takes_which}"
               INTERFACE_LINK_LIBRARIES
               "${MediaController_v4l2subdev_LIBRARY};${MediaController_mediactl_LIBRARY}")
  message(STATUS "Media controller: ${MediaController_mediactl_LIBRARY}")
endfunction()

if(NOT TARGET MediaController::MediaController)
  if(NOT ZRAPI_MEDIA_CONTROLLER STREQUAL "own")
    _media_controller_use_system()
  endif()
  if(NOT TARGET MediaController::MediaController AND NOT ZRAPI_MEDIA_CONTROLLER STREQUAL "system")
    add_subdirectory("${CMAKE_CURRENT_LIST_DIR}/../platform/media_controller"
                     "${PROJECT_BINARY_DIR}/platform/media_controller")
    add_library(MediaController::MediaController ALIAS zrapi_media_controller)
    message(STATUS "Media controller: platform/media_controller")
  endif()
endif()

if(TARGET MediaController::MediaController)
  set(_media_controller_target MediaController::MediaController)
else()
  unset(_media_controller_target)
endif()
include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(
  MediaController REQUIRED_VARS _media_controller_target
  REASON_FAILURE_MESSAGE "the system has no usable libmediactl and libv4l2subdev")
