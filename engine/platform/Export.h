/// @file Export.h
/// Visibility of what the libraries export. Each library defines its own QMX_BUILDING_… while it is compiled;
/// QMX_STATIC is defined where the objects are linked into a program directly.
#pragma once

#if defined(QMX_STATIC)
#define QMX_EXPORT
#define QMX_IMPORT
#elif defined(_WIN32)
#define QMX_EXPORT __declspec(dllexport)
#define QMX_IMPORT __declspec(dllimport)
#else
#define QMX_EXPORT __attribute__((visibility("default")))
#define QMX_IMPORT __attribute__((visibility("default")))
#endif

#if defined(QMX_BUILDING_ENGINE)
#define QMX_API QMX_EXPORT
#else
#define QMX_API QMX_IMPORT
#endif

#if defined(QMX_BUILDING_SAMPLEBUFFER)
#define QMX_SAMPLEBUFFER_API QMX_EXPORT
#else
#define QMX_SAMPLEBUFFER_API QMX_IMPORT
#endif

#if defined(QMX_BUILDING_PIXELUTILITY)
#define QMX_PIXELUTILITY_API QMX_EXPORT
#else
#define QMX_PIXELUTILITY_API QMX_IMPORT
#endif

#if defined(QMX_BUILDING_JPEGFRAMES)
#define QMX_JPEGFRAMES_API QMX_EXPORT
#else
#define QMX_JPEGFRAMES_API QMX_IMPORT
#endif

#if defined(QMX_BUILDING_DECODERINTEROP)
#define QMX_DECODERINTEROP_API QMX_EXPORT
#else
#define QMX_DECODERINTEROP_API QMX_IMPORT
#endif

#if defined(QMX_BUILDING_SWFRENDERER)
#define QMX_SWFRENDERER_API QMX_EXPORT
#else
#define QMX_SWFRENDERER_API QMX_IMPORT
#endif
