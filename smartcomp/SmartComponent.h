#pragma once

#include <any>
#include <cstddef>
#include <memory>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "platform/layout/AttachableNode.h"
#include "platform/rob/PoseTemplate.h"
#include "platform/rob/Vec3Template.h"
#include "platform/rob/XYZTemplate.h"
#include "platform/sdf/Element.h"
#include "platform/sdf/ObjectType.h"
#include "smartcomp/Export.h"
#include "smartcomp/Hints.h"
#include "smartcomp/Marks.h"
#include "smartcomp/Removals.h"
#include "smartcomp/SignalInterface.h"

namespace trel::smartcomp {

class Aggregation;
class Connection;
class NestedHold;
class Property;
class SCSignal;
class TableReading;
class Walk;

/// An object of a robot cell that has properties and signals and reacts when
/// one changes: the live mirror of one "smart_component" element. It owns its
/// properties and signals. Component types derive from it; the functions of
/// Lifecycle.h make and remove components.
///
/// What a reaction, a listener or a controller removes in the middle of a
/// delivery is out of the document and the tables at once, and gets nothing any
/// more; a delivery whose own source is gone ends quietly. See Hold.
///
/// Every look-up by id that finds nothing throws std::out_of_range "invalid
/// unordered_map<K, T> key". Nothing is caught in here: what was written, told
/// and delivered before a throw stays.
class TREL_API SmartComponent : public layout::AttachableNode {
public:
    using PropertyTable = std::unordered_map<unsigned, Property*>;
    using SignalTable = std::unordered_map<unsigned, SignalInterface*>;

    // A copy shares the properties and signals of its source; only one of the
    // two may ever be destroyed.
    SmartComponent(const SmartComponent&);
    SmartComponent& operator=(const SmartComponent&);

    /// Deletes the properties and signals and takes the element out of the
    /// document. The object table is left to the caller.
    ~SmartComponent() override;

    /// Whether it may be attached to `node`: never, for a plain component.
    bool canAttachTo(sdf::SdfNode* node) const override;

    /// Whether it is an aggregation that the user put together.
    virtual bool isUser() const;
    virtual bool hasVisual() const;
    virtual bool isMovable() const;

    /// The value in the type that the component type gives it.
    /// \throws std::logic_error "not implemented" in a type that gives none.
    virtual std::any getPropertyValueImpl(unsigned propertyId);

    /// Writes the text, tells the broker and offers the text along the bindings
    /// of the parent and, in a user aggregation, along its own. Neither compares
    /// nor validates. A type overrides it to frame it:
    ///
    ///     const Hold hold(*this);
    ///     if (!shouldSetProperty(id, value)) return;
    ///     SmartComponent::setPropertyValue(id, value);
    ///     /* react */
    ///     endSetPropertyValue(id);
    ///
    /// A type that can sit in a ring of bindings must frame it: the bare
    /// operation runs round the ring without end, and leaves its mark
    /// behind.
    virtual void setPropertyValue(unsigned propertyId, const std::string& value) {
        Passing passing;
        passOn(propertyId, value, passing);
        if (passing.isOpen()) passOnRest(value, passing);
    }

    /// A value that reaches an input while the simulation runs, at a time in
    /// microseconds. Nothing has been stored: the type stores the value, resets an
    /// auto-reset input, notifies and reacts.
    virtual void handleInputSignal(unsigned signalId, int value, long long time) = 0;

    /// One step of the simulation, at a time in microseconds.
    virtual void execute(long long time) = 0;
    virtual bool isActivated() const;
    virtual void initialize();  // before a run
    virtual void reset();
    virtual void start(long long time);  // once all are initialised

    /// Whether a property refers to the object.
    virtual bool isObjectUsed(unsigned objectId) const;

    /// Whether the text suits the property. The library never asks.
    virtual bool validatePropertyValue(unsigned propertyId, const std::string& value) const;

    /// Called once when the component stands in the object table: reads the
    /// property values into the type's own state.
    virtual void readPropertyValues() = 0;

    /// Whether `object` may be the value of the "ObjectId" property.
    virtual bool checkPropertyObjectType(unsigned propertyId, sdf::SdfObject* object) const;

    /// The choices of a property; empty when any text will do.
    virtual std::vector<std::string> getEnumPropertyList(unsigned propertyId,
                                                         const std::string& text);

    /// The property that this one depends on; 0 for none.
    virtual unsigned getDependentPropId(unsigned propertyId) const;

    /// The vector in the form in which the type shows it: (x, y, z) as it is.
    virtual rob::Vec3Template<double> getDisplayVec3(
        unsigned propertyId, const std::unordered_map<unsigned, std::string>& values, float x,
        float y, float z);
    virtual void stop();  // after the last step

    Property* getProperty(unsigned id) const;
    SignalInterface* getSignal(unsigned id) const;
    bool hasProperty(unsigned id) const;
    bool hasSignal(unsigned id) const;
    // The live tables.
    const PropertyTable& getProperties() const { return properties_; }
    const SignalTable& getSignals() const { return signals_; }

    /// Its element stays in the document; a deleted signal's leaves it.
    void deleteProperty(unsigned id);
    void deleteSignal(unsigned id);

    bool isSensor() const;
    bool isStationLogic() const;
    /// Whether it sits directly in the station logic.
    bool isTopLevel() const;

    /// The registered type name of the component `id`, which another thread may
    /// remove meanwhile.
    static std::string GetTypeName(unsigned id);

    void notifyPropertyValueChanged(unsigned propertyId);
    void notifySignalValueChanged(unsigned signalId);
    void updateModel();  // tells the broker that something about it changed

    /// Reads the number as the document holds it.
    void getPropertyDouble(unsigned id, double& out) const;

    /// Reads three numbers from the text; the first that cannot be read leaves
    /// its member and those behind it as they were.
    void getPropertyXYZ(unsigned id, rob::XYZTemplate<double>& out) const;

    /// Sets a signal while the station is edited. An input is stored; an output
    /// that changes is stored and delivered along the parent's connections. An
    /// auto-reset output delivers the value and then 0, and is 0 after.
    void setStaticSignalValue(unsigned id, SignalValue value);

    /// Sets a signal while the simulation runs, at a time in microseconds. An input goes to
    /// `handleInputSignal`; an output that changes is stored and delivered along
    /// the parent's connections. An auto-reset output delivers the value and then
    /// 0, and is after what it was before.
    /// \throws std::bad_variant_access if the output holds a double.
    void handleSignalValue(unsigned id, int value, long long time);

    /// Ends the marks of all settings. One that a throw interrupted leaves its mark
    /// behind, and the member is passed over until somebody does this; not for a
    /// component that stands on the call chain.
    void clearMarks();

protected:
    /// Reads "parent" and builds a property and a signal from each such child.
    /// What was built before a throw is not deleted.
    SmartComponent(std::shared_ptr<sdf::Element> element, sdf::ObjectType type);

    /// Whether the object table holds no object under the id.
    static bool objectIsInvalid(unsigned id);

    /// Whether the text is to be set: false, silently, for the text that the
    /// property has; false with event "10007" while the property is being set,
    /// for the text then came back changed round a ring of bindings.
    bool shouldSetProperty(unsigned id, const std::string& value);
    void endSetPropertyValue(unsigned id) { settingPropertyValues_.end(id); }

    /// Stores a static input value, resets an auto-reset input to 0, notifies,
    /// and marks the signal as being set.
    virtual void setStaticInputSignal(unsigned signalId, SignalValue value);
    void setStaticOutputSignal(unsigned id, SignalValue value);
    static void setDstSignalValue(unsigned dstComponentId, unsigned dstSignalId, SignalValue value);
    void handleOutputSignal(unsigned id, int value, long long time);  // as handleSignalValue does

    /// Whether the signal is being set on this call chain. Another value than the
    /// one being set is a conflict, reported as event "10008" and dropped.
    bool checkSignalIsSet(unsigned id, SignalValue value);
    void endSetSignalValue(unsigned id);

    SCSignal& signalAt(unsigned id) const;

    /// A constructor that throws takes the element out of the document, as every
    /// end of a component does, unless it says here that it stays.
    void keepElement(bool keeps) { held_.keepsElement = keeps; }

    /// Destroys a member that was taken out of its table: now, or when the last
    /// hold is gone. `makeRoom` comes first, so that nothing throws in between.
    void makeRoom();
    void discard(std::unique_ptr<sdf::SdfObject> member) noexcept;

    /// Whether it was removed, and lives on only for the call that holds it.
    bool isRemoved() const { return held_.removed; }

private:
    friend class Aggregation;
    friend class NestedHold;
    friend class Newcomer;
    friend class Property;
    friend class SCSignal;
    friend void RemoveSmartComponent(unsigned);
    friend void RemoveSubSmartComponent(unsigned);

    struct Remains;

    // Whether a call further out holds it, and so for as long as the present one takes.
    bool isHeld() const { return held_.holds > 0; }
    template <typename Call>
    void whileHeld(const Call& call);

    // What is kept from one call to the next. A copy is held by nobody.
    struct Held {
        Held();
        Held(const Held&);
        Held& operator=(const Held&);
        ~Held();

        unsigned holds = 0;
        bool removed = false;
        bool keepsElement = false;         // in the document, when the component ends
        std::unique_ptr<Remains> remains;  // what waits for the last hold to go
        // Those that were asked for last.
        mutable SCSignal* lastSignal = nullptr;
        mutable Property* lastProperty = nullptr;
    };

    // What waits while a destination takes a text. It stands in the frame of the type's own
    // operation, into which the base operation is inlined: so a hop has one frame, and one place
    // to return to.
    class Passing {
    public:
        Passing() = default;
        ~Passing() {
            if (open_) close();
        }
        Passing(const Passing&) = delete;
        Passing& operator=(const Passing&) = delete;

        bool isOpen() const { return open_ != nullptr; }

    private:
        friend class SmartComponent;
        struct Open;

        void begin(Aggregation& owner, unsigned component, Property& source);
        void close() noexcept;

        alignas(std::max_align_t) std::byte place_[96];  // of what is open
        Open* open_ = nullptr;
    };

    Property* findProperty(unsigned id) const;
    SCSignal* findSignal(unsigned id) const;
    bool renew(InputHint& hint, unsigned signalId) const;
    Ahead aheadOfSignal() const;
    Ahead aheadOfProperty() const;
    void setStaticAnew(unsigned id, InputHint& hint, const SignalValue& value);
    void handleAnew(unsigned id, InputHint& hint, int value, long long time);
    void setStatic(unsigned id, InputHint& hint, const SignalValue& value);
    void handle(unsigned id, InputHint& hint, int value, long long time);
    struct StaticDelivery;
    struct DynamicDelivery;
    struct InwardDelivery;
    // The text that is offered along bindings now, which stays as it is meanwhile.
    static inline const std::string* offered_ = nullptr;
    class Offer {
    public:
        explicit Offer(const std::string& text) : outer_(std::exchange(offered_, &text)) {}
        ~Offer() { offered_ = outer_; }
        Offer(const Offer&) = delete;
        Offer& operator=(const Offer&) = delete;

    private:
        const std::string* const outer_;
    };

    void prefetchParts() const;
    void retire();
    void bury();
    Property* addProperty(Property* property);
    SCSignal* addSignal(SCSignal* signal);
    void setCopyOf(unsigned propertyId, const std::string& value);
    Property* beginProperty(unsigned propertyId, const std::string& text);
    void passOn(unsigned propertyId, const std::string& value, Passing& passing);
    SmartComponent* firstTaker(unsigned propertyId, const std::string& value, Passing& passing);
    void passOnRest(const std::string& value, Passing& passing);
    void passFurther(const std::string& value, Passing& passing);
    void passInwards(Property& source, const std::string& value);
    void passAlong(Passing::Open& open, const std::string& value);
    void passObserved(Passing::Open& open, const std::string& value);
    SmartComponent* nextTaker(TableReading& reading, Passing::Open& open, const std::string& value);
    SmartComponent* takerOf(TableReading& reading, Passing::Open& open, const std::string& value);
    bool refusesObject(SmartComponent& destination, unsigned destinationId,
                       const std::string& value) const;
    SCSignal* beginStaticOutput(unsigned id, const SignalValue& value);
    SCSignal* beginDynamicOutput(unsigned id, int value);
    template <typename Value>
    bool isBeingSet(unsigned id, const Value& value);
    bool isCutOff(const Removals::Since& since, unsigned signalId) const;
    template <typename Value, typename Deliver>
    void propagate(SCSignal& source, const Value& value, const Deliver& deliver);
    void propagateStaticOutputSignal(SCSignal& source, const SignalValue& value);
    void propagateDynamicOutputSignal(SCSignal& source, int value, long long time);

    // What a delivery needs stands together.
    Held held_;
    std::uint64_t signalsNumber_ = nextNumber();  // of the signals as they are, see Hints.h
    Marks<SignalValue> settingSignalValues_;      // under way on the current call chain
    Marks<std::string> settingPropertyValues_;
    SignalTable signals_;
    PropertyTable properties_;
};

}  // namespace trel::smartcomp
