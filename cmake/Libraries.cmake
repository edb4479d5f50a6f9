# A library of this project, called brevanholt_NAME. It sees the headers of the project from its root,
# and of other libraries only those of what it links with. SOURCES are relative to the calling folder.
function(brevanholt_library name)
  cmake_parse_arguments(PARSE_ARGV 1 ARG "" "" "SOURCES;PUBLIC;PRIVATE")
  add_library(brevanholt_${name} STATIC ${ARG_SOURCES})
  target_include_directories(brevanholt_${name} PUBLIC ${CMAKE_SOURCE_DIR})
  target_link_libraries(brevanholt_${name} PUBLIC ${ARG_PUBLIC} PRIVATE ${ARG_PRIVATE})
endfunction()

# Makes the headers of OpenSSL and X11 unusable in the library brevanholt_NAME. Debian installs them
# where every compiler looks; the headers of GLib, GTK and WebKit need an include path and are out of
# reach without this.
function(brevanholt_wall name)
  target_include_directories(brevanholt_${name} BEFORE PRIVATE ${CMAKE_BINARY_DIR}/walls)
endfunction()

foreach(folder openssl X11)
  file(GLOB headers RELATIVE /usr/include /usr/include/${folder}/*.h)
  foreach(header ${headers})
    file(CONFIGURE OUTPUT ${CMAKE_BINARY_DIR}/walls/${header}
         CONTENT "#error \"${header} is out of reach here: only platform/ may use it.\"\n")
  endforeach()
endforeach()
