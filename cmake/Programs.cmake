# Helpers for test and benchmark programs.

# Sixty programs are linked in a build for developers: by mold, where it is there, in a third of the time. What is
# packed is linked by what the distribution links with.
include(CheckLinkerFlag)
check_linker_flag(CXX -fuse-ld=mold VELTRAC_HAS_MOLD)
if(VELTRAC_HAS_MOLD AND VELTRAC_TESTS AND NOT VELTRAC_HARDENED)
  add_link_options(-fuse-ld=mold)
endif()

# Builds the test programs that show windows, whose cases bear the label "windows": what another Qt can change.
add_custom_target(veltrac_window_tests)

# veltrac_add_test(<name> SOURCES … LIBRARIES …): a GoogleTest program, each of its cases a ctest.
# Windows are tested on Qt's offscreen platform. What all read is precompiled once for those with windows, once for
# the others.
function(veltrac_add_test name)
  cmake_parse_arguments(arg "" "" "SOURCES;LIBRARIES" ${ARGN})
  add_executable(${name} ${arg_SOURCES})
  target_link_libraries(${name} PRIVATE ${arg_LIBRARIES} veltrac_warnings GTest::gtest)
  set_target_properties(${name} PROPERTIES UNITY_BUILD OFF)  # their helpers share short names
  set(labels "")
  set(headers veltrac_test_core)
  if("veltrac_gui" IN_LIST arg_LIBRARIES)
    set(labels LABELS windows)
    set(headers veltrac_test_main)
    add_dependencies(veltrac_window_tests ${name})
    target_compile_options(${name} PRIVATE -UQT_TESTCASE_BUILDDIR -UQT_TESTCASE_SOURCEDIR)  # see veltrac_test_main
  endif()
  if(TARGET ${headers} AND NOT name STREQUAL headers)
    target_precompile_headers(${name} REUSE_FROM ${headers})
  endif()
  # GCC 12 sees overflows in std::string's insert(), when it is precompiled, that are none.
  target_compile_options(${name} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-Wno-stringop-overflow -Wno-array-bounds>)
  gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST
    PROPERTIES ${labels} TIMEOUT 300 ENVIRONMENT "QT_QPA_PLATFORM=offscreen;LC_ALL=C.UTF-8")
endfunction()

# veltrac_add_benchmark(<name> SOURCES … LIBRARIES …): a Google Benchmark program.
function(veltrac_add_benchmark name)
  cmake_parse_arguments(arg "" "" "SOURCES;LIBRARIES" ${ARGN})
  add_executable(${name} ${arg_SOURCES})
  target_link_libraries(${name} PRIVATE ${arg_LIBRARIES} veltrac_warnings benchmark::benchmark)
endfunction()
