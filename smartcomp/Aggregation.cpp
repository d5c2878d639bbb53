#include "smartcomp/Aggregation.h"

#include <algorithm>
#include <limits>
#include <map>
#include <stdexcept>
#include <utility>

#include "smartcomp/Deliver.h"
#include "smartcomp/Hold.h"
#include "smartcomp/Lookup.h"
#include "smartcomp/Property.h"
#include "smartcomp/SCSignal.h"
#include "smartcomp/Walk.h"
#include "smartcomp/Wiring.h"

namespace trel::smartcomp {

namespace {

// Cut towards zero; what does not fit becomes the nearest number that does.
template <typename Integer>
Integer cut(double number) {
    using Limits = std::numeric_limits<Integer>;
    if (!(number > static_cast<double>(Limits::min()))) return Limits::min();
    if (number >= static_cast<double>(Limits::max())) return Limits::max();
    return static_cast<Integer>(number);
}

template <typename Table>
unsigned largestId(const Table& table, unsigned least) {
    for (const auto& [id, value] : table) least = std::max(least, id);
    return least;
}

unsigned behind(unsigned largest) {
    if (largest == std::numeric_limits<unsigned>::max())
        throw std::length_error("no id is left behind 4294967295");
    return largest + 1;
}

}  // namespace

Aggregation::Aggregation(std::shared_ptr<sdf::Element> element, sdf::ObjectType type)
    : SmartComponent(element, type) {
    keepElement(true);
    SdfNode::setPose(element->asPose("pose"));
    roleObject_ = element->touch("role_object")->asUInt("");
    // Ours once nothing throws any more.
    auto connections = loadConnections();
    for (const auto& child : element->children("child")) addObjChild(child);
    for (const auto& xy : element->children("xy")) {
        const auto v = xy->asVec3("");
        // The first position of a child wins.
        childPositions_.try_emplace(cut<unsigned>(v.x), cut<int>(v.y), cut<int>(v.z));
    }
    for (auto& connection : connections) connection.release();
    keepElement(false);
}

Aggregation::Wired::Wired() = default;
Aggregation::Wired::Wired(const Wired&) : isCopy(true) {}
Aggregation::Wired& Aggregation::Wired::operator=(const Wired&) {
    isCopy = true;
    return *this;
}
Aggregation::Wired::~Wired() = default;

struct Aggregation::Shared {
    std::unordered_map<unsigned, std::pair<int, int>> childPositions;
    ConnectionTable connections;
    std::vector<unsigned> order;
};

// A base that was copied would take the source's members along if what comes
// behind it threw.
Aggregation::Aggregation(const Aggregation& other)
    : Aggregation(other, {other.childPositions_, other.connections_, other.order_}) {}

Aggregation::Aggregation(const Aggregation& other, Shared&& shared)
    : SmartComponent(other),
      roleObject_(other.roleObject_),
      childPositions_(std::move(shared.childPositions)),
      connections_(std::move(shared.connections)),
      order_(std::move(shared.order)),
      largestConnectionId_(other.largestConnectionId_),
      wired_(other.wired_) {}

Aggregation& Aggregation::operator=(const Aggregation&) = default;

Aggregation::~Aggregation() {
    for (const auto& [id, connection] : connections_) delete connection;
}

rob::PoseTemplate<double> Aggregation::getPose() const { return SdfNode::getPose(); }

// The node's own pose, not that of something attached.
void Aggregation::setPose(const rob::PoseTemplate<double>& pose) { SdfNode::setPose(pose); }

bool Aggregation::canAttachTo(sdf::SdfNode* node) const {
    return AttachableNode::canAttachTo(node);
}

bool Aggregation::hasVisual() const { return true; }

bool Aggregation::isMovable() const { return true; }

bool Aggregation::checkPropertyObjectType(unsigned, sdf::SdfObject*) const { return true; }

void Aggregation::readPropertyValues() {}

bool Aggregation::isObjectUsed(unsigned objectId) const {
    return std::ranges::any_of(getProperties(), [&](const auto& entry) {
        return entry.second->getObjectId() == objectId;
    });
}

// Values that arrive.

void Aggregation::setPropertyValue(unsigned propertyId, const std::string& value) {
    if (!isHeld()) [[unlikely]]
        return whileHeld([&] { Aggregation::setPropertyValue(propertyId, value); });
    if (isRemoved() || !shouldSetProperty(propertyId, value)) return;
    SmartComponent::setPropertyValue(propertyId, value);
    endSetPropertyValue(propertyId);
}

void Aggregation::handleInputSignal(unsigned signalId, int value, long long time) {
    if (!isHeld()) [[unlikely]]
        return whileHeld([=, this] { Aggregation::handleInputSignal(signalId, value, time); });
    if (isRemoved()) return;
    const Removals::Since since;
    SCSignal& signal = signalAt(signalId);
    signal.setValue(value);
    if (signal.isAutoReset()) signal.setValue(0);
    notifySignalValueChanged(signalId);
    if (!since.signal(id(), signalId)) propagateDynamicInputSignal(signalId, value, time);
}

template <typename Value, typename Deliver>
TREL_INLINED inline void Aggregation::propagateInwards(SCSignal& source, const Value& value,
                                                       const Deliver& deliver) {
    const Wiring* const wiring = Walk::known(*this, source);
    if (Walk::leadsNowhere(source, wiring)) return;
    TableReading reading;
    deliverAlong(reading, *this, id(), source, wiring, value, deliver);
}

void Aggregation::propagateDynamicInputSignal(unsigned signalId, int value, long long time) {
    propagateInwards(signalAt(signalId), value, InwardDelivery{time});
}

TREL_INLINED inline void Aggregation::propagateStaticInputSignal(SCSignal& source,
                                                                 const SignalValue& value) {
    propagateInwards(source, value, StaticDelivery());
}

void Aggregation::setStaticInputSignal(unsigned signalId, SignalValue value) {
    if (!isHeld()) [[unlikely]]
        return whileHeld([=, this] { Aggregation::setStaticInputSignal(signalId, value); });
    SCSignal* const signal = beginStaticInput(signalId, value);
    if (!signal) return;
    propagateStaticInputSignal(*signal, value);
    endSetSignalValue(signalId);
}

// Stores, tells and marks the value; null when it is not to be passed inwards. Apart from
// the delivery, which nests and has no stack to spare.
[[gnu::noinline]] SCSignal* Aggregation::beginStaticInput(unsigned signalId,
                                                          const SignalValue& value) {
    if (isRemoved() || checkSignalIsSet(signalId, value)) return nullptr;
    const Removals::Since since;
    SmartComponent::setStaticInputSignal(signalId, value);
    if (!since.signal(id(), signalId)) return &signalAt(signalId);
    endSetSignalValue(signalId);
    return nullptr;
}

// Children.

void Aggregation::addChildComponent(unsigned childId,
                                    const std::optional<std::pair<int, int>>& xy) {
    addObjChildWithSdf(childId);
    if (!xy) return;
    childPositions_.try_emplace(childId, *xy);
    writeXY(childId, xy->first, xy->second);
}

void Aggregation::removeChildComponent(unsigned childId) {
    removeObjChildWithSdf(childId);
    childPositions_.erase(childId);
}

std::optional<std::pair<int, int>> Aggregation::getChildXY(unsigned childId) const {
    const auto entry = childPositions_.find(childId);
    if (entry == childPositions_.end()) return std::nullopt;
    return entry->second;
}

void Aggregation::setChildXY(unsigned childId, int x, int y) {
    childPositions_[childId] = {x, y};
    writeXY(childId, x, y);
}

// Always into the first "xy", whichever child it names.
void Aggregation::writeXY(unsigned childId, int x, int y) {
    write(element(), "xy",
          rob::Vec3Template<double>{static_cast<double>(childId), static_cast<double>(x),
                                    static_cast<double>(y)});
}

// Connections.

// Gives what it entered in the tables, which own nothing yet.
std::vector<std::unique_ptr<Connection>> Aggregation::loadConnections() {
    std::vector<std::unique_ptr<Connection>> read;
    for (const auto& child : element()->children("connection")) {
        read.push_back(std::unique_ptr<Connection>(new Connection(child)));
        read.back()->owner_ = this;
        connections_[read.back()->id()] = read.back().get();
    }
    // Of two with one id the later is loaded.
    std::erase_if(read, [this](const auto& connection) {
        return connections_[connection->id()] != connection.get();
    });
    // By index, and where indices are equal in the order of the document: whatever
    // they are, the order has no gaps. An index that is its place is not written.
    std::multimap<unsigned, Connection*> places;
    for (const auto& connection : read)
        if (!connection->isBinding()) places.emplace(connection->getIndex(), connection.get());
    order_.reserve(places.size());
    for (const auto& [index, connection] : places) {
        connection->setIndex(static_cast<unsigned>(order_.size()));
        order_.push_back(connection->id());
    }
    return read;
}

Connection* Aggregation::addConnection(std::unique_ptr<Connection> connection) {
    const unsigned id = connection->id();
    beforeEdit();
    if (order_.size() == order_.capacity()) order_.reserve(2 * order_.size() + 4);
    Connection*& entry = connections_[id];
    // One that had the id is lost, and its place in the order is closed.
    if (entry) {
        entry->gone_ = true;
        if (!entry->isBinding()) closeGap(placeOf(*entry));
    }
    connection->owner_ = this;
    entry = connection.release();
    if (largestConnectionId_) largestConnectionId_ = std::max(*largestConnectionId_, id);
    if (entry->isBinding()) return entry;

    const std::size_t place = std::min<std::size_t>(entry->getIndex(), order_.size());
    // In the order first, should the document refuse an index.
    order_.insert(order_.begin() + static_cast<std::ptrdiff_t>(place), id);
    for (std::size_t p = place + 1; p < order_.size(); ++p)
        at(connections_, order_[p])->setIndex(static_cast<unsigned>(p));
    return entry;
}

Connection* Aggregation::getConnection(unsigned id) const {
    Connection* const connection = at(connections_, id);
    return connection->isBinding() ? nullptr : connection;
}

Connection* Aggregation::getBinding(unsigned id) const {
    Connection* const connection = at(connections_, id);
    return connection->isBinding() ? connection : nullptr;
}

void Aggregation::deleteConnection(unsigned id) {
    Connection* const connection = at(connections_, id);
    beforeEdit();
    makeRoom();
    const std::size_t place = connection->isBinding() ? order_.size() : placeOf(*connection);
    connections_.erase(id);
    if (largestConnectionId_ == id) largestConnectionId_.reset();
    connection->gone_ = true;
    discard(std::unique_ptr<Connection>(connection));
    closeGap(place);
}

void Aggregation::deleteBinding(unsigned id) { deleteConnection(id); }

// The walks under way keep what they have yet to serve, and what was made from
// the tables is dropped.
void Aggregation::beforeEdit() {
    for (Walk* walk = wired_.innermost; walk; walk = walk->outer()) walk->freeze();
    wired_.connections.reset();
    wired_.bindings.reset();
    wired_.plainWalks = 0;
}

// Null while a plain walk over the order is cheaper: after an edit, until about as
// much has been walked as making the wiring takes.
const Wiring* Aggregation::makeWiring(Served served) {
    constexpr unsigned worthOfWiring = 8;  // plain walks
    if (wired_.isCopy) beforeEdit();
    if (served == Served::Connections && ++wired_.plainWalks <= worthOfWiring) return nullptr;
    auto connections = inOrderOfService(served);
    if (served == Served::Bindings)
        std::erase_if(connections, [](const Connection* c) { return !c->isBinding(); });
    auto& wiring = served == Served::Connections ? wired_.connections : wired_.bindings;
    wiring = std::make_unique<const Wiring>(connections);
    return wiring.get();
}

// Connections by their place; bindings as the table has them.
std::vector<const Connection*> Aggregation::inOrderOfService(Served served) const {
    std::vector<const Connection*> all;
    if (served == Served::Connections)
        for (const unsigned id : order_) all.push_back(at(connections_, id));
    else
        for (const auto& [id, connection] : connections_) all.push_back(connection);
    return all;
}

// Where a signal connection stands in the order; the order's length if nowhere.
std::size_t Aggregation::placeOf(const Connection& connection) const {
    const std::size_t index = connection.getIndex();
    if (index < order_.size() && order_[index] == connection.id()) return index;
    return static_cast<std::size_t>(std::ranges::find(order_, connection.id()) - order_.begin());
}

// Takes a place out of the order; those behind it move forward by one.
void Aggregation::closeGap(std::size_t place) {
    if (place == order_.size()) return;
    // The document may refuse an index; no place is left of what is deleted then.
    order_.erase(order_.begin() + static_cast<std::ptrdiff_t>(place));
    for (std::size_t p = place; p != order_.size(); ++p)
        at(connections_, order_[p])->setIndex(static_cast<unsigned>(p));
}

void Aggregation::moveSgConnOrderBackward(unsigned id) { swapWithNeighbour(id, 1); }

void Aggregation::moveSgConnOrderForward(unsigned id) { swapWithNeighbour(id, -1); }

void Aggregation::swapWithNeighbour(unsigned id, int step) {
    Connection* const moved = at(connections_, id);
    const unsigned place = moved->getIndex();
    // Before the first place lies 4294967295, which is beyond the end.
    const unsigned neighbour = place + static_cast<unsigned>(step);
    if (place >= order_.size() || order_[place] != id || neighbour >= order_.size())
        throw std::out_of_range("invalid vector subscript");
    Connection* const other = at(connections_, order_[neighbour]);
    beforeEdit();
    moved->setIndex(neighbour);
    other->setIndex(place);
    std::swap(order_[place], order_[neighbour]);
}

// Free ids.

unsigned Aggregation::getNextPropertyId() const { return behind(largestId(getProperties(), 10)); }

unsigned Aggregation::getNextSignalId() const { return behind(largestId(getSignals(), 0)); }

unsigned Aggregation::getNextSgConnId() const {
    if (!largestConnectionId_) largestConnectionId_ = largestId(connections_, 0);
    return behind(*largestConnectionId_);
}

void Aggregation::setRoleObject(unsigned id) {
    roleObject_ = id;
    write(element(), "role_object", id);
}

}  // namespace trel::smartcomp
