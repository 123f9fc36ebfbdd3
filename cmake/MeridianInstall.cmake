# Installs the package that find_package(Meridian) finds: the core, and each component that was built.
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
