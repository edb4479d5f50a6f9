# What makes a fault in memory harder to use. It stays beside the flags of whoever packages this, who
# may switch it off where those say the same.
option(BREVANHOLT_HARDENING "Compile and link with the hardening flags" ON)
if(NOT BREVANHOLT_HARDENING)
  return()
endif()

include(CheckPIESupported)
check_pie_supported(LANGUAGES CXX)  # adds -pie to programs, as the objects are built with -fPIE

include(CheckCXXCompilerFlag)
check_cxx_compiler_flag(-fcf-protection BREVANHOLT_HAS_CF_PROTECTION)  # not on every processor
add_compile_options(-fstack-protector-strong
                    $<$<BOOL:${BREVANHOLT_HAS_CF_PROTECTION}>:-fcf-protection>)
add_link_options(LINKER:-z,relro LINKER:-z,now)

# The checked functions need optimisation, and hide what is called from the sanitizers.
if(NOT BREVANHOLT_SANITIZE)
  add_compile_options($<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE>
                      $<$<NOT:$<CONFIG:Debug>>:-D_FORTIFY_SOURCE=2>)
endif()
