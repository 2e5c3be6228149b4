target_sources(qmx_bench PRIVATE PairedFigures.cpp PairedFigures.h RawLoop.cpp RawLoop.h AudioBench.cpp
  TransitionBench.cpp VideoBench.cpp)
target_link_libraries(qmx_bench PRIVATE qmx_engine_static qmx::pal qmx_libyuv PkgConfig::FFMPEG)
target_compile_definitions(qmx_bench PRIVATE QMX_BENCH_MEDIA_DIR="${CMAKE_SOURCE_DIR}/build/media")
add_dependencies(qmx_bench qmx_transitions)
