#include <any>
#include <memory>
#include <stdexcept>

#include "tests/smartcomp/Cell.h"

namespace trel::test {

namespace {

// Signal connections in the delivery order of a box: insertion, deletion, moves.
class ConnectionOrderTest : public CellTest {
protected:
    void SetUp() override {
        CellTest::SetUp();
        box_ = &Draft("Box", 10, "Box").make<Box>();
        freshLog();
    }
    Box& box() { return *box_; }

    Connection& build(unsigned id, int index) {
        return *Connection::Build(box_, id, 10, id, 11, id, index);
    }
    // Connections 1, 2 and 3 at the places 0, 1 and 2.
    void buildThree() {
        for (const int id : {1, 2, 3}) build(static_cast<unsigned>(id), id - 1);
        freshLog();
    }
    unsigned indexOf(unsigned id) { return box_->getConnection(id)->getIndex(); }
    unsigned indexInDocument(unsigned id) {
        return elementOf(*box_, "connection", id)->asUInt("index");
    }
    // The indices of these connections, which the document has too.
    Ids indicesOf(const Ids& ids) {
        Ids found;
        for (const unsigned id : ids) {
            EXPECT_EQ(indexOf(id), indexInDocument(id));
            found.push_back(indexOf(id));
        }
        return found;
    }
    void expectUnmovable(unsigned id) {
        freshLog();
        const Ids before = orderOf(*box_);
        expectThrow<std::out_of_range>(noPlace, [&] { box_->moveSgConnOrderForward(id); });
        expectThrow<std::out_of_range>(noPlace, [&] { box_->moveSgConnOrderBackward(id); });
        EXPECT_EQ(orderOf(*box_), before);
        EXPECT_EQ(log().writes(), Lines{});
    }

private:
    Box* box_ = nullptr;
};

}  // namespace

// ---- Insertion

TEST_F(ConnectionOrderTest, AConnectionAtTheFrontMovesThreeBack) {
    buildThree();
    build(4, 0);
    EXPECT_EQ(orderOf(box()), (Ids{4, 1, 2, 3}));
    EXPECT_EQ(indicesOf({4, 1, 2, 3}), (Ids{0, 1, 2, 3}));
}

TEST_F(ConnectionOrderTest, AConnectionInTheMiddleMovesOnlyThoseBehind) {
    buildThree();
    build(4, 1);
    EXPECT_EQ(orderOf(box()), (Ids{1, 4, 2, 3}));
    EXPECT_EQ(indicesOf({1, 4, 2, 3}), (Ids{0, 1, 2, 3}));
    EXPECT_EQ(log().startingWith("write Box/connection 1/"), Lines{});
}

TEST_F(ConnectionOrderTest, AConnectionAtTheEndMovesNone) {
    buildThree();
    build(4, 3);
    EXPECT_EQ(orderOf(box()), (Ids{1, 2, 3, 4}));
    EXPECT_EQ(log().writes().size(), 3u) << "only its own source, destination and index";
}

TEST_F(ConnectionOrderTest, AnIndexBeyondTheEndStandsLastAndIsKept) {
    build(1, 0);
    build(2, 5);
    EXPECT_EQ(orderOf(box()), (Ids{1, 2}));
    EXPECT_EQ(indicesOf({1, 2}), (Ids{0, 5}));
}

TEST_F(ConnectionOrderTest, AnIdThatTheTableDoesNotHoldStopsAnInsertion) {
    leaveUnchecked(box());
    build(1, 0);
    orderOf(box()).push_back(noSuchId);
    expectThrow<std::out_of_range>(noKey, [&] { build(2, 0); });
    EXPECT_EQ(indexInDocument(1), 1u) << "what was moved before stays moved";
}

TEST_F(ConnectionOrderTest, BindingsStandInNoOrder) {
    buildThree();
    build(4, -1);
    EXPECT_EQ(orderOf(box()), (Ids{1, 2, 3}));
    EXPECT_EQ(indicesOf({1, 2, 3}), (Ids{0, 1, 2}));
}

//   1 -> lost, 2 taken again       before: 1 2 3     after: 2 1 3
TEST_F(ConnectionOrderTest, AConnectionUnderATakenIdReplacesTheOneThatHadIt) {
    buildThree();
    const std::unique_ptr<Connection> lost(box().getConnection(2));
    build(2, 0);
    EXPECT_EQ(orderOf(box()), (Ids{2, 1, 3}));
    EXPECT_EQ(indicesOf({1, 3}), (Ids{1, 2}));
    EXPECT_EQ(indexOf(2), 0u);
    EXPECT_EQ(box().element()->children("connection").size(), 4u) << "the lost one's stays";
    EXPECT_EQ(box().getNextSgConnId(), 4u);
}

TEST_F(ConnectionOrderTest, ABindingUnderATakenIdClosesTheGap) {
    buildThree();
    const std::unique_ptr<Connection> lost(box().getConnection(2));
    build(2, -1);
    EXPECT_EQ(orderOf(box()), (Ids{1, 3}));
    EXPECT_EQ(indicesOf({1, 3}), (Ids{0, 1}));
    EXPECT_TRUE(box().getBinding(2));
    const std::unique_ptr<Connection> lostToo(box().getBinding(2));
    build(2, -1);
    EXPECT_EQ(orderOf(box()), (Ids{1, 3})) << "a binding leaves no gap";
}

// ---- Deletion

TEST_F(ConnectionOrderTest, DeletingTheSecondOfThreeRenumbersTheThirdOnly) {
    buildThree();
    const ElementPtr element = elementOf(box(), "connection", 2);

    box().deleteConnection(2);

    EXPECT_EQ(orderOf(box()), (Ids{1, 3}));
    EXPECT_EQ(indicesOf({1, 3}), (Ids{0, 1}));
    EXPECT_EQ(log().lines(), Lines{"write Box/connection 3/index uint 1"});
    EXPECT_EQ(elementOf(box(), "connection", 2), element) << "its element stays";
    EXPECT_FALSE(element->isMirrored());
    EXPECT_EQ(element->asUInt("index"), 1u);
    expectThrow<std::out_of_range>(noKey, [&] { box().getConnection(2); });
}

TEST_F(ConnectionOrderTest, DeletingTheFirstRenumbersAllOthers) {
    buildThree();
    box().deleteConnection(1);
    EXPECT_EQ(orderOf(box()), (Ids{2, 3}));
    EXPECT_EQ(indicesOf({2, 3}), (Ids{0, 1}));
}

TEST_F(ConnectionOrderTest, DeletingTheLastRenumbersNone) {
    buildThree();
    box().deleteConnection(3);
    EXPECT_EQ(orderOf(box()), (Ids{1, 2}));
    EXPECT_EQ(log().lines(), Lines{});
}

TEST_F(ConnectionOrderTest, DeletingABindingRenumbersNone) {
    buildThree();
    build(4, -1);
    freshLog();
    box().deleteBinding(4);
    EXPECT_EQ(orderOf(box()), (Ids{1, 2, 3}));
    EXPECT_EQ(log().lines(), Lines{});
    expectThrow<std::out_of_range>(noKey, [&] { box().getBinding(4); });
    EXPECT_NE(elementOf(box(), "connection", 4), nullptr);
}

TEST_F(ConnectionOrderTest, DeleteBindingAndDeleteConnectionAreOneOperation) {
    buildThree();
    build(4, -1);
    box().deleteConnection(4);
    box().deleteBinding(1);
    EXPECT_EQ(orderOf(box()), (Ids{2, 3}));
    EXPECT_EQ(indicesOf({2, 3}), (Ids{0, 1}));
}

TEST_F(ConnectionOrderTest, DeletingAnUnknownConnectionChangesNothing) {
    buildThree();
    expectThrow<std::out_of_range>(noKey, [&] { box().deleteConnection(noSuchId); });
    expectThrow<std::out_of_range>(noKey, [&] { box().deleteBinding(noSuchId); });
    EXPECT_EQ(orderOf(box()), (Ids{1, 2, 3}));
    EXPECT_EQ(log().lines(), Lines{});
}

// Connection 2 was made with index 5 and stands at place 1.
TEST_F(ConnectionOrderTest, AConnectionBeyondTheEndIsDeletedWhereItStands) {
    build(1, 0);
    build(2, 5);
    build(3, 2);
    box().deleteConnection(2);
    EXPECT_EQ(orderOf(box()), (Ids{1, 3}));
    EXPECT_EQ(indicesOf({1, 3}), (Ids{0, 1}));
}

TEST_F(ConnectionOrderTest, AConnectionOneBehindTheEndIsDeletedWhereItStands) {
    build(1, 0);
    build(2, 2);
    box().deleteConnection(2);
    EXPECT_EQ(orderOf(box()), Ids{1});
    EXPECT_EQ(indicesOf({1}), Ids{0});
}

TEST_F(ConnectionOrderTest, AConnectionBeyondTheEndMovesUpByItsPlace) {
    build(1, 0);
    build(2, 5);
    box().deleteConnection(1);
    EXPECT_EQ(orderOf(box()), Ids{2});
    EXPECT_EQ(indicesOf({2}), Ids{0});
}

// It is in the table as a signal connection and stands in no order.
TEST_F(ConnectionOrderTest, ABindingThatWasGivenAnIndexIsDeletedFromNoPlace) {
    buildThree();
    build(4, -1).setIndex(1);
    box().deleteConnection(4);
    EXPECT_EQ(orderOf(box()), (Ids{1, 2, 3}));
    EXPECT_EQ(indicesOf({1, 2, 3}), (Ids{0, 1, 2}));
    EXPECT_EQ(tableOf(box()).size(), 3u);
}

// ---- Moves

TEST_F(ConnectionOrderTest, MovingBackwardSwapsWithTheNextOne) {
    buildThree();
    box().moveSgConnOrderBackward(1);
    EXPECT_EQ(orderOf(box()), (Ids{2, 1, 3}));
    EXPECT_EQ(indicesOf({2, 1, 3}), (Ids{0, 1, 2}));
    EXPECT_EQ(log().lines(), (Lines{"write Box/connection 1/index uint 1",
                                    "write Box/connection 2/index uint 0"}));
}

TEST_F(ConnectionOrderTest, MovingForwardSwapsWithThePreviousOne) {
    buildThree();
    box().moveSgConnOrderForward(3);
    EXPECT_EQ(orderOf(box()), (Ids{1, 3, 2}));
    EXPECT_EQ(indicesOf({1, 3, 2}), (Ids{0, 1, 2}));
    EXPECT_EQ(log().lines(), (Lines{"write Box/connection 3/index uint 1",
                                    "write Box/connection 2/index uint 2"}));
}

TEST_F(ConnectionOrderTest, TheFirstCannotMoveForward) {
    buildThree();
    expectThrow<std::out_of_range>(noPlace, [&] { box().moveSgConnOrderForward(1); });
    EXPECT_EQ(orderOf(box()), (Ids{1, 2, 3}));
    EXPECT_EQ(log().lines(), Lines{});
}

TEST_F(ConnectionOrderTest, TheLastCannotMoveBackward) {
    buildThree();
    expectThrow<std::out_of_range>(noPlace, [&] { box().moveSgConnOrderBackward(3); });
    EXPECT_EQ(orderOf(box()), (Ids{1, 2, 3}));
    EXPECT_EQ(log().lines(), Lines{});
}

TEST_F(ConnectionOrderTest, TheOnlyOneCannotMove) {
    build(1, 0);
    expectUnmovable(1);
}

TEST_F(ConnectionOrderTest, AConnectionOneBehindTheEndCannotMove) {
    build(1, 0);
    build(2, 2);
    expectUnmovable(2);
}

TEST_F(ConnectionOrderTest, ABindingCannotMove) {
    buildThree();
    build(4, -1);
    expectUnmovable(4);
}

TEST_F(ConnectionOrderTest, AConnectionWhoseIndexIsNotItsPlaceCannotMove) {
    buildThree();
    build(4, 9);
    expectUnmovable(4);
}

// 2 stands at place 1 with index 2, where 3 stands.
TEST_F(ConnectionOrderTest, AnIndexThatIsAnothersPlaceCannotMoveEither) {
    leaveUnchecked(box());
    buildThree();
    box().getConnection(2)->setIndex(2);
    expectUnmovable(2);
}

TEST_F(ConnectionOrderTest, MovingAnUnknownConnectionThrows) {
    buildThree();
    expectThrow<std::out_of_range>(noKey, [&] { box().moveSgConnOrderForward(noSuchId); });
    expectThrow<std::out_of_range>(noKey, [&] { box().moveSgConnOrderBackward(noSuchId); });
    EXPECT_EQ(orderOf(box()), (Ids{1, 2, 3}));
}

TEST_F(ConnectionOrderTest, MovesAndTheirOppositesCancelOut) {
    buildThree();
    box().moveSgConnOrderBackward(1);
    box().moveSgConnOrderBackward(1);
    EXPECT_EQ(orderOf(box()), (Ids{2, 3, 1}));
    box().moveSgConnOrderForward(1);
    box().moveSgConnOrderForward(1);
    EXPECT_EQ(orderOf(box()), (Ids{1, 2, 3}));
    EXPECT_EQ(indicesOf({1, 2, 3}), (Ids{0, 1, 2}));
}

}  // namespace trel::test
