# The packages have the program's version.
set(changelog ${CMAKE_SOURCE_DIR}/debian/changelog)
if(EXISTS ${changelog})
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${changelog})
  file(STRINGS ${changelog} newest LIMIT_COUNT 1)
  if(NOT newest MATCHES "^brevanholt \\(${PROJECT_VERSION}(-[0-9]+)?\\) ")
    message(FATAL_ERROR
            "CMakeLists.txt has version ${PROJECT_VERSION}, but debian/changelog begins with: ${newest}")
  endif()
endif()

# What the program knows of its own build. The number is found out whenever something is built, so it
# stands in a source of its own: a new one compiles that, and links.
configure_file(${CMAKE_SOURCE_DIR}/platform/BuildInfo.h.in
               ${CMAKE_BINARY_DIR}/generated/platform/BuildInfo.h @ONLY)
set(build_number ${CMAKE_BINARY_DIR}/generated/platform/BuildNumber.cpp)
find_package(Git QUIET)
add_custom_target(brevanholt_build_number
  COMMAND ${CMAKE_COMMAND} -D SOURCE=${CMAKE_SOURCE_DIR} -D GIT=${GIT_EXECUTABLE}
          -D OUTPUT=${build_number} -P ${CMAKE_SOURCE_DIR}/cmake/BuildNumber.cmake
  BYPRODUCTS ${build_number}
  COMMENT "")

add_library(brevanholt_build_info STATIC ${build_number})
add_dependencies(brevanholt_build_info brevanholt_build_number)
target_include_directories(brevanholt_build_info PUBLIC ${CMAKE_BINARY_DIR}/generated)
