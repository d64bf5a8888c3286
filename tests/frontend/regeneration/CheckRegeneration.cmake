# Builds the project of this folder, edits its sources one by one and checks
# that each rebuild regenerates exactly the outputs that depend on the edit.
#   cmake -DGENERATOR=... -DMODULE_DIR=... -DFIXTURE_DIR=... -DWORK_DIR=... -P CheckRegeneration.cmake
file(REMOVE_RECURSE ${WORK_DIR})
file(MAKE_DIRECTORY ${WORK_DIR})
file(COPY ${FIXTURE_DIR}/ DESTINATION ${WORK_DIR}/src)

execute_process(
  COMMAND ${CMAKE_COMMAND} -S ${WORK_DIR}/src -B ${WORK_DIR}/build -G Ninja
          -DMODULE_DIR=${MODULE_DIR} -DMV_GRAMMARGEN_EXECUTABLE=${GENERATOR}
  RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE out)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "configuring failed:\n${out}")
endif()

set(all_outputs "scanner MiniScan" "parser FirstPars" "parser SecondPars")

# Builds and checks which generator runs the build made.
function(expect_build step)
  cmake_parse_arguments(ARG "" "" "RUNS" ${ARGN})
  execute_process(COMMAND ${CMAKE_COMMAND} --build ${WORK_DIR}/build
                  RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE out)
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "${step}: the build failed:\n${out}")
  endif()
  foreach(output ${all_outputs})
    string(FIND "${out}" "Generating ${output} " found)
    list(FIND ARG_RUNS "${output}" wanted)
    if(wanted GREATER -1 AND found EQUAL -1)
      message(FATAL_ERROR "${step}: ${output} was not regenerated:\n${out}")
    elseif(wanted EQUAL -1 AND found GREATER -1)
      message(FATAL_ERROR "${step}: ${output} was regenerated needlessly:\n${out}")
    endif()
  endforeach()
  message(STATUS "${step}: regenerated ${ARG_RUNS}")
endfunction()

function(touch_source name)
  # Make sure the edit is later than the outputs on any file system.
  execute_process(COMMAND ${CMAKE_COMMAND} -E sleep 1)
  file(APPEND ${WORK_DIR}/src/${name} "// edited\n")
endfunction()

expect_build("first build" RUNS ${all_outputs})
expect_build("no change")
touch_source(Shared.rules)
expect_build("included rules edited" RUNS "parser FirstPars")
touch_source(Second.grammar)
expect_build("second grammar edited" RUNS "parser SecondPars")
touch_source(Mini.tokens)
expect_build("token description edited" RUNS ${all_outputs})
