# How every target of the project is compiled.

if(PROJECT_IS_TOP_LEVEL AND NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
  set(CMAKE_BUILD_TYPE Release CACHE STRING "Build type" FORCE)
endif()

add_library(meridian_build_options INTERFACE)
target_compile_features(meridian_build_options INTERFACE cxx_std_20)
target_compile_options(
  meridian_build_options
  INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow
            # GCC says of each C source that these are not for C.
            $<$<COMPILE_LANGUAGE:CXX,OBJCXX>:-Wnon-virtual-dtor;-Woverloaded-virtual;-Wold-style-cast>)
# A product and a sum stay two roundings, so that every machine gives the same look-up table results.
target_compile_options(meridian_build_options INTERFACE -ffp-contract=off)
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
  # Calls within a library stay within it and can be inlined, as with Clang.
  target_compile_options(meridian_build_options INTERFACE -fno-semantic-interposition)
endif()
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  # False alarms on operator+(const char*, std::string&&) in the standard library (GCC bug 105651).
  target_compile_options(meridian_build_options INTERFACE -Wno-restrict)
endif()
if(MERIDIAN_WARNINGS_AS_ERRORS)
  target_compile_options(meridian_build_options INTERFACE -Werror)
endif()
if(MERIDIAN_SANITIZERS)
  # The whole tree and not only this interface, so that libraries and tests agree.
  add_compile_options(-fsanitize=${MERIDIAN_SANITIZERS} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${MERIDIAN_SANITIZERS})
  if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
    # The checks that GCC inserts hide from it which member of a variant is set.
    add_compile_options(-Wno-maybe-uninitialized)
  endif()
endif()
if(MERIDIAN_COVERAGE)
  add_compile_options(--coverage)
  add_link_options(--coverage)
endif()

# What every library of the project has in common: hidden symbols, a version, and its public headers under <meridian/>.
# With C_INTERFACE the headers are C, so that callers need no C++ compiler.
function(meridian_library target)
  cmake_parse_arguments(PARSE_ARGV 1 arg "C_INTERFACE" "EXPORT_NAME;OUTPUT_NAME" "SOURCES;PUBLIC_HEADERS")
  add_library(${target})
  add_library(Meridian::${arg_EXPORT_NAME} ALIAS ${target})
  target_sources(
    ${target}
    PRIVATE ${arg_SOURCES}
    PUBLIC FILE_SET HEADERS BASE_DIRS ${PROJECT_SOURCE_DIR} FILES ${arg_PUBLIC_HEADERS})
  if(arg_C_INTERFACE)
    target_compile_features(${target} PRIVATE cxx_std_20)
  else()
    target_compile_features(${target} PUBLIC cxx_std_20)
  endif()
  target_link_libraries(${target} PRIVATE $<BUILD_INTERFACE:meridian_build_options>)
  set_target_properties(
    ${target}
    PROPERTIES CXX_EXTENSIONS OFF
               CXX_VISIBILITY_PRESET hidden
               VISIBILITY_INLINES_HIDDEN ON
               POSITION_INDEPENDENT_CODE ON
               EXPORT_NAME ${arg_EXPORT_NAME}
               OUTPUT_NAME ${arg_OUTPUT_NAME}
               VERSION ${PROJECT_VERSION}
               # While the major version is 0 each minor one may change the interface.
               SOVERSION ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})
  get_target_property(type ${target} TYPE)
  if(type STREQUAL STATIC_LIBRARY)
    target_compile_definitions(${target} PUBLIC MERIDIAN_STATIC)
  endif()
  if(MERIDIAN_INSTALL)
    install(
      TARGETS ${target}
      EXPORT Meridian${arg_EXPORT_NAME}Targets
      FILE_SET HEADERS)
  endif()
endfunction()
