#include "host/Check.h"

#include <fmt/format.h>
#include <sys/mman.h>

#include <cerrno>
#include <nlohmann/json.hpp>
#include <string>
#include <system_error>
#include <utility>

#include "host/Child.h"
#include "host/Failure.h"
#include "host/Inspections.h"
#include "host/Objects.h"
#include "host/StationFile.h"
#include "host/TypeLibraries.h"
#include "platform/station/Station.h"
#include "smartcomp/Aggregation.h"
#include "smartcomp/Lifecycle.h"
#include "smartcomp/StationLogic.h"

namespace trel::host {

namespace {

using Json = nlohmann::ordered_json;

constexpr unsigned longestCheck = 300;  // seconds that the components of a file may take

// What a process that may crash is at, told to the one that waits for it.
class Whereabouts {
public:
    Whereabouts()
        : object_(static_cast<unsigned*>(mmap(nullptr, sizeof(unsigned), PROT_READ | PROT_WRITE,
                                              MAP_SHARED | MAP_ANONYMOUS, -1, 0))) {
        if (object_ == MAP_FAILED)
            throw std::system_error(errno, std::generic_category(), "no shared memory");
    }
    ~Whereabouts() { munmap(object_, sizeof(unsigned)); }
    Whereabouts(const Whereabouts&) = delete;
    Whereabouts& operator=(const Whereabouts&) = delete;

    void isAt(unsigned object) { *object_ = object; }
    unsigned object() const { return *object_; }

private:
    unsigned* object_;
};

// Whether a fault is known of anything in the element.
bool isFaulty(const sdf::Element& element, const FaultList& faults) {
    if (faults.isNoted(element)) return true;
    for (const auto* child = element.firstChild(); child; child = child->nextSibling())
        if (isFaulty(*child, faults)) return true;
    return false;
}

// Makes what can be made, one by one: what is wrong with one is no reason to
// keep silent about the others.
void makeObjects(const StationMap& map, Whereabouts& whereabouts, FaultList& faults) {
    const auto make = [&](const MappedObject& object, const auto& making) {
        whereabouts.isAt(object.id);
        try {
            making();
        } catch (...) {
            if (!isFaulty(*object.element, faults))
                addFailedType(map, object, textOfThrown(), faults);
        }
        whereabouts.isAt(0);
    };
    make(*map.find(map.logic()), [] { smartcomp::StationLogic::inst(); });
    for (const MappedObject& object : map.objects()) {
        const ElementPtr type = object.element->get("type");
        if (object.isController() || object.isLogic() || map.find(object.id) != &object ||
            object.id == Station::id || !type || faults.isNoted(*type))
            continue;
        make(object, [&] { smartcomp::Create(object.element); });
    }
}

Json jsonOf(const Faults& faults) {
    Json all = Json::array();
    for (const Fault& fault : faults)
        all.push_back({fault.code.index(), fault.place.line, fault.place.column, fault.path,
                       fault.text, fault.remedy});
    return all;
}

Faults faultsIn(const Json& all) {
    Faults faults;
    for (const Json& fault : all)
        faults.push_back(
            {FaultCode::at(fault[0]), {fault[1], fault[2]}, fault[3], fault[4], fault[5]});
    return faults;
}

// What takes type libraries and live components to find. `file` is what it says
// of the document, and it goes into the station.
Faults inspectAlive(StationFile& file, const std::string& name, const StationMap& map,
                    FaultList& faults, Whereabouts& whereabouts) {
    inspectTypes(map, faults);
    if (file.isStation) {
        Station::inst().open(std::move(*file.document), name);
        makeObjects(map, whereabouts, faults);
        inspectComponents(map, faults);
        inspectBindings(map, faults);
    }
    const auto isAggregation = [&](unsigned id) {
        const auto* const component = componentOf(id);
        return component ? dynamic_cast<const smartcomp::Aggregation*>(component) != nullptr
                         : map.looksLikeAggregation(*map.find(id));
    };
    inspectFlow(map, isAggregation, faults);
    return faults.take();
}

Fault crashed(const StationMap& map, unsigned id, const std::string& end) {
    const FaultCode code = "type-crashes";
    const MappedObject* const object = map.find(id);
    if (!object)
        return {code,
                {},
                "",
                fmt::format("the process that looked at the components {}", end),
                std::string(code->remedy)};
    return {code, object->element->place(), map.pathOf(*object),
            fmt::format("the process that had the type \"{}\" make the component {}",
                        object->element->asString("type"), end),
            std::string(code->remedy)};
}

Json answerOf(StationFile& file, const std::string& name, const StationMap& map, FaultList& faults,
              const std::vector<std::filesystem::path>& libraries, Whereabouts& whereabouts) {
    try {
        loadTypeLibraries(libraries);
        return {{"faults", jsonOf(inspectAlive(file, name, map, faults, whereabouts))}};
    } catch (const Failure& failure) {
        return {{"failure", failure.what()}};
    }
}

// Once more without the type that ended the process: what else is wrong is to be
// told, too.
Faults faultsOfLiving(StationFile& file, const std::string& name, const StationMap& map,
                      FaultList& faults, const std::vector<std::filesystem::path>& libraries) {
    constexpr unsigned mostCrashes = 20;
    Faults found;
    Whereabouts whereabouts;
    for (unsigned crashes = 0; crashes != mostCrashes; ++crashes) {
        const ChildResult child = inChild(
            [&] {
                return answerOf(file, name, map, faults, libraries, whereabouts)
                    .dump(-1, ' ', false, Json::error_handler_t::replace);
            },
            longestCheck);
        if (child.end.empty()) {
            const Json answer = Json::parse(child.output);
            if (answer.contains("failure"))
                throw Failure(ExitCode::Usage, answer["failure"].get<std::string>());
            return joined(std::move(found), faultsIn(answer["faults"]));
        }
        found.push_back(crashed(map, whereabouts.object(), child.end));
        const MappedObject* const object = map.find(whereabouts.object());
        if (!object) return found;
        const std::string type = object->element->asString("type");
        for (const MappedObject& other : map.objects())
            if (const ElementPtr key = other.element->get("type");
                key && !other.isController() && key->asString("") == type)
                faults.note(*key);
    }
    return found;
}

}  // namespace

Faults faultsOfFile(const std::filesystem::path& file,
                    const std::vector<std::filesystem::path>& libraries) {
    StationFile read = readStationFile(file);
    Faults found = std::move(read.faults);
    if (read.document) {
        const auto root = read.document->root();
        const StationMap map(*root);
        FaultList faults(read.noted);
        inspectDocument(*root, map, faults);
        found = joined(std::move(found), faults.take());
        found =
            joined(std::move(found), faultsOfLiving(read, file.string(), map, faults, libraries));
    }
    sortByPlace(found);
    return found;
}

}  // namespace trel::host
