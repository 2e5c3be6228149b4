target_sources(qmx_bench PRIVATE CameraBench.cpp)
# The static interop first: what it decodes is counted together with this program's.
target_link_libraries(qmx_bench PRIVATE qmx_decoderinterop_static qmx::pixelutility qmx_turbojpeg)
