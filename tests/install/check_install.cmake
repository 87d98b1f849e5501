# Installs into a scratch prefix, moves the tree elsewhere (nothing in it may remember where it was), then builds and
# runs the consumer against it.
cmake_minimum_required(VERSION 3.25)

function(run)
  execute_process(COMMAND ${ARGV} RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT status EQUAL 0)
    list(JOIN ARGV " " command)
    message(FATAL_ERROR "${command}\nfailed (${status}):\n${output}")
  endif()
endfunction()

set(prefix ${WORK_DIR}/moved)
file(REMOVE_RECURSE ${WORK_DIR})
foreach(component library development)
  run(${CMAKE_COMMAND} --install ${TW2_BINARY_DIR} --prefix ${WORK_DIR}/prefix --component ${component})
endforeach()
file(RENAME ${WORK_DIR}/prefix ${prefix})

foreach(library tw2 tw2_platform)
  foreach(suffix so so.${SOVERSION} so.${VERSION})
    if(NOT EXISTS ${prefix}/${LIBDIR}/lib${library}.${suffix})
      message(FATAL_ERROR "${LIBDIR}/lib${library}.${suffix} is not installed")
    endif()
  endforeach()
endforeach()

set(flags ${CXX_FLAGS})
if(SANITIZE)
  string(APPEND flags " -fsanitize=${SANITIZE}")
endif()
run(${CMAKE_COMMAND} -G ${GENERATOR} -S ${CONSUMER_SOURCE_DIR} -B ${WORK_DIR}/consumer
  -D CMAKE_BUILD_TYPE=Debug -D CMAKE_CXX_COMPILER=${CXX_COMPILER} -D CMAKE_CXX_FLAGS=${flags}
  -D CMAKE_PREFIX_PATH=${prefix} -D EXPECTED_VERSION=${VERSION})
run(${CMAKE_COMMAND} --build ${WORK_DIR}/consumer)
run(${WORK_DIR}/consumer/consumer)

find_program(pkg_config pkg-config)
if(pkg_config)
  set(ENV{PKG_CONFIG_PATH} ${prefix}/${LIBDIR}/pkgconfig)
  execute_process(COMMAND ${pkg_config} --cflags --libs "tw2 = ${VERSION}"
    OUTPUT_VARIABLE package_flags OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  separate_arguments(package_flags UNIX_COMMAND "${package_flags}")
  separate_arguments(flags UNIX_COMMAND "${flags}")
  run(${CXX_COMPILER} -std=c++20 ${flags} ${CONSUMER_SOURCE_DIR}/main.cpp -o ${WORK_DIR}/by_pkg_config ${package_flags}
    -Wl,-rpath,${prefix}/${LIBDIR})
  run(${WORK_DIR}/by_pkg_config)
endif()
