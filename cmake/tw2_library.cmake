# What the libraries have in common, whoever builds them.

# Has the standard headers that most sources include, and those given, compiled once for a target. A compiler cache cannot
# tell whether a precompiled header has changed, and is left the headers. So are builds for other machines, which see
# whether each source includes what it needs.
function(tw2_precompile_headers target)
  if(PROJECT_IS_TOP_LEVEL AND NOT CMAKE_CROSSCOMPILING AND NOT CMAKE_CXX_COMPILER_LAUNCHER MATCHES ccache)
    target_precompile_headers(${target} PRIVATE ${ARGN}
      <algorithm> <array> <cmath> <filesystem> <functional> <map> <memory> <optional> <set> <span> <string> <utility> <vector>)
    # What g++ 12 says of the standard library's own copying (its bug 105651) is silenced in system headers only.
    target_compile_options(${target} PRIVATE "$<$<CXX_COMPILER_ID:GNU>:-Wno-array-bounds;-Wno-stringop-overflow>")
  endif()
endfunction()

# Makes what a library or module is built with such that it can be unloaded: g++ would give inline variables symbols that
# are unique in the process, and the system never unloads a library that has one.
function(tw2_make_unloadable target)
  target_compile_options(${target} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-fno-gnu-unique>)
endfunction()

# Defines the library `target`, shared unless BUILD_SHARED_LIBS says otherwise, known to hosts as tw2::<name>, whose
# header <header> has the export macro <prefix>_API. An explicit instantiation has <prefix>_EXTERN_TEMPLATE_API in its
# declaration and <prefix>_TEMPLATE_API in its definition: compilers differ in which of the two they export by.
function(tw2_add_library target name prefix header)
  set(kind SHARED)
  if(DEFINED BUILD_SHARED_LIBS AND NOT BUILD_SHARED_LIBS)
    set(kind STATIC)
  endif()
  add_library(${target} ${kind} ${ARGN})
  add_library(tw2::${name} ALIAS ${target})
  string(CONFIGURE [[
#if defined(_MSC_VER) && defined(@target@_EXPORTS)
#  define @prefix@_EXTERN_TEMPLATE_API
#  define @prefix@_TEMPLATE_API @prefix@_API
#else
#  define @prefix@_EXTERN_TEMPLATE_API @prefix@_API
#  define @prefix@_TEMPLATE_API
#endif
]] template_macros @ONLY)
  generate_export_header(${target} BASE_NAME ${prefix} EXPORT_MACRO_NAME ${prefix}_API
    EXPORT_FILE_NAME ${PROJECT_BINARY_DIR}/generated/${header} CUSTOM_CONTENT_FROM_VARIABLE template_macros)
  if(kind STREQUAL STATIC)
    target_compile_definitions(${target} PUBLIC ${prefix}_STATIC_DEFINE)
  endif()
  target_compile_features(${target} PUBLIC cxx_std_20)
  target_link_libraries(${target} PRIVATE $<BUILD_INTERFACE:tw2_flags>)
  tw2_make_unloadable(${target})
  tw2_precompile_headers(${target})
  set_target_properties(${target} PROPERTIES
    EXPORT_NAME ${name} VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR})
endfunction()
