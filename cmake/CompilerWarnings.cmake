# Warnings and sanitizers of every target of the program, in one place.
add_library(veltrac_warnings INTERFACE)
target_compile_options(veltrac_warnings INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion
  $<$<BOOL:${VELTRAC_WERROR}>:-Werror>)

if(VELTRAC_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
endif()
