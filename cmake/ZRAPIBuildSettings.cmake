# Language, warnings, sanitizers and output folders, the same for every target of the project.

set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_C_STANDARD 11)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/lib")
set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/lib")
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/bin")

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
  set(CMAKE_BUILD_TYPE RelWithDebInfo CACHE STRING "Build type" FORCE)
endif()

add_compile_options(-Wall -Wextra -Wshadow -Wconversion
                    "$<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor;-Wmissing-declarations>")
# On 32 bit, stat fails for large inode numbers and sizes without it.
add_compile_definitions(_FILE_OFFSET_BITS=64)
if(ZRAPI_WARNINGS_AS_ERRORS)
  add_compile_options(-Werror)
endif()

if(ZRAPI_SANITIZE)
  add_compile_options(-fsanitize=${ZRAPI_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${ZRAPI_SANITIZE})
endif()

if(ZRAPI_COVERAGE)
  add_compile_options(--coverage -O0 -fprofile-update=atomic)
  add_link_options(--coverage)
endif()
