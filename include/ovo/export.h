/** @file
 * The one export macro of the library, and the calling convention of its C interface.
 * Plain C89, so that the C headers can include it. */
#ifndef OVO_EXPORT_H
#define OVO_EXPORT_H

/** Marks what the library exports: only what carries OVO_API is visible to clients. */
#if defined(_WIN32)
#if defined(OVO_BUILDING_LIBRARY)
#define OVO_API __declspec(dllexport)
#else
#define OVO_API __declspec(dllimport)
#endif
#elif defined(__GNUC__)
#define OVO_API __attribute__((visibility("default")))
#else
#define OVO_API
#endif

/** The calling convention of the C functions: the C default, named so that a client built
 * with another default (MSVC's /Gz) still calls them right. */
#if defined(_WIN32)
#define OVO_CDECL __cdecl
#else
#define OVO_CDECL
#endif

#endif
