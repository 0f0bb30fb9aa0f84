# Third-party libraries, all from Debian packages (scripts/setup installs them).
find_package(Threads REQUIRED)
find_package(ICU 72 REQUIRED COMPONENTS uc i18n data)
find_package(nlohmann_json 3.11 REQUIRED)
find_package(SQLite3 REQUIRED)
find_package(uriparser 0.9 CONFIG REQUIRED)
find_package(PkgConfig REQUIRED)
pkg_check_modules(PANGOCAIRO REQUIRED IMPORTED_TARGET pangocairo cairo cairo-png cairo-svg)

# Standalone Asio ships no CMake package.
find_path(ASIO_INCLUDE_DIR asio.hpp REQUIRED)
add_library(kestrona_asio INTERFACE)
add_library(kestrona::asio ALIAS kestrona_asio)
target_include_directories(kestrona_asio SYSTEM INTERFACE ${ASIO_INCLUDE_DIR})
# Asio chooses between std::aligned_alloc and its own aligned allocation by a
# macro of the standard library's configuration, so a file that includes Asio
# before any standard header would allocate one way and free the other. Fix
# the choice for every file.
target_compile_definitions(kestrona_asio INTERFACE ASIO_STANDALONE ASIO_NO_DEPRECATED ASIO_DISABLE_STD_ALIGNED_ALLOC)
target_link_libraries(kestrona_asio INTERFACE Threads::Threads)
# Asio looks for clang's coroutines only in <experimental/coroutine>; clang
# (the fuzz preset) has the standard ones with GCC's library.
if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
  target_compile_definitions(kestrona_asio INTERFACE ASIO_HAS_CO_AWAIT=1)
endif()

if(KESTRONA_BUILD_TESTS)
  find_package(GTest REQUIRED)
  include(GoogleTest)
endif()
if(KESTRONA_BUILD_BENCHMARKS)
  find_package(benchmark REQUIRED)
endif()
