target_sources(qmx_bench PRIVATE RawText.cpp RawText.h TextBench.cpp)
target_link_libraries(qmx_bench PRIVATE PkgConfig::PANGO)
