#include "tests/smartcomp/Cell.h"

#include <algorithm>
#include <mutex>
#include <utility>

#include "platform/sdf/ValueText.h"
#include "tests/smartcomp/Mirror.h"

namespace trel::test {

namespace {

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
        if (!unchecked_.contains(component)) {
            EXPECT_EQ(mirrorFaults(*component), Lines{});
        }
    }
}

void CellTest::removeComponents() {
    for (const auto& [id, component] : componentsInTable())
        if (!component->isStationLogic()) smartcomp::RemoveSubSmartComponent(id);
}

}  // namespace trel::test
