#include "tests/smartcomp/Cell.h"

#include <algorithm>
#include <mutex>
#include <utility>

#include "platform/sdf/ValueText.h"

namespace trel::test {

namespace {

void expectMirror(const Property& property) {
    SCOPED_TRACE(nameOf(*property.element()));
    sdf::Element& element = *property.element();
    EXPECT_EQ(property.id(), element.getId(true));
    EXPECT_EQ(property.value(), element.getStringFromValue());
    EXPECT_EQ(property.type(), element.asString("type"));
    EXPECT_EQ(typeIndexOf(property), Property::typeIndexOf(property.type()));
    EXPECT_EQ(property.unit(), element.asString("unit"));
    EXPECT_EQ(property.description(), element.asString("description"));
    EXPECT_EQ(property.isVisible(), element.asBool("uivisible"));
    EXPECT_EQ(property.isReadOnly(), element.asBool("read_only"));
}

void expectMirror(SCSignal& signal) {
    SCOPED_TRACE(nameOf(*signal.element()));
    sdf::Element& element = *signal.element();
    EXPECT_EQ(signal.id(), element.getId(true));
    EXPECT_EQ(signal.getName(), element.asString("name"));
    EXPECT_EQ(signal.type(), element.asString("type"));
    EXPECT_EQ(signal.description(), element.asString("description"));
    EXPECT_EQ(signal.isVisible(), element.asBool("uivisible"));
    EXPECT_EQ(signal.isAutoReset(), element.asBool("auto_reset"));
    const SignalValue value = signal.getValue();
    if (value.index() == 0)
        EXPECT_EQ(std::get<int>(value), element.asInt("value"));
    else
        EXPECT_EQ(std::get<double>(value), element.asDouble("value"));
}

void expectMirror(Connection& connection) {
    SCOPED_TRACE(nameOf(*connection.element()));
    sdf::Element& element = *connection.element();
    EXPECT_EQ(packed({connection.getSrcComponentId(), connection.getSrcSignalId()}),
              element.asUInt64("source"));
    EXPECT_EQ(packed({connection.getDstComponentId(), connection.getDstSignalId()}),
              element.asUInt64("destination"));
    if (connection.isBinding())
        EXPECT_EQ(element.get("index"), nullptr);
    else
        EXPECT_EQ(connection.getIndex(), element.asUInt("index"));
}

// A connection that was read with an index beyond the end keeps it, in the last
// place.
void expectOrder(Aggregation& aggregation) {
    const Ids& order = orderOf(aggregation);
    Ids signalConnections;
    for (const auto& [id, connection] : tableOf(aggregation)) {
        EXPECT_EQ(id, connection->id());
        expectMirror(*connection);
        if (!connection->isBinding()) signalConnections.push_back(id);
    }
    EXPECT_EQ(sorted(order), sorted(signalConnections));
    for (std::size_t place = 0; place < order.size(); ++place)
        EXPECT_GE(tableOf(aggregation).at(order[place])->getIndex(), place);
}

void expectMirror(SmartComponent& component) {
    SCOPED_TRACE(component.name());
    EXPECT_EQ(component.id(), component.element()->getId(true));
    if (!component.isStationLogic()) {
        EXPECT_EQ(component.getObjParentId(), component.element()->asUInt("parent"));
    }
    for (const auto& [id, property] : component.getProperties()) {
        EXPECT_EQ(id, property->id());
        expectMirror(*property);
    }
    for (const auto& [id, signal] : component.getSignals()) {
        auto& mirrored = dynamic_cast<SCSignal&>(*signal);
        EXPECT_EQ(id, mirrored.id());
        expectMirror(mirrored);
    }
    if (auto* const aggregation = dynamic_cast<Aggregation*>(&component)) {
        expectOrder(*aggregation);
        EXPECT_EQ(aggregation->getRoleObject(), component.element()->asUInt("role_object"));
    }
}

std::vector<std::pair<unsigned, SmartComponent*>> componentsInTable() {
    std::vector<std::pair<unsigned, SmartComponent*>> found;
    const std::shared_lock lock(sdf::SdfManager::inst()->mutex());
    for (const auto& [id, object] : sdf::SdfManager::inst()->objects())
        if (auto* const component = dynamic_cast<SmartComponent*>(object))
            found.emplace_back(id, component);
    return found;
}

}  // namespace

Ids sorted(Ids ids) {
    std::sort(ids.begin(), ids.end());
    return ids;
}

Lines sorted(Lines lines) {
    std::sort(lines.begin(), lines.end());
    return lines;
}

SCSignal& signalOf(const SmartComponent& component, unsigned id) {
    return dynamic_cast<SCSignal&>(*component.getSignal(id));
}

ElementPtr elementOf(const SmartComponent& component, std::string_view tag, unsigned id) {
    for (const auto& child : component.element()->children(tag))
        if (child->getId(true) == id) return child;
    return nullptr;
}

std::string documentValue(const SmartComponent& component, unsigned signalId) {
    const auto value = signalOf(component, signalId).element()->get("value");
    if (!value || !value->value().has_value()) return "";
    return sdf::Attr::Type(value->value().type()) + " " + value->getStringFromValue();
}

unsigned connect(Aggregation& aggregation, End source, End destination) {
    const unsigned id = aggregation.getNextSgConnId();
    Connection::Build(&aggregation, id, source.component, source.member, destination.component,
                      destination.member, static_cast<int>(orderOf(aggregation).size()));
    return id;
}

unsigned bind(Aggregation& aggregation, End source, End destination) {
    const unsigned id = aggregation.getNextSgConnId();
    Connection::Build(&aggregation, id, source.component, source.member, destination.component,
                      destination.member, -1);
    return id;
}

void CellTest::SetUp() {
    registerTypes();
    Station::inst();
    broker::SignalBroker::subscribe(eventLog());
    sdf::Element::Subscribe(eventLog());
    freshLog();
}

void CellTest::TearDown() {
    log().whenWritten = nullptr;
    Plain::whenRead = nullptr;
    sdf::Element::Unsubscribe(eventLog());
    broker::SignalBroker::unsubscribe(eventLog());
    expectMirrors();
    removeComponents();
    for (const unsigned id : entered_) sdf::SdfManager::Remove(id);
    EXPECT_EQ(Alive::count(), lost_) << "components live on that no table holds";
}

void CellTest::enterObject(unsigned id, sdf::SdfObject* object) {
    const std::unique_lock lock(sdf::SdfManager::inst()->mutex());
    sdf::SdfManager::inst()->objects()[id] = object;
    entered_.push_back(id);
}

bool CellTest::isInTable(unsigned id) {
    const std::shared_lock lock(sdf::SdfManager::inst()->mutex());
    return sdf::SdfManager::inst()->objects().contains(id);
}

void CellTest::expectMirrors() const {
    for (const auto& [id, component] : componentsInTable()) {
        EXPECT_EQ(id, component->id());
        EXPECT_TRUE(component->isStationLogic() || Alive::contains(component));
        if (!unchecked_.contains(component)) expectMirror(*component);
    }
}

void CellTest::removeComponents() {
    for (const auto& [id, component] : componentsInTable())
        if (!component->isStationLogic()) smartcomp::RemoveSubSmartComponent(id);
}

}  // namespace trel::test
