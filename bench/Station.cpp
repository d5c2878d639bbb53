#include "bench/Station.h"

#include <QString>
#include <string>
#include <utility>
#include <vector>

#include "bench/Work.h"
#include "platform/station/Station.h"
#include "smartcomp/Aggregation.h"
#include "smartcomp/Connection.h"
#include "smartcomp/Hold.h"
#include "smartcomp/Lifecycle.h"
#include "smartcomp/Manager.h"
#include "smartcomp/SCSignal.h"
#include "smartcomp/StationLogic.h"

namespace trel::bench {

using smartcomp::Aggregation;
using smartcomp::Connection;
using smartcomp::SmartComponent;

namespace {

using ElementPtr = std::shared_ptr<sdf::Element>;

class Relay : public SmartComponent {
public:
    explicit Relay(ElementPtr element)
        : SmartComponent(std::move(element), sdf::ObjectType::Component) {}

    void handleInputSignal(unsigned, int value, long long time) override {
        handleOutputSignal(output, value, time);
    }

    void setPropertyValue(unsigned id, const std::string& value) override {
        const smartcomp::Hold hold(*this);
        if (!shouldSetProperty(id, value)) return;
        SmartComponent::setPropertyValue(id, value);
        endSetPropertyValue(id);
    }

    void execute(long long) override {}
    void readPropertyValues() override {}

protected:
    void setStaticInputSignal(unsigned, SignalValue value) override {
        setStaticOutputSignal(output, value);
    }
};

class Lamp : public Relay {
public:
    using Relay::Relay;

    void handleInputSignal(unsigned id, int value, long long) override {
        smartcomp::SCSignal& signal = signalAt(id);
        if (signal.getDigitalValue() == value) return;
        signal.setValue(value);
        notifySignalValueChanged(id);
    }
};

class Cell : public Aggregation {
public:
    explicit Cell(ElementPtr element)
        : Aggregation(std::move(element), sdf::ObjectType::Component) {}
    void execute(long long) override {}
};

template <typename Type>
SmartComponent* make(ElementPtr element) {
    return new Type(std::move(element));
}

template <typename Type>
void registerAs(const char* name, smartcomp::Manager::MakeFunction build = make<Type>) {
    smartcomp::Manager::inst()->registerType(name, make<Type>, build, [] { return QString(); });
}

// What each child starts with.
void furnish(sdf::Element& element, bool pulses) {
    element.append(textElement(text));
    element.append(signalElement(input, "In", "DigitalInput", false));
    element.append(signalElement(output, "Out", "DigitalOutput", pulses));
}

SmartComponent* buildRelay(ElementPtr element) {
    furnish(*element, false);
    return make<Relay>(std::move(element));
}

ElementPtr draft(unsigned id, const char* type, unsigned parent) {
    auto element = GetStationElem()->appendObject("smart_component", id, type);
    element->touch("type")->setValue(std::string(type));
    element->touch("parent")->setValue(parent);
    return element;
}

void makeNode(unsigned id, const char* type, bool pulses) {
    const auto element = draft(id, type, cellId);
    furnish(*element, pulses);
    smartcomp::Create(element);
}

}  // namespace

void openStation() {
    static const bool once = [] {
        registerAs<Relay>("Relay", buildRelay);
        registerAs<Lamp>("Lamp");
        registerAs<Cell>("Cell");
        smartcomp::StationLogic::inst();
        return true;
    }();
    static_cast<void>(once);
}

SmartComponent& node(unsigned number) {
    return dynamic_cast<SmartComponent&>(*sdf::SdfManager::inst()->find(firstNodeId + number));
}

StationNet::StationNet(const Graph& graph, Of of)
    : nodes_(graph.nodes),
      cell_((openStation(), dynamic_cast<Aggregation&>(*smartcomp::Build("Cell", cellId, "Cell",
                                                                         Station::logicId)))) {
    std::vector<const char*> types(nodes_, of == Of::Lamps ? "Lamp" : "Relay");
    for (const auto& edge : graph.edges) types[edge.from] = "Relay";
    for (unsigned i = 0; i != nodes_; ++i) makeNode(firstNodeId + i, types[i], of == Of::Pulses);
    int index = 0;
    for (const auto& [from, to] : graph.edges) {
        const bool binds = of == Of::Bindings;
        Connection::Build(&cell_, cell_.getNextSgConnId(), firstNodeId + from,
                          binds ? text : output, firstNodeId + to, binds ? text : input,
                          binds ? -1 : index++);
    }
}

StationNet::~StationNet() {
    for (unsigned i = nodes_; i != 0; --i) smartcomp::RemoveSubSmartComponent(firstNodeId + i - 1);
    smartcomp::RemoveSmartComponent(cellId);
}

}  // namespace trel::bench
