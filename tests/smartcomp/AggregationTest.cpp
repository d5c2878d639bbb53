#include "smartcomp/Aggregation.h"

#include <any>
#include <stdexcept>
#include <type_traits>

#include "tests/smartcomp/Cell.h"
#include "tests/smartcomp/VirtualTable.h"

namespace trel::test {

namespace {

class AggregationTest : public CellTest {
protected:
    static Draft draft() { return {"Box", 10, "Box"}; }

    // A box whose signal connections, in document order, hold these indices;
    // their ids are 1, 2, 3 and so on.
    Draft withIndices(const std::vector<unsigned>& indices) {
        Draft box = draft();
        unsigned id = 0;
        for (const unsigned index : indices) {
            ++id;
            box.connection(id, {10, id}, {11, id}, index);
        }
        return box;
    }
    static Ids indicesInDocument(const SmartComponent& box) {
        Ids found;
        for (const auto& element : box.element()->children("connection"))
            found.push_back(element->asUInt("index"));
        return found;
    }
};

using Position = std::optional<std::pair<int, int>>;
using Vec3 = rob::Vec3Template<double>;

}  // namespace

// ---- Loading

TEST_F(AggregationTest, ABareElementGetsARoleObjectAndNothingElse) {
    const Draft bare = draft();
    freshLog();
    const Box& box = bare.make<Box>();
    EXPECT_NE(box.element()->get("role_object"), nullptr);
    EXPECT_EQ(box.getRoleObject(), 0u);
    for (const char* key : {"pose", "child", "xy", "connection"})
        EXPECT_EQ(box.element()->get(key), nullptr) << key;
    EXPECT_EQ(log().writes(), Lines{});
}

TEST_F(AggregationTest, APoseThatIsNoneIsRefused) {
    const Draft box = draft();
    box.element()->touch("pose")->setValue(std::string("upright"));
    expectThrow<std::invalid_argument>([&] { box.make<Box>(); });
    EXPECT_FALSE(isInTable(10));
    EXPECT_EQ(box.element()->parent(), GetStationElem());
}

TEST_F(AggregationTest, TheRoleObjectIsRead) {
    const Draft box = draft();
    box.element()->touch("role_object")->setValue(77u);
    EXPECT_EQ(box.make<Box>().getRoleObject(), 77u);
}

TEST_F(AggregationTest, AMissingPoseIsTheOriginUnturned) {
    const Box& box = draft().make<Box>();
    EXPECT_EQ(box.getPose(), (rob::PoseTemplate<double>{{0, 0, 0}, {1, 0, 0, 0}}));
}

TEST_F(AggregationTest, ThePoseIsReadAndConstructionWritesNone) {
    const rob::PoseTemplate<double> pose{{1, 2, 3}, {0, 1, 0, 0}};
    const Draft turned = draft();
    turned.element()->touch("pose")->setValue(pose);
    freshLog();
    Box& box = turned.make<Box>();
    EXPECT_EQ(box.getPose(), pose);
    EXPECT_EQ(log().writes(), Lines{});
    box.setPose(pose);
    EXPECT_EQ(log().writes(), Lines{}) << "the document holds that pose already";
}

TEST_F(AggregationTest, SettingThePoseWritesTheChildPose) {
    Box& box = draft().make<Box>();
    freshLog();
    box.setPose({{1, 2, 3}, {0, 0, 0, 1}});
    EXPECT_EQ(log().writes(), Lines{"write Box/pose pose 1 2 3 0 0 0 1"});
    EXPECT_EQ(box.getPose().position, (Vec3{1, 2, 3}));
}

TEST_F(AggregationTest, PersistedIndicesDecideTheOrderNotTheDocument) {
    const Draft loaded = withIndices({2, 0, 1});
    freshLog();
    Box& box = loaded.make<Box>();
    EXPECT_EQ(orderOf(box), (Ids{2, 3, 1}));
    EXPECT_EQ(log().writes(), Lines{}) << "no index is rewritten";
}

TEST_F(AggregationTest, ReversedIndicesLoadReversed) {
    const Draft loaded = withIndices({2, 1, 0});
    freshLog();
    Box& box = loaded.make<Box>();
    EXPECT_EQ(orderOf(box), (Ids{3, 2, 1}));
    EXPECT_EQ(indicesInDocument(box), (Ids{2, 1, 0}));
    EXPECT_EQ(log().writes(), Lines{});
}

TEST_F(AggregationTest, IndicesInOrderLoadInOrder) {
    EXPECT_EQ(orderOf(withIndices({0, 1, 2, 3}).make<Box>()), (Ids{1, 2, 3, 4}));
}

TEST_F(AggregationTest, GapsAreClosedInTheOrderOfTheIndices) {
    Box& box = withIndices({7, 0, 4000000000u & 0x7FFFFFFFu, 3}).make<Box>();
    EXPECT_EQ(orderOf(box), (Ids{2, 4, 1, 3}));
    EXPECT_EQ(indicesInDocument(box), (Ids{2, 0, 3, 1}));
}

TEST_F(AggregationTest, RepeatedIndicesAreMadeDenseInDocumentOrder) {
    Box& box = withIndices({1, 1, 0, 1}).make<Box>();
    EXPECT_EQ(orderOf(box), (Ids{3, 1, 2, 4}));
    EXPECT_EQ(indicesInDocument(box), (Ids{1, 2, 0, 3}));
}

TEST_F(AggregationTest, TheLargestIndexIsNotWrittenOutOfBounds) {
    Box& box = withIndices({2147483647u}).make<Box>();
    EXPECT_EQ(orderOf(box), Ids{1});
    EXPECT_EQ(indicesInDocument(box), Ids{0});
}

// An index is a signed number in the program; what is negative there is none.
TEST_F(AggregationTest, AnIndexBeyondTheSignedNumbersIsNoPlace) {
    const Draft loaded = withIndices({4294967295u, 0, 2147483648u});
    freshLog();
    Box& box = loaded.make<Box>();
    leaveUnchecked(box);
    EXPECT_EQ(orderOf(box), Ids{2});
    EXPECT_TRUE(box.getBinding(1)->isBinding());
    EXPECT_TRUE(box.getBinding(3)->isBinding());
    EXPECT_EQ(log().writes(), Lines{});
}

TEST_F(AggregationTest, OfTwoConnectionsWithOneIdTheLaterIsLoaded) {
    Box& box =
        draft().connection(1, {10, 1}, {11, 1}, 0).connection(1, {10, 2}, {11, 2}, 0).make<Box>();
    EXPECT_EQ(orderOf(box), Ids{1});
    EXPECT_EQ(tableOf(box).size(), 1u);
    EXPECT_EQ(box.getConnection(1)->getSrcSignalId(), 2u);
    EXPECT_EQ(box.element()->children("connection").size(), 2u);
    EXPECT_FALSE(box.element()->children("connection").front()->isMirrored());
}

TEST_F(AggregationTest, ALaterBindingTakesThePlaceOfAConnectionWithItsId) {
    Box& box = draft()
                   .connection(1, {10, 1}, {11, 1}, 0)
                   .connection(2, {10, 2}, {11, 2}, 1)
                   .connection(1, {10, 3}, {11, 3}, std::nullopt)
                   .make<Box>();
    EXPECT_EQ(orderOf(box), Ids{2});
    EXPECT_EQ(box.getBinding(1)->getSrcPropertyId(), 3u);
    EXPECT_EQ(box.getConnection(2)->getIndex(), 0u);
}

TEST_F(AggregationTest, BindingsAreLoadedIntoTheTableOnly) {
    Box& box = draft()
                   .connection(1, {10, 1}, {11, 1}, std::nullopt)
                   .connection(2, {10, 2}, {11, 2}, 0)
                   .make<Box>();
    EXPECT_EQ(orderOf(box), Ids{2});
    EXPECT_TRUE(box.getBinding(1)->isBinding());
}

TEST_F(AggregationTest, AnIndexThatIsNoPlaceEndsTheConstruction) {
    const Draft box = withIndices({0});
    box.element()->get("connection")->get("index")->setValue(std::string("first"));
    expectThrow<std::bad_any_cast>([&] { box.make<Box>(); });
    EXPECT_FALSE(isInTable(10));
    EXPECT_EQ(box.element()->parent(), GetStationElem());
}

TEST_F(AggregationTest, ChildrenAndPositionsAreRead) {
    const Box& box = draft().child(11).child(12).xy(11, 5, 6).xy(12, -7, 8).make<Box>();
    EXPECT_TRUE(box.hasObjChild(11));
    EXPECT_TRUE(box.hasObjChild(12));
    EXPECT_FALSE(box.hasObjChild(13));
    EXPECT_EQ(box.getChildXY(11), Position({5, 6}));
    EXPECT_EQ(box.getChildXY(12), Position({-7, 8}));
}

TEST_F(AggregationTest, PositionsAreCutTowardsZero) {
    const Box& box = draft().xy(11.9, 5.99, -6.99).make<Box>();
    EXPECT_EQ(box.getChildXY(11), Position({5, -6}));
}

TEST_F(AggregationTest, PositionsBeyondTheirTypesBecomeTheNearest) {
    const Box& box = draft().xy(-5, 3e9, -3e9).xy(5e9, 1, 2).make<Box>();
    EXPECT_EQ(box.getChildXY(0), Position({2147483647, -2147483647 - 1}));
    EXPECT_EQ(box.getChildXY(4294967295u), Position({1, 2}));
}

TEST_F(AggregationTest, TheLargestPositionsAreReadAsTheyAre) {
    const Box& box = draft().xy(4294967295.0, 2147483647, -2147483648.0).make<Box>();
    EXPECT_EQ(box.getChildXY(4294967295u), Position({2147483647, -2147483647 - 1}));
}

TEST_F(AggregationTest, TheFirstPositionOfAChildWins) {
    const Box& box = draft().xy(11, 1, 2).xy(12, 3, 4).xy(11, 5, 6).make<Box>();
    EXPECT_EQ(box.getChildXY(11), Position({1, 2}));
    EXPECT_EQ(box.getChildXY(12), Position({3, 4}));
}

// ---- Children and positions

TEST_F(AggregationTest, AChildIsAddedToTheDocument) {
    Box& box = draft().make<Box>();
    box.addChildComponent(11, std::nullopt);
    EXPECT_TRUE(box.hasObjChild(11));
    EXPECT_EQ(std::any_cast<unsigned>(box.element()->get("child")->value()), 11u);
    EXPECT_EQ(box.element()->get("xy"), nullptr);
    EXPECT_EQ(box.getChildXY(11), std::nullopt);

    box.addChildComponent(11, std::nullopt);
    EXPECT_EQ(box.element()->children("child").size(), 1u);
}

TEST_F(AggregationTest, AChildIsAddedAtItsPosition) {
    Box& box = draft().make<Box>();
    box.addChildComponent(11, std::pair{5, -6});
    EXPECT_EQ(box.getChildXY(11), Position({5, -6}));
    EXPECT_EQ(std::any_cast<Vec3>(box.element()->get("xy")->value()), (Vec3{11, 5, -6}));
}

TEST_F(AggregationTest, AnAddedChildKeepsItsPositionButTheDocumentTakesTheNewOne) {
    Box& box = draft().make<Box>();
    box.setChildXY(11, 1, 2);
    box.addChildComponent(11, std::pair{5, 6});
    EXPECT_EQ(box.getChildXY(11), Position({1, 2}));
    EXPECT_EQ(box.element()->asVec3("xy"), (Vec3{11, 5, 6}));

    box.setChildXY(11, 7, 8);
    EXPECT_EQ(box.getChildXY(11), Position({7, 8}));
    EXPECT_EQ(box.element()->asVec3("xy"), (Vec3{11, 7, 8}));
}

TEST_F(AggregationTest, EveryPositionIsWrittenToTheOneChildXy) {
    Box& box = draft().xy(11, 1, 2).xy(12, 3, 4).make<Box>();
    box.setChildXY(12, 7, 8);
    const auto elements = box.element()->children("xy");
    ASSERT_EQ(elements.size(), 2u);
    EXPECT_EQ(elements[0]->asVec3(""), (Vec3{12, 7, 8}));
    EXPECT_EQ(elements[1]->asVec3(""), (Vec3{12, 3, 4}));
    EXPECT_EQ(box.getChildXY(11), Position({1, 2}));
}

TEST_F(AggregationTest, AChildThatNeverHadAPositionHasNone) {
    EXPECT_EQ(draft().child(11).make<Box>().getChildXY(11), std::nullopt);
}

TEST_F(AggregationTest, ARemovedChildLeavesItsConnectionsAndXyInTheDocument) {
    Box& box = draft().child(11).xy(11, 1, 2).connection(1, {10, 1}, {11, 1}, 0).make<Box>();
    freshLog();
    box.removeChildComponent(11);
    EXPECT_FALSE(box.hasObjChild(11));
    EXPECT_EQ(box.element()->get("child"), nullptr);
    EXPECT_EQ(box.getChildXY(11), std::nullopt);
    EXPECT_EQ(box.element()->asVec3("xy"), (Vec3{11, 1, 2}));
    EXPECT_NE(box.getConnection(1), nullptr);
    EXPECT_EQ(log().lines(), Lines{});
    box.removeChildComponent(11);
    box.removeChildComponent(noSuchId);
}

// ---- Connections and ids

TEST_F(AggregationTest, ConnectionsAndBindingsAreTwoViewsOfOneTable) {
    const Box& box = draft()
                         .connection(1, {10, 1}, {11, 1}, 0)
                         .connection(2, {10, 2}, {11, 2}, std::nullopt)
                         .connection(3, {10, 3}, {11, 3}, 1)
                         .make<Box>();
    Ids connections, bindings;
    for (const auto& [id, connection] : box.connections()) {
        EXPECT_EQ(connection->id(), id);
        connections.push_back(id);
    }
    for (const auto& [id, binding] : box.bindings()) {
        EXPECT_TRUE(binding->isBinding());
        bindings.push_back(id);
    }
    EXPECT_EQ(sorted(connections), (Ids{1, 3}));
    EXPECT_EQ(bindings, Ids{2});
}

TEST_F(AggregationTest, ABindingIsNoConnectionAndTheOtherWayRound) {
    const Box& box = draft()
                         .connection(1, {10, 1}, {11, 1}, 0)
                         .connection(2, {10, 2}, {11, 2}, std::nullopt)
                         .make<Box>();
    EXPECT_NE(box.getConnection(1), nullptr);
    EXPECT_EQ(box.getConnection(2), nullptr);
    EXPECT_EQ(box.getBinding(1), nullptr);
    EXPECT_NE(box.getBinding(2), nullptr);
    expectThrow<std::out_of_range>(noKey, [&] { box.getConnection(noSuchId); });
    expectThrow<std::out_of_range>(noKey, [&] { box.getBinding(noSuchId); });
}

TEST_F(AggregationTest, TheNextConnectionIdIsOneMoreThanTheLargest) {
    Box& box = draft().make<Box>();
    EXPECT_EQ(box.getNextSgConnId(), 1u);
    Connection::Build(&box, 7, 10, 1, 11, 1, -1);
    Connection::Build(&box, 3, 10, 1, 11, 1, 0);
    EXPECT_EQ(box.getNextSgConnId(), 8u);
    EXPECT_EQ(box.getNextSgConnId(), 8u) << "nothing is reserved";
    box.deleteConnection(7);
    EXPECT_EQ(box.getNextSgConnId(), 4u);
    Connection::Build(&box, 20, 10, 1, 11, 1, -1);
    EXPECT_EQ(box.getNextSgConnId(), 21u);
}

TEST_F(AggregationTest, TheNextPropertyIdCountsFrom10) {
    EXPECT_EQ(draft().make<Box>().getNextPropertyId(), 11u);
    const auto next = [](unsigned id, const Ids& properties) {
        Draft box("Box", id, "Box");
        for (const unsigned property : properties) box.property(property, "P", "Int32", 1);
        return box.make<Box>().getNextPropertyId();
    };
    EXPECT_EQ(next(20, {2, 5}), 11u);
    EXPECT_EQ(next(21, {10}), 11u);
    EXPECT_EQ(next(22, {2, 12, 5}), 13u);
}

TEST_F(AggregationTest, TheNextSignalIdIsOneMoreThanTheLargest) {
    EXPECT_EQ(draft().make<Box>().getNextSignalId(), 1u);
    EXPECT_EQ(Draft("Box", 20, "Other")
                  .signal(4, "a", "DigitalInput")
                  .signal(2, "b", "DigitalInput")
                  .make<Box>()
                  .getNextSignalId(),
              5u);
}

TEST_F(AggregationTest, SettingTheRoleObjectAlwaysWrites) {
    Box& box = draft().make<Box>();
    freshLog();
    box.setRoleObject(7);
    box.setRoleObject(7);
    EXPECT_EQ(box.getRoleObject(), 7u);
    EXPECT_EQ(log().writes(),
              (Lines{"write Box/role_object uint 7", "write Box/role_object uint 7"}));
}

// ---- Answers

TEST_F(AggregationTest, IsShownAndMovedAndTakesAnyObject) {
    Box& box = draft().make<Box>();
    Thing& pallet = enter<Thing>(20, "Pallet");
    EXPECT_TRUE(box.hasVisual());
    EXPECT_TRUE(box.isMovable());
    EXPECT_TRUE(box.checkPropertyObjectType(1, &pallet));
    EXPECT_TRUE(box.checkPropertyObjectType(noSuchId, nullptr));
}

TEST_F(AggregationTest, IsAttachedWhereANodeMayBe) {
    Box& box = draft().make<Box>();
    Plain& lamp = Draft("Plain", 11, "Lamp").make<Plain>();
    EXPECT_EQ(box.canAttachTo(&lamp), box.layout::AttachableNode::canAttachTo(&lamp));
    EXPECT_EQ(box.canAttachTo(nullptr), box.layout::AttachableNode::canAttachTo(nullptr));
    EXPECT_TRUE(box.canAttachTo(&lamp));
}

TEST_F(AggregationTest, AnObjectIsUsedIfAPropertyRefersToIt) {
    const Box& box = draft()
                         .property(1, "Name", "String", std::string("20"))
                         .property(2, "Part", "ObjectId", std::string("21"))
                         .make<Box>();
    EXPECT_TRUE(box.isObjectUsed(21));
    EXPECT_FALSE(box.isObjectUsed(20));
    EXPECT_TRUE(box.isObjectUsed(0)) << "a property of another type gives 0";
}

TEST_F(AggregationTest, WithoutPropertiesNoObjectIsUsed) {
    const Box& box = draft().make<Box>();
    EXPECT_FALSE(box.isObjectUsed(0));
    EXPECT_FALSE(box.isObjectUsed(10));
}

TEST_F(AggregationTest, ABadObjectIdEscapesTheQuestion) {
    const Box& box = draft().property(1, "Part", "ObjectId", std::string("none")).make<Box>();
    expectThrow<std::invalid_argument>(noStoul, [&] { box.isObjectUsed(21); });
}

TEST_F(AggregationTest, ReadingItsValuesDoesNothing) {
    Box& box = draft().property(1, "P", "Int32", 1).make<Box>();
    freshLog();
    box.readPropertyValues();
    EXPECT_EQ(log().lines(), Lines{});
}

TEST_F(AggregationTest, LeavesExecuteToItsTypes) {
    EXPECT_TRUE(std::is_abstract_v<Aggregation>);
    EXPECT_FALSE(std::is_abstract_v<Box>);
    expectConsecutive({slotOf(&SmartComponent::handleInputSignal), slotOf(&Box::execute)});
}

// ---- Copies and the end

TEST_F(AggregationTest, ACopySharesTheConnectionsOfItsSource) {
    Box& box = draft()
                   .xy(11, 1, 2)
                   .connection(1, {10, 1}, {11, 1}, 0)
                   .connection(2, {10, 2}, {11, 2}, std::nullopt)
                   .make<Box>();
    box.setRoleObject(7);
    leakOnPurpose([&] {
        auto* const copy = new Box(box);
        EXPECT_EQ(copy->getRoleObject(), 7u);
        EXPECT_EQ(copy->getChildXY(11), Position({1, 2}));
        EXPECT_EQ(tableOf(*copy), tableOf(box));
        EXPECT_EQ(orderOf(*copy), Ids{1});

        auto* const assigned =
            new Box(Draft("Box", 20, "Other").element(), sdf::ObjectType::Component);
        *assigned = box;
        EXPECT_EQ(tableOf(*assigned), tableOf(box));
        EXPECT_EQ(orderOf(*assigned), Ids{1});
        EXPECT_EQ(assigned->getRoleObject(), 7u);
        EXPECT_EQ(assigned->getChildXY(11), Position({1, 2}));
    });
    expectLost(2);
}

TEST_F(AggregationTest, ADyingAggregationDestroysItsConnectionsAndKeepsTheirElements) {
    const Draft whole =
        draft().connection(1, {10, 1}, {11, 1}, 0).connection(2, {10, 2}, {11, 2}, std::nullopt);
    { const Box box(whole.element(), sdf::ObjectType::Component); }
    const auto elements = whole.element()->children("connection");
    ASSERT_EQ(elements.size(), 2u);
    for (const auto& element : elements) EXPECT_FALSE(element->isMirrored());
}

}  // namespace trel::test
