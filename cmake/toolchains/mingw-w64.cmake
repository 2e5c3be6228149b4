# Cross-compiles for 64-bit Windows with mingw-w64 (the posix threads variant: the standard library's threads).
# QMX_WINDOWS_DEPS, a CMake or environment variable, is the folder that scripts/windows-deps filled, unless it is the
# script's default.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)

if(NOT QMX_WINDOWS_DEPS)
  set(QMX_WINDOWS_DEPS "$ENV{QMX_WINDOWS_DEPS}")
endif()
if(NOT QMX_WINDOWS_DEPS)
  set(cache_folder "$ENV{XDG_CACHE_HOME}")
  if(NOT cache_folder)
    set(cache_folder "$ENV{HOME}/.cache")
  endif()
  set(QMX_WINDOWS_DEPS "${cache_folder}/qmx/windows-deps")
endif()
set(CMAKE_TRY_COMPILE_PLATFORM_VARIABLES QMX_WINDOWS_DEPS)
set(CMAKE_FIND_ROOT_PATH ${QMX_WINDOWS_DEPS} /usr/x86_64-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# Programs run with nothing beside them but the project's own libraries.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "${CMAKE_EXE_LINKER_FLAGS_INIT}")
set(CMAKE_MODULE_LINKER_FLAGS_INIT "${CMAKE_EXE_LINKER_FLAGS_INIT}")
