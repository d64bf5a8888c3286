# Build rules for generated scanners and parsers.
#
#   mv_generate_scanner(<description.tokens> [TARGET <target>] [OUTPUT_DIR <dir>])
#   mv_generate_parser(<grammar.grammar> [TARGET <target>] [OUTPUT_DIR <dir>])
#
# Each runs mvgrammargen on the file at build time and adds the output to the
# target (mvengine unless TARGET says otherwise): `<stem>Scan.h/.cpp` for a
# description and `<stem>Pars.h/.cpp` for a grammar, where <stem> is the file
# name up to its first dot. OUTPUT_DIR (default <build>/generated) becomes an
# include directory of the target, so code includes "SQL92Scan.h".
#
# A generator run is repeated when its input, a grammar it includes, the token
# description it names (through a depfile) or the generator itself changes.
# Output files are rewritten only when their text changes, so an edit that
# does not change a file recompiles nothing that includes it.
#
# The generator is the target mvgrammargen of this build, or the program named
# by MV_GRAMMARGEN_EXECUTABLE when the target does not exist.

function(_mv_grammargen_command out_var)
  if(TARGET mvgrammargen)
    set(${out_var} "$<TARGET_FILE:mvgrammargen>" mvgrammargen PARENT_SCOPE)
  elseif(MV_GRAMMARGEN_EXECUTABLE)
    set(${out_var} "${MV_GRAMMARGEN_EXECUTABLE}" "${MV_GRAMMARGEN_EXECUTABLE}" PARENT_SCOPE)
  else()
    message(FATAL_ERROR "mvgrammargen is neither a target nor given by MV_GRAMMARGEN_EXECUTABLE")
  endif()
endfunction()

function(_mv_generate mode suffix input)
  cmake_parse_arguments(ARG "" "TARGET;OUTPUT_DIR" "" ${ARGN})
  if(NOT ARG_TARGET)
    set(ARG_TARGET mvengine)
  endif()
  if(NOT ARG_OUTPUT_DIR)
    set(ARG_OUTPUT_DIR ${CMAKE_BINARY_DIR}/generated)
  endif()
  get_filename_component(input_path ${input} ABSOLUTE)
  get_filename_component(file_name ${input} NAME)
  string(REGEX REPLACE "\\..*$" "" stem "${file_name}")
  set(header ${ARG_OUTPUT_DIR}/${stem}${suffix}.h)
  set(source ${ARG_OUTPUT_DIR}/${stem}${suffix}.cpp)
  set(depfile ${ARG_OUTPUT_DIR}/${stem}${suffix}.d)
  _mv_grammargen_command(generator)
  list(GET generator 0 program)
  list(GET generator 1 program_dependency)

  file(MAKE_DIRECTORY ${ARG_OUTPUT_DIR})
  add_custom_command(
    OUTPUT ${header} ${source}
    COMMAND ${program} ${mode} ${input_path} --header ${header} --source ${source}
            --depfile ${depfile} --root ${CMAKE_SOURCE_DIR}
    DEPENDS ${input_path} ${program_dependency}
    DEPFILE ${depfile}
    COMMENT "Generating ${mode} ${stem}${suffix} from ${file_name}"
    VERBATIM)
  # The outputs may serve a target of another folder; this target makes sure
  # they are generated before it compiles.
  add_custom_target(mv_generate_${stem}${suffix} DEPENDS ${header} ${source})
  add_dependencies(${ARG_TARGET} mv_generate_${stem}${suffix})
  target_sources(${ARG_TARGET} PRIVATE ${header} ${source})
  get_target_property(target_type ${ARG_TARGET} TYPE)
  if(NOT target_type STREQUAL "UTILITY")
    target_include_directories(${ARG_TARGET} PUBLIC $<BUILD_INTERFACE:${ARG_OUTPUT_DIR}>)
  endif()
endfunction()

function(mv_generate_scanner description)
  _mv_generate(scanner Scan ${description} ${ARGN})
endfunction()

function(mv_generate_parser grammar)
  _mv_generate(parser Pars ${grammar} ${ARGN})
endfunction()
