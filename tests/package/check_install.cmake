# Installs the build into a scratch prefix, then builds and runs a consumer
# with find_package(qxmath) and another with pkg-config.
# -D BUILD_DIR, SOURCE_DIR, WORK_DIR, C_COMPILER, EXTRA_FLAGS
file(REMOVE_RECURSE ${WORK_DIR})
function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE out)
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "failed (${rc}): ${ARGN}\n${out}")
  endif()
endfunction()
set(prefix ${WORK_DIR}/prefix)
run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix})
run(${CMAKE_COMMAND} -S ${SOURCE_DIR}/tests/package -B ${WORK_DIR}/consumer
    -DCMAKE_PREFIX_PATH=${prefix} -DCMAKE_C_COMPILER=${C_COMPILER}
    "-DCMAKE_C_FLAGS=${EXTRA_FLAGS}" "-DCMAKE_EXE_LINKER_FLAGS=${EXTRA_FLAGS}")
run(${CMAKE_COMMAND} --build ${WORK_DIR}/consumer)
run(${WORK_DIR}/consumer/consumer)

file(GLOB pcdir ${prefix}/lib*/pkgconfig ${prefix}/lib/*/pkgconfig)
set(ENV{PKG_CONFIG_PATH} "${pcdir}")
execute_process(COMMAND pkg-config --cflags --libs qxmath qxsys
                OUTPUT_VARIABLE pc RESULT_VARIABLE rc OUTPUT_STRIP_TRAILING_WHITESPACE)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "pkg-config does not know qxsys/qxmath in ${pcdir}")
endif()
separate_arguments(pc UNIX_COMMAND "${pc}")
separate_arguments(extra UNIX_COMMAND "${EXTRA_FLAGS}")
file(GLOB libdir LIST_DIRECTORIES true ${prefix}/lib*)
run(${C_COMPILER} ${extra} ${SOURCE_DIR}/tests/package/consumer.c ${pc} -o ${WORK_DIR}/pc_consumer)
set(ENV{LD_LIBRARY_PATH} "${libdir}")
run(${WORK_DIR}/pc_consumer)
