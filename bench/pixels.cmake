target_sources(qmx_bench PRIVATE PixelsBench.cpp)
target_link_libraries(qmx_bench PRIVATE qmx::pixelkernels qmx_libyuv)
