#include <iostream>

#include "platform/station/Station.h"
#include "smartcomp/Lifecycle.h"
#include "smartcomp/StationLogic.h"
#include "smartcomp/TypeLibrary.h"

int main() {
    using namespace trel::smartcomp;
    trelRegisterComponents();  // the component types of components/
    StationLogic& cell = *StationLogic::inst();

    SmartComponent* button = Build("Buffer", 10, "Button", cell.id());
    SmartComponent* lamp = Build("NotGate", 11, "Lamp", cell.id());
    Connection::Build(&cell, cell.getNextSgConnId(), 10, 2, 11, 1, 0);  // Button.Out to Lamp.In
    for (SmartComponent* component : GetAllSmartComponents()) component->start(0);
    button->handleSignalValue(1, 1, 0);  // Button.In, at time 0

    std::cout << "Lamp.Out = " << lamp->getSignal(2)->getDigitalValue() << '\n';
    trel::Station::inst().save("first_cell.xml");  // holds every value
    for (const unsigned id : {11, 10}) RemoveSmartComponent(id);
}
