#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>
#include <string>

#include "fuzz/LoadedStation.h"
#include "fuzz/Rebirth.h"
#include "fuzz/Require.h"
#include "fuzz/StationActs.h"
#include "fuzz/Unchecked.h"
#include "host/Inspections.h"
#include "host/Show.h"
#include "platform/station/Station.h"
#include "smartcomp/TypeLibrary.h"

// Bytes are a station file: a clear refusal, or a station that runs, is saved
// and comes back.

namespace {

using fuzz::LoadedStation;
using fuzz::requireNone;

void requireSame(const std::string& what, const std::string& found, const std::string& expected) {
    if (found != expected)
        requireNone(what + " differs, expected\n" + expected + "\nfound\n" + found);
}

// Every message names the file, line and column.
void requireClear(const sdf::DocumentError& error) {
    const auto [line, column] = error.place();
    const std::string place = std::to_string(line) + ":" + std::to_string(column) + ": ";
    if (line == 0 || column == 0 || error.fault().empty() ||
        error.what() != "input:" + place + error.fault())
        requireNone("unclear: " + std::string(error.what()));
}

// A document that can be read is written in a form that stays as it is.
bool isDocument(std::string_view bytes) {
    try {
        const std::string text = sdf::Document::fromText(bytes, "input").text();
        requireSame("the form", sdf::Document::fromText(text, "input").text(), text);
        return true;
    } catch (const sdf::DocumentError& error) {
        requireClear(error);
        return false;
    }
}

std::unique_ptr<LoadedStation> loaded(const std::string& text) {
    try {
        return std::make_unique<LoadedStation>(text);
    } catch (const sdf::DocumentError& error) {
        requireClear(error);
    } catch (const std::exception&) {
        // The station logic's own element is no station logic.
    }
    return nullptr;
}

// What a station that cannot be made wholly loses is promised to be lost.
std::unique_ptr<LoadedStation> loadedWithoutLeaks(const std::string& text) {
    std::unique_ptr<LoadedStation> station;
    {
        const fuzz::Unchecked unchecked;
        station = loaded(text);
    }
    if (!station || !station->isWhole()) return station;
    station.reset();
    return loaded(text);
}

// A saved station that was whole comes back as it was saved; its second text is
// its first.
void requireComesBack(const std::string& text) {
    auto station = loadedWithoutLeaks(text);
    if (!station || !station->isWhole()) return;
    const std::string second = trel::Station::inst().text();
    const std::string state = LoadedStation::state();
    station.reset();
    station = loaded(second);
    requireSame("the text", trel::Station::inst().text(), second);
    requireSame("the state", LoadedStation::state(), state);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    trelRegisterComponents();
    const std::string text(reinterpret_cast<const char*>(data), size);
    if (!isDocument(text)) return 0;
    auto station = loadedWithoutLeaks(text);
    if (!station) return 0;
    requireNone(LoadedStation::faults());
    trel::host::FaultList list;
    const trel::host::StationMap map(*trel::GetStationElem());
    inspectDocument(*trel::GetStationElem(), map, list);
    inspectComponents(map, list);
    inspectFlow(map, [&](unsigned id) { return map.looksLikeAggregation(*map.find(id)); }, list);
    trel::host::textOfFaults("input", list.take());
    trel::host::textOfStation();

    fuzz::actOn(text);
    requireNone(LoadedStation::faults());
    const std::string saved = trel::Station::inst().text();
    const bool wasWhole = station->isWhole();
    station.reset();
    requireSame("the form", sdf::Document::fromText(saved, "input").text(), saved);
    if (wasWhole) requireComesBack(saved);
    fuzz::beginStation();
    return 0;
}
