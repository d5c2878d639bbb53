#pragma once

#include <array>
#include <typeinfo>

#include "platform/broker/SignalBroker.h"
#include "platform/sdf/Document.h"
#include "platform/station/ControllerInterface.h"
#include "platform/visual/Visual.h"
#include "smartcomp/DeliveryObserver.h"
#include "smartcomp/Property.h"
#include "smartcomp/SCSignal.h"
#include "smartcomp/Sensor.h"
#include "smartcomp/StationLogic.h"

namespace trel::test {

/// The types that are cast to, caught or kept in a std::any anywhere, as whoever includes
/// this sees them.
inline auto typesHere() {
    using namespace smartcomp;
    return std::array{&typeid(sdf::SdfObject),
                      &typeid(sdf::SdfNode),
                      &typeid(sdf::SdfContainer),
                      &typeid(sdf::ValueObserver),
                      &typeid(sdf::DocumentError),
                      &typeid(layout::AttachableNode),
                      &typeid(broker::Listener),
                      &typeid(visual::Visual),
                      &typeid(ControllerInterface),
                      &typeid(SignalInterface),
                      &typeid(SmartComponent),
                      &typeid(Aggregation),
                      &typeid(StationLogic),
                      &typeid(Sensor),
                      &typeid(Property),
                      &typeid(SCSignal),
                      &typeid(Connection),
                      &typeid(DeliveryObserver),
                      &typeid(rob::Vec3Template<double>),
                      &typeid(rob::PoseTemplate<double>)};
}

using Types = decltype(typesHere());

}  // namespace trel::test
