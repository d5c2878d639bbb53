#include <gtest/gtest.h>

#include <any>
#include <list>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "smartcomp/Aggregation.h"
#include "smartcomp/Connection.h"
#include "smartcomp/ElementBuilder.h"
#include "smartcomp/Lifecycle.h"
#include "smartcomp/Manager.h"
#include "smartcomp/Property.h"
#include "smartcomp/SCSignal.h"
#include "smartcomp/Sensor.h"
#include "smartcomp/StationLogic.h"

/// What other libraries of the editor compile against: names, arguments,
/// results, bases and access. These tests fail when they are compiled.
namespace trel::smartcomp {

namespace {

using ElementPtr = std::shared_ptr<sdf::Element>;
using Text = const std::string&;

template <typename Type, auto member>
constexpr bool is = std::is_same_v<Type, decltype(member)>;

// Copied and moved member by member.
template <typename Type>
constexpr bool isCopied = std::is_copy_constructible_v<Type> && std::is_copy_assignable_v<Type> &&
                          std::is_move_constructible_v<Type> && std::is_move_assignable_v<Type>;

}  // namespace

TEST(ApiTest, Property) {
    using P = Property;
    static_assert(std::is_base_of_v<sdf::SdfObject, P> && isCopied<P>);
    static_assert(!std::is_constructible_v<P, ElementPtr>);
    static_assert(is<P* (*)(SmartComponent*, ElementPtr), &P::Create>);
    static_assert(is<Text (P::*)() const, &P::description> && is<Text (P::*)() const, &P::type> &&
                  is<Text (P::*)() const, &P::value> && is<Text (P::*)() const, &P::unit>);
    static_assert(is<bool (P::*)() const, &P::isVisible> &&
                  is<bool (P::*)() const, &P::isReadOnly> &&
                  is<bool (P::*)() const, &P::isObjectId>);
    static_assert(is<unsigned (P::*)(), &P::getObjectId> &&
                  is<std::string (P::*)(), &P::getDisplayValue>);
    static_assert(is<P* (P::*)(Text), &P::setDescription> && is<P* (P::*)(Text), &P::setType> &&
                  is<P* (P::*)(Text), &P::setUnit> && is<P* (P::*)(Text), &P::setValue> &&
                  is<P* (P::*)(bool), &P::setReadOnly> && is<P* (P::*)(bool), &P::setVisible>);
}

TEST(ApiTest, SCSignal) {
    using S = SCSignal;
    static_assert(std::is_base_of_v<SignalInterface, S> && isCopied<S>);
    static_assert(!std::is_constructible_v<S, ElementPtr>);
    static_assert(is<S* (*)(SmartComponent*, ElementPtr), &S::Create>);
    static_assert(is<unsigned (S::*)() const, &S::id> && is<Text (S::*)() const, &S::type> &&
                  is<Text (S::*)() const, &S::description> &&
                  is<bool (S::*)() const, &S::isAutoReset> &&
                  is<bool (S::*)() const, &S::isVisible>);
    static_assert(is<void (S::*)(bool), &S::setAutoReset> &&
                  is<void (S::*)(bool), &S::setVisible> &&
                  is<void (S::*)(Text), &S::setDescription>);
    static_assert(std::is_invocable_v<void (S::*)(int), S, int>);
    static_assert(std::is_same_v<std::variant<int, double>, SignalValue>);
}

TEST(ApiTest, Connection) {
    using C = Connection;
    static_assert(std::is_base_of_v<sdf::SdfObject, C> && isCopied<C>);
    static_assert(!std::is_constructible_v<C, ElementPtr>);
    static_assert(
        is<C* (*)(Aggregation*, unsigned, unsigned, unsigned, unsigned, unsigned, int), &C::Build>);
    static_assert(is<C* (*)(Aggregation*, ElementPtr), &C::Create>);
    static_assert(is<unsigned (*)(ElementPtr), &C::GetComponentId> &&
                  is<void (*)(ElementPtr, unsigned), &C::SetComponentId>);
    static_assert(is<unsigned (C::*)() const, &C::getSrcComponentId> &&
                  is<unsigned (C::*)() const, &C::getSrcSignalId> &&
                  is<unsigned (C::*)() const, &C::getSrcPropertyId> &&
                  is<unsigned (C::*)() const, &C::getDstComponentId> &&
                  is<unsigned (C::*)() const, &C::getDstSignalId> &&
                  is<unsigned (C::*)() const, &C::getDstPropertyId> &&
                  is<unsigned (C::*)() const, &C::getIndex> &&
                  is<bool (C::*)() const, &C::isBinding>);
    static_assert(is<void (C::*)(unsigned, unsigned, unsigned, unsigned), &C::modify> &&
                  is<void (C::*)(unsigned), &C::setIndex>);
}

TEST(ApiTest, SmartComponent) {
    using C = SmartComponent;
    static_assert(std::is_base_of_v<layout::AttachableNode, C>);
    static_assert(std::is_abstract_v<C> && std::has_virtual_destructor_v<C>);
    static_assert(is<Property* (C::*)(unsigned) const, &C::getProperty> &&
                  is<SignalInterface* (C::*)(unsigned) const, &C::getSignal>);
    static_assert(
        is<const std::unordered_map<unsigned, Property*>& (C::*)() const, &C::getProperties> &&
        is<const std::unordered_map<unsigned, SignalInterface*>& (C::*)() const, &C::getSignals>);
    static_assert(is<std::string (*)(unsigned), &C::GetTypeName>);
    static_assert(is<std::any (C::*)(unsigned), &C::getPropertyValueImpl> &&
                  is<void (C::*)(unsigned, Text), &C::setPropertyValue> &&
                  is<bool (C::*)(unsigned, Text) const, &C::validatePropertyValue> &&
                  is<bool (C::*)(unsigned, sdf::SdfObject*) const, &C::checkPropertyObjectType> &&
                  is<std::vector<std::string> (C::*)(unsigned, Text), &C::getEnumPropertyList> &&
                  is<unsigned (C::*)(unsigned) const, &C::getDependentPropId>);
    static_assert(
        is<rob::Vec3Template<double> (C::*)(
               unsigned, const std::unordered_map<unsigned, std::string>&, float, float, float),
           &C::getDisplayVec3>);
    static_assert(is<void (C::*)(unsigned, double&) const, &C::getPropertyDouble> &&
                  is<void (C::*)(unsigned, rob::XYZTemplate<double>&) const, &C::getPropertyXYZ>);
    static_assert(is<void (C::*)(unsigned, SignalValue), &C::setStaticSignalValue> &&
                  is<void (C::*)(unsigned, int, long long), &C::handleSignalValue> &&
                  is<void (C::*)(unsigned, int, long long), &C::handleInputSignal> &&
                  is<void (C::*)(long long), &C::execute> && is<void (C::*)(long long), &C::start>);
}

TEST(ApiTest, Aggregation) {
    using A = Aggregation;
    using Position = std::optional<std::pair<int, int>>;
    static_assert(std::is_base_of_v<SmartComponent, A> && std::is_abstract_v<A>);
    static_assert(is<rob::PoseTemplate<double> (A::*)() const, &A::getPose>);
    static_assert(is<void (A::*)(unsigned, const Position&), &A::addChildComponent> &&
                  is<void (A::*)(unsigned), &A::removeChildComponent> &&
                  is<Position (A::*)(unsigned) const, &A::getChildXY> &&
                  is<void (A::*)(unsigned, int, int), &A::setChildXY>);
    static_assert(is<Connection* (A::*)(unsigned) const, &A::getConnection> &&
                  is<Connection* (A::*)(unsigned) const, &A::getBinding> &&
                  is<void (A::*)(unsigned), &A::deleteConnection> &&
                  is<void (A::*)(unsigned), &A::deleteBinding> &&
                  is<void (A::*)(unsigned), &A::moveSgConnOrderBackward> &&
                  is<void (A::*)(unsigned), &A::moveSgConnOrderForward>);
    static_assert(is<unsigned (A::*)() const, &A::getNextPropertyId> &&
                  is<unsigned (A::*)() const, &A::getNextSignalId> &&
                  is<unsigned (A::*)() const, &A::getNextSgConnId> &&
                  is<unsigned (A::*)() const, &A::getRoleObject> &&
                  is<void (A::*)(unsigned), &A::setRoleObject>);
}

TEST(ApiTest, StationLogicAndSensor) {
    static_assert(std::is_base_of_v<Aggregation, StationLogic>);
    static_assert(!std::is_default_constructible_v<StationLogic> &&
                  !std::is_destructible_v<StationLogic>);
    static_assert(
        is<StationLogic* (*)(), &StationLogic::inst> &&
        is<void (StationLogic::*)(unsigned), &StationLogic::addController> &&
        is<void (StationLogic::*)(unsigned), &StationLogic::removeController> &&
        is<bool (StationLogic::*)(unsigned) const, &StationLogic::isObjectUsedByComponent>);
    static_assert(std::is_base_of_v<SmartComponent, Sensor> && std::is_abstract_v<Sensor>);
    static_assert(is<rob::Vec3Template<double> (Sensor::*)() const, &Sensor::getSensorPosition> &&
                  is<void (Sensor::*)(const rob::Transform&), &Sensor::transform>);
}

TEST(ApiTest, ManagerAndLifecycle) {
    using Make = SmartComponent* (*)(ElementPtr);
    using Position = std::optional<std::pair<int, int>>;
    static_assert(!std::is_default_constructible_v<Manager> && !std::is_destructible_v<Manager> &&
                  !std::is_copy_constructible_v<Manager>);
    static_assert(
        is<Manager* (*)(), &Manager::inst> &&
        is<void (Manager::*)(std::string_view, Make, Make, QString (*)()),
           &Manager::registerType> &&
        is<void (Manager::*)(std::string_view, void (*)(visual::Visual*, SmartComponent*)),
           &Manager::registerVisualType>);
    static_assert(
        is<Make, &Create> && is<SmartComponent* (*)(Text, unsigned, Text, unsigned), &Build> &&
        is<SmartComponent* (*)(ElementPtr, const std::vector<ElementPtr>&, const Position&),
           &Recover> &&
        is<void (*)(), &Load> && is<void (*)(unsigned), &RemoveSmartComponent> &&
        is<void (*)(unsigned), &RemoveSubSmartComponent> &&
        is<const std::list<SmartComponent*>& (*)(), &GetAllSmartComponents> &&
        is<void (*)(SmartComponent*, visual::Visual*), &BuildVisual> &&
        is<ElementPtr (*)(SmartComponent*), &ElementBuilder::Build>);
}

}  // namespace trel::smartcomp
