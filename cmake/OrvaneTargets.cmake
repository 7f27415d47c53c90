# How targets are declared in this project, so that adding a file is one line.

find_package(Threads REQUIRED)

# Compiler settings shared by every target.
add_library(orvane_compile_options INTERFACE)
target_compile_options(orvane_compile_options INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Wnon-virtual-dtor -Wimplicit-fallthrough
  # Results are pinned in tests: a multiply and an add are fused only where the code says so.
  -ffp-contract=off)
if(CMAKE_CXX_COMPILER_LAUNCHER MATCHES "(^|/)ccache$")
  # Lets several checkouts of the project share what one of them has compiled.
  set(CMAKE_CXX_COMPILER_LAUNCHER
    env "CCACHE_BASEDIR=${PROJECT_SOURCE_DIR}" CCACHE_NOHASHDIR=1 ccache)
  set(CMAKE_C_COMPILER_LAUNCHER ${CMAKE_CXX_COMPILER_LAUNCHER})
else()
  # No path of the building machine in the binaries; it would also defeat the sharing above.
  target_compile_options(orvane_compile_options INTERFACE
    "-ffile-prefix-map=${PROJECT_SOURCE_DIR}/=")
endif()
if(ORVANE_BUILD_TESTS OR ORVANE_BUILD_BENCH OR ORVANE_BUILD_FUZZERS)
  target_compile_definitions(orvane_compile_options INTERFACE ORVANE_EXPORTS_FOR_TESTING)
endif()
if(ORVANE_WARNINGS_AS_ERRORS)
  target_compile_options(orvane_compile_options INTERFACE -Werror)
endif()
# Set by the variable DEFAULT_ORVANE_IS_TEST where a target is made.
define_property(TARGET PROPERTY ORVANE_IS_TEST INITIALIZE_FROM_VARIABLE DEFAULT_ORVANE_IS_TEST)
if(ORVANE_SANITIZE)
  set(instrumentation -O1 -g1
    "-fsanitize=${ORVANE_SANITIZE}" -fno-omit-frame-pointer -fno-sanitize-recover=all)
  if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
    # Instrumented code leads g++ to see reads of members that are not there.
    list(APPEND instrumentation -Wno-maybe-uninitialized)
  endif()
  set(isProduct "$<NOT:$<BOOL:$<TARGET_PROPERTY:ORVANE_IS_TEST>>>")
  target_compile_options(orvane_compile_options INTERFACE "$<${isProduct}:${instrumentation}>")
  target_compile_definitions(orvane_compile_options INTERFACE
    "$<${isProduct}:_GLIBCXX_ASSERTIONS>")
  target_link_options(orvane_compile_options INTERFACE "-fsanitize=${ORVANE_SANITIZE}")
endif()

# orvane_sources(<target> HEADERS ... PRIVATE_HEADERS ... SOURCES ...)
# Adds the calling folder's files to a library. HEADERS are installed and must compile alone.
function(orvane_sources target)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "HEADERS;PRIVATE_HEADERS;SOURCES")
  list(TRANSFORM arg_HEADERS PREPEND "${CMAKE_CURRENT_SOURCE_DIR}/")
  list(TRANSFORM arg_PRIVATE_HEADERS PREPEND "${CMAKE_CURRENT_SOURCE_DIR}/")
  list(TRANSFORM arg_SOURCES PREPEND "${CMAKE_CURRENT_SOURCE_DIR}/")
  target_sources(${target} PRIVATE ${arg_SOURCES} ${arg_PRIVATE_HEADERS}
    PUBLIC FILE_SET HEADERS BASE_DIRS "${PROJECT_SOURCE_DIR}" FILES ${arg_HEADERS})
endfunction()

# orvane_export_only_own_symbols(<target>)
# Nothing but namespace orvane leaves the library: neither a static library linked into it nor an
# instantiated template of the standard library. What it uses must be linked to it.
function(orvane_export_only_own_symbols target)
  if(ORVANE_SANITIZE)
    # The sanitizers' run-time symbols are found through the executable; what both define of inline
    # functions is the library's own, which is instrumented.
    target_link_options(${target} PRIVATE LINKER:-Bsymbolic-functions)
    return()
  endif()
  set(map "${PROJECT_SOURCE_DIR}/cmake/exported_symbols.map")
  target_link_options(${target} PRIVATE "LINKER:--version-script=${map}" LINKER:--no-undefined)
  set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS "${map}")
endfunction()

# orvane_test(<name> SOURCES ... [LIBRARIES ...])
# One GoogleTest binary; each of its tests becomes a ctest entry.
function(orvane_test name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LIBRARIES")
  add_executable(${name} ${arg_SOURCES})
  target_link_libraries(${name} PRIVATE orvane_compile_options orvane_test_support ${arg_LIBRARIES}
    GTest::gmock GTest::gtest GTest::gtest_main)
  gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60 PROPERTIES
    TIMEOUT 600
    ENVIRONMENT "TSAN_OPTIONS=suppressions=${PROJECT_SOURCE_DIR}/cmake/thread_sanitizer.txt")
endfunction()
