#include "tests/components/Bench.h"

#include <fmt/format.h>

#include <algorithm>
#include <memory>
#include <stdexcept>
#include <utility>
#include <variant>

#include "platform/sdf/SdfManager.h"
#include "smartcomp/Connection.h"
#include "smartcomp/Lifecycle.h"
#include "smartcomp/TypeLibrary.h"

namespace trel::test {

namespace {

std::string nameOf(unsigned componentId) {
    const sdf::SdfObject* const object = sdf::SdfManager::inst()->find(componentId);
    return object ? object->name() : fmt::format("#{}", componentId);
}

SmartComponent* componentOf(unsigned id) {
    return dynamic_cast<SmartComponent*>(sdf::SdfManager::inst()->find(id));
}

}  // namespace

Log::Log() {
    sdf::Element::Subscribe(*this);
    broker::SignalBroker::subscribe(*this);
}

Log::~Log() {
    broker::SignalBroker::unsubscribe(*this);
    sdf::Element::Unsubscribe(*this);
}

Lines Log::take() { return std::exchange(lines_, {}); }

void Log::valueWritten(sdf::Element& element, const std::any&) {
    const auto holder = element.parent();
    if (!holder) return;
    if (element.tag() == "value" && holder->tag() == "signal" && holder->parent())
        lines_.push_back(fmt::format("{}.{} := {}", holder->parent()->name(),
                                     holder->asString("name"), element.getStringFromValue()));
    if (element.tag() == "property")
        lines_.push_back(fmt::format("{}.{} := {}", holder->name(), element.name(),
                                     element.getStringFromValue()));
}

void Log::scSignalValueChanged(unsigned signalId, unsigned componentId) {
    lines_.push_back(fmt::format("{}.{} told", nameOf(componentId),
                                 componentOf(componentId)->getSignal(signalId)->getName()));
}

void Log::setVisualPose(unsigned objectId, const rob::PoseTemplate<double>& pose) {
    lines_.push_back(fmt::format("{} shown at {} {} {}", nameOf(objectId), pose.position.x,
                                 pose.position.y, pose.position.z));
}

void Log::reportEvent(const std::string& code, const std::string& text1, const std::string& text2,
                      const std::string& text3) {
    lines_.push_back(fmt::format("event {} {} {} {}", code, text1, text2, text3));
}

void Bench::SetUp() {
    trelRegisterComponents();
    smartcomp::StationLogic::inst();
    log_ = std::make_unique<Log>();
}

void Bench::TearDown() {
    log_.reset();
    for (const unsigned id : ids_)
        if (componentOf(id)) smartcomp::RemoveSmartComponent(id);
    EXPECT_EQ(sdf::SdfManager::inst()->objects().size(), 2u)
        << "more than the station and its logic is left in the object table";
}

SmartComponent& Bench::make(const std::string& type, const std::string& name, unsigned parent) {
    ids_.insert(ids_.begin(), nextId_);  // children are removed before their parents
    SmartComponent& component =
        *smartcomp::Build(type, nextId_++, name, parent == stationItself ? logic().id() : parent);
    freshLog();
    return component;
}

void Bench::addSignal(SmartComponent& component, unsigned id, const std::string& name,
                      const std::string& type) {
    const auto element = component.element()->append("signal")->setId(id);
    element->touch("name")->setValue(name);
    element->touch("type")->setValue(type);
    SCSignal::Create(&component, element);
    freshLog();
}

void Bench::start(long long time) {
    const auto all = smartcomp::GetAllSmartComponents();
    for (SmartComponent* const component : all) component->initialize();
    for (SmartComponent* const component : all) component->start(time);
    freshLog();
}

void Bench::execute(long long time) {
    for (SmartComponent* const component : smartcomp::GetAllSmartComponents())
        component->execute(time);
}

void Bench::stop() {
    for (SmartComponent* const component : smartcomp::GetAllSmartComponents()) component->stop();
}

SCSignal& Bench::signal(const SmartComponent& component, const std::string& name) {
    for (const auto& [id, signal] : component.getSignals())
        if (signal->getName() == name) return dynamic_cast<SCSignal&>(*signal);
    throw std::logic_error("the test asks for an unknown signal " + name);
}

smartcomp::Property& Bench::property(const SmartComponent& component, const std::string& name) {
    for (const auto& [id, property] : component.getProperties())
        if (property->name() == name) return *property;
    throw std::logic_error("the test asks for an unknown property " + name);
}

void Bench::set(SmartComponent& component, const std::string& name, int value, long long time) {
    component.handleSignalValue(signal(component, name).id(), value, time);
}

int Bench::get(const SmartComponent& component, const std::string& name) {
    return std::get<int>(signal(component, name).getValue());
}

void Bench::write(SmartComponent& component, const std::string& name, const std::string& text) {
    component.setPropertyValue(property(component, name).id(), text);
}

std::string Bench::read(const SmartComponent& component, const std::string& name) {
    const smartcomp::Property& found = property(component, name);
    EXPECT_EQ(found.value(), found.element()->getStringFromValue()) << "object and document differ";
    return found.value();
}

void Bench::connect(Aggregation& owner, SmartComponent& from, const std::string& output,
                    SmartComponent& to, const std::string& input) {
    unsigned index = 0;
    for (const auto& [id, connection] : owner.connections())
        index = std::max(index, connection->getIndex() + 1);
    smartcomp::Connection::Build(&owner, owner.getNextSgConnId(), from.id(),
                                 signal(from, output).id(), to.id(), signal(to, input).id(),
                                 static_cast<int>(index));
}

void Bench::bind(Aggregation& owner, SmartComponent& from, const std::string& source,
                 SmartComponent& to, const std::string& target) {
    smartcomp::Connection::Build(&owner, owner.getNextSgConnId(), from.id(),
                                 property(from, source).id(), to.id(), property(to, target).id(),
                                 -1);
}

Aggregation& Bench::logic() { return *smartcomp::StationLogic::inst(); }

}  // namespace trel::test
