# What makes a fault of memory harder to misuse, for packages; and builds that do not tell where they were made.
if(VELTRAC_HARDENED)
  include(CheckCXXCompilerFlag)
  include(CheckPIESupported)
  check_pie_supported(LANGUAGES CXX)
  set(CMAKE_POSITION_INDEPENDENT_CODE ON)
  # Distributions set the lower level themselves: it has to go before the higher one is defined.
  add_compile_options(-fstack-protector-strong -fstack-clash-protection
    $<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE> $<$<NOT:$<CONFIG:Debug>>:-D_FORTIFY_SOURCE=3>)
  check_cxx_compiler_flag(-fcf-protection=full VELTRAC_HAS_CF_PROTECTION)
  if(VELTRAC_HAS_CF_PROTECTION)
    add_compile_options(-fcf-protection=full)
  endif()
  add_link_options(-Wl,-z,relro -Wl,-z,now)
  add_compile_options(-ffile-prefix-map=${PROJECT_SOURCE_DIR}=. -ffile-prefix-map=${PROJECT_BINARY_DIR}=build)
endif()
