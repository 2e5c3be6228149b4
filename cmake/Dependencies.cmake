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

  # The image codecs. giflib ships no pkg-config file.
  find_package(PNG REQUIRED)
  pkg_check_modules(IMAGE_CODECS REQUIRED IMPORTED_TARGET
    libturbojpeg>=2.1 libtiff-4>=4.5 libwebp>=1.2 libwebpdemux>=1.2 libexif>=0.6.22)
  find_package(GIF 5.2 REQUIRED)
  add_library(qmx_image_libraries INTERFACE)
  target_link_libraries(qmx_image_libraries INTERFACE PkgConfig::IMAGE_CODECS PNG::PNG GIF::GIF)
endif()

if(QMX_BUILD_HOST)
  find_package(CLI11 REQUIRED)
  find_package(nlohmann_json 3.9 REQUIRED)
  find_package(PNG REQUIRED)
  pkg_check_modules(LIBXXHASH REQUIRED IMPORTED_TARGET libxxhash>=0.8)
endif()
