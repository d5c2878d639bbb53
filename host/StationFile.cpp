#include "host/StationFile.h"

#include <fmt/format.h>

#include <string>
#include <utility>
#include <vector>

#include "platform/station/Station.h"

namespace trel::host {

namespace {

// The document's messages say what is wrong, then what is expected.
Fault faultOf(FaultCode code, sdf::Element::Place place, const std::string& message) {
    const std::size_t end = message.find("; ");
    if (end == std::string::npos) return {code, place, "", message, std::string(code->remedy)};
    return {code, place, "", message.substr(0, end), message.substr(end + 2)};
}

FaultCode codeOf(sdf::ValueFault::Kind kind) {
    switch (kind) {
        case sdf::ValueFault::Kind::Id: return "id-text";
        case sdf::ValueFault::Kind::NoId: return "id-zero";
        case sdf::ValueFault::Kind::Value: return "value-text";
        case sdf::ValueFault::Kind::SecondValue: break;
    }
    return "value-second";
}

// What makes a document a station, each with its own fault.
void inspectStation(const sdf::Element& station, FaultList& faults) {
    if (station.getId(true) != Station::id && !faults.isNoted(station))
        faults.add("station-id", station, "",
                   station.getId(true) == 0
                       ? "the station has no id"
                       : fmt::format("the station has the id {}", station.getId(true)));
    unsigned logics = 0;
    for (const auto& component : station.children("smart_component")) {
        if (component->asString("type") != "StationLogic") continue;
        if (++logics > 1)
            faults.add("logic-twice", *component, "", "the station has a second station logic");
        else if (component->getId(true) == 0)
            faults.add("logic-id", *component, "", "the station logic has no id");
        else if (component->getId(true) == Station::id)
            faults.add("logic-id", *component, "", "the station logic has the id of the station");
    }
}

}  // namespace

StationFile readStationFile(const std::filesystem::path& file) {
    StationFile result;
    std::vector<sdf::ValueFault> values;
    try {
        result.document = sdf::Document::read(file, values);
    } catch (const sdf::DocumentError& error) {
        result.faults.push_back(faultOf(error.place().line == 0 ? FaultCode("file-unreadable")
                                                                : FaultCode("not-well-formed"),
                                        error.place(), error.fault()));
        return result;
    }
    for (const sdf::ValueFault& value : values) {
        result.faults.push_back(faultOf(codeOf(value.kind), value.place, value.fault));
        result.noted.insert(value.element.get());
    }
    const sdf::Element& root = *result.document->root();
    if (root.tag() != "station") {
        result.faults.push_back({"root-tag", root.place(), "",
                                 fmt::format("the root element is <{}>", root.tag()),
                                 std::string(FaultCode("root-tag")->remedy)});
        result.document.reset();
        return result;
    }
    FaultList faults(result.noted);
    inspectStation(root, faults);
    Faults found = faults.take();
    result.isStation = found.empty();
    try {
        if (result.isStation) Station::complete(*result.document, file.string());
    } catch (const sdf::DocumentError& error) {
        if (result.noted.empty())
            found.push_back(faultOf("ids-used-up", error.place(), error.fault()));
        result.isStation = false;
    }
    result.faults.insert(result.faults.end(), found.begin(), found.end());
    return result;
}

}  // namespace trel::host
