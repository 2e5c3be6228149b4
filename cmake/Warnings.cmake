# Flags for our own code travel as a target; they never reach whoever links the libraries.
add_library(qmx_warnings INTERFACE)
if(MSVC)
  target_compile_options(qmx_warnings INTERFACE /W4 /utf-8 $<$<BOOL:${QMX_WERROR}>:/WX>)
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
