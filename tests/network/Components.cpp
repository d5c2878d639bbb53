#include "tests/network/Components.h"

#include <QString>

#include "smartcomp/Aggregation.h"
#include "smartcomp/Hold.h"
#include "smartcomp/Manager.h"
#include "smartcomp/SCSignal.h"
#include "tests/network/LiveEdits.h"

namespace network {

namespace {

using trel::smartcomp::Aggregation;
using trel::smartcomp::Manager;
using trel::smartcomp::SmartComponent;
using Element = std::shared_ptr<sdf::Element>;

const Model* currentPlan = nullptr;

class Plain : public SmartComponent {
public:
    explicit Plain(Element element)
        : SmartComponent(std::move(element), sdf::ObjectType{40}),
          reactions_(plannedNode().reactions),
          framed_(plannedNode().framed),
          acceptsObjects_(plannedNode().acceptsObjects) {
        LiveEdits::expectUnlocked();
    }

    void handleInputSignal(unsigned signalId, int value, long long time) override {
        auto& signal = signalAt(signalId);
        signal.setValue(value);
        if (signal.isAutoReset()) signal.setValue(0);
        notifySignalValueChanged(signalId);
        LiveEdits::called();
        for (const Reaction& reaction : reactions_)
            if (reaction.input == signalId && hasSignal(reaction.output))
                handleOutputSignal(reaction.output,
                                   reaction.factor * (value % 1000) + reaction.offset, time);
    }

    void setPropertyValue(unsigned id, const std::string& value) override {
        if (!framed_) return SmartComponent::setPropertyValue(id, value);
        const trel::smartcomp::Hold hold(*this);
        if (!shouldSetProperty(id, value)) return;
        SmartComponent::setPropertyValue(id, value);
        LiveEdits::called();
        endSetPropertyValue(id);
    }

    bool checkPropertyObjectType(unsigned, sdf::SdfObject*) const override {
        LiveEdits::called();
        return acceptsObjects_;
    }

    void execute(long long) override {}
    void readPropertyValues() override { LiveEdits::expectUnlocked(); }

private:
    const Node& plannedNode() const { return currentPlan->nodes.at(id()); }

    // The model is ahead of the library: it may have removed the node by the time
    // that the component reacts.
    std::vector<Reaction> reactions_;
    bool framed_;
    bool acceptsObjects_;
};

template <sdf::ObjectType type>
class Group : public Aggregation {
public:
    explicit Group(Element element) : Aggregation(std::move(element), type) {}
    void execute(long long) override {}
};

template <typename Component>
SmartComponent* make(Element element) {
    return new Component(std::move(element));
}

QString describe() { return {}; }

template <typename Component>
void registerType(Kind kind) {
    Manager::inst()->registerType(typeName(kind), make<Component>, make<Component>, describe);
}

const char* signalType(const Signal& signal) {
    if (signal.analog) return signal.input ? "AnalogInput" : "AnalogOutput";
    return signal.input ? "DigitalInput" : "DigitalOutput";
}

unsigned long long end(unsigned component, unsigned member) {
    return (static_cast<unsigned long long>(component) << 32) | member;
}

template <typename T>
void put(sdf::Element& element, const char* key, T value) {
    element.touch(key)->setValue(value);
}

}  // namespace

void registerTypes(const Model& plan) {
    currentPlan = &plan;
    registerType<Plain>(Kind::Plain);
    registerType<Group<sdf::ObjectType{41}>>(Kind::Group);
    registerType<Group<sdf::ObjectType::UserComponent>>(Kind::UserGroup);
}

const char* typeName(Kind kind) {
    switch (kind) {
        case Kind::Plain: return "Plain";
        case Kind::Group: return "Group";
        case Kind::UserGroup: return "UserGroup";
        default: return "";
    }
}

void appendMembers(sdf::Element& element, const Node& node) {
    for (const auto& [id, signal] : node.signals) {
        const auto child = element.append("signal");
        child->setId(id);
        put(*child, "name", signal.name);
        put(*child, "type", std::string(signalType(signal)));
        put(*child, "auto_reset", signal.autoReset);
        std::visit([&](auto value) { put(*child, "value", value); }, signal.value);
    }
    for (const auto& [id, property] : node.properties) {
        const auto child = element.appendObject("property", id, property.name);
        put(*child, "type", std::string(property.objectId ? "ObjectId" : "String"));
        if (property.holdsDouble) child->setValue(0.0);
        child->setValueFromString(property.text);
    }
}

void appendConnection(sdf::Element& element, unsigned id, const Connection& connection) {
    const auto child = element.append("connection");
    child->setId(id);
    put(*child, "source", end(connection.srcComponent, connection.src));
    put(*child, "destination", end(connection.dstComponent, connection.dst));
    if (connection.index >= 0) put(*child, "index", static_cast<unsigned>(connection.index));
}

}  // namespace network
