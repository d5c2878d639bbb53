#include "host/LiveStation.h"

#include <fmt/format.h>

#include <new>
#include <stdexcept>
#include <string>

#include "host/Failure.h"
#include "host/Faults.h"
#include "host/Objects.h"
#include "platform/sdf/Document.h"
#include "platform/station/Station.h"
#include "smartcomp/Lifecycle.h"
#include "smartcomp/StationLogic.h"

namespace trel::host {

namespace {

void refuse(const std::string& file, const Faults& faults) {
    if (!faults.empty()) throw Failure(ExitCode::FileInvalid, textOfFaults(file, faults));
}

// The element that Load stopped at: it makes one component after the other.
sdf::Element& firstNotMade(std::size_t made) {
    for (const auto& element : GetStationElem()->children("smart_component"))
        if (element->asString("type") != "StationLogic" && made-- == 0) return *element;
    return *GetStationElem();
}

Fault unknownType(const sdf::Element& element) {
    return {element.place(),
            fmt::format("{} has the type \"{}\", which no library brings; load the one that does "
                        "with --components, or correct the type",
                        called(element), element.asString("type"))};
}

Fault failedType(const sdf::Element& element, const std::string& reason) {
    return {element.place(),
            fmt::format("{} cannot be made by its type \"{}\": {}; look at its properties and "
                        "signals",
                        called(element), element.asString("type"), reason)};
}

}  // namespace

LiveStation::LiveStation(const std::filesystem::path& file) {
    const std::string name = file.string();
    try {
        Station::inst().open(file);
    } catch (const sdf::DocumentError& error) {
        throw Failure(ExitCode::FileInvalid, error.what());
    }
    refuse(name, faultsOfDocument(*GetStationElem()));
    makeLogic(name);
    makeComponents(name);
    makeControllers();
    refuse(name, faultsOfComponents());
}

LiveStation::~LiveStation() = default;

// Allocates nothing: it runs when memory has ended, too.
LiveStation::Emptying::~Emptying() {
    while (const auto* const component = anyComponentButLogic())
        smartcomp::RemoveSubSmartComponent(component->id());
}

void LiveStation::makeLogic(const std::string& file) {
    try {
        smartcomp::StationLogic::inst();
    } catch (const std::bad_alloc&) {
        throw;
    } catch (...) {
        refuse(file, {{GetStationLogicElem()->place(),
                       fmt::format("the station logic cannot be made from this element: {}; "
                                   "compare it with that of a new station",
                                   textOfThrown())}});
    }
}

void LiveStation::makeComponents(const std::string& file) {
    const auto& made = smartcomp::GetAllSmartComponents();
    const std::size_t before = made.size();
    try {
        smartcomp::Load();
    } catch (const std::out_of_range& error) {
        // A type that is known has the component in the object table before it
        // is asked to read its properties.
        const sdf::Element& element = firstNotMade(made.size() - before);
        refuse(file, {objectOf(element.getId(true)) ? failedType(element, error.what())
                                                    : unknownType(element)});
    } catch (const std::bad_alloc&) {
        throw;
    } catch (...) {
        const std::string reason = textOfThrown();
        refuse(file, {failedType(firstNotMade(made.size() - before), reason)});
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
