// Finding objects and functions by name at run time.
#ifndef ORXFUNCTIONS_FOUNDATION_REGISTRY_H
#define ORXFUNCTIONS_FOUNDATION_REGISTRY_H

#include <map>
#include <string>

#include "orxFunctions/api.h"
#include "orxFunctions/foundation/records.h"

namespace orx {

// A name service without link-time dependencies: objects and plain functions of three signatures. It owns
// nothing: registered objects are never deleted, and pointers left at unload are forgotten. Names are
// compared byte by byte. Objects and the three kinds of function are four separate name spaces; in each the
// first registration of a name wins until it is removed, later ones are ignored silently. Functions can't be
// removed.
//
// Thread-safe. Each of the four maps has one process-wide mutex, shared by all registries, which is held
// while a registered function runs. This is intended: two calls through one map never overlap, and a called
// function must not use the map that it was called through (it would wait for itself); functions of different
// maps may call each other.
class ORX_API TAppSys {
  public:
    using TIntFunc = int (*)(int, int);
    using TStringFunc = void (*)(std::string);
    using TVoidFunc = void (*)();

    TAppSys() = default;
    // Copies share the pointers and the mutexes.
    TAppSys(const TAppSys& other);
    TAppSys& operator=(const TAppSys& other);
    ~TAppSys() = default;

    // A null object removes the name.
    void Register(std::string name, TClassBase* obj);
    // An unknown name is ignored.
    void UnRegister(std::string name);
    // The object of that name, or null. (The spelling is part of the interface.)
    TClassBase* suport(std::string name);

    void RegisterFunc(std::string name, TIntFunc f);
    void RegisterFunc(std::string name, TStringFunc f);
    void RegisterFunc(std::string name, TVoidFunc f);

    // Calls f(a, b). False for an unknown name (rcOption, as below); `result` is then untouched.
    bool callFunc(std::string name, int a, int b, int& result);
    // Unknown names do nothing.
    void callFunc(std::string name, std::string arg);
    void callFunc(std::string name);

  private:
    std::map<std::string, TClassBase*> objects_;
    std::map<std::string, TVoidFunc> voidFuncs_;
    std::map<std::string, TIntFunc> intFuncs_;
    std::map<std::string, TStringFunc> stringFuncs_;
};

// The one registry of the process.
ORX_API extern TAppSys appSys;

}  // namespace orx

#endif
