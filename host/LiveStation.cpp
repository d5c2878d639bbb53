#include "host/LiveStation.h"

#include <new>
#include <stdexcept>
#include <string>
#include <utility>

#include "host/Failure.h"
#include "host/Faults.h"
#include "host/Inspections.h"
#include "host/Objects.h"
#include "host/StationFile.h"
#include "platform/sdf/Document.h"
#include "platform/station/Station.h"
#include "smartcomp/Lifecycle.h"
#include "smartcomp/StationLogic.h"

namespace trel::host {

namespace {

void refuse(const std::string& file, const Faults& faults) {
    if (const Faults errors = errorsIn(faults); !errors.empty())
        throw Failure(ExitCode::FileInvalid, textOfFaults(file, errors));
}

[[noreturn]] void refuse(const std::string& file, const StationMap& map, const MappedObject& object,
                         const std::string& reason) {
    FaultList faults;
    addFailedType(map, object, reason, faults);
    throw Failure(ExitCode::FileInvalid, textOfFaults(file, faults.take()));
}

// The element that Load stopped at: it makes one component after the other.
const MappedObject& firstNotMade(const StationMap& map, std::size_t made) {
    for (const MappedObject& object : map.objects())
        if (!object.isController() && !object.isLogic() && made-- == 0) return object;
    throw std::logic_error("Load stopped at no component");
}

}  // namespace

LiveStation::LiveStation(const std::filesystem::path& file) {
    const std::string name = file.string();
    StationFile read = readStationFile(file);
    if (!read.document) refuse(name, read.faults);
    const StationMap map(*read.document->root());
    FaultList faults(read.noted);
    inspectDocument(*read.document->root(), map, faults);
    inspectTypes(map, faults);
    refuse(name, joined(std::move(read.faults), faults.take()));
    Station::inst().open(std::move(*read.document), name);
    makeLogic(name, map);
    makeComponents(name, map);
    makeControllers();
    inspectComponents(map, faults);
    refuse(name, faults.take());
}

LiveStation::~LiveStation() = default;

// Allocates nothing: it runs when memory has ended, too.
LiveStation::Emptying::~Emptying() {
    while (const auto* const component = anyComponentButLogic())
        smartcomp::RemoveSubSmartComponent(component->id());
}

void LiveStation::makeLogic(const std::string& file, const StationMap& map) {
    try {
        smartcomp::StationLogic::inst();
    } catch (const std::bad_alloc&) {
        throw;
    } catch (...) {
        refuse(file, map, *map.find(map.logic()), textOfThrown());
    }
}

void LiveStation::makeComponents(const std::string& file, const StationMap& map) {
    const auto& made = smartcomp::GetAllSmartComponents();
    const std::size_t before = made.size();
    try {
        smartcomp::Load();
    } catch (const std::bad_alloc&) {
        throw;
    } catch (...) {
        const std::string reason = textOfThrown();
        refuse(file, map, firstNotMade(map, made.size() - before), reason);
    }
}

void LiveStation::makeControllers() {
    for (const auto& element : GetStationElem()->children("controller"))
        controllers_.push_back(std::make_unique<Controller>(element));
}

void LiveStation::save(const std::filesystem::path& file) const {
    try {
        Station::inst().save(file);
    } catch (const sdf::DocumentError& error) {
        throw Failure(ExitCode::CannotSave, error.what());
    }
}

}  // namespace trel::host
