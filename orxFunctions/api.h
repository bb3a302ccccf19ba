// Export marks and the version of orxFunctions.
#ifndef ORXFUNCTIONS_API_H
#define ORXFUNCTIONS_API_H

#if defined(_WIN32)
#if defined(ORX_BUILDING_LIBRARY)
#define ORX_API __declspec(dllexport)
#else
#define ORX_API __declspec(dllimport)
#endif
#else
#define ORX_API __attribute__((visibility("default")))
#endif

#define ORX_VERSION_MAJOR 0
#define ORX_VERSION_MINOR 1
#define ORX_VERSION_PATCH 0

#endif
