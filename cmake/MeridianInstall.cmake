# Installs the packages that find_package(Meridian) and pkg-config find: the core, and each component that was built.
include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/Meridian)
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/MeridianConfig.cmake.in
                              ${PROJECT_BINARY_DIR}/MeridianConfig.cmake INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/MeridianConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/MeridianConfig.cmake ${PROJECT_BINARY_DIR}/MeridianConfigVersion.cmake
              ${CMAKE_CURRENT_LIST_DIR}/Findutf8proc.cmake DESTINATION ${package_dir})

install(EXPORT MeridianMeridianTargets NAMESPACE Meridian:: DESTINATION ${package_dir})
if(TARGET meridian-serialization)
  install(EXPORT MeridianSerializationTargets NAMESPACE Meridian:: DESTINATION ${package_dir})
endif()
if(TARGET meridian-presets)
  install(EXPORT MeridianPresetsTargets NAMESPACE Meridian:: DESTINATION ${package_dir})
endif()

# Their paths are relative to the files themselves, so that an installed copy can be moved.
cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX BASE_DIRECTORY ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig
           OUTPUT_VARIABLE pc_prefix)
cmake_path(NORMAL_PATH pc_prefix)
string(REGEX REPLACE "/$" "" pc_prefix "${pc_prefix}")
foreach(dir IN ITEMS LIBDIR INCLUDEDIR)
  string(TOLOWER pc_${dir} variable)
  if(IS_ABSOLUTE "${CMAKE_INSTALL_${dir}}")
    set(${variable} ${CMAKE_INSTALL_${dir}})
  else()
    set(${variable} "\${prefix}/${CMAKE_INSTALL_${dir}}")
  endif()
endforeach()
function(meridian_pkg_config target description requires)
  get_target_property(pc_name ${target} OUTPUT_NAME)
  set(pc_description "${description}")
  set(pc_requires "${requires}")
  set(pc_libs "")
  set(pc_cflags "")
  if(NOT BUILD_SHARED_LIBS)
    # A static library hands its private libraries on to the program.
    set(pc_cflags -DMERIDIAN_STATIC)
    if(target STREQUAL meridian)
      set(pc_requires "libutf8proc expat libhwy")
      set(pc_libs -pthread)
    endif()
  endif()
  configure_file(${CMAKE_CURRENT_FUNCTION_LIST_DIR}/meridian.pc.in ${PROJECT_BINARY_DIR}/${pc_name}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/${pc_name}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endfunction()
meridian_pkg_config(meridian "${PROJECT_DESCRIPTION}" "")
if(TARGET meridian-serialization)
  meridian_pkg_config(meridian-serialization "Meridian's values and jobs as JSON"
                      "meridian = ${PROJECT_VERSION} nlohmann_json >= 3.11")
endif()
if(TARGET meridian-presets)
  meridian_pkg_config(meridian-presets "Meridian's stored presets" "meridian = ${PROJECT_VERSION} protobuf >= 3.15")
endif()

install(FILES ${PROJECT_SOURCE_DIR}/LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR})
