# The build number counts the commits that went into the build; a source archive has none.
set(BREVANHOLT_BUILD_NUMBER "")
find_package(Git QUIET)
if(GIT_FOUND)
  execute_process(
    COMMAND ${GIT_EXECUTABLE} rev-list --count HEAD
    WORKING_DIRECTORY ${CMAKE_SOURCE_DIR}
    OUTPUT_VARIABLE BREVANHOLT_BUILD_NUMBER
    OUTPUT_STRIP_TRAILING_WHITESPACE
    ERROR_QUIET)
endif()
configure_file(${CMAKE_SOURCE_DIR}/platform/BuildInfo.h.in
               ${CMAKE_BINARY_DIR}/generated/platform/BuildInfo.h @ONLY)
