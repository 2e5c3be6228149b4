find_package(Threads REQUIRED)
find_package(hwy CONFIG REQUIRED)

# libyuv ships neither a pkg-config file nor a CMake package.
find_path(LIBYUV_INCLUDE_DIR libyuv.h REQUIRED)
find_library(LIBYUV_LIBRARY NAMES yuv libyuv REQUIRED)
add_library(qmx_libyuv INTERFACE)
target_include_directories(qmx_libyuv SYSTEM INTERFACE ${LIBYUV_INCLUDE_DIR})
target_link_libraries(qmx_libyuv INTERFACE ${LIBYUV_LIBRARY})

# Containers of Flash movies.
find_package(ZLIB REQUIRED)
find_package(LibLZMA REQUIRED)

# TurboJPEG's interface lies beside libjpeg's in one package, of which only some builds bring a CMake package.
find_path(TURBOJPEG_INCLUDE_DIR turbojpeg.h REQUIRED)
find_library(TURBOJPEG_LIBRARY NAMES turbojpeg libturbojpeg REQUIRED)
add_library(qmx_turbojpeg INTERFACE)
target_include_directories(qmx_turbojpeg SYSTEM INTERFACE ${TURBOJPEG_INCLUDE_DIR})
target_link_libraries(qmx_turbojpeg INTERFACE ${TURBOJPEG_LIBRARY})

# Pictures in Flash movies and from the host.
find_package(PNG REQUIRED)

# The system's own services: on Windows its libraries, elsewhere what the platform layer is built on.
if(NOT WIN32)
  find_package(PkgConfig REQUIRED)
  pkg_check_modules(FFMPEG REQUIRED IMPORTED_TARGET libavformat>=59 libavcodec>=59 libavutil>=57.24
                    libswscale>=6 libswresample>=4)
  pkg_check_modules(PANGO REQUIRED IMPORTED_TARGET pangocairo>=1.50 cairo>=1.16 harfbuzz)
  pkg_check_modules(SYSTEM_FONTS REQUIRED IMPORTED_TARGET fontconfig freetype2>=23)

  # The image codecs. giflib ships no pkg-config file.
  pkg_check_modules(IMAGE_CODECS REQUIRED IMPORTED_TARGET
    libturbojpeg>=2.1 libtiff-4>=4.5 libwebp>=1.2 libwebpdemux>=1.2 libexif>=0.6.22)
  find_package(GIF 5.2 REQUIRED)
  add_library(qmx_image_libraries INTERFACE)
  target_link_libraries(qmx_image_libraries INTERFACE PkgConfig::IMAGE_CODECS PNG::PNG GIF::GIF)
endif()

if(QMX_BUILD_HOST)
  find_package(CLI11 REQUIRED)
  find_package(nlohmann_json 3.9 REQUIRED)
  # The host compiles it in: the header is the whole library.
  find_path(XXHASH_INCLUDE_DIR xxhash.h REQUIRED)
endif()
