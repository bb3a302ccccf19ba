// The registry's four mutexes: process-wide, so that a copy of a registry shares them. Defined in
// orxfunctions.cpp.
#ifndef ORXFUNCTIONS_FOUNDATION_REGISTRY_INTERNAL_H
#define ORXFUNCTIONS_FOUNDATION_REGISTRY_INTERNAL_H

#include "ZULLib/sync_internal.h"

namespace orx {

extern zul::Mutex registryObjectsMutex;
extern zul::Mutex registryVoidFuncsMutex;
extern zul::Mutex registryIntFuncsMutex;
extern zul::Mutex registryStringFuncsMutex;

}  // namespace orx

#endif
