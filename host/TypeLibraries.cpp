#include "host/TypeLibraries.h"

#include <dlfcn.h>
#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <numeric>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

#include "host/Child.h"
#include "host/Failure.h"
#include "smartcomp/Manager.h"
#include "smartcomp/TypeLibrary.h"

namespace trel::host {

namespace {

namespace fs = std::filesystem;

constexpr const char* ownName = "libtrelcomponents.so";
constexpr const char* foldersVariable = "STATION_COMPONENTS";
constexpr unsigned longestLoad = 60;  // seconds that a library may take to load

[[noreturn]] void refuse(const fs::path& library, const std::string& fault) {
    throw Failure(ExitCode::Usage, fmt::format("{}: {}", library.string(), fault));
}

fs::path programFolder() {
    std::error_code none;
    return fs::read_symlink("/proc/self/exe", none).parent_path();
}

bool isThere(const fs::path& path) {
    std::error_code none;
    return fs::exists(path, none);
}

std::vector<fs::path> foldersOfVariable() {
    std::vector<fs::path> folders;
    const char* const value = std::getenv(foldersVariable);
    std::string_view rest = value ? value : "";
    while (!rest.empty()) {
        const std::string_view folder = rest.substr(0, rest.find(':'));
        if (!folder.empty()) folders.emplace_back(folder);
        rest.remove_prefix(std::min(folder.size() + 1, rest.size()));
    }
    return folders;
}

fs::path pluginFolder() { return programFolder().parent_path() / "lib" / "station"; }

std::string joined(const std::vector<fs::path>& folders) {
    std::string text;
    for (const fs::path& folder : folders) text += (text.empty() ? "" : ", ") + folder.string();
    return text;
}

// The library that came with the program.
fs::path ownLibrary() {
    const auto folder = programFolder();
    const auto beside = folder / ownName;
    const auto installed = pluginFolder() / ownName;
    for (const auto& place : {beside, folder.parent_path() / "lib" / ownName, installed})
        if (isThere(place)) return place;
    throw Failure(ExitCode::Usage,
                  fmt::format("{}: the library of component types that comes with this program is "
                              "not there, nor at {}; install it again",
                              beside.string(), installed.string()));
}

// A path as it stands, or what a name stands for.
fs::path found(const fs::path& library) {
    if (isThere(library)) return library;
    if (library.has_parent_path())
        refuse(library, "there is no such library; give the path of one with --components, or its "
                        "name");
    const auto folders = libraryFolders();
    const std::string name = library.string();
    for (const fs::path& folder : folders)
        for (const auto& file : {name, "lib" + name + ".so", name + ".so"})
            if (isThere(folder / file)) return folder / file;
    refuse(library, fmt::format("no library of that name is in {}; give its path, or name its "
                                "folder in {}",
                                joined(folders), foldersVariable));
}

// A function that the library gives, or null.
template <typename Function>
Function* find(void* handle, const char* name) {
    return reinterpret_cast<Function*>(dlsym(handle, name));
}

// `called` is how the user called it.
void load(const fs::path& path, const fs::path& called) {
    void* const handle = dlopen(fs::absolute(path).c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!handle)
        refuse(called, fmt::format("cannot be loaded as a library of component types ({}); "
                                   "give the path of one with --components",
                                   dlerror()));
    const auto abi = find<int()>(handle, "trelComponentsAbi");
    const auto enter = find<void()>(handle, "trelRegisterComponents");
    if (!abi || !enter)
        refuse(called,
               fmt::format("is no library of component types: it lacks the function {}; "
                           "include smartcomp/TypeLibrary.h and define both of its functions",
                           abi ? "trelRegisterComponents" : "trelComponentsAbi"));
    try {
        if (const int number = abi(); number != smartcomp::typeLibraryAbi)
            refuse(called, fmt::format("was built for class layout {}, this program has {}; "
                                       "build the library again against this version",
                                       number, smartcomp::typeLibraryAbi));
        enter();
    } catch (const Failure&) {
        throw;
    } catch (...) {
        refuse(called, fmt::format("failed while registering its types: {}; its maker has to "
                                   "mend that",
                                   textOfThrown()));
    }
}

std::vector<std::string> typeNames() {
    std::vector<std::string> names;
    for (const auto& type : smartcomp::Manager::inst()->types()) names.emplace_back(type.name);
    return names;
}

// What a library brings that is not registered yet, each on a line, learned in a
// process of its own.
std::string trial(const fs::path& path, const fs::path& called) {
    const ChildResult result = inChild(
        [&] {
            const auto before = typeNames();
            std::string names;
            try {
                load(path, called);
                if (typeNames().empty())
                    refuse(called, "registers no component types; let its function "
                                   "trelRegisterComponents call Manager::registerType");
            } catch (const Failure& failure) {
                return fmt::format("!{}", failure.what());
            }
            for (const std::string& name : typeNames())
                if (!std::ranges::binary_search(before, name)) names += name + '\n';
            return names;
        },
        longestLoad);
    if (!result.end.empty())
        refuse(called,
               fmt::format("{} while it was loaded; its maker has to mend that", result.end));
    if (result.output.starts_with('!')) throw Failure(ExitCode::Usage, result.output.substr(1));
    return result.output;
}

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = text.find('\n', at);
        lines.push_back(text.substr(at, end - at));
        at = end + 1;
    }
    return lines;
}

// How many letters are to be added, taken away or replaced.
std::size_t distance(std::string_view a, std::string_view b) {
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i != a.size(); ++i) {
        std::size_t corner = std::exchange(row[0], i + 1);
        for (std::size_t j = 0; j != b.size(); ++j) {
            const std::size_t replaced = corner + (a[i] == b[j] ? 0 : 1);
            corner = row[j + 1];
            row[j + 1] = std::min({replaced, row[j] + 1, corner + 1});
        }
    }
    return row.back();
}

}  // namespace

std::vector<fs::path> libraryFolders() {
    auto folders = foldersOfVariable();
    const auto program = programFolder();
    folders.insert(folders.end(), {program, pluginFolder(), program.parent_path() / "lib"});
    return folders;
}

// The registry passes over a name that it has: whether two libraries bring one
// shows only while it is empty.
void loadTypeLibraries(const std::vector<fs::path>& libraries) {
    struct Library {
        fs::path path;
        fs::path called;
    };
    std::vector<Library> all = {{ownLibrary(), ownLibrary()}};
    for (const fs::path& library : libraries) {
        const fs::path path = found(library);
        const auto isIt = [&](const Library& other) { return fs::equivalent(other.path, path); };
        if (std::ranges::none_of(all, isIt)) all.push_back({path, library});
    }
    std::map<std::string, fs::path> bringers;
    if (all.size() > 1)
        for (const auto& [path, called] : all)
            for (const std::string& type : linesOf(trial(path, called))) {
                const auto [entry, fresh] = bringers.emplace(type, called);
                if (!fresh)
                    refuse(called, fmt::format("brings the type \"{}\", which {} brings already; "
                                               "load one of them alone, or rename the type",
                                               type, entry->second.string()));
            }
    for (const auto& [path, called] : all) load(path, called);
}

std::string_view nearestType(std::string_view name) {
    constexpr std::size_t longestName = 100;
    std::string_view best;
    std::size_t least = std::min(name.size(), longestName) / 2 + 1;
    if (name.size() > longestName) return best;
    for (const auto& type : smartcomp::Manager::inst()->types()) {
        const std::size_t far = distance(name, type.name);
        if (far >= least) continue;
        least = far;
        best = type.name;
    }
    return best;
}

std::optional<fs::path> libraryThatBrings(const std::string& type) {
    auto folders = foldersOfVariable();
    folders.push_back(pluginFolder());
    for (const fs::path& folder : folders) {
        std::error_code none;
        std::vector<fs::path> files;
        for (const auto& entry : fs::directory_iterator(folder, none))
            if (entry.path().extension() == ".so") files.push_back(entry.path());
        std::ranges::sort(files);
        for (const fs::path& file : files) {
            try {
                const auto types = linesOf(trial(file, file));
                if (std::ranges::find(types, type) != types.end()) return file;
            } catch (const Failure&) {}
        }
    }
    return std::nullopt;
}

}  // namespace trel::host
