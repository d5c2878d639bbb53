#include "host/LiveStation.h"

#include <fmt/format.h>

#include <exception>
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

LiveStation::Emptying::~Emptying() {
    for (const smartcomp::SmartComponent* const component : componentsNow())
        if (!component->isStationLogic()) smartcomp::RemoveSubSmartComponent(component->id());
}

void LiveStation::makeLogic(const std::string& file) {
    try {
        smartcomp::StationLogic::inst();
    } catch (const std::exception& error) {
        refuse(file, {{GetStationLogicElem()->place(),
                       fmt::format("the station logic cannot be made from this element: {}; "
                                   "compare it with that of a new station",
                                   error.what())}});
    }
}

void LiveStation::makeComponents(const std::string& file) {
    const auto& made = smartcomp::GetAllSmartComponents();
    const std::size_t before = made.size();
    try {
        smartcomp::Load();
    } catch (const std::exception& error) {
        const sdf::Element& element = firstNotMade(made.size() - before);
        // What else throws is found in the document before anything is made.
        const bool unknown = dynamic_cast<const std::out_of_range*>(&error) != nullptr &&
                             !objectOf(element.getId(true));
        refuse(file,
               {{element.place(),
                 unknown ? fmt::format("{} has the type \"{}\", which no library brings; load the "
                                       "one that does with --components, or correct the type",
                                       called(element), element.asString("type"))
                         : fmt::format("{} cannot be made by its type \"{}\": {}; look at its "
                                       "properties and signals",
                                       called(element), element.asString("type"), error.what())}});
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
