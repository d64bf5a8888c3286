# What `cmake --install <build> --prefix P` puts under P for a host that
# embeds the engine (the design surface is not part of it):
#
#   include/morvane/...                  every header (and .def table) of the engine's
#                                        folders of src/, their folder structure kept,
#                                        and the generated headers compiled into the engine
#   lib/libmvengine.a                    the engine
#   lib/cmake/Morvane/                   the CMake package: find_package(Morvane)
#                                        gives the imported target Morvane::engine
#   lib/pkgconfig/morvane.pc             the same for pkg-config
#
# Included by the top CMakeLists.txt once the engine target is complete. Hosts
# include the headers as the engine does ("component/QueryBuilder.h"), so the
# include directory is include/morvane.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(MV_INSTALL_INCLUDEDIR ${CMAKE_INSTALL_INCLUDEDIR}/morvane)
set(MV_INSTALL_CMAKEDIR ${CMAKE_INSTALL_LIBDIR}/cmake/Morvane)
set(MV_INSTALL_PKGCONFIGDIR ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

# The engine. Its build-tree include directories are build-only; the installed
# one comes from INCLUDES DESTINATION.
set_target_properties(mvengine PROPERTIES EXPORT_NAME engine)
install(TARGETS mvengine EXPORT MorvaneTargets
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  INCLUDES DESTINATION ${MV_INSTALL_INCLUDEDIR})

# The hand-written headers and the .def tables that headers include (the
# option tables of component/options): read at install time, so a header
# added since the last configure is installed too.
install(DIRECTORY ${PROJECT_SOURCE_DIR}/src/
  DESTINATION ${MV_INSTALL_INCLUDEDIR}
  FILES_MATCHING PATTERN "*.h" PATTERN "*.def"
  PATTERN "surface" EXCLUDE
  PATTERN "languages" EXCLUDE)

# The generated headers among the engine's sources (node tables, scanners,
# parsers), each at its place relative to the folder of generated code, where
# the hand-written headers find them ("tree/TreeNodes.gen.h").
get_target_property(_mv_engine_sources mvengine SOURCES)
set(_mv_generated_dir ${PROJECT_BINARY_DIR}/generated)
foreach(_source IN LISTS _mv_engine_sources)
  if(_source MATCHES "\\.h$" AND IS_ABSOLUTE "${_source}")
    cmake_path(IS_PREFIX _mv_generated_dir "${_source}" NORMALIZE _generated)
    if(_generated)
      cmake_path(GET _source PARENT_PATH _dir)
      cmake_path(RELATIVE_PATH _dir BASE_DIRECTORY ${_mv_generated_dir})
      install(FILES ${_source} DESTINATION ${MV_INSTALL_INCLUDEDIR}/${_dir})
    endif()
  endif()
endforeach()

# The CMake package.
install(EXPORT MorvaneTargets
  NAMESPACE Morvane::
  FILE MorvaneTargets.cmake
  DESTINATION ${MV_INSTALL_CMAKEDIR})
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/MorvaneConfig.cmake.in
  ${PROJECT_BINARY_DIR}/package/MorvaneConfig.cmake
  INSTALL_DESTINATION ${MV_INSTALL_CMAKEDIR})
# Before 1.0 a minor version may change the interface.
write_basic_package_version_file(${PROJECT_BINARY_DIR}/package/MorvaneConfigVersion.cmake
  VERSION ${PROJECT_VERSION}
  COMPATIBILITY SameMinorVersion)
install(FILES
  ${PROJECT_BINARY_DIR}/package/MorvaneConfig.cmake
  ${PROJECT_BINARY_DIR}/package/MorvaneConfigVersion.cmake
  DESTINATION ${MV_INSTALL_CMAKEDIR})

# The pkg-config file finds the prefix from its own place, so the package can
# be installed anywhere (--prefix, DESTDIR) and moved; an absolute library or
# include directory is written as it is.
set(MV_PC_PREFIX "\${pcfiledir}")
if(IS_ABSOLUTE "${MV_INSTALL_PKGCONFIGDIR}")
  set(MV_PC_PREFIX "${CMAKE_INSTALL_PREFIX}")
else()
  file(RELATIVE_PATH _up /prefix/${MV_INSTALL_PKGCONFIGDIR} /prefix)
  string(REGEX REPLACE "/$" "" _up "${_up}")
  string(APPEND MV_PC_PREFIX "/${_up}")
endif()
foreach(_kind LIBDIR INCLUDEDIR)
  if(IS_ABSOLUTE "${CMAKE_INSTALL_${_kind}}")
    set(MV_PC_${_kind} "${CMAKE_INSTALL_${_kind}}")
  else()
    set(MV_PC_${_kind} "\${prefix}/${CMAKE_INSTALL_${_kind}}")
  endif()
endforeach()
configure_file(${CMAKE_CURRENT_LIST_DIR}/morvane.pc.in ${PROJECT_BINARY_DIR}/package/morvane.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/package/morvane.pc DESTINATION ${MV_INSTALL_PKGCONFIGDIR})
