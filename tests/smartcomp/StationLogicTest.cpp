#include "smartcomp/StationLogic.h"

#include <cstdlib>
#include <mutex>
#include <ranges>
#include <stdexcept>

#include "smartcomp/Manager.h"
#include "tests/smartcomp/Cell.h"
#include "tests/smartcomp/VirtualTable.h"

namespace trel::test {

namespace {

class StationLogicTest : public CellTest {};

}  // namespace

// ---- The one instance

TEST_F(StationLogicTest, InstCalledTwiceGivesOnePointerNamedStationLogic) {
    StationLogic* const first = StationLogic::inst();
    EXPECT_EQ(StationLogic::inst(), first);
    EXPECT_EQ(first->name(), "Station Logic");
    EXPECT_EQ(first->element(), GetStationLogicElem());
    EXPECT_EQ(first->objectType(), static_cast<sdf::ObjectType>(14));
    EXPECT_TRUE(first->isStationLogic());
    EXPECT_EQ(sdf::SdfManager::inst()->objects().at(logicId), first);
}

TEST_F(StationLogicTest, IsNamedWhateverItsElementWasCalled) {
    GetStationLogicElem()->setName("Root");
    EXPECT_EQ(logic().name(), "Station Logic");
    EXPECT_EQ(GetStationLogicElem()->name(), "Station Logic");
}

TEST_F(StationLogicTest, HasNoParentWhateverItsElementSays) {
    GetStationLogicElem()->touch("parent")->setValue(77u);
    EXPECT_EQ(logic().getObjParentId(), 0u);
}

TEST_F(StationLogicTest, IsBuiltFromItsElementLikeAnyAggregation) {
    const ElementPtr element = GetStationLogicElem();
    element->append(propertyElement(1, "Mode", "String", std::string("auto")));
    element->append(signalElement(1, "go", "DigitalInput", 1));
    element->append("child")->setValue(10u);
    element->append("xy")->setValue(rob::Vec3Template<double>{10, 5, 6});
    const auto connection = element->append("connection")->setId(4);
    connection->touch("source")->setValue(packed({logicId, 1}));
    connection->touch("destination")->setValue(packed({10, 1}));
    connection->touch("index")->setValue(0u);

    EXPECT_EQ(logic().getProperty(1)->value(), "auto");
    EXPECT_EQ(logic().getSignal(1)->getValue(), SignalValue(1));
    EXPECT_TRUE(logic().hasObjChild(10));
    EXPECT_EQ(logic().getChildXY(10), std::pair(5, 6));
    EXPECT_EQ(orderOf(logic()), Ids{4});
}

TEST_F(StationLogicTest, ATakenIdIsRefusedAndTheLockReleased) {
    Thing& taker = enter<Thing>(logicId, "Taker");
    expectThrow<std::logic_error>(taken, [] { StationLogic::inst(); });
    EXPECT_EQ(sdf::SdfManager::inst()->objects().at(logicId), &taker);
    ASSERT_TRUE(sdf::SdfManager::inst()->mutex().try_lock());
    sdf::SdfManager::inst()->mutex().unlock();
    EXPECT_EQ(GetStationLogicElem()->parent(), GetStationElem());
}

TEST_F(StationLogicTest, TheVirtualTableHasExecuteBehindHandleInputSignal) {
    expectConsecutive({slotOf(&StationLogic::handleInputSignal), slotOf(&StationLogic::execute)});
}

// What is registered with atexit before the first call of inst() runs after the
// station logic is destroyed.
TEST_F(StationLogicTest, AtExitItTakesItsElementOutOfTheDocument) {
    EXPECT_EXIT(
        {
            std::atexit([] {
                const ElementPtr element = GetStationLogicElem();
                std::_Exit(element && !element->parent() && !element->isMirrored() ? 42 : 1);
            });
            logic();
            std::exit(0);
        },
        ::testing::ExitedWithCode(42), "");
}

// ---- Controllers

TEST_F(StationLogicTest, AnAddedControllerIsAChildWithoutPosition) {
    freshLog();
    logic().addController(20);
    EXPECT_TRUE(logic().hasObjChild(20));
    EXPECT_EQ(logic().element()->children("child").back()->asUInt(""), 20u);
    EXPECT_EQ(logic().getChildXY(20), std::nullopt);
    EXPECT_EQ(log().notices(), Lines{});
}

//   20.1 -> 10.1   connection 1          20.2 -> 10.2   connection 3
//   10.3 -> 11.1   connection 2          10.5 -> 20.6   binding 4
TEST_F(StationLogicTest, ARemovedControllerTakesItsConnectionsAndBindingsAlong) {
    logic().addController(20);
    logic().setChildXY(20, 5, 6);
    const unsigned first = connect(logic(), {20, 1}, {10, 1});
    const unsigned other = connect(logic(), {10, 3}, {11, 1});
    const unsigned second = connect(logic(), {20, 2}, {10, 2});
    const unsigned binding = bind(logic(), {10, 5}, {20, 6});
    const unsigned last = connect(logic(), {11, 3}, {11, 4});
    freshLog();

    logic().removeController(20);

    EXPECT_EQ(sorted(log().notices()),
              sorted({"notice deleted " + std::to_string(first) + " of 2",
                      "notice deleted " + std::to_string(second) + " of 2",
                      "notice deleted " + std::to_string(binding) + " of 2"}));
    EXPECT_EQ(orderOf(logic()), (Ids{other, last}));
    EXPECT_EQ(logic().getConnection(other)->getIndex(), 0u);
    EXPECT_EQ(logic().getConnection(last)->getIndex(), 1u);
    EXPECT_EQ(elementOf(logic(), "connection", last)->asUInt("index"), 1u);
    EXPECT_EQ(tableOf(logic()).size(), 2u);
    EXPECT_FALSE(logic().hasObjChild(20));
    EXPECT_EQ(logic().getChildXY(20), std::nullopt);
}

TEST_F(StationLogicTest, EachDeletionIsToldWhenTheConnectionIsGone) {
    logic().addController(20);
    const unsigned id = connect(logic(), {20, 1}, {10, 1});
    struct Watch : broker::Listener {
        void signalConnectionDeleted(unsigned connectionId, unsigned logicObjectId) override {
            isGone = !tableOf(logic()).contains(connectionId);
            isChild = logic().hasObjChild(20);
            toldBy = logicObjectId;
        }
        bool isGone = false;
        bool isChild = false;
        unsigned toldBy = 0;
    } watch;
    broker::SignalBroker::subscribe(watch);
    logic().removeController(20);
    broker::SignalBroker::unsubscribe(watch);
    EXPECT_TRUE(watch.isGone);
    EXPECT_TRUE(watch.isChild) << "the child goes after its connections";
    EXPECT_EQ(watch.toldBy, logicId);
    EXPECT_NE(elementOf(logic(), "connection", id), nullptr) << "its element stays";
}

TEST_F(StationLogicTest, AListenerMayDeleteWhatIsYetToGoWithTheController) {
    // Deletes all other connections of the controller, and adds one, when it is
    // told of the first.
    struct Eager : broker::Listener {
        void signalConnectionDeleted(unsigned connectionId, unsigned) override {
            told.push_back(connectionId);
            if (told.size() > 1) return;
            for (const unsigned id : {1u, 2u, 3u})
                if (id != connectionId) logic().deleteConnection(id);
            connect(logic(), {20, 9}, {10, 1});
        }
        Ids told;
    } listener;
    controller(20, "Robot");
    Draft("Plain", 10, "Lamp").signal(1, "in", "DigitalInput").make<Plain>();
    logic().addController(20);
    for (unsigned signal = 1; signal <= 3; ++signal) connect(logic(), {20, signal}, {10, 1});

    broker::SignalBroker::subscribe(listener);
    logic().removeController(20);
    broker::SignalBroker::unsubscribe(listener);

    EXPECT_EQ(listener.told.size(), 1u);
    EXPECT_EQ(std::ranges::distance(logic().connections()), 1) << "what was added stays";
    EXPECT_EQ(logic().connections().begin()->second->getIndex(), 0u);
}

TEST_F(StationLogicTest, AControllerWithoutConnectionsJustGoes) {
    logic().addController(20);
    const unsigned id = connect(logic(), {10, 20}, {11, 20});
    freshLog();
    logic().removeController(20);
    EXPECT_EQ(log().lines(), Lines{});
    EXPECT_FALSE(logic().hasObjChild(20));
    EXPECT_EQ(orderOf(logic()), Ids{id});
    logic().removeController(20);
}

// ---- Objects in use

TEST_F(StationLogicTest, AnObjectThatNothingRefersToIsNotUsed) {
    enter<Thing>(30, "Pallet");
    Draft("Box", 10, "Box").property(1, "Part", "ObjectId", std::string("31")).make<Box>();
    EXPECT_FALSE(logic().isObjectUsedByComponent(30));
}

TEST_F(StationLogicTest, AnObjectThatAPropertyRefersToIsUsed) {
    enter<Thing>(30, "Pallet");
    Draft("Box", 10, "Box").property(1, "Part", "ObjectId", std::string("30")).make<Box>();
    EXPECT_TRUE(logic().isObjectUsedByComponent(30));
}

//   Outer(10) > Inner(11) > Core(12), and a property refers to Core
TEST_F(StationLogicTest, AnObjectWhoseDescendantIsReferredToIsUsed) {
    Draft("Box", 10, "Outer").child(11).make<Box>();
    Draft("Box", 11, "Inner").in(10).child(12).make<Box>();
    Draft("Box", 12, "Core").in(11).make<Box>();
    Draft("Box", 20, "User").property(1, "Part", "ObjectId", std::string("12")).make<Box>();
    EXPECT_TRUE(logic().isObjectUsedByComponent(10));
    EXPECT_TRUE(logic().isObjectUsedByComponent(11));
    EXPECT_TRUE(logic().isObjectUsedByComponent(12));
    EXPECT_FALSE(logic().isObjectUsedByComponent(20));
}

TEST_F(StationLogicTest, TheStationLogicItselfIsAsked) {
    enter<Thing>(30, "Pallet");
    GetStationLogicElem()->append(propertyElement(1, "Part", "ObjectId", std::string("30")));
    EXPECT_TRUE(logic().isObjectUsedByComponent(30));
}

TEST_F(StationLogicTest, AnUnknownObjectIsNotUsed) {
    Draft("Box", 10, "Box").property(1, "Part", "ObjectId", std::string("999")).make<Box>();
    EXPECT_FALSE(logic().isObjectUsedByComponent(noSuchId));
}

TEST_F(StationLogicTest, APlainComponentUsesNothing) {
    enter<Thing>(30, "Pallet");
    Draft("Plain", 10, "Lamp").property(1, "Part", "ObjectId", std::string("30")).make<Plain>();
    EXPECT_FALSE(logic().isObjectUsedByComponent(30));
}

TEST_F(StationLogicTest, AComponentThatIsAskedMayRemoveAllOthersAndItself) {
    // Answers the question of its use by taking the station apart.
    class Reckless : public Plain {
    public:
        using Plain::Plain;
        bool isObjectUsed(unsigned) const override {
            for (const unsigned other : {11u, 12u, 13u})
                if (isInTable(other)) smartcomp::RemoveSubSmartComponent(other);
            say("asked");
            return false;
        }
    };
    smartcomp::Manager::inst()->registerType(
        "Reckless",
        [](ElementPtr element) -> SmartComponent* {
            return new Reckless(std::move(element), sdf::ObjectType{40});
        },
        nullptr, nullptr);
    logic();
    enter<Thing>(30, "Table");
    for (const unsigned id : {11u, 12u, 13u}) Draft("Reckless", id, "R").make<Reckless>();
    freshLog();

    EXPECT_FALSE(logic().isObjectUsedByComponent(30));

    EXPECT_EQ(log().startingWith("R.asked").size(), 1u) << "the others were gone by then";
    for (const unsigned id : {11u, 12u, 13u}) EXPECT_FALSE(isInTable(id));
}

TEST_F(StationLogicTest, ABadObjectIdEscapesTheQuestionAndTheLockIsFree) {
    enter<Thing>(30, "Pallet");
    Draft("Box", 10, "Box").property(1, "Part", "ObjectId", std::string("none")).make<Box>();
    expectThrow<std::invalid_argument>(noStoul, [] { logic().isObjectUsedByComponent(30); });
    ASSERT_TRUE(sdf::SdfManager::inst()->mutex().try_lock());
    sdf::SdfManager::inst()->mutex().unlock();
}

// So that it ends, or throws, the same in every process.
TEST_F(StationLogicTest, ComponentsAreAskedInTheOrderOfTheirIds) {
    enter<Thing>(30, "Pallet");
    for (const unsigned id : {14u, 10u, 17u, 12u})
        Draft("Box", id, "Box")
            .property(1, "Part", "ObjectId", std::string(id == 10 ? "30" : "none"))
            .make<Box>();
    EXPECT_TRUE(logic().isObjectUsedByComponent(30)) << "of those that throw none was asked";
}

// ---- Signals and steps

TEST_F(StationLogicTest, AnInputThatReachesItWhileRunningChangesNothing) {
    GetStationLogicElem()->append(signalElement(1, "go", "DigitalInput", 0));
    Draft("Plain", 10, "Lamp").signal(1, "on", "DigitalInput").make<Plain>();
    connect(logic(), {logicId, 1}, {10, 1});
    freshLog();

    logic().handleInputSignal(1, 1, 5);
    logic().handleSignalValue(1, 1, 5);
    logic().handleInputSignal(noSuchId, 1, 5);
    logic().execute(5);

    EXPECT_EQ(log().lines(), Lines{});
    EXPECT_EQ(logic().getSignal(1)->getValue(), SignalValue(0));
}

TEST_F(StationLogicTest, TheSameInputSetWhileEditingReachesEveryChildInput) {
    GetStationLogicElem()->append(signalElement(1, "go", "DigitalInput", 0));
    const Plain& lamp = Draft("Plain", 10, "Lamp").signal(1, "on", "DigitalInput").make<Plain>();
    const Plain& horn = Draft("Plain", 11, "Horn").signal(4, "on", "DigitalInput").make<Plain>();
    connect(logic(), {logicId, 1}, {10, 1});
    connect(logic(), {logicId, 1}, {11, 4});
    freshLog();

    logic().setStaticSignalValue(1, 1);

    EXPECT_EQ(logic().getSignal(1)->getValue(), SignalValue(1));
    EXPECT_EQ(lamp.getSignal(1)->getValue(), SignalValue(1));
    EXPECT_EQ(horn.getSignal(4)->getValue(), SignalValue(1));
    EXPECT_EQ(log().notices(),
              (Lines{"notice signal 1 of 2", "notice signal 1 of 10", "notice signal 4 of 11"}));
    EXPECT_TRUE(settingSignals(logic()).empty());
}

TEST_F(StationLogicTest, ItsOwnOutputsAreStoredAndDeliveredNowhere) {
    GetStationLogicElem()->append(signalElement(2, "done", "DigitalOutput", 0));
    Draft("Plain", 10, "Lamp").signal(1, "on", "DigitalInput").make<Plain>();
    connect(logic(), {logicId, 2}, {10, 1});
    freshLog();

    logic().handleSignalValue(2, 1, 5);
    EXPECT_EQ(logic().getSignal(2)->getValue(), SignalValue(1));
    logic().setStaticSignalValue(2, 3);
    EXPECT_EQ(logic().getSignal(2)->getValue(), SignalValue(3));
    EXPECT_EQ(log().notices(), (Lines{"notice signal 2 of 2", "notice signal 2 of 2"}));
}

TEST_F(StationLogicTest, SettingOneOfItsPropertiesNotifiesAndPropagatesNowhere) {
    GetStationLogicElem()->append(propertyElement(1, "Mode", "String", std::string("auto")));
    Framed& lamp = Draft("Framed", 10, "Lamp")
                       .property(1, "Mode", "String", std::string("off"))
                       .make<Framed>();
    bind(logic(), {logicId, 1}, {10, 1});
    freshLog();

    logic().setPropertyValue(1, "manual");

    EXPECT_EQ(logic().getProperty(1)->value(), "manual");
    EXPECT_EQ(lamp.getProperty(1)->value(), "off");
    EXPECT_EQ(log().notices(), Lines{"notice property 1 of 2"});
}

// ---- Top level

TEST_F(StationLogicTest, OnlyWhatSitsDirectlyInItIsTopLevel) {
    const Plain& lamp = Draft("Plain", 10, "Lamp").make<Plain>();
    const Plain& inner = Draft("Plain", 11, "Inner").in(10).make<Plain>();
    const Plain& lost = Draft("Plain", 12, "Lost").in(0).make<Plain>();
    EXPECT_TRUE(lamp.isTopLevel());
    EXPECT_FALSE(inner.isTopLevel());
    EXPECT_FALSE(lost.isTopLevel());
    EXPECT_FALSE(logic().isTopLevel()) << "its own parent is nobody";
}

}  // namespace trel::test
