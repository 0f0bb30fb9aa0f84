# Functions that give every target of ours the same language level, include
# root and warnings. Warnings are errors in our code; third-party headers come
# in as system headers and are exempt.

set(KESTRONA_WARNINGS
  -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Wcast-align
  -Wimplicit-fallthrough -Werror)

# GCC 12 reports -Wmismatched-new-delete on coroutine frames that it allocates
# and frees itself (a compiler fault, fixed in GCC 13). The sanitizer preset
# still catches real mismatches at run time.
# At -O3 it also reports -Wrestrict inside std::string's own appends (the
# same fault), which stops the release build of the URL code.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  list(APPEND KESTRONA_WARNINGS -Wno-mismatched-new-delete -Wno-restrict)
endif()

function(kestrona_apply_defaults target)
  target_compile_features(${target} PUBLIC cxx_std_20)
  target_compile_options(${target} PRIVATE ${KESTRONA_WARNINGS})
endfunction()

# kestrona_add_library(<name> SOURCES <files...> [DEPS <targets...>] [PRIVATE_DEPS <targets...>])
# A static library whose headers are included from the project root, as in
# #include "Platform/Time/Date.h".
function(kestrona_add_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;DEPS;PRIVATE_DEPS" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  target_include_directories(${name} PUBLIC ${PROJECT_SOURCE_DIR})
  target_link_libraries(${name} PUBLIC ${ARG_DEPS} PRIVATE ${ARG_PRIVATE_DEPS})
  kestrona_apply_defaults(${name})
endfunction()

# kestrona_add_test(<name> SOURCES <files...> [DEPS <targets...>])
# A GoogleTest executable, registered with CTest test by test and labelled
# with the executable's name, so that a test preset can pick executables
# (ctest -L). Tests run with KESTRONA_TEST_DATA_DIR pointing at tests/data.
function(kestrona_add_test name)
  cmake_parse_arguments(ARG "" "" "SOURCES;DEPS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE ${ARG_DEPS} kestrona_test_main GTest::gtest GTest::gmock)
  kestrona_apply_defaults(${name})
  gtest_discover_tests(${name}
    DISCOVERY_MODE PRE_TEST
    PROPERTIES ENVIRONMENT "KESTRONA_TEST_DATA_DIR=${PROJECT_SOURCE_DIR}/tests/data" LABELS ${name})
endfunction()

# kestrona_add_benchmark(<name> SOURCES <files...> [DEPS <targets...>])
function(kestrona_add_benchmark name)
  cmake_parse_arguments(ARG "" "" "SOURCES;DEPS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE ${ARG_DEPS} benchmark::benchmark benchmark::benchmark_main)
  kestrona_apply_defaults(${name})
endfunction()

# kestrona_add_fuzzer(<name> SOURCES <files...> [DEPS <targets...>])
# A libFuzzer target (the fuzz preset), registered with CTest as one test
# that runs it for KESTRONA_FUZZ_SECONDS over its checked-in seed corpus
# tests/fuzz/corpus/<name>/. What it finds goes to the build folder: new
# inputs to <name>.corpus/, a crashing input to <name>-crash-<hash>.
function(kestrona_add_fuzzer name)
  cmake_parse_arguments(ARG "" "" "SOURCES;DEPS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE ${ARG_DEPS})
  target_link_options(${name} PRIVATE -fsanitize=fuzzer)
  kestrona_apply_defaults(${name})
  set(found ${CMAKE_CURRENT_BINARY_DIR}/${name}.corpus)
  file(MAKE_DIRECTORY ${found})
  add_test(NAME ${name}
    COMMAND ${name} -max_total_time=${KESTRONA_FUZZ_SECONDS} -timeout=10 -print_final_stats=1
      -artifact_prefix=${CMAKE_CURRENT_BINARY_DIR}/${name}- ${found} ${CMAKE_CURRENT_SOURCE_DIR}/corpus/${name})
  set_tests_properties(${name} PROPERTIES LABELS fuzz)
endfunction()
