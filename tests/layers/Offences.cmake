# A small tree with includes down the layers, within a folder and to a backend from a front end, and three that
# run against them (up a layer, from a backend into the core, between front ends): the check names exactly
# those three, by file and line, and fails.
file(REMOVE_RECURSE ${WORK_DIR})
file(WRITE ${WORK_DIR}/platform/Low.h "#pragma once\n#include \"platform/Other.h\"\n#include \"control/High.h\"\n")
file(WRITE ${WORK_DIR}/control/High.h "#pragma once\n#include \"setups/Page.h\"\n#include <vector>\n")
file(WRITE ${WORK_DIR}/ui/Page.cpp "#include \"iolib/IOLibrary.h\"\n#include \"cli/ConsoleHost.h\"\n")
file(WRITE ${WORK_DIR}/server/Driver.cpp "#include \"platform/Low.h\"\n\n  #  include \"control/High.h\"\n")
execute_process(COMMAND ${PYTHON} ${CHECK} ${WORK_DIR} RESULT_VARIABLE result OUTPUT_VARIABLE out ERROR_QUIET)
string(REGEX MATCHALL "[a-z]+/[A-Za-z]+\\.(h|cpp):[0-9]+" found "${out}")
set(expected "platform/Low.h:3;server/Driver.cpp:3;ui/Page.cpp:2")
if(NOT result EQUAL 1 OR NOT found STREQUAL expected)
  message(FATAL_ERROR "check-layers returned ${result} and reported '${found}', expected 1 and '${expected}':\n${out}")
endif()
file(REMOVE_RECURSE ${WORK_DIR})
