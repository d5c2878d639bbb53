#include "host/TypeLibraries.h"

#include <dlfcn.h>
#include <fmt/format.h>

#include <string>

#include "host/Failure.h"
#include "smartcomp/TypeLibrary.h"

namespace trel::host {

namespace {

constexpr const char* ownName = "libtrelcomponents.so";

[[noreturn]] void refuse(const std::filesystem::path& library, const std::string& fault) {
    throw Failure(ExitCode::Usage, fmt::format("{}: {}", library.string(), fault));
}

// A function that the library gives, or null.
template <typename Function>
Function* find(void* handle, const char* name) {
    return reinterpret_cast<Function*>(dlsym(handle, name));
}

}  // namespace

void loadTypeLibrary(const std::filesystem::path& library) {
    std::error_code none;
    // A plain name would be looked for in the system's folders.
    const std::filesystem::path path =
        std::filesystem::exists(library, none) ? std::filesystem::absolute(library) : library;
    void* const handle = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!handle)
        refuse(library, fmt::format("cannot be loaded as a library of component types ({}); "
                                    "give the path of one with --components",
                                    dlerror()));

    const auto abi = find<int()>(handle, "trelComponentsAbi");
    const auto enter = find<void()>(handle, "trelRegisterComponents");
    if (!abi || !enter)
        refuse(library, fmt::format("is no library of component types: it lacks the function {}; "
                                    "define both functions of smartcomp/TypeLibrary.h",
                                    abi ? "trelRegisterComponents" : "trelComponentsAbi"));
    try {
        if (const int number = abi(); number != smartcomp::typeLibraryAbi)
            refuse(library, fmt::format("was built for class layout {}, this program has {}; "
                                        "build the library again against this version",
                                        number, smartcomp::typeLibraryAbi));
        enter();
    } catch (const Failure&) {
        throw;
    } catch (...) {
        refuse(library, fmt::format("failed while registering its types: {}; its maker has to "
                                    "mend that",
                                    textOfThrown()));
    }
}

std::filesystem::path ownTypeLibrary() {
    std::error_code none;
    const auto folder = std::filesystem::read_symlink("/proc/self/exe", none).parent_path();
    const auto beside = folder / ownName;
    const auto lib = folder.parent_path() / "lib" / ownName;
    for (const auto& place : {beside, lib})
        if (std::filesystem::exists(place, none)) return place;
    throw Failure(ExitCode::Usage,
                  fmt::format("{}: the library of component types that comes with this program is "
                              "not there, nor at {}; install it again",
                              beside.string(), lib.string()));
}

}  // namespace trel::host
