# What is built, and how. A part whose packages are missing is switched off with a message that says why; the two
# libraries themselves need nothing but a compiler and the stb headers.

option(TW2_BUILD_TESTS "Build the tests (GoogleTest)" ${PROJECT_IS_TOP_LEVEL})
option(TW2_BUILD_TOOLS "Build the tw2 command (CLI11)" ${PROJECT_IS_TOP_LEVEL})
option(TW2_BUILD_RENDER "Build the renderer (EGL, epoxy, giflib, libimagequant)" ${PROJECT_IS_TOP_LEVEL})
option(TW2_BUILD_CONVERT "Build the converter (Assimp)" ${PROJECT_IS_TOP_LEVEL})
option(TW2_BUILD_EXAMPLES "Build the example hosts" ${PROJECT_IS_TOP_LEVEL})
option(TW2_BUILD_BENCH "Build the benchmarks (Google Benchmark)" OFF)
option(TW2_BUILD_FUZZ "Build the fuzz targets (clang, libFuzzer)" OFF)
option(TW2_WARNINGS_AS_ERRORS "Fail the build on a warning" ${PROJECT_IS_TOP_LEVEL})
set(TW2_SANITIZE "" CACHE STRING "Sanitizers for everything built here, e.g. address,undefined")

# Switches a part off for this run of CMake only: the cache keeps what was asked for, so that the part comes back by
# itself once its package is there.
macro(tw2_switch_off part reason)
  message(STATUS "TW2_BUILD_${part} is off: ${reason}")
  set(TW2_BUILD_${part} OFF)
endmacro()

find_path(TW2_STB_INCLUDE_DIR stb/stb_image.h DOC "Folder that contains stb/stb_image.h")
if(NOT TW2_STB_INCLUDE_DIR)
  message(FATAL_ERROR "stb/stb_image.h was not found: install the stb headers (libstb-dev) or set TW2_STB_INCLUDE_DIR")
endif()

if(TW2_BUILD_TESTS)
  find_package(GTest QUIET)
  if(NOT GTest_FOUND)
    tw2_switch_off(TESTS "GoogleTest was not found (libgtest-dev, libgmock-dev)")
  endif()
endif()

if(TW2_BUILD_TOOLS)
  find_package(CLI11 QUIET)
  if(NOT CLI11_FOUND)
    tw2_switch_off(TOOLS "CLI11 was not found (libcli11-dev)")
  endif()
endif()

if(TW2_BUILD_RENDER)
  set(missing)
  find_package(PkgConfig QUIET)
  if(PKG_CONFIG_FOUND)
    pkg_check_modules(EPOXY QUIET IMPORTED_TARGET epoxy)
    pkg_check_modules(EGL QUIET IMPORTED_TARGET egl)
  else()
    list(APPEND missing "pkg-config (pkg-config)")
  endif()
  find_path(TW2_GIF_INCLUDE_DIR gif_lib.h)
  find_library(TW2_GIF_LIBRARY gif)
  find_path(TW2_IMAGEQUANT_INCLUDE_DIR libimagequant.h)
  find_library(TW2_IMAGEQUANT_LIBRARY imagequant)
  if(NOT EPOXY_FOUND)
    list(APPEND missing "epoxy (libepoxy-dev)")
  endif()
  if(NOT EGL_FOUND)
    list(APPEND missing "EGL (libegl-dev)")
  endif()
  if(NOT TW2_GIF_INCLUDE_DIR OR NOT TW2_GIF_LIBRARY)
    list(APPEND missing "giflib (libgif-dev)")
  endif()
  if(NOT TW2_IMAGEQUANT_INCLUDE_DIR OR NOT TW2_IMAGEQUANT_LIBRARY)
    list(APPEND missing "libimagequant (libimagequant-dev)")
  endif()
  if(missing)
    list(JOIN missing ", " missing)
    tw2_switch_off(RENDER "not found: ${missing}")
  endif()
endif()

if(TW2_BUILD_CONVERT)
  find_package(assimp QUIET)
  if(NOT assimp_FOUND)
    tw2_switch_off(CONVERT "Assimp was not found (libassimp-dev)")
  endif()
endif()

if(TW2_BUILD_BENCH)
  find_package(benchmark QUIET)
  if(NOT benchmark_FOUND)
    tw2_switch_off(BENCH "Google Benchmark was not found (libbenchmark-dev)")
  endif()
endif()

if(TW2_BUILD_FUZZ AND NOT CMAKE_CXX_COMPILER_ID MATCHES Clang)
  message(FATAL_ERROR "TW2_BUILD_FUZZ needs clang (libFuzzer), the compiler is ${CMAKE_CXX_COMPILER_ID}")
endif()

# Compile and link flags that every target of this project shares.
add_library(tw2_flags INTERFACE)
target_compile_options(tw2_flags INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow
  # The same bits on every machine: a fused multiply-add rounds once where the source rounds twice.
  -ffp-contract=off
  # g++ 12 sees overlapping copies where a literal is assigned to a string (its bug 105651).
  $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>
  $<$<BOOL:${TW2_WARNINGS_AS_ERRORS}>:-Werror>)

# Makes what a library or module is built with such that it can be unloaded: g++ would give inline variables symbols that
# are unique in the process, and the system never unloads a library that has one.
function(tw2_make_unloadable target)
  target_compile_options(${target} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-fno-gnu-unique>)
endfunction()
if(TW2_SANITIZE)
  target_compile_options(tw2_flags INTERFACE -fsanitize=${TW2_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  target_link_options(tw2_flags INTERFACE -fsanitize=${TW2_SANITIZE})
endif()
if(TW2_BUILD_FUZZ)
  # The fuzzer steers by the branches taken, so the libraries under test are instrumented too.
  target_compile_options(tw2_flags INTERFACE -fsanitize=fuzzer-no-link)
endif()
