target_sources(qmx_bench PRIVATE FlashBench.cpp
  ${CMAKE_SOURCE_DIR}/tests/companions/swfrenderer/GeneratedMovie.cpp)
target_compile_definitions(qmx_bench PRIVATE QMX_CORPUS_DIR="${QMX_CORPUS_DIR}")
target_link_libraries(qmx_bench PRIVATE qmx::swfrenderer)
