# Flags for our own code travel as a target; they never reach whoever links the libraries.
add_library(qmx_warnings INTERFACE)
if(MSVC)
  # C4251: exported classes have private members of the standard library, as both sides share one compiler.
  target_compile_options(qmx_warnings INTERFACE /W4 /wd4251 $<$<BOOL:${QMX_WERROR}>:/WX>)
  add_compile_options(/utf-8 /permissive- /EHsc /Zc:__cplusplus /bigobj)
  add_compile_definitions(_CRT_SECURE_NO_WARNINGS)
else()
  target_compile_options(qmx_warnings INTERFACE -Wall -Wextra -Wconversion -Wno-unknown-pragmas
                         $<$<BOOL:${QMX_WERROR}>:-Werror>)
  if(MINGW)
    # GCC 12 takes its own headers' copies of short wide strings for overruns.
    target_compile_options(qmx_warnings INTERFACE -Wno-array-bounds -Wno-restrict -Wno-stringop-overread)
  endif()
endif()

if(QMX_SANITIZE)
  add_compile_options(-fsanitize=${QMX_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${QMX_SANITIZE})
endif()
if(QMX_BUILD_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link) # the libraries tell the fuzzer which code an input reached
endif()
