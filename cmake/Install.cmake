# Installation, in three parts: "runtime" (the libraries that hosts load, and the effect module), "development" (public
# headers, a CMake package and a pkg-config file) and "program" (qmx with its manual page, completions, documents and
# samples).
include(CMakePackageConfigHelpers)

# What engine/qmx.h reaches, and the exported interface of the companions. They keep their places below include/qmx,
# so that their includes of each other hold.
set(QMX_PUBLIC_HEADERS
  engine/qmx.h
  engine/clips/Attachment.h
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
  engine/clips/QMXTextClip.h
  engine/clips/QMXTitleClip.h
  engine/clips/QMXVideoClip.h
  engine/clips/RenderProp.h
  engine/clips/TransparentColorInfo.h
  engine/decoders/Decoder.h
  engine/decoders/DecoderCache.h
  engine/decoders/DecoderProp.h
  engine/decoders/IDecoder.h
  engine/decoders/media/AudioDecoder.h
  engine/decoders/media/AudioInfo.h
  engine/decoders/media/CameraClipDecoder.h
  engine/decoders/media/MediaInfo.h
  engine/decoders/media/VideoDecoder.h
  engine/decoders/media/VideoInfo.h
  engine/decoders/still/GifDecoder.h
  engine/decoders/still/ImageDecoder.h
  engine/decoders/still/KeystrokeDecoder.h
  engine/decoders/still/KeystrokeInfo.h
  engine/decoders/still/TextCanvas.h
  engine/decoders/still/TextDecoder.h
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
  install(FILES ${PROJECT_SOURCE_DIR}/${header} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/qmx/${folder}
          COMPONENT development)
endforeach()
# <qmx/qmx.h> is the header that hosts include.
install(FILES ${PROJECT_SOURCE_DIR}/engine/qmx.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/qmx COMPONENT development)

set(QMX_INCLUDE_FOLDERS ${CMAKE_INSTALL_INCLUDEDIR} ${CMAKE_INSTALL_INCLUDEDIR}/qmx)
if(NOT WIN32)
  # The headers above use the platform's types, and a host starts the media services.
  foreach(header windows.h unknwn.h mfobjects.h mfapi.h)
    install(FILES ${PROJECT_SOURCE_DIR}/pal/include/${header} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/qmx/pal
            COMPONENT development)
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
install(TARGETS ${QMX_LIBRARIES} EXPORT qmx-targets
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)

# ---- the effect module and the program --------------------------------------------------------------------------------

# The engine looks for effect modules in the folder of the host's executable. Where that folder would be one of commands,
# which a module is not, both lie in a folder of their own, and the command is a link: the executable's own place counts.
if(WIN32)
  set(QMX_PROGRAM_DIR ${CMAKE_INSTALL_BINDIR})
else()
  set(QMX_PROGRAM_DIR ${CMAKE_INSTALL_LIBDIR}/qmx)
endif()
# Hosts copy it beside themselves: $<TARGET_FILE:qmx::transitions>.
set_target_properties(qmx_transitions PROPERTIES EXPORT_NAME transitions)
install(TARGETS qmx_transitions EXPORT qmx-targets LIBRARY DESTINATION ${QMX_PROGRAM_DIR} COMPONENT runtime)

if(TARGET qmx)
  file(RELATIVE_PATH to_libraries "/${QMX_PROGRAM_DIR}" "/${CMAKE_INSTALL_LIBDIR}")
  set_target_properties(qmx PROPERTIES INSTALL_RPATH "\$ORIGIN/${to_libraries}")
  install(TARGETS qmx RUNTIME DESTINATION ${QMX_PROGRAM_DIR} COMPONENT program)
  if(NOT WIN32)
    file(RELATIVE_PATH to_program "/${CMAKE_INSTALL_BINDIR}" "/${QMX_PROGRAM_DIR}/qmx")
    install(CODE "
      set(folder \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_BINDIR}\")
      file(MAKE_DIRECTORY \"\${folder}\")
      file(CREATE_LINK ${to_program} \"\${folder}/qmx\" SYMBOLIC)
      list(APPEND CMAKE_INSTALL_MANIFEST_FILES
        \"\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_BINDIR}/qmx\")" COMPONENT program)
    install(FILES ${PROJECT_SOURCE_DIR}/docs/man/qmx.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT program)
    set(completions ${PROJECT_SOURCE_DIR}/host/completions)
    install(FILES ${completions}/qmx DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT program)
    install(FILES ${completions}/_qmx DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/site-functions COMPONENT program)
    install(FILES ${completions}/qmx.fish DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d
            COMPONENT program)
  endif()
endif()

# Documents and samples lie to each other as they do here.
install(FILES README.md CHANGELOG.md CONTRIBUTING.md LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT program)
install(DIRECTORY samples DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT program)
install(DIRECTORY docs DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT program
        PATTERN man EXCLUDE PATTERN Doxyfile EXCLUDE PATTERN reference.md EXCLUDE)

# ---- packages -------------------------------------------------------------------------------------------------------

set(QMX_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/qmx)
install(EXPORT qmx-targets NAMESPACE qmx:: DESTINATION ${QMX_PACKAGE_DIR} COMPONENT development)
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/qmx-config.cmake.in
  ${PROJECT_BINARY_DIR}/qmx-config.cmake INSTALL_DESTINATION ${QMX_PACKAGE_DIR})
# Below 1.0 every minor version may change the interface.
write_basic_package_version_file(${PROJECT_BINARY_DIR}/qmx-config-version.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/qmx-config.cmake ${PROJECT_BINARY_DIR}/qmx-config-version.cmake
  DESTINATION ${QMX_PACKAGE_DIR} COMPONENT development)

# The file speaks of its own place, so that the installation can be moved.
file(RELATIVE_PATH QMX_PC_TO_PREFIX "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
string(REGEX REPLACE "/$" "" QMX_PC_TO_PREFIX "${QMX_PC_TO_PREFIX}")
list(TRANSFORM QMX_INCLUDE_FOLDERS PREPEND "-I\${prefix}/" OUTPUT_VARIABLE QMX_PC_CFLAGS)
list(JOIN QMX_PC_CFLAGS " " QMX_PC_CFLAGS)
configure_file(${PROJECT_SOURCE_DIR}/cmake/qmx.pc.in ${PROJECT_BINARY_DIR}/qmx.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/qmx.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)

# ---- the test of all that: projects outside build against a fresh installation --------------------------------------

if(QMX_BUILD_TESTS AND QMX_BUILD_HOST AND NOT WIN32 AND NOT QMX_SANITIZE)
  set(consumer ${PROJECT_SOURCE_DIR}/tests/consumer)
  add_test(NAME Installation.ServesProjectsOutside
    COMMAND ${consumer}/check-installation ${PROJECT_BINARY_DIR} ${PROJECT_VERSION})
  add_test(NAME Installation.ServesWhoFollowsTheGuide COMMAND ${consumer}/check-guide ${PROJECT_BINARY_DIR})
  add_test(NAME Installation.DescribesEveryCommand COMMAND ${consumer}/check-commands $<TARGET_FILE:qmx>)
  set_tests_properties(Installation.ServesProjectsOutside Installation.ServesWhoFollowsTheGuide
    Installation.DescribesEveryCommand PROPERTIES LABELS install TIMEOUT 300 SKIP_RETURN_CODE 77)
endif()
