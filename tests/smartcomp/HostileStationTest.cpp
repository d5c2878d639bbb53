#include <stdexcept>

#include "smartcomp/Lifecycle.h"
#include "tests/smartcomp/SignalCell.h"

// What no editor writes and a file may hold all the same.

namespace trel::test {

namespace {

constexpr unsigned largest = 4'294'967'295u;
constexpr unsigned largestIndex = 2'147'483'647u;

class HostileStation : public SignalCell {
protected:
    void TearDown() override {
        expectSaves();
        SignalCell::TearDown();
    }

    // A group with an input 1, an output 2 and a property 1.
    static Draft group(unsigned id, unsigned parent) {
        Draft draft("Box", id, "Box " + std::to_string(id));
        draft.in(parent)
            .signal(1, "in", "DigitalInput")
            .signal(2, "out", "DigitalOutput")
            .property(1, "text", "String", std::string());
        return draft;
    }

    static std::size_t descendantsOf(unsigned id) {
        std::size_t asked = 0;
        sdf::SdfObject::AnyOfDescendant(
            id,
            [&](const sdf::SdfObject*) {
                ++asked;
                return false;
            },
            true);
        return asked;
    }

    static void expectSaves() {
        const std::string text = Station::inst().text();
        EXPECT_EQ(sdf::Document::fromText(text, "saved").text(), text);
    }
};

}  // namespace

//   11 ( 10.out -> 11.in, 10.text -> 11.text )   10 ( 11.out -> 10.in, 11.text -> 10.text )
TEST_F(HostileStation, TwoGroupsThatContainEachOtherRunAndComeApart) {
    const Draft first = group(10, 11)
                            .child(11)
                            .connection(1, {11, 2}, {10, 1}, 0)
                            .connection(2, {11, 1}, {10, 1}, std::nullopt);
    const Draft second = group(11, 10)
                             .child(10)
                             .connection(1, {10, 2}, {11, 1}, 0)
                             .connection(2, {10, 1}, {11, 1}, std::nullopt);
    Box& a = first.make<Box>();
    Box& b = second.make<Box>();

    a.setStaticSignalValue(2, 1);
    b.handleSignalValue(2, 1, 0);
    a.setPropertyValue(1, "round");
    EXPECT_EQ(valueOf(b, 1), SignalValue(1));
    EXPECT_EQ(valueOf(a, 1), SignalValue(1));
    EXPECT_EQ(b.getProperty(1)->value(), "round");
    EXPECT_EQ(descendantsOf(10), 2u);
    EXPECT_FALSE(a.isTopLevel());
    EXPECT_FALSE(logic().isObjectUsedByComponent(10));
    expectSaves();

    smartcomp::RemoveSmartComponent(10);
    EXPECT_FALSE(b.hasObjChild(10));
    expectThrow<std::out_of_range>(noKey, [] { smartcomp::RemoveSmartComponent(11); });
    EXPECT_TRUE(isInTable(11));
    smartcomp::RemoveSubSmartComponent(11);
    EXPECT_EQ(GetStationElem()->children("smart_component").size(), 1u) << "the logic alone";
}

TEST_F(HostileStation, AGroupInsideItselfRunsAndCanBeRemoved) {
    Box& box = group(10, 10)
                   .child(10)
                   .connection(1, {10, 2}, {10, 1}, 0)
                   .connection(2, {10, 1}, {10, 1}, std::nullopt)
                   .make<Box>();

    box.setStaticSignalValue(2, 1);
    EXPECT_EQ(valueOf(box, 1), SignalValue(1));
    box.handleSignalValue(2, 0, 0);
    EXPECT_EQ(valueOf(box, 1), SignalValue(0));
    box.setPropertyValue(1, "own");
    EXPECT_EQ(box.getProperty(1)->value(), "own");
    EXPECT_EQ(descendantsOf(10), 1u);
    expectSaves();

    smartcomp::RemoveSmartComponent(10);
    EXPECT_FALSE(isInTable(10));
    EXPECT_EQ(GetStationElem()->children("smart_component").size(), 1u) << "the logic alone";
}

// Only the parent that the child names delivers what it sends.
TEST_F(HostileStation, AChildOfTwoParentsBelongsToTheOneItNames) {
    Box& own = group(10, logicId).child(12).connection(1, {12, 2}, {10, 2}, 0).make<Box>();
    Box& other = group(11, logicId).child(12).connection(1, {12, 2}, {11, 2}, 0).make<Box>();
    Plain& child = make(12, "Child", 10);

    child.setStaticSignalValue(2, 1);
    EXPECT_EQ(valueOf(own, 2), SignalValue(1));
    EXPECT_EQ(valueOf(other, 2), SignalValue(0));
    EXPECT_EQ(descendantsOf(10), 2u);
    EXPECT_EQ(descendantsOf(11), 2u);

    smartcomp::RemoveSmartComponent(12);
    EXPECT_FALSE(own.hasObjChild(12));
    EXPECT_TRUE(other.hasObjChild(12));
    EXPECT_EQ(other.element()->children("child").size(), 1u);
    EXPECT_EQ(descendantsOf(11), 1u) << "a child that is not there is passed over";
    other.removeChildComponent(12);
    EXPECT_EQ(other.element()->children("child").size(), 0u);
}

TEST_F(HostileStation, ChildrenThatAreNoComponentsAreAskedWhereTheyAreThere) {
    group(10, logicId).child(0).child(stationId).child(logicId).child(noSuchId).make<Box>();
    logic().addChildComponent(10, std::nullopt);

    EXPECT_EQ(descendantsOf(10), 3u) << "the group, the station, the station logic";
    smartcomp::RemoveSmartComponent(10);
    EXPECT_FALSE(isInTable(10));
}

//   100 ( 100.in -> 101.in, 101 ( 101.in -> 102.in, ... ))
TEST_F(HostileStation, ATreeAHundredThousandDeepLoadsRunsAndGoes) {
    constexpr unsigned depth = 100'000;
    constexpr unsigned first = 100;
    constexpr unsigned last = first + depth - 1;
    for (unsigned id = first; id <= last; ++id) {
        Draft draft("Box", id, "B");
        draft.in(id == first ? logicId : id - 1).signal(1, "in", "DigitalInput");
        if (id != last) draft.child(id + 1).connection(1, {id, 1}, {id + 1, 1}, 0);
    }
    smartcomp::Load();
    const auto boxAt = [](unsigned id) -> Box& {
        return dynamic_cast<Box&>(*sdf::SdfManager::inst()->find(id));
    };
    EXPECT_EQ(descendantsOf(first), depth);
    EXPECT_FALSE(logic().isObjectUsedByComponent(last));

    boxAt(last - 1).setStaticSignalValue(1, 1);
    EXPECT_EQ(valueOf(boxAt(last), 1), SignalValue(1));
    // So deep no delivery goes; what it reached stays.
    expectThrow<std::runtime_error>([&] { boxAt(first).handleSignalValue(1, 1, 0); });
    EXPECT_EQ(valueOf(boxAt(first + 1), 1), SignalValue(1));
    expectSaves();

    smartcomp::RemoveSmartComponent(first);
    EXPECT_FALSE(isInTable(first));
    EXPECT_TRUE(isInTable(first + 1));
    EXPECT_EQ(GetStationElem()->children("smart_component").size(), depth);
}

TEST_F(HostileStation, AnIndexBeyondTheEndNeitherWrapsNorMovesTheOthers) {
    Box& box = group(10, logicId).connection(1, {10, 2}, {10, 1}, 0).make<Box>();
    const auto add = [&](unsigned id, int index) {
        return Connection::Build(&box, id, 10, 2, 10, 1, index);
    };
    add(2, static_cast<int>(largestIndex));
    add(3, static_cast<int>(largestIndex));
    EXPECT_EQ(orderOf(box), (Ids{1, 2, 3}));
    EXPECT_EQ(box.getConnection(3)->getIndex(), largestIndex);
    expectThrow<std::out_of_range>(noPlace, [&] { box.moveSgConnOrderBackward(3); });
    expectThrow<std::out_of_range>(noPlace, [&] { box.moveSgConnOrderForward(3); });
    expectThrow<std::out_of_range>(noPlace, [&] { box.moveSgConnOrderForward(1); });
    EXPECT_EQ(orderOf(box), (Ids{1, 2, 3}));
    EXPECT_EQ(elementOf(box, "connection", 3)->asUInt("index"), largestIndex);

    // Whoever is pushed on gets its place.
    add(4, 0);
    EXPECT_EQ(orderOf(box), (Ids{4, 1, 2, 3}));
    for (unsigned place = 0; place != 4; ++place)
        EXPECT_EQ(box.getConnection(orderOf(box)[place])->getIndex(), place);
    box.deleteConnection(1);
    box.moveSgConnOrderForward(3);
    EXPECT_EQ(orderOf(box), (Ids{4, 3, 2}));
    EXPECT_EQ(elementOf(box, "connection", 2)->asUInt("index"), 2u);
}

// 4294967295 counts as no place: such a connection binds properties.
TEST_F(HostileStation, TheLargestIndexMakesABindingAndStaysInTheDocument) {
    Box& box = group(10, logicId)
                   .property(2, "copy", "String", std::string())
                   .connection(1, {10, 1}, {10, 2}, largest)
                   .connection(2, {10, 2}, {10, 1}, largestIndex + 1)
                   .make<Box>();
    EXPECT_EQ(orderOf(box), Ids{});
    ASSERT_NE(box.getBinding(1), nullptr);
    ASSERT_NE(box.getBinding(2), nullptr);
    EXPECT_EQ(elementOf(box, "connection", 1)->asUInt("index"), largest);

    connect(box, {10, 2}, {10, 1});
    EXPECT_EQ(orderOf(box), Ids{3});
    expectThrow<std::out_of_range>(noPlace, [&] { box.moveSgConnOrderForward(1); });
    box.deleteConnection(1);
    EXPECT_EQ(orderOf(box), Ids{3});
}

TEST_F(HostileStation, BehindTheLargestIdNoneIsFree) {
    Box& box = group(10, logicId).connection(largest, {10, 2}, {10, 1}, 0).make<Box>();
    smartcomp::SCSignal::Create(
        &box, box.element()->append(signalElement(largest, "s", "DigitalInput", 0)));
    smartcomp::Property::Create(
        &box, box.element()->append(propertyElement(largest, "p", "String", std::string())));

    const std::string full = "no id is left behind 4294967295";
    expectThrow<std::length_error>(full, [&] { box.getNextSgConnId(); });
    expectThrow<std::length_error>(full, [&] { box.getNextSignalId(); });
    expectThrow<std::length_error>(full, [&] { box.getNextPropertyId(); });
    box.deleteConnection(largest);
    EXPECT_EQ(box.getNextSgConnId(), 1u);
}

}  // namespace trel::test
