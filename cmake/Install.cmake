# Installation: the libraries that hosts load, their public headers, a CMake package and a pkg-config file. Programs
# install themselves where they are made.
include(CMakePackageConfigHelpers)

# What engine/qmx.h reaches, and the exported interface of the companions. They keep their places below include/qmx,
# so that their includes of each other hold.
set(QMX_PUBLIC_HEADERS
  engine/qmx.h
  engine/clips/ClipType.h
  engine/clips/EffectModule.h
  engine/clips/IQMXBaseClip.h
  engine/clips/QMXAudioClip.h
  engine/clips/QMXBaseClip.h
  engine/clips/QMXCameraClip.h
  engine/clips/QMXColorClip.h
  engine/clips/QMXTXClip.h
  engine/clips/QMXSoundClip.h
  engine/clips/QMXImageClip.h
  engine/clips/QMXKeystrokeClip.h
  engine/clips/QMXTitleClip.h
  engine/clips/QMXVideoClip.h
  engine/clips/RenderProp.h
  engine/clips/TransparentColorInfo.h
  engine/decoders/Decoder.h
  engine/decoders/DecoderCache.h
  engine/decoders/DecoderProp.h
  engine/decoders/IDecoder.h
  engine/decoders/media/AudioDecoder.h
  engine/decoders/media/CameraClipDecoder.h
  engine/decoders/media/VideoDecoder.h
  engine/decoders/media/VideoInfo.h
  engine/decoders/still/GifDecoder.h
  engine/decoders/still/ImageDecoder.h
  engine/decoders/still/KeystrokeDecoder.h
  engine/decoders/still/KeystrokeInfo.h
  engine/decoders/still/TextCanvas.h
  engine/decoders/still/TitleDecoder.h
  engine/decoders/still/TitleTextInfo.h
  engine/model/ClipFactory.h
  engine/model/IQMXCleaner.h
  engine/model/IQMXDocument.h
  engine/model/IQMXTrack.h
  engine/platform/Export.h
  engine/platform/DecoderInterop.h
  engine/platform/JpegFrames.h
  engine/platform/PixelUtility.h
  engine/platform/RefPtr.h
  engine/platform/SampleBuffer.h
  engine/platform/SampleInfo.h
  engine/platform/SwfRenderer.h
  engine/platform/TxEffect.h)
foreach(header IN LISTS QMX_PUBLIC_HEADERS)
  cmake_path(GET header PARENT_PATH folder)
  install(FILES ${PROJECT_SOURCE_DIR}/${header} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/qmx/${folder})
endforeach()
# <qmx/qmx.h> is the header that hosts include.
install(FILES ${PROJECT_SOURCE_DIR}/engine/qmx.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/qmx)

set(QMX_INCLUDE_FOLDERS ${CMAKE_INSTALL_INCLUDEDIR} ${CMAKE_INSTALL_INCLUDEDIR}/qmx)
if(NOT WIN32)
  # The headers above use the platform's types, and a host starts the media services.
  foreach(header windows.h unknwn.h mfobjects.h mfapi.h)
    install(FILES ${PROJECT_SOURCE_DIR}/pal/include/${header} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/qmx/pal)
  endforeach()
  list(APPEND QMX_INCLUDE_FOLDERS ${CMAKE_INSTALL_INCLUDEDIR}/qmx/pal)
endif()

# ---- libraries ------------------------------------------------------------------------------------------------------

set(QMX_LIBRARIES qmxengine qmxdecoderinterop qmxjpegframes qmxpixelutility qmxsamplebuffer qmxswfrenderer)
set_target_properties(qmxengine PROPERTIES EXPORT_NAME engine)
set_target_properties(qmxdecoderinterop PROPERTIES EXPORT_NAME decoderinterop)
set_target_properties(qmxjpegframes PROPERTIES EXPORT_NAME jpegframes)
set_target_properties(qmxsamplebuffer PROPERTIES EXPORT_NAME samplebuffer)
set_target_properties(qmxpixelutility PROPERTIES EXPORT_NAME pixelutility)
set_target_properties(qmxswfrenderer PROPERTIES EXPORT_NAME swfrenderer)
foreach(library IN LISTS QMX_LIBRARIES)
  target_include_directories(${library} INTERFACE "$<INSTALL_INTERFACE:${QMX_INCLUDE_FOLDERS}>")
  target_compile_features(${library} INTERFACE cxx_std_20)
  # An installed library finds the others beside itself.
  set_target_properties(${library} PROPERTIES INSTALL_RPATH "\$ORIGIN")
endforeach()
if(TARGET qmx)
  file(RELATIVE_PATH to_libraries "/${CMAKE_INSTALL_BINDIR}" "/${CMAKE_INSTALL_LIBDIR}")
  set_target_properties(qmx PROPERTIES INSTALL_RPATH "\$ORIGIN/${to_libraries}")
endif()
install(TARGETS ${QMX_LIBRARIES} EXPORT qmx-targets
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})

# ---- packages -------------------------------------------------------------------------------------------------------

set(QMX_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/qmx)
install(EXPORT qmx-targets NAMESPACE qmx:: DESTINATION ${QMX_PACKAGE_DIR})
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/qmx-config.cmake.in
  ${PROJECT_BINARY_DIR}/qmx-config.cmake INSTALL_DESTINATION ${QMX_PACKAGE_DIR})
# Below 1.0 every minor version may change the interface.
write_basic_package_version_file(${PROJECT_BINARY_DIR}/qmx-config-version.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/qmx-config.cmake ${PROJECT_BINARY_DIR}/qmx-config-version.cmake
  DESTINATION ${QMX_PACKAGE_DIR})

# The file speaks of its own place, so that the installation can be moved.
file(RELATIVE_PATH QMX_PC_TO_PREFIX "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
list(TRANSFORM QMX_INCLUDE_FOLDERS PREPEND "-I\${prefix}/" OUTPUT_VARIABLE QMX_PC_CFLAGS)
list(JOIN QMX_PC_CFLAGS " " QMX_PC_CFLAGS)
configure_file(${PROJECT_SOURCE_DIR}/cmake/qmx.pc.in ${PROJECT_BINARY_DIR}/qmx.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/qmx.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

install(FILES ${PROJECT_SOURCE_DIR}/LICENSE ${PROJECT_SOURCE_DIR}/README.md DESTINATION ${CMAKE_INSTALL_DOCDIR})

# ---- the test of all that: projects outside build against a fresh installation --------------------------------------

if(QMX_BUILD_TESTS AND QMX_BUILD_HOST AND NOT QMX_SANITIZE)
  add_test(NAME Installation.ServesProjectsOutside
    COMMAND ${PROJECT_SOURCE_DIR}/tests/consumer/check-installation ${PROJECT_BINARY_DIR} ${PROJECT_VERSION})
  set_tests_properties(Installation.ServesProjectsOutside PROPERTIES LABELS install TIMEOUT 300)
endif()
