#include "components/Comparator.h"
#include "components/Conversions.h"
#include "components/Conveyor.h"
#include "components/Counter.h"
#include "components/Gates.h"
#include "components/Gripper.h"
#include "components/Group.h"
#include "components/Latch.h"
#include "components/LineSensor.h"
#include "components/LinearAxis.h"
#include "components/Part.h"
#include "components/Registering.h"
#include "components/Timer.h"
#include "smartcomp/TypeLibrary.h"

namespace {

template <typename... Types>
void registerTypes() {
    (trel::components::registerType<Types>(), ...);
}

}  // namespace

int trelComponentsAbi() { return trel::smartcomp::typeLibraryAbi; }

void trelRegisterComponents() {
    using namespace trel::components;
    registerTypes<GateOf<AndKind>, GateOf<OrKind>, GateOf<NotKind>, GateOf<NandKind>,
                  GateOf<NorKind>, GateOf<XorKind>, GateOf<BufferKind>>();
    registerTypes<Latch, Timer, Counter, Comparator, GroupToDigital, DigitalToGroup>();
    registerTypes<Conveyor, LinearAxis, LineSensor, Gripper, Part, Group>();
}
