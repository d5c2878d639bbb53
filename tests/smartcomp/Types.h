#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "platform/sdf/SdfObject.h"
#include "platform/station/ControllerInterface.h"
#include "smartcomp/Aggregation.h"
#include "smartcomp/Sensor.h"
#include "smartcomp/SmartComponent.h"
#include "tests/smartcomp/EventLog.h"

namespace trel::test {

using ElementPtr = std::shared_ptr<sdf::Element>;

/// Counts the components of the tests that are alive, and knows which.
class Alive {
public:
    explicit Alive(const smartcomp::SmartComponent* owner);
    ~Alive();
    Alive(const Alive&) = delete;
    Alive& operator=(const Alive&) = delete;

    static bool contains(const smartcomp::SmartComponent* component);
    static std::size_t count();

private:
    const smartcomp::SmartComponent* owner_;
};

/// A component type that lays open what its bases keep for types, and says in
/// the log what is asked of it.
template <typename Base>
class Open : public Base {
public:
    Open(ElementPtr element, sdf::ObjectType type) : Base(std::move(element), type) {
        expectTableUnlocked();
    }
    Open(const Open& other) : Base(other) {}
    Open& operator=(const Open& other) {
        Base::operator=(other);
        return *this;
    }
    ~Open() override {
        expectTableUnlocked();
        if (whenDestroyed) whenDestroyed();
    }

    using Base::checkSignalIsSet;
    using Base::endSetPropertyValue;
    using Base::endSetSignalValue;
    using Base::handleOutputSignal;
    using Base::objectIsInvalid;
    using Base::setDstSignalValue;
    using Base::setStaticInputSignal;
    using Base::setStaticOutputSignal;
    using Base::shouldSetProperty;

    void execute(long long time) override { say("execute at " + std::to_string(time)); }
    bool validatePropertyValue(unsigned, const std::string&) const override {
        eventLog().add("validate");
        return true;
    }

    void say(const std::string& line) const { eventLog().add(this->name() + "." + line); }

    std::function<void()> whenDestroyed;

private:
    Alive alive_{this};
};

/// A plain component. Its hooks are set once it lives.
class Plain : public Open<smartcomp::SmartComponent> {
public:
    using Open::Open;

    void handleInputSignal(unsigned signalId, int value, long long time) override;
    void readPropertyValues() override;
    bool checkPropertyObjectType(unsigned propertyId, sdf::SdfObject* object) const override;

    std::function<void(unsigned signalId, int value, long long time)> onInput;
    /// What it answers to checkPropertyObjectType; the base's answer without.
    std::function<bool(unsigned propertyId, sdf::SdfObject* object)> accepts;

    /// Called by readPropertyValues, which runs before a hook could be set.
    static std::function<void(Plain&)> whenRead;
};

/// Frames the setting of its properties, as a type in a ring of bindings must.
class Framed : public Plain {
public:
    using Plain::Plain;

    void setPropertyValue(unsigned propertyId, const std::string& value) override;

    std::function<void(unsigned propertyId, const std::string& value)> onProperty;
};

/// A concrete aggregation; user-built if it is made as such.
class Box : public Open<smartcomp::Aggregation> {
public:
    using Open::Open;
};

class Eye : public Open<smartcomp::Sensor> {
public:
    using Open::Open;
    using Sensor::setVisualPos;

    unsigned detect() const override { return 0; }
    rob::Vec3Template<double> getSensorPosition() const override { return position; }
    void update(long long time) override { say("update at " + std::to_string(time)); }
    void readPropertyValues() override {}

    rob::Vec3Template<double> position;
};

/// A document object that is no component and no controller.
class Thing : public sdf::SdfObject {
public:
    explicit Thing(unsigned id, const std::string& name = "Thing");
};

/// A controller in the object table, which tells the log what it receives.
class Controller : public Thing, public ControllerInterface {
public:
    using Thing::Thing;

    void setSignalValue(unsigned signalId, SignalValue value, bool dynamic) override;
};

/// Registers "Plain", "Framed", "Box", "Group" (a user-built Box), "Eye",
/// "Starter" (a Plain that starts with a property and a signal) and "Failing"
/// (its make functions throw).
void registerTypes();

/// How often a make function ran, and what it received last.
struct Made {
    int created = 0;
    int built = 0;
    ElementPtr element;
};
Made& made();

}  // namespace trel::test
