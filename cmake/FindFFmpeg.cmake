# Finds the libraries of FFmpeg by pkg-config as the target FFmpeg::FFmpeg.
find_package(PkgConfig QUIET)
if(PkgConfig_FOUND)
  # From FFmpeg 5.1 on, channel layouts have an order. Later major versions drop functions that the engine uses.
  pkg_check_modules(
    PC_FFmpeg QUIET IMPORTED_TARGET
    libavformat>=59.27
    libavformat<60
    libavcodec>=59.37
    libavcodec<60
    libavfilter>=8.44
    libswscale>=6.7
    libswresample>=4.7
    libavutil>=57.28)
endif()
include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(FFmpeg REQUIRED_VARS PC_FFmpeg_LINK_LIBRARIES)
if(FFmpeg_FOUND AND NOT TARGET FFmpeg::FFmpeg)
  add_library(FFmpeg::FFmpeg INTERFACE IMPORTED)
  set_target_properties(FFmpeg::FFmpeg PROPERTIES INTERFACE_LINK_LIBRARIES PkgConfig::PC_FFmpeg)
endif()
