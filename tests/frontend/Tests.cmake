# Build steps of the front end's tests: the toy grammars in grammars/ are
# generated into the build folder and compiled into test_frontend; the tests
# also run the generator itself, and a small project checks what a grammar
# edit regenerates.
file(GLOB _toy_grammars CONFIGURE_DEPENDS ${CMAKE_CURRENT_LIST_DIR}/grammars/*.grammar)
foreach(_grammar ${_toy_grammars})
  mv_generate_parser(${_grammar} TARGET test_frontend
                     OUTPUT_DIR ${CMAKE_CURRENT_BINARY_DIR}/frontend/generated)
endforeach()
target_include_directories(test_frontend PRIVATE ${CMAKE_CURRENT_LIST_DIR})
target_compile_definitions(test_frontend PRIVATE
  MV_GRAMMARGEN_PATH="$<TARGET_FILE:mvgrammargen>"
  MV_FRONTEND_TEST_DIR="${CMAKE_CURRENT_LIST_DIR}"
  MV_SOURCE_DIR="${CMAKE_SOURCE_DIR}")
add_dependencies(test_frontend mvgrammargen)

add_test(NAME frontend.GrammarRegeneration
  COMMAND ${CMAKE_COMMAND}
          -DGENERATOR=$<TARGET_FILE:mvgrammargen>
          -DMODULE_DIR=${CMAKE_SOURCE_DIR}/cmake
          -DFIXTURE_DIR=${CMAKE_CURRENT_LIST_DIR}/regeneration
          -DWORK_DIR=${CMAKE_CURRENT_BINARY_DIR}/frontend/regeneration
          -P ${CMAKE_CURRENT_LIST_DIR}/regeneration/CheckRegeneration.cmake)
set_tests_properties(frontend.GrammarRegeneration PROPERTIES LABELS "frontend;slow")

# Token descriptions of the tests' own scanners.
file(GLOB _toy_descriptions CONFIGURE_DEPENDS ${CMAKE_CURRENT_LIST_DIR}/grammars/*.tokens)
foreach(_description ${_toy_descriptions})
  mv_generate_scanner(${_description} TARGET test_frontend
                      OUTPUT_DIR ${CMAKE_CURRENT_BINARY_DIR}/frontend/generated)
endforeach()
