# Installs into a scratch prefix and moves the tree elsewhere (nothing in it may remember where it was), then builds and
# runs two strangers' projects against it: one finds it by CMake, one is a Makefile that asks pkg-config.
cmake_minimum_required(VERSION 3.25)
include(${CMAKE_CURRENT_LIST_DIR}/run.cmake)

set(prefix ${WORK_DIR}/moved)
file(REMOVE_RECURSE ${WORK_DIR})
foreach(component library development)
  run(${CMAKE_COMMAND} --install ${TW2_BINARY_DIR} --prefix ${WORK_DIR}/prefix --component ${component})
endforeach()
file(RENAME ${WORK_DIR}/prefix ${prefix})

foreach(library tw2 tw2_platform)
  if(SHARED)
    foreach(suffix so so.${SOVERSION} so.${VERSION})
      if(NOT EXISTS ${prefix}/${LIBDIR}/lib${library}.${suffix})
        message(FATAL_ERROR "${LIBDIR}/lib${library}.${suffix} is not installed")
      endif()
    endforeach()
  elseif(NOT EXISTS ${prefix}/${LIBDIR}/lib${library}.a)
    message(FATAL_ERROR "${LIBDIR}/lib${library}.a is not installed")
  endif()
endforeach()

set(flags ${CXX_FLAGS})
if(SANITIZE)
  string(APPEND flags " -fsanitize=${SANITIZE}")
endif()
build_host(${CMAKE_CURRENT_LIST_DIR}/find_package find_package ${GENERATOR} -D CMAKE_BUILD_TYPE=Debug -D CMAKE_CXX_FLAGS=${flags}
  -D CMAKE_PREFIX_PATH=${prefix} -D EXPECTED_VERSION=${VERSION} -D WITH_RENDER=${WITH_RENDER})
run(${WORK_DIR}/find_package/consumer)
# What a graphics driver leaves behind is told apart in the project's own tests only.
if(WITH_RENDER AND NOT SANITIZE)
  run(${WORK_DIR}/find_package/draw)
endif()

# The game that docs/tutorial.md ends with, as the page says it is built.
if(WITH_GAME AND NOT SANITIZE)
  file(COPY ${CMAKE_CURRENT_LIST_DIR}/game ${TW2_SOURCE_DIR}/examples/game.cpp DESTINATION ${WORK_DIR}/source)
  file(RENAME ${WORK_DIR}/source/game.cpp ${WORK_DIR}/source/game/game.cpp)
  build_host(${WORK_DIR}/source/game game ${GENERATOR} -D CMAKE_CXX_FLAGS=${flags} -D CMAKE_PREFIX_PATH=${prefix})
  if(XVFB)
    run(${TW2_SOURCE_DIR}/scripts/with_display.sh ${CMAKE_COMMAND} -E chdir ${WORK_DIR}/game
      ${WORK_DIR}/game/game ${TW2_SOURCE_DIR}/sample 2)
  endif()
endif()

# What README says of the libraries' size.
find_program(strip strip)
if(strip AND SHARED AND NOT SANITIZE AND BUILD_TYPE STREQUAL "Release" AND PROCESSOR STREQUAL "x86_64")
  foreach(library tw2 tw2_platform)
    run(${strip} -o ${WORK_DIR}/stripped ${prefix}/${LIBDIR}/lib${library}.so.${VERSION})
    file(SIZE ${WORK_DIR}/stripped size)
    set(most_tw2 1048576)
    set(most_tw2_platform 524288)
    if(size GREATER most_${library})
      message(FATAL_ERROR "lib${library}.so has ${size} bytes, more than README says")
    endif()
  endforeach()
endif()

# A host with another standard library is told so, by CMake and by the compiler.
find_program(clang clang++)
if(clang)
  file(WRITE ${WORK_DIR}/host.cpp "#include <tw2/version.h>\n")
  set(other ${clang} -std=c++20 -stdlib=libc++ -fsyntax-only -I${prefix}/include ${WORK_DIR}/host.cpp)
  file(WRITE ${WORK_DIR}/libcxx.cpp "#include <version>\n")
  execute_process(COMMAND ${clang} -stdlib=libc++ -fsyntax-only ${WORK_DIR}/libcxx.cpp RESULT_VARIABLE status ERROR_QUIET)
  if(status EQUAL 0)
    expect_failure("TW2 was built with another standard library than libc\\+\\+" ${other})
    expect_failure("tw2 was built with another standard library" ${CMAKE_COMMAND} -G ${GENERATOR}
      -S ${CMAKE_CURRENT_LIST_DIR}/find_package -B ${WORK_DIR}/libcxx -D CMAKE_CXX_COMPILER=${clang}
      -D CMAKE_CXX_FLAGS=-stdlib=libc++ -D CMAKE_PREFIX_PATH=${prefix} -D EXPECTED_VERSION=${VERSION})
  endif()
endif()

find_program(pkg_config pkg-config)
find_program(make make)
if(pkg_config AND make)
  set(ENV{PKG_CONFIG_PATH} ${prefix}/${LIBDIR}/pkgconfig)
  run(${pkg_config} --exists "tw2 = ${VERSION}")
  file(COPY ${CMAKE_CURRENT_LIST_DIR}/make DESTINATION ${WORK_DIR})
  file(COPY ${CMAKE_CURRENT_LIST_DIR}/find_package/main.cpp DESTINATION ${WORK_DIR}/make)
  # A host may do without RTTI, which the sanitizers may not.
  if(NOT SANITIZE)
    string(APPEND flags " -fno-rtti")
  endif()
  set(ENV{CXXFLAGS} ${flags})
  run(${make} -C ${WORK_DIR}/make CXX=${CXX_COMPILER} LIBDIR=${prefix}/${LIBDIR})
  run(${WORK_DIR}/make/game)
endif()
