# What the library is not compiled for is said by the compiler. One header says it, and needs no other, not even the
# standard library's of a machine that is not there.
function(tw2_add_refusal name sentence)
  add_test(NAME refused.${name} COMMAND ${ARGN} -fsyntax-only -x c++ ${PROJECT_SOURCE_DIR}/platform/compiler.h)
  set_tests_properties(refused.${name} PROPERTIES PASS_REGULAR_EXPRESSION "error: (#error )?\"?TW2 ${sentence}")
endfunction()

if(CMAKE_CXX_COMPILER_ID MATCHES "^(GNU|Clang)$")
  tw2_add_refusal(fast_math "cannot be compiled with -ffast-math" ${CMAKE_CXX_COMPILER} -ffast-math)
  if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|AMD64)$")
    tw2_add_refusal(x86_32 "does not support 32-bit x86" ${CMAKE_CXX_COMPILER} -m32)
  endif()
endif()
find_program(TW2_CLANG clang++)
mark_as_advanced(TW2_CLANG)
if(TW2_CLANG)
  tw2_add_refusal(big_endian "does not support big-endian processors" ${TW2_CLANG} --target=s390x-linux-gnu)
endif()
