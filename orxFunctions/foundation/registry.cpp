#include "orxFunctions/foundation/registry.h"

#include <utility>

#include "orxFunctions/foundation/refusal_internal.h"
#include "orxFunctions/foundation/registry_internal.h"

namespace orx {
namespace {

// A copy of the map, taken under its mutex. Copying map by map never holds two mutexes, so that no order of
// locking exists which a registered function could invert.
template <typename Map>
Map snapshot(const Map& map, zul::Mutex& mutex) {
    const zul::LockGuard lock(mutex);
    return map;
}

template <typename Map>
void replace(Map& map, Map copy, zul::Mutex& mutex) {
    const zul::LockGuard lock(mutex);
    map.swap(copy);
}

// The registered function, or null. The caller holds the map's mutex.
template <typename Map>
typename Map::mapped_type find(const Map& map, const std::string& name) {
    const auto found = map.find(name);
    return found == map.end() ? nullptr : found->second;
}

bool refuseCall(const std::string& name) {
    return refuse(rcOption, "callFunc", "no function of this kind is registered as \"%s\"", name.c_str());
}

}  // namespace

TAppSys::TAppSys(const TAppSys& other)
    : objects_(snapshot(other.objects_, registryObjectsMutex)),
      voidFuncs_(snapshot(other.voidFuncs_, registryVoidFuncsMutex)),
      intFuncs_(snapshot(other.intFuncs_, registryIntFuncsMutex)),
      stringFuncs_(snapshot(other.stringFuncs_, registryStringFuncsMutex)) {}

TAppSys& TAppSys::operator=(const TAppSys& other) {
    if (this == &other) return *this;
    replace(objects_, snapshot(other.objects_, registryObjectsMutex), registryObjectsMutex);
    replace(voidFuncs_, snapshot(other.voidFuncs_, registryVoidFuncsMutex), registryVoidFuncsMutex);
    replace(intFuncs_, snapshot(other.intFuncs_, registryIntFuncsMutex), registryIntFuncsMutex);
    replace(stringFuncs_, snapshot(other.stringFuncs_, registryStringFuncsMutex), registryStringFuncsMutex);
    return *this;
}

void TAppSys::Register(std::string name, TClassBase* obj) {
    if (obj == nullptr) {
        UnRegister(std::move(name));
        return;
    }
    const zul::LockGuard lock(registryObjectsMutex);
    objects_.emplace(std::move(name), obj);
}

void TAppSys::UnRegister(std::string name) {
    const zul::LockGuard lock(registryObjectsMutex);
    objects_.erase(name);
}

TClassBase* TAppSys::suport(std::string name) {
    const zul::LockGuard lock(registryObjectsMutex);
    return find(objects_, name);
}

void TAppSys::RegisterFunc(std::string name, TIntFunc f) {
    const zul::LockGuard lock(registryIntFuncsMutex);
    intFuncs_.emplace(std::move(name), f);
}

void TAppSys::RegisterFunc(std::string name, TStringFunc f) {
    const zul::LockGuard lock(registryStringFuncsMutex);
    stringFuncs_.emplace(std::move(name), f);
}

void TAppSys::RegisterFunc(std::string name, TVoidFunc f) {
    const zul::LockGuard lock(registryVoidFuncsMutex);
    voidFuncs_.emplace(std::move(name), f);
}

bool TAppSys::callFunc(std::string name, int a, int b, int& result) {
    const zul::LockGuard lock(registryIntFuncsMutex);
    const TIntFunc f = find(intFuncs_, name);
    if (f == nullptr) return refuseCall(name);
    result = f(a, b);
    return true;
}

void TAppSys::callFunc(std::string name, std::string arg) {
    const zul::LockGuard lock(registryStringFuncsMutex);
    if (const TStringFunc f = find(stringFuncs_, name))
        f(std::move(arg));
    else
        refuseCall(name);
}

void TAppSys::callFunc(std::string name) {
    const zul::LockGuard lock(registryVoidFuncsMutex);
    if (const TVoidFunc f = find(voidFuncs_, name))
        f();
    else
        refuseCall(name);
}

}  // namespace orx
