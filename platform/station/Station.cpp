#include "platform/station/Station.h"

#include <algorithm>
#include <limits>
#include <mutex>
#include <stdexcept>
#include <unordered_set>
#include <utility>

#include "platform/sdf/SdfManager.h"

namespace trel {

namespace {

using sdf::Element;

constexpr std::string_view stationTag = "station";
constexpr std::string_view componentTag = "smart_component";
constexpr const char* logicType = "StationLogic";

// The element of the station logic, or null.
// \throws sdf::DocumentError if there are two.
std::shared_ptr<Element> findLogic(const Element& station, const std::string& file) {
    std::shared_ptr<Element> logic;
    for (const auto& component : station.children(componentTag)) {
        if (component->asString("type") != logicType) continue;
        if (logic)
            throw sdf::DocumentError(file, component->place(),
                                     "the station has a second component of type StationLogic; "
                                     "one is expected");
        logic = component;
    }
    return logic;
}

// 2, or behind all others where that is taken.
unsigned freeId(const Element& station, const std::string& file) {
    bool isTaken = false;
    unsigned largest = Station::logicId;
    for (const Element* e = station.firstChild(); e; e = e->nextSibling()) {
        isTaken = isTaken || e->getId(true) == Station::logicId;
        largest = std::max(largest, e->getId(true));
    }
    if (!isTaken) return Station::logicId;
    if (largest == std::numeric_limits<unsigned>::max())
        throw sdf::DocumentError(file, station.place(),
                                 "no id is left behind 4294967295 for the station logic; a "
                                 "component of type StationLogic is expected");
    return largest + 1;
}

void appendLogic(Element& station, unsigned id) {
    const auto logic = station.appendObject(componentTag, id, "Station Logic");
    logic->touch("type")->restoreValue(std::string(logicType));
    logic->touch("parent")->restoreValue(0u);
}

// What makes a document a station.
void check(Element& station, const std::string& file) {
    if (station.tag() != stationTag)
        throw sdf::DocumentError(file, station.place(),
                                 "the root element is <" + std::string(station.tag()) +
                                     ">; <station> is expected");
    if (station.getId(true) != Station::id)
        throw sdf::DocumentError(file, station.place(),
                                 "the station has " +
                                     (station.getId(true) == 0
                                          ? std::string("no id")
                                          : "the id " + std::to_string(station.getId(true))) +
                                     "; id=\"1\" is expected");
    const auto logic = findLogic(station, file);
    if (!logic)
        appendLogic(station, freeId(station, file));
    else if (logic->getId(true) == 0 || logic->getId(true) == Station::id)
        throw sdf::DocumentError(file, logic->place(),
                                 "the station logic has no id of its own; a whole number from 2 "
                                 "to 4294967295 is expected");
}

sdf::Document emptyStation() {
    auto station = Element::Create(stationTag);
    station->setId(Station::id);
    station->setName("Station");
    appendLogic(*station, Station::logicId);
    return sdf::Document(std::move(station));
}

// A deleted connection leaves its element behind. In an element that nobody
// mirrors, connections wait to be loaded; one that never was mirrored is not
// ours to drop.
bool isLeftover(const Element& e) {
    if (e.tag() != "connection" || !e.isLeftBehind()) return false;
    const auto owner = e.parent();
    return owner && owner->tag() == componentTag && owner->isMirrored();
}

}  // namespace

// Never destroyed: the station logic is destroyed at exit, and what it touches
// then must still live.
Station& Station::inst() {
    static auto* const station = new Station;
    return *station;
}

Station::Station() : document_(emptyStation()) { adopt(document_); }

void Station::complete(sdf::Document& document, const std::string& name) {
    check(*document.root(), name);
}

void Station::open(const std::filesystem::path& file) {
    open(sdf::Document::read(file), file.string());
}

void Station::openText(std::string_view text, const std::string& name) {
    open(sdf::Document::fromText(text, name), name);
}

void Station::open(sdf::Document document, const std::string& name) {
    complete(document, name);
    adopt(std::move(document));
}

void Station::adopt(sdf::Document document) {
    if (logic_ && sdf::SdfManager::inst()->find(logic_->getId(true)))
        throw std::logic_error(
            "the station logic lives and is bound to its station; another station takes another "
            "process");
    auto logic = findLogic(*document.root(), {});
    auto object = std::make_unique<sdf::SdfObject>(document.root(), sdf::ObjectType::Station);
    sdf::SdfManager& manager = *sdf::SdfManager::inst();
    const std::unique_lock lock(manager.mutex());
    manager.objects()[id] = object.get();
    object_ = std::move(object);
    logic_ = std::move(logic);
    document_ = std::move(document);
}

void Station::save(const std::filesystem::path& file) const { document_.save(file, isLeftover); }

std::string Station::text() const { return document_.text(isLeftover); }

std::shared_ptr<Element> GetStationElem() { return Station::inst().element(); }

std::shared_ptr<Element> GetStationLogicElem() { return Station::inst().logicElement(); }

}  // namespace trel
