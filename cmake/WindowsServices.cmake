# On Windows the system is the platform: its headers and import libraries take the place of pal/.
add_library(qmx_windows_services INTERFACE)
# Windows 10 and later. The headers' min and max would hide the standard library's.
add_compile_definitions(
  UNICODE _UNICODE NOMINMAX WIN32_LEAN_AND_MEAN _WIN32_WINNT=0x0A00 WINVER=0x0A00)
target_link_libraries(qmx_windows_services INTERFACE
  mfplat mfreadwrite mf mfuuid d3d11 dxgi dxguid d2d1 dwrite windowscodecs propsys shlwapi ole32 uuid)
add_library(qmx::services ALIAS qmx_windows_services)
add_library(qmx::service_headers ALIAS qmx_windows_services)
