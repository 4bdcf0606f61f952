# Warnings and sanitizers of every target of the program, in one place.
add_library(veltrac_warnings INTERFACE)
target_compile_options(veltrac_warnings INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion
  # GCC 12 sees overlaps in std::string's operator+ that are none.
  $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>
  $<$<BOOL:${VELTRAC_WERROR}>:-Werror>)

if(VELTRAC_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
endif()
if(VELTRAC_FUZZ)
  # Without a note of every comparison, which took half of the time: what tables the formats have stands in the corpus.
  add_compile_options(-fsanitize=fuzzer-no-link -fno-sanitize-coverage=trace-cmp)
endif()
if(VELTRAC_SANITIZE_THREADS)
  add_compile_options(-fsanitize=thread -fno-omit-frame-pointer)
  add_link_options(-fsanitize=thread)
endif()
