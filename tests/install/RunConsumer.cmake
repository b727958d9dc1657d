# cmake -DBUILD_DIR=... -DCONSUMER_DIR=... -DWORK_DIR=... -DGENERATOR=... -DCXX=... -DSANITIZE=ON|OFF -P RunConsumer.cmake
cmake_minimum_required(VERSION 3.25)

function(run what)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "${what} failed (${result}):\n${out}\n${err}")
  endif()
  set(output "${out}" PARENT_SCOPE)
endfunction()

# The instrument answers from the embedded simulated bus whatever this computer's own I/O configuration says.
set(ENV{CVN73100_IO_CONF} ${WORK_DIR}/no-io.conf)
set(ENV{CVN73100_GPIB0} sim)
set(ENV{TMPDIR} ${WORK_DIR})
set(expected "Corvane Technologies,73135D,QX40001234,A.02.10")

set(prefix ${WORK_DIR}/prefix)
file(REMOVE_RECURSE ${WORK_DIR})
file(MAKE_DIRECTORY ${WORK_DIR})
run("install" ${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix})

foreach(path include/cvn73100/control/Cvn73100Scope.h include/cvn73100/platform/Os.h
             include/cvn73100/iolib/IOLibrary.h include/cvn73100/server/Cvn73100Server.h
             lib/cmake/Cvn73100/Cvn73100Config.cmake lib/pkgconfig/cvn73100.pc
             share/cvn73100/en.po bin/cvnscope bin/cvn73100-sim)
  if(NOT EXISTS ${prefix}/${path})
    message(FATAL_ERROR "not installed: ${path}")
  endif()
endforeach()

# A sanitized build installs sanitized libraries; their users link the runtime too.
set(flags)
if(SANITIZE)
  set(flags -fsanitize=address,undefined)
endif()

# find_package(Cvn73100)
run("configure the consumer" ${CMAKE_COMMAND} -S ${CONSUMER_DIR} -B ${WORK_DIR}/consumer -G ${GENERATOR}
    -DCMAKE_CXX_COMPILER=${CXX} -DCMAKE_PREFIX_PATH=${prefix} -DCMAKE_BUILD_TYPE=RelWithDebInfo
    "-DCMAKE_CXX_FLAGS=${flags}" "-DCMAKE_EXE_LINKER_FLAGS=${flags}")
run("build the consumer" ${CMAKE_COMMAND} --build ${WORK_DIR}/consumer)
run("run the consumer" ${WORK_DIR}/consumer/consumer)
string(STRIP "${output}" output)
if(NOT output STREQUAL expected)
  message(FATAL_ERROR "the CMake consumer printed \"${output}\", not \"${expected}\"")
endif()

# pkg-config, with the prefix found from the .pc file's own place.
find_program(PKG_CONFIG pkg-config)
if(PKG_CONFIG)
  set(ENV{PKG_CONFIG_PATH} ${prefix}/lib/pkgconfig)
  run("pkg-config" ${PKG_CONFIG} --cflags --libs cvn73100)
  string(STRIP "${output}" pc_flags)
  separate_arguments(pc_flags UNIX_COMMAND "${pc_flags}")
  run("build with pkg-config" ${CXX} -std=c++20 ${flags} ${CONSUMER_DIR}/main.cpp -o ${WORK_DIR}/consumer-pc
      ${pc_flags})
  run("run the pkg-config consumer" ${WORK_DIR}/consumer-pc)
  string(STRIP "${output}" output)
  if(NOT output STREQUAL expected)
    message(FATAL_ERROR "the pkg-config consumer printed \"${output}\", not \"${expected}\"")
  endif()
endif()
message(STATUS "installed tree works: ${output}")
