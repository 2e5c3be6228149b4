find_package(PkgConfig REQUIRED)
find_package(Threads REQUIRED)
pkg_check_modules(LIBHWY REQUIRED IMPORTED_TARGET libhwy)

# libyuv ships no pkg-config file.
find_path(LIBYUV_INCLUDE_DIR libyuv.h REQUIRED)
find_library(LIBYUV_LIBRARY yuv REQUIRED)
add_library(qmx_libyuv INTERFACE)
target_include_directories(qmx_libyuv SYSTEM INTERFACE ${LIBYUV_INCLUDE_DIR})
target_link_libraries(qmx_libyuv INTERFACE ${LIBYUV_LIBRARY})

if(NOT WIN32)
  pkg_check_modules(FFMPEG REQUIRED IMPORTED_TARGET libavformat>=59 libavcodec>=59 libavutil>=57 libswscale>=6)
  pkg_check_modules(PANGO REQUIRED IMPORTED_TARGET pangocairo>=1.50 cairo>=1.16 harfbuzz)
endif()

if(QMX_BUILD_HOST)
  find_package(CLI11 REQUIRED)
  find_package(nlohmann_json 3.9 REQUIRED)
  find_package(PNG REQUIRED)
  pkg_check_modules(LIBXXHASH REQUIRED IMPORTED_TARGET libxxhash>=0.8)
endif()
