/// @file
/// The one export macro of the library.
#ifndef OVO_EXPORT_H
#define OVO_EXPORT_H

/// Marks what the library exports: only what carries OVO_API is visible to clients.
#if defined(_WIN32)
#  if defined(OVO_BUILDING_LIBRARY)
#    define OVO_API __declspec(dllexport)
#  else
#    define OVO_API __declspec(dllimport)
#  endif
#else
#  define OVO_API __attribute__((visibility("default")))
#endif

#endif
