#include "smartcomp/SmartComponent.h"

#include <any>
#include <mutex>
#include <stdexcept>
#include <type_traits>

#include "tests/smartcomp/Cell.h"
#include "tests/smartcomp/VirtualTable.h"

namespace trel::test {

namespace {

class SmartComponentTest : public CellTest {};

Draft lampDraft() {
    return Draft("Plain", 10, "Lamp")
        .property(1, "Speed", "Double", 5.0)
        .property(2, "Colour", "String", std::string("red"))
        .signal(1, "on", "DigitalInput")
        .signal(2, "lit", "DigitalOutput");
}

}  // namespace

// ---- Construction

TEST_F(SmartComponentTest, AnElementWithoutAParentGetsOneOf0) {
    const auto element = GetStationElem()->appendObject("smart_component", 10, "Lamp");
    element->touch("type")->setValue(std::string("Plain"));

    const Plain lamp(element, sdf::ObjectType::Component);

    EXPECT_NE(element->get("parent"), nullptr);
    EXPECT_EQ(element->asUInt("parent"), 0u);
    EXPECT_EQ(lamp.getObjParentId(), 0u);
}

TEST_F(SmartComponentTest, TheParentBecomesObjectParentAndVisualParent) {
    const Plain lamp(Draft("Plain", 10, "Lamp").in(77).element(), sdf::ObjectType::Component);
    EXPECT_EQ(lamp.getObjParentId(), 77u);
    EXPECT_EQ(lamp.getVisParentId(), 77u);
}

TEST_F(SmartComponentTest, AnElementWithoutPropertiesAndSignalsYieldsEmptyTables) {
    const Plain lamp(Draft("Plain", 10, "Lamp").element(), sdf::ObjectType::Component);
    EXPECT_EQ(lamp.getProperties().size(), 0u);
    EXPECT_EQ(lamp.getSignals().size(), 0u);
}

TEST_F(SmartComponentTest, EachPropertyAndSignalChildIsBuilt) {
    const Draft draft = lampDraft();
    const Plain lamp(draft.element(), sdf::ObjectType::Component);

    EXPECT_EQ(lamp.id(), 10u);
    EXPECT_EQ(lamp.element(), draft.element());
    EXPECT_EQ(lamp.objectType(), sdf::ObjectType::Component);
    EXPECT_EQ(lamp.getProperties().size(), 2u);
    EXPECT_EQ(lamp.getProperty(1)->name(), "Speed");
    EXPECT_EQ(lamp.getProperty(2)->value(), "red");
    EXPECT_EQ(lamp.getSignals().size(), 2u);
    EXPECT_EQ(lamp.getSignal(1)->getName(), "on");
    EXPECT_EQ(lamp.getSignal(2)->getName(), "lit");
}

TEST_F(SmartComponentTest, ConstructionRegistersNothingWritesNothingAndTellsNobody) {
    const Draft draft = lampDraft();
    const auto before = smartcomp::GetAllSmartComponents().size();
    freshLog();
    const Plain lamp(draft.element(), sdf::ObjectType::Component);
    EXPECT_FALSE(isInTable(10));
    EXPECT_EQ(smartcomp::GetAllSmartComponents().size(), before);
    EXPECT_EQ(log().lines(), Lines{});
}

// Of two property elements with one id the later is the property.
TEST_F(SmartComponentTest, ChildrenAreBuiltInDocumentOrder) {
    const Draft draft = Draft("Plain", 10, "Lamp")
                            .property(1, "First", "String", std::string("a"))
                            .property(1, "Second", "String", std::string("b"))
                            .signal(1, "first", "DigitalInput")
                            .signal(1, "second", "DigitalInput");
    loseOverwrittenEntry([&] {
        const Plain lamp(draft.element(), sdf::ObjectType::Component);
        EXPECT_EQ(lamp.getProperties().size(), 1u);
        EXPECT_EQ(lamp.getProperty(1)->name(), "Second");
        EXPECT_EQ(lamp.getSignals().size(), 1u);
        EXPECT_EQ(lamp.getSignal(1)->getName(), "second");
    });
}

TEST_F(SmartComponentTest, PropertiesAreBuiltBeforeSignals) {
    const Draft draft =
        Draft("Plain", 10, "Lamp").signal(1, "on", "DigitalInput").property(1, "P", "none", {});
    draft.element()->children("signal").front()->get("name")->setValue(1);
    // Both are faulty; the property is met first.
    expectThrow<std::bad_optional_access>([&] {
        Plain(draft.element(), sdf::ObjectType::Component);
    });
}

TEST_F(SmartComponentTest, AThrowingConstructorLeavesTheElementInTheDocument) {
    const Draft draft = lampDraft().property(3, "Odd", "no such type", 1);
    loseRecordsOfThrowingConstructor([&] {
        expectThrow<std::bad_optional_access>([&] { smartcomp::Create(draft.element()); });
    });
    EXPECT_EQ(draft.element()->parent(), GetStationElem());
    EXPECT_FALSE(isInTable(10));
    EXPECT_EQ(Alive::count(), 0u);
}

// ---- Destruction

TEST_F(SmartComponentTest, ADyingComponentTakesItsElementOutOfTheDocument) {
    const Draft draft = lampDraft();
    { const Plain lamp(draft.element(), sdf::ObjectType::Component); }
    EXPECT_EQ(draft.element()->parent(), nullptr);
    EXPECT_FALSE(draft.element()->children("property").front()->isMirrored());
}

TEST_F(SmartComponentTest, ADyingComponentLeavesTableAndListAlone) {
    const auto before = smartcomp::GetAllSmartComponents().size();
    {
        Plain lamp(lampDraft().element(), sdf::ObjectType::Component);
        enterObject(10, &lamp);
    }
    EXPECT_TRUE(isInTable(10));
    EXPECT_EQ(smartcomp::GetAllSmartComponents().size(), before);
    sdf::SdfManager::Remove(10);
}

// ---- Lookups and bookkeeping

TEST_F(SmartComponentTest, AnUnknownIdIsDeniedAndThrows) {
    Plain& lamp = lampDraft().make<Plain>();
    EXPECT_TRUE(lamp.hasProperty(1));
    EXPECT_TRUE(lamp.hasSignal(1));
    EXPECT_FALSE(lamp.hasProperty(noSuchId));
    EXPECT_FALSE(lamp.hasSignal(noSuchId));
    expectThrow<std::out_of_range>(noKey, [&] { lamp.getProperty(noSuchId); });
    expectThrow<std::out_of_range>(noKey, [&] { lamp.getSignal(noSuchId); });
}

TEST_F(SmartComponentTest, TheTablesAreTheLiveOnes) {
    Plain& lamp = lampDraft().make<Plain>();
    const auto& properties = lamp.getProperties();
    const auto& signalTable = lamp.getSignals();
    EXPECT_EQ(&properties, &lamp.getProperties());
    EXPECT_EQ(&signalTable, &lamp.getSignals());
    lamp.deleteProperty(1);
    lamp.deleteSignal(1);
    EXPECT_FALSE(properties.contains(1));
    EXPECT_FALSE(signalTable.contains(1));
    EXPECT_EQ(properties.size() + signalTable.size(), 2u);
}

TEST_F(SmartComponentTest, APropertyOfATakenIdTakesThePlaceOfTheEarlierOne) {
    loseOverwrittenEntry([] {
        Plain& lamp = lampDraft().make<Plain>();
        Property* const second =
            Property::Create(&lamp, propertyElement(1, "Second", "String", std::string("b")));
        EXPECT_EQ(second, lamp.getProperty(1));
        EXPECT_EQ(lamp.getProperties().size(), 2u);
        EXPECT_EQ(lamp.getProperty(1)->name(), "Second");
    });
}

TEST_F(SmartComponentTest, ADeletedPropertyLeavesItsElementInTheDocument) {
    Plain& lamp = lampDraft().make<Plain>();
    freshLog();
    lamp.deleteProperty(1);
    EXPECT_FALSE(lamp.hasProperty(1));
    EXPECT_NE(elementOf(lamp, "property", 1), nullptr);
    EXPECT_FALSE(elementOf(lamp, "property", 1)->isMirrored());
    EXPECT_EQ(log().lines(), Lines{});
}

TEST_F(SmartComponentTest, ADeletedSignalTakesItsElementAlong) {
    Plain& lamp = lampDraft().make<Plain>();
    freshLog();
    lamp.deleteSignal(1);
    EXPECT_FALSE(lamp.hasSignal(1));
    EXPECT_EQ(elementOf(lamp, "signal", 1), nullptr);
    EXPECT_NE(elementOf(lamp, "signal", 2), nullptr);
    EXPECT_EQ(log().lines(), Lines{});
}

TEST_F(SmartComponentTest, DeletingAnUnknownPropertyOrSignalChangesNothing) {
    Plain& lamp = lampDraft().make<Plain>();
    expectThrow<std::out_of_range>(noKey, [&] { lamp.deleteProperty(noSuchId); });
    expectThrow<std::out_of_range>(noKey, [&] { lamp.deleteSignal(noSuchId); });
    EXPECT_EQ(lamp.getProperties().size(), 2u);
    EXPECT_EQ(lamp.getSignals().size(), 2u);
    EXPECT_EQ(lamp.element()->children("signal").size(), 2u);
}

TEST_F(SmartComponentTest, IdsOfPropertiesAndSignalsAreTheirOwnersAffair) {
    Plain& lamp = lampDraft().make<Plain>();
    Plain& horn = Draft("Plain", 11, "Horn")
                      .property(1, "Volume", "Double", 1.0)
                      .signal(1, "on", "DigitalInput")
                      .make<Plain>();
    EXPECT_EQ(lamp.getProperty(1)->name(), "Speed");
    EXPECT_EQ(horn.getProperty(1)->name(), "Volume");
    EXPECT_NE(lamp.getSignal(1), horn.getSignal(1));
    EXPECT_TRUE(isInTable(stationId));
}

// ---- Flags

TEST_F(SmartComponentTest, TheFlagsFollowTheObjectType) {
    const auto flags = [](unsigned id, sdf::ObjectType type) {
        const Box box(Draft("Box", id, "Box").element(), type);
        return std::string(box.isUser() ? "u" : "") + (box.isSensor() ? "s" : "") +
               (box.isStationLogic() ? "l" : "");
    };
    EXPECT_EQ(flags(10, static_cast<sdf::ObjectType>(13)), "u");
    EXPECT_EQ(flags(11, static_cast<sdf::ObjectType>(14)), "l");
    EXPECT_EQ(flags(12, static_cast<sdf::ObjectType>(24)), "s");
    EXPECT_EQ(flags(13, sdf::ObjectType::Component), "");
    EXPECT_EQ(flags(14, sdf::ObjectType::None), "");
}

TEST_F(SmartComponentTest, AnObjectIsInvalidIfTheTableHoldsNoneUnderItsId) {
    lampDraft().make<Plain>();
    enterObject(20, nullptr);
    EXPECT_FALSE(Plain::objectIsInvalid(10));
    EXPECT_TRUE(Plain::objectIsInvalid(noSuchId));
    EXPECT_TRUE(Plain::objectIsInvalid(20));
    ASSERT_TRUE(sdf::SdfManager::inst()->mutex().try_lock());
    sdf::SdfManager::inst()->mutex().unlock();
}

TEST_F(SmartComponentTest, TheTypeNameOfAComponentIsFoundByItsId) {
    lampDraft().make<Plain>();
    EXPECT_EQ(SmartComponent::GetTypeName(10), "Plain");
    expectThrow<std::out_of_range>(noKey, [] { SmartComponent::GetTypeName(noSuchId); });
    ASSERT_TRUE(sdf::SdfManager::inst()->mutex().try_lock());
    sdf::SdfManager::inst()->mutex().unlock();
}

TEST_F(SmartComponentTest, TheTypeNameOfAnEmptyEntryIsABadCast) {
    enterObject(20, nullptr);
    expectThrow<std::bad_cast>([] { SmartComponent::GetTypeName(20); });
}

// ---- Notices

TEST_F(SmartComponentTest, NoticesNameTheMemberFirstAndTheComponentSecond) {
    Plain& lamp = lampDraft().make<Plain>();
    freshLog();
    lamp.notifyPropertyValueChanged(2);
    lamp.notifySignalValueChanged(1);
    lamp.updateModel();
    EXPECT_EQ(log().lines(),
              (Lines{"notice property 2 of 10", "notice signal 1 of 10", "notice updated 10"}));
}

// ---- Defaults

TEST_F(SmartComponentTest, TheDefaultsAnswerNothing) {
    Plain& lamp = lampDraft().make<Plain>();
    Plain& other = Draft("Plain", 11, "Other").make<Plain>();
    freshLog();
    EXPECT_FALSE(lamp.canAttachTo(&other));
    EXPECT_FALSE(lamp.isUser());
    EXPECT_FALSE(lamp.hasVisual());
    EXPECT_FALSE(lamp.isMovable());
    EXPECT_FALSE(lamp.isActivated());
    EXPECT_FALSE(lamp.isObjectUsed(0));
    EXPECT_FALSE(lamp.isObjectUsed(10));
    EXPECT_TRUE(lamp.SmartComponent::validatePropertyValue(1, "no number"));
    EXPECT_TRUE(lamp.SmartComponent::validatePropertyValue(noSuchId, ""));
    EXPECT_FALSE(lamp.checkPropertyObjectType(1, &other));
    EXPECT_EQ(lamp.getEnumPropertyList(1, "text"), Lines{});
    EXPECT_EQ(lamp.getDependentPropId(1), 0u);
    EXPECT_EQ(lamp.getDisplayString(), lamp.SdfObject::getDisplayString());
    lamp.initialize();
    lamp.reset();
    lamp.start(5);
    lamp.stop();
    EXPECT_EQ(log().lines(), Lines{});
}

TEST_F(SmartComponentTest, DisplayStringAndPoseCanBeAskedOfAConstComponent) {
    const Plain& lamp = lampDraft().make<Plain>();
    EXPECT_EQ(lamp.getDisplayString(), "Lamp");
    EXPECT_EQ(lamp.getPose(), (rob::PoseTemplate<double>{{0, 0, 0}, {1, 0, 0, 0}}));
}

TEST_F(SmartComponentTest, AVectorIsShownAsItIs) {
    Plain& lamp = lampDraft().make<Plain>();
    EXPECT_EQ(lamp.getDisplayVec3(1, {{1, "5"}}, 1.5F, -2.F, 0.1F),
              (rob::Vec3Template<double>{1.5, -2.0, static_cast<double>(0.1F)}));
}

TEST_F(SmartComponentTest, ATypeWithoutTypedValuesSaysSo) {
    Plain& lamp = lampDraft().make<Plain>();
    expectThrow<std::logic_error>("not implemented", [&] { lamp.getPropertyValueImpl(1); });
    expectThrow<std::logic_error>("not implemented", [&] { lamp.getPropertyValueImpl(noSuchId); });
}

TEST_F(SmartComponentTest, APlainComponentIsAbstract) {
    EXPECT_TRUE(std::is_abstract_v<SmartComponent>);
    EXPECT_TRUE((std::is_base_of_v<layout::AttachableNode, SmartComponent>));
}

// ---- Copies

TEST_F(SmartComponentTest, ACopySharesThePropertiesAndSignalsOfItsSource) {
    Plain& lamp = lampDraft().make<Plain>();
    markProperty(lamp, 1, "6");
    markSignal(lamp, 2, 1);
    leakOnPurpose([&] {
        auto* const copy = new Plain(lamp);
        EXPECT_EQ(copy->element(), lamp.element());
        EXPECT_EQ(copy->id(), 10u);
        EXPECT_EQ(copy->getProperties(), lamp.getProperties());
        EXPECT_EQ(copy->getSignals(), lamp.getSignals());
        EXPECT_EQ(settingProperties(*copy), settingProperties(lamp));
        EXPECT_EQ(settingSignals(*copy), settingSignals(lamp));
    });
    expectLost(1);
}

TEST_F(SmartComponentTest, AnAssignedComponentSharesThemToo) {
    Plain& lamp = lampDraft().make<Plain>();
    leakOnPurpose([&] {
        auto* const copy =
            new Plain(Draft("Plain", 11, "Horn").element(), sdf::ObjectType::Component);
        *copy = lamp;
        EXPECT_EQ(copy->element(), lamp.element());
        EXPECT_EQ(copy->getProperties(), lamp.getProperties());
        EXPECT_EQ(copy->getSignals(), lamp.getSignals());
        EXPECT_EQ(copy->getObjParentId(), lamp.getObjParentId());
    });
    expectLost(1);
}

// ---- The virtual table

TEST_F(SmartComponentTest, TheVirtualTableHasTheOperationsInOrder) {
    using C = Plain;
    // Behind the two entries of the destructor.
    expectConsecutive({1,
                       slotOf(&C::getDisplayString),
                       slotOf(&C::setName),
                       slotOf(&sdf::SdfObject::anyOfDescendant),
                       slotOf(&C::getPose),
                       slotOf(&C::setPose),
                       slotOf(&C::moveChild),
                       slotOf(&C::canAttachTo),
                       slotOf(&C::isUser),
                       slotOf(&C::hasVisual),
                       slotOf(&C::isMovable),
                       slotOf(&C::getPropertyValueImpl),
                       slotOf(&C::setPropertyValue),
                       slotOf(&C::handleInputSignal),
                       slotOf(&C::execute),
                       slotOf(&C::isActivated),
                       slotOf(&C::initialize),
                       slotOf(&C::reset),
                       slotOf(&C::start),
                       slotOf(&C::isObjectUsed),
                       slotOf(&C::validatePropertyValue),
                       slotOf(&C::readPropertyValues),
                       slotOf(&C::checkPropertyObjectType),
                       slotOf(&C::getEnumPropertyList),
                       slotOf(&C::getDependentPropId),
                       slotOf(&C::getDisplayVec3),
                       slotOf(&C::stop),
                       slotOf(&C::setStaticInputSignal)});
}

}  // namespace trel::test
