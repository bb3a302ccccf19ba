// Export marks and the version of orxFunctions.
#ifndef ORXFUNCTIONS_API_H
#define ORXFUNCTIONS_API_H

#if defined(_WIN32)
#if defined(ORX_BUILDING_LIBRARY)
#define ORX_API __declspec(dllexport)
#else
#define ORX_API __declspec(dllimport)
#endif
#define ORX_PRIVATE
#else
#define ORX_API __attribute__((visibility("default")))
// For a class inside an exported one that is not exported itself.
#define ORX_PRIVATE __attribute__((visibility("hidden")))
#endif

#define ORX_VERSION_MAJOR 0
#define ORX_VERSION_MINOR 1
#define ORX_VERSION_PATCH 0

#endif
