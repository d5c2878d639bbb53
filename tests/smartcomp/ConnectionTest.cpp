#include "smartcomp/Connection.h"

#include <any>
#include <limits>
#include <stdexcept>
#include <utility>

#include "tests/smartcomp/Cell.h"

namespace trel::test {

namespace {

class ConnectionTest : public CellTest {
protected:
    void SetUp() override {
        CellTest::SetUp();
        box_ = &Draft("Box", 10, "Box").make<Box>();
        freshLog();
    }
    Box& box() { return *box_; }

    // From signal (or property) 7 of component 5 to 8 of component 6.
    Connection& build(unsigned id, int index) {
        return *Connection::Build(box_, id, 5, 7, 6, 8, index);
    }
    sdf::Element& elementFor(unsigned id) { return *elementOf(*box_, "connection", id); }

    // A "connection" element under the box that no connection mirrors.
    ElementPtr freshElement(unsigned id) {
        const auto element = box_->element()->append("connection")->setId(id);
        element->touch("source")->setValue(packed({5, 7}));
        element->touch("destination")->setValue(packed({6, 8}));
        return element;
    }

private:
    Box* box_ = nullptr;
};

std::string ends(const Connection& c) {
    return std::to_string(c.getSrcComponentId()) + "." + std::to_string(c.getSrcSignalId()) +
           " -> " + std::to_string(c.getDstComponentId()) + "." +
           std::to_string(c.getDstSignalId());
}

}  // namespace

// ---- Build

TEST_F(ConnectionTest, BuildMakesAnElementWithTypedChildren) {
    Connection& connection = build(3, 0);

    sdf::Element& element = elementFor(3);
    EXPECT_EQ(connection.element().get(), &element);
    EXPECT_EQ(std::any_cast<unsigned long long>(element.get("source")->value()), (5ull << 32) | 7u);
    EXPECT_EQ(std::any_cast<unsigned long long>(element.get("destination")->value()),
              (6ull << 32) | 8u);
    EXPECT_EQ(std::any_cast<unsigned>(element.get("index")->value()), 0u);
    EXPECT_EQ(connection.id(), 3u);
    EXPECT_EQ(connection.objectType(), sdf::ObjectType::None);
    EXPECT_EQ(ends(connection), "5.7 -> 6.8");
    EXPECT_EQ(box().getConnection(3), &connection);
    EXPECT_EQ(log().notices(), Lines{});
}

TEST_F(ConnectionTest, BuildWithANegativeIndexMakesABinding) {
    for (const int index : {-1, -2, std::numeric_limits<int>::min()}) {
        const unsigned id = box().getNextSgConnId();
        Connection& binding = build(id, index);
        EXPECT_TRUE(binding.isBinding());
        EXPECT_EQ(binding.getIndex(), 4294967295u);
        EXPECT_NE(elementFor(id).get("source"), nullptr);
        EXPECT_NE(elementFor(id).get("destination"), nullptr);
        EXPECT_EQ(elementFor(id).get("index"), nullptr);
        EXPECT_EQ(box().getBinding(id), &binding);
    }
    EXPECT_EQ(orderOf(box()), Ids{});
}

TEST_F(ConnectionTest, SignalAndPropertyIdsAreOneAndTheSame) {
    const Connection& binding = build(3, -1);
    EXPECT_EQ(binding.getSrcPropertyId(), 7u);
    EXPECT_EQ(binding.getSrcPropertyId(), binding.getSrcSignalId());
    EXPECT_EQ(binding.getDstPropertyId(), 8u);
    EXPECT_EQ(binding.getDstPropertyId(), binding.getDstSignalId());
}

TEST_F(ConnectionTest, IdsOf32BitsArePackedWithoutLoss) {
    constexpr unsigned most = 4294967295u;
    Connection& c = *Connection::Build(&box(), 3, most, 0, 0, most, -1);
    EXPECT_EQ(ends(c), "4294967295.0 -> 0.4294967295");
    EXPECT_EQ(elementFor(3).asUInt64("source"), 0xFFFFFFFF00000000ull);
    EXPECT_EQ(elementFor(3).asUInt64("destination"), 0x00000000FFFFFFFFull);
    c.modify(most, most, most, most);
    EXPECT_EQ(elementFor(3).asUInt64("source"), 0xFFFFFFFFFFFFFFFFull);
    EXPECT_TRUE(c.matchSrc(most, most));
}

// ---- Create

TEST_F(ConnectionTest, CreateReadsEndsAndIndex) {
    const auto element = freshElement(3);
    element->touch("index")->setValue(0u);
    freshLog();
    const Connection& connection = *Connection::Create(&box(), element);
    EXPECT_EQ(ends(connection), "5.7 -> 6.8");
    EXPECT_EQ(connection.getIndex(), 0u);
    EXPECT_FALSE(connection.isBinding());
    EXPECT_EQ(connection.element(), element);
    EXPECT_EQ(log().lines(), Lines{});
}

TEST_F(ConnectionTest, WithoutAnIndexItIsABinding) {
    const Connection& binding = *Connection::Create(&box(), freshElement(3));
    EXPECT_TRUE(binding.isBinding());
    EXPECT_EQ(binding.getIndex(), 4294967295u);
    EXPECT_EQ(orderOf(box()), Ids{});
}

TEST_F(ConnectionTest, MissingEndsReadAs0) {
    const auto element = box().element()->append("connection")->setId(3);
    EXPECT_EQ(ends(*Connection::Create(&box(), element)), "0.0 -> 0.0");
    EXPECT_EQ(element->firstChild(), nullptr);
}

TEST_F(ConnectionTest, AnIndexOfAnotherTypeIsRefused) {
    unsigned id = 3;
    for (const std::any& index : {std::any(0), std::any(std::string("0")), std::any(0ull)}) {
        const auto element = freshElement(++id);
        element->touch("index")->setValue(index);
        expectThrow<std::bad_any_cast>([&] { Connection::Create(&box(), element); });
        EXPECT_FALSE(element->isMirrored());
    }
    EXPECT_EQ(tableOf(box()).size(), 0u);
    EXPECT_EQ(orderOf(box()), Ids{});
}

// ---- Ends in the document

TEST_F(ConnectionTest, TheComponentOfAnEndElementIsItsHighHalf) {
    build(3, 0);
    EXPECT_EQ(Connection::GetComponentId(elementFor(3).get("source")), 5u);
    EXPECT_EQ(Connection::GetComponentId(elementFor(3).get("destination")), 6u);
}

TEST_F(ConnectionTest, SetComponentId9KeepsTheSignalOfTheDestination) {
    const auto end = sdf::Element::Create("destination");
    end->setValue(packed({5, 7}));
    Connection::SetComponentId(end, 9);
    EXPECT_EQ(std::any_cast<unsigned long long>(end->value()), packed({9, 7}));
    Connection::SetComponentId(end, 4294967295u);
    EXPECT_EQ(end->asUInt64(""), packed({4294967295u, 7}));
}

TEST_F(ConnectionTest, SetComponentIdChangesTheDocumentOnly) {
    Connection& connection = build(3, 0);
    Connection::SetComponentId(elementFor(3).get("source"), 9);
    EXPECT_EQ(elementFor(3).asUInt64("source"), packed({9, 7}));
    EXPECT_EQ(connection.getSrcComponentId(), 5u);
    leaveUnchecked(box());
}

TEST_F(ConnectionTest, SetComponentIdOfAnEmptyEndPacksComponentAnd0) {
    const auto end = sdf::Element::Create("source");
    Connection::SetComponentId(end, 9);
    EXPECT_EQ(end->asUInt64(""), packed({9, 0}));
}

// ---- Matching

TEST_F(ConnectionTest, MatchingOneIdIgnoresTheSignal) {
    const Connection& connection = build(3, 0);
    EXPECT_TRUE(connection.matchSrc(5));
    EXPECT_FALSE(connection.matchSrc(6));
    EXPECT_FALSE(connection.matchSrc(7));
    EXPECT_TRUE(connection.matchDst(6));
    EXPECT_FALSE(connection.matchDst(5));
}

TEST_F(ConnectionTest, MatchingTwoIdsComparesBothAtOnce) {
    const Connection& connection = build(3, 0);
    EXPECT_TRUE(connection.matchSrc(5, 7));
    EXPECT_FALSE(connection.matchSrc(5, 8));
    EXPECT_FALSE(connection.matchSrc(7, 5));
    EXPECT_TRUE(connection.matchDst(6, 8));
    EXPECT_FALSE(connection.matchDst(6, 7));
    EXPECT_FALSE(connection.matchDst(5, 8));
}

// ---- Changing

TEST_F(ConnectionTest, ModifyWithUnchangedEndsTouchesNoElement) {
    Connection& connection = build(3, 0);
    freshLog();
    connection.modify(5, 7, 6, 8);
    EXPECT_EQ(log().writes(), Lines{});
}

TEST_F(ConnectionTest, ModifyWritesOnlyTheEndThatChanges) {
    Connection& connection = build(3, 0);
    freshLog();
    connection.modify(5, 70, 6, 8);
    EXPECT_EQ(log().writes(),
              Lines{"write Box/connection 3/source uint64 " + std::to_string(packed({5, 70}))});
    freshLog();
    connection.modify(5, 70, 60, 8);
    EXPECT_EQ(log().writes(), Lines{"write Box/connection 3/destination uint64 " +
                                    std::to_string(packed({60, 8}))});
    EXPECT_EQ(ends(connection), "5.70 -> 60.8");
}

TEST_F(ConnectionTest, ModifyWritesTheSourceBeforeTheDestination) {
    Connection& connection = build(3, -1);
    Lines seen;
    log().whenWritten = [&](sdf::Element& element) { seen.emplace_back(element.tag()); };
    connection.modify(1, 2, 3, 4);
    EXPECT_EQ(seen, (Lines{"source", "destination"}));
    EXPECT_EQ(ends(connection), "1.2 -> 3.4");
}

TEST_F(ConnectionTest, SettingThePresentIndexWritesNothing) {
    Connection& connection = build(3, 0);
    freshLog();
    connection.setIndex(0);
    EXPECT_EQ(log().writes(), Lines{});
    connection.setIndex(4);
    EXPECT_EQ(log().writes(), Lines{"write Box/connection 3/index uint 4"});
    EXPECT_EQ(connection.getIndex(), 4u);
    EXPECT_EQ(orderOf(box()), Ids{3}) << "the order is the caller's affair";
}

TEST_F(ConnectionTest, SettingTheIndexOfABindingCreatesTheChild) {
    leaveUnchecked(box());
    Connection& binding = build(3, -1);
    binding.setIndex(2);
    EXPECT_EQ(std::any_cast<unsigned>(elementFor(3).get("index")->value()), 2u);
    EXPECT_FALSE(binding.isBinding());
    EXPECT_EQ(orderOf(box()), Ids{});
}

// ---- Copies and the end

TEST_F(ConnectionTest, ACopyHasTheEndsTheIndexAndTheElement) {
    Connection& connection = build(3, 0);
    Connection copy = connection;
    EXPECT_EQ(ends(copy), "5.7 -> 6.8");
    EXPECT_EQ(copy.getIndex(), 0u);
    EXPECT_EQ(copy.element(), connection.element());

    Connection moved = std::move(copy);
    EXPECT_EQ(ends(moved), "5.7 -> 6.8");

    Connection assigned = build(4, -1);
    assigned = connection;
    EXPECT_EQ(assigned.getIndex(), 0u);
    EXPECT_EQ(assigned.id(), 3u);
    Connection moveAssigned = *box().getBinding(4);
    moveAssigned = std::move(moved);
    EXPECT_EQ(ends(moveAssigned), "5.7 -> 6.8");
    EXPECT_EQ(moveAssigned.getIndex(), 0u);
    EXPECT_EQ(box().getConnection(3), &connection);
}

TEST_F(ConnectionTest, DestroyingAConnectionLeavesItsElement) {
    const Connection& connection = build(3, 0);
    { const Connection copy = connection; }
    EXPECT_EQ(elementOf(box(), "connection", 3), connection.element());
}

}  // namespace trel::test
