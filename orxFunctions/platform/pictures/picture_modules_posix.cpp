#include "orxFunctions/platform/pictures/picture_modules.h"

#include <dlfcn.h>

#include <exception>
#include <system_error>

namespace orx::platform {
namespace {

namespace fs = std::filesystem;

// Where the loader found this library. Nothing when it can't be told.
fs::path libraryFile() {
    Dl_info info = {};
    if (dladdr(&pictureModules, &info) == 0 || info.dli_fname == nullptr) return {};
    return fs::absolute(info.dli_fname);
}

// A symbolic link to the library may lie elsewhere than the modules do.
std::vector<fs::path> foldersFor(const fs::path& library) {
    std::error_code ignored;
    const fs::path beside = library.parent_path();
    const fs::path linked = fs::canonical(library, ignored).parent_path();
    return {beside, beside / "orxFunctions", linked, linked / "orxFunctions"};
}

}  // namespace

// The name is asked for here: a relative one holds for the folder that the process works in now.
PictureModules::PictureModules() {
    try {
        library_ = libraryFile();
    } catch (const std::exception&) {  // no memory: no module will be found
    }
}

PictureModules::~PictureModules() {
    const zul::LockGuard lock(mutex_);
    unload(codecs_);
    unload(windows_);
}

const PictureCodecs* PictureModules::codecs(std::string* reason) { return functionsOf(codecs_, reason); }
const PictureWindows* PictureModules::windows(std::string* reason) { return functionsOf(windows_, reason); }

template <class Functions>
const Functions* PictureModules::functionsOf(Slot<Functions>& slot, std::string* reason) {
    const PictureModule<Functions>* module = slot.module;
    if (module == nullptr) {
        const zul::LockGuard lock(mutex_);
        module = slot.module;
        if (module == nullptr) slot.module = module = load(slot, reason);
    }
    return module == nullptr ? nullptr : module->functions;
}

// Only from the library's own folders, not by the standard search: a module is made with its library.
template <class Functions>
const PictureModule<Functions>* PictureModules::load(Slot<Functions>& slot, std::string* reason) {
    const std::string name = "lib" + std::string(slot.name) + ".so";
    std::string why = name + ", which comes with liborxFunctions, is not in its folder " +
                      library_.parent_path().string() + " or the folder orxFunctions there";
    for (const fs::path& folder : foldersFor(library_)) {
        std::error_code ignored;
        const fs::path file = folder / name;
        if (!fs::exists(file, ignored)) continue;
        void* const handle = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
        if (handle == nullptr) {
            const char* const text = dlerror();
            why = text == nullptr ? file.string() + " can't be loaded" : text;
            continue;
        }
        const auto entry = reinterpret_cast<PictureModuleEntry<Functions>>(findProcedure(handle, slot.name));
        const PictureModule<Functions>* const module =
            entry == nullptr ? nullptr : entry(kPictureModuleVersion);
        if (module != nullptr) {
            slot.handle = handle;
            return module;
        }
        why = file.string() + " is of another version than the library";
        dlclose(handle);
    }
    if (reason != nullptr) *reason = why;
    return nullptr;
}

// At the end of the process a module, which was loaded later, has ended before the library. It stays where it
// is then, as all libraries do: taking a hundred of them apart would only cost time.
template <class Functions>
void PictureModules::unload(Slot<Functions>& slot) {
    const PictureModule<Functions>* const module = slot.module.exchange(nullptr);
    if (module != nullptr && !*module->ended) dlclose(slot.handle);
}

}  // namespace orx::platform
