#include <exception>
#include <iostream>
#include <stdexcept>
#include <vector>

#include "platform/broker/SignalBroker.h"
#include "platform/sdf/SdfManager.h"
#include "platform/station/Station.h"
#include "smartcomp/Lifecycle.h"
#include "smartcomp/StationLogic.h"
#include "smartcomp/TypeLibrary.h"

using namespace trel::smartcomp;

// Told of every change, once it stands in the document and before it is delivered.
class Panel : public trel::broker::Listener {
public:
    Panel() { trel::broker::SignalBroker::subscribe(*this); }
    ~Panel() override { trel::broker::SignalBroker::unsubscribe(*this); }

    void scSignalValueChanged(unsigned signalId, unsigned componentId) override {
        if (isClosed) throw std::runtime_error("the panel is closed");
        std::cout << "#" << componentId << ".#" << signalId << " changed\n";
    }

    bool isClosed = false;
};

// Opens a station file in this process, which holds one station.
void open(const char* file) {
    trelRegisterComponents();          // 1. the component types
    trel::Station::inst().open(file);  // 2. the document
    StationLogic::inst();              // 3. the aggregation at the root
    Load();                            // 4. all other components, in document order
}

// Of what is still there: the list keeps the pointers of removed components.
std::vector<unsigned> components() {
    std::vector<unsigned> ids;
    for (const auto& child : trel::GetStationElem()->children("smart_component"))
        ids.push_back(child->getId(true));
    return ids;
}

SmartComponent& at(unsigned id) {
    return dynamic_cast<SmartComponent&>(*sdf::SdfManager::inst()->find(id));
}

int main(int, char* arguments[]) {
    open(arguments[1]);
    SmartComponent& button = at(10);
    SmartComponent& lamp = at(11);
    Panel panel;

    // While the station is edited.
    button.setStaticSignalValue(1, 0);

    // While the simulation runs; time is in microseconds.
    for (const unsigned id : components()) at(id).initialize();
    for (const unsigned id : components()) at(id).start(0);
    button.handleSignalValue(1, 1, 0);
    for (long long time = 10'000; time <= 50'000; time += 10'000)
        for (const unsigned id : components()) at(id).execute(time);
    for (const unsigned id : components()) at(id).stop();
    std::cout << "the lamp is " << lamp.getSignal(2)->getValueString() << '\n';

    // What comes out of a listener or a component ends the delivery.
    panel.isClosed = true;
    try {
        button.handleSignalValue(1, 0, 60'000);
    } catch (const std::exception& error) {
        std::cout << error.what() << "; Button.In is " << button.getSignal(1)->getValueString()
                  << '\n';
        for (const unsigned id : components()) at(id).clearMarks();
    }

    // The listener has to live until here; the station logic dies at exit.
    for (const unsigned id : {11u, 10u}) RemoveSmartComponent(id);
}
