# Installs the built library into a scratch prefix and builds examples/ against it.
file(REMOVE_RECURSE ${WORK_DIR})
set(prefix ${WORK_DIR}/prefix)

function(run)
  execute_process(COMMAND ${ARGV} RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "failed: ${ARGV}\n${out}\n${err}")
  endif()
  set(LAST_OUTPUT "${out}" PARENT_SCOPE)
endfunction()

run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix})

# find_package(ZQCommon)
run(${CMAKE_COMMAND} -S ${SOURCE_DIR}/examples -B ${WORK_DIR}/cmake-build -G Ninja
    -DCMAKE_PREFIX_PATH=${prefix} -DCMAKE_BUILD_TYPE=Release)
run(${CMAKE_COMMAND} --build ${WORK_DIR}/cmake-build)
run(${CMAKE_COMMAND} -E env LD_LIBRARY_PATH=${prefix}/lib ${WORK_DIR}/cmake-build/zqexample)
if(NOT LAST_OUTPUT MATCHES "font-size = 668")
  message(FATAL_ERROR "unexpected example output (find_package):\n${LAST_OUTPUT}")
endif()

# pkg-config zqcommon
file(GLOB pcdir ${prefix}/lib*/pkgconfig ${prefix}/lib/*/pkgconfig)
set(ENV{PKG_CONFIG_PATH} "${pcdir}")
run(pkg-config --cflags --libs zqcommon)
string(STRIP "${LAST_OUTPUT}" flags)
separate_arguments(flags UNIX_COMMAND "${flags}")
run(c++ ${SOURCE_DIR}/examples/example.cpp -o ${WORK_DIR}/zqexample-pc ${flags})
run(${CMAKE_COMMAND} -E env LD_LIBRARY_PATH=${prefix}/lib ${WORK_DIR}/zqexample-pc)
if(NOT LAST_OUTPUT MATCHES "font-size = 668")
  message(FATAL_ERROR "unexpected example output (pkg-config):\n${LAST_OUTPUT}")
endif()
