set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

find_program(CCACHE ccache)
if(CCACHE)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE})
endif()

add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion
                    -Wnon-virtual-dtor -Woverloaded-virtual)
# GCC takes a class in a joined source for one in a header, which could not use anonymous namespaces.
if(CMAKE_UNITY_BUILD)
  add_compile_options(-Wno-subobject-linkage)
endif()
# GCC 12 finds uninitialised members in the standard library once sanitizers change its inlining.
if(BREVANHOLT_SANITIZE)
  add_compile_options(-fsanitize=${BREVANHOLT_SANITIZE} -fno-sanitize-recover=all
                      -fno-omit-frame-pointer -g1
                      $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
  add_link_options(-fsanitize=${BREVANHOLT_SANITIZE})
endif()
add_compile_definitions(_GLIBCXX_ASSERTIONS)
include(cmake/Hardening.cmake)
