# What `cmake --install` puts in place: the library with its public headers, the CMake package orvane::orvane and the
# pkg-config file. All paths in them are relative, so that an installed tree can be moved.
include(CMakePackageConfigHelpers)

# Assertions and log entries name their source from the project's folder on, not from the machine's.
target_compile_options(orvane PRIVATE -ffile-prefix-map=${PROJECT_SOURCE_DIR}/=)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/orvane)
set(pkgconfig_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

install(TARGETS orvane EXPORT orvaneTargets)
install(DIRECTORY interfaces/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/orvane
        FILES_MATCHING PATTERN "*.h" PATTERN "classes.def")
install(EXPORT orvaneTargets NAMESPACE orvane:: DESTINATION ${package_dir})

configure_package_config_file(cmake/orvaneConfig.cmake.in ${CMAKE_CURRENT_BINARY_DIR}/orvaneConfig.cmake
                              INSTALL_DESTINATION ${package_dir} NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/orvaneConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/orvaneConfig.cmake ${CMAKE_CURRENT_BINARY_DIR}/orvaneConfigVersion.cmake
        DESTINATION ${package_dir})

file(RELATIVE_PATH ORVANE_PREFIX_FROM_PKGCONFIG /${pkgconfig_dir} /)
string(REGEX REPLACE "/$" "" ORVANE_PREFIX_FROM_PKGCONFIG "${ORVANE_PREFIX_FROM_PKGCONFIG}")
if(NOT BUILD_SHARED_LIBS)
  set(ORVANE_STATIC_FLAG "-DORVANE_STATIC")
  set(ORVANE_PRIVATE_LIBRARIES "-lfcl -lccd -loctomap -loctomath -lassimp -lpugixml -lstdc++ -lm -pthread")
endif()
configure_file(cmake/orvane.pc.in ${CMAKE_CURRENT_BINARY_DIR}/orvane.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/orvane.pc DESTINATION ${pkgconfig_dir})
