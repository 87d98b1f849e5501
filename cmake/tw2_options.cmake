# What is built, and how. A part whose packages are missing is switched off with a message that says why.

option(TW2_BUILD_TESTS "Build the tests (GoogleTest)" ${PROJECT_IS_TOP_LEVEL})
option(TW2_BUILD_TOOLS "Build the tw2 command (CLI11)" ${PROJECT_IS_TOP_LEVEL})
option(TW2_BUILD_RENDER "Build the renderer (EGL, epoxy)" ${PROJECT_IS_TOP_LEVEL})
option(TW2_BUILD_CONVERT "Build the converter (Assimp)" ${PROJECT_IS_TOP_LEVEL})
option(TW2_BUILD_EXAMPLES "Build the example hosts" ${PROJECT_IS_TOP_LEVEL})
option(TW2_BUILD_BENCH "Build the benchmarks (Google Benchmark)" OFF)
option(TW2_BUILD_FUZZ "Build the fuzz targets (clang, libFuzzer)" OFF)
option(TW2_WARNINGS_AS_ERRORS "Fail the build on a warning" ${PROJECT_IS_TOP_LEVEL})
set(TW2_SANITIZE "" CACHE STRING "Sanitizers for everything built here, e.g. address,undefined")

foreach(room render convert tools examples)
  string(TOUPPER ${room} upper)
  if(TW2_BUILD_${upper} AND NOT EXISTS ${PROJECT_SOURCE_DIR}/${room}/CMakeLists.txt)
    set(TW2_BUILD_${upper} OFF)
  endif()
endforeach()

# Compile and link flags that every target of this project shares.
add_library(tw2_flags INTERFACE)
target_compile_options(tw2_flags INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow
  # The same bits on every machine: a fused multiply-add rounds once where the source rounds twice.
  -ffp-contract=off
  $<$<BOOL:${TW2_WARNINGS_AS_ERRORS}>:-Werror>)
if(TW2_SANITIZE)
  target_compile_options(tw2_flags INTERFACE -fsanitize=${TW2_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  target_link_options(tw2_flags INTERFACE -fsanitize=${TW2_SANITIZE})
endif()
