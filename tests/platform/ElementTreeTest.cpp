#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "platform/sdf/Element.h"
#include "tests/platform/LeastTime.h"
#include "tests/support/Expect.h"

namespace {

using sdf::Element;
using trel::test::expectThrow;
using trel::test::generous;
using trel::test::leastTime;
using Row = std::vector<std::shared_ptr<Element>>;

Row rowOf(const Element& e) {
    Row row;
    for (const Element* c = e.firstChild(); c; c = c->nextSibling())
        row.push_back(const_cast<Element*>(c)->shared_from_this());
    return row;
}

TEST(ElementTree, ChildrenComeInDocumentOrder) {
    const auto e = Element::Create("cell");
    const auto a = e->append("signal");
    e->append("property");
    const auto b = e->append("signal");
    EXPECT_EQ(e->children("signal"), (Row{a, b}));
    EXPECT_TRUE(e->children("connection").empty());
}

TEST(ElementTree, ChildrenStandAsTheyStoodAtTheCall) {
    const auto e = Element::Create("cell");
    for (int i = 0; i < 30; ++i) e->append("signal");
    std::size_t visited = 0;
    for (const auto& signal : e->children("signal")) {
        signal->removeFromParent();
        e->append("signal");
        ++visited;
    }
    EXPECT_EQ(visited, 30u);
    EXPECT_EQ(e->children("signal").size(), 30u);
}

TEST(ElementTree, AppendTakesAnElementOutOfItsOldPlace) {
    const auto from = Element::Create("from");
    const auto to = Element::Create("to");
    const auto child = from->append("child");
    EXPECT_EQ(to->append(child), child);
    EXPECT_EQ(child->parent(), to);
    EXPECT_EQ(from->firstChild(), nullptr);

    const auto last = to->append("last");
    to->append(child);
    EXPECT_EQ(rowOf(*to), (Row{last, child}));
}

TEST(ElementTree, AnElementTakenOutLivesOnAndComesBackLast) {
    const auto e = Element::Create("cell");
    const auto first = e->append("signal");
    const auto second = e->append("signal");
    first->touch("unit")->setValue(std::string("mm"));
    first->removeFromParent();
    EXPECT_EQ(first->parent(), nullptr);
    EXPECT_EQ(rowOf(*e), Row{second});
    first->removeFromParent();
    e->append(first);
    EXPECT_EQ(rowOf(*e), (Row{second, first}));
    EXPECT_EQ(first->asString("unit"), "mm");
}

TEST(ElementTree, NoElementStandsInsideItself) {
    const auto a = Element::Create("a");
    const auto c = a->append("b")->append("c");
    expectThrow<std::invalid_argument>("a cannot stand inside itself", [&] { c->append(a); });
    expectThrow<std::invalid_argument>("a cannot stand inside itself", [&] { a->append(a); });
    expectThrow<std::invalid_argument>("a/b cannot stand inside itself",
                                       [&] { c->append(a->get("b")); });
    EXPECT_EQ(c->parent()->parent(), a);
    EXPECT_EQ(a->parent(), nullptr);
}

TEST(ElementTree, ANullElementIsRefused) {
    const auto a = Element::Create("a");
    expectThrow<std::invalid_argument>("a null element cannot be appended to a",
                                       [&] { a->append(std::shared_ptr<Element>()); });
    EXPECT_EQ(a->firstChild(), nullptr);
}

TEST(ElementTree, ChildrenOfAGoneParentStandAlone) {
    auto parent = Element::Create("parent");
    const auto first = parent->append("child");
    const auto second = parent->append("child");
    const auto inner = second->append("inner");
    parent.reset();
    EXPECT_EQ(first->parent(), nullptr);
    EXPECT_EQ(first->nextSibling(), nullptr);
    EXPECT_EQ(inner->parent(), second);
    first->append(second);
    EXPECT_EQ(second->parent(), first);
}

TEST(ElementTree, AHeldGrandchildOutlivesTheTree) {
    auto root = Element::Create("root");
    const auto inner = root->append("child")->append("inner");
    inner->append("leaf");
    root.reset();
    EXPECT_EQ(inner->parent(), nullptr);
    EXPECT_EQ(inner->firstChild()->tag(), "leaf");
}

TEST(ElementTree, MoveBeforeKeepsTheRestInOrder) {
    const auto e = Element::Create("cell");
    const auto a = e->append("a"), b = e->append("b"), c = e->append("c");
    e->moveBefore(*c, a.get());
    EXPECT_EQ(rowOf(*e), (Row{c, a, b}));
    e->moveBefore(*c, nullptr);
    EXPECT_EQ(rowOf(*e), (Row{a, b, c}));
    e->moveBefore(*a, b.get());
    e->moveBefore(*b, b.get());
    EXPECT_EQ(rowOf(*e), (Row{a, b, c}));
}

// Whatever happened before, with few children and with many, the tree answers
// as a plain list of children would. Instructions are no children by tag.
TEST(ElementTree, AnswersAsAPlainListWould) {
    std::mt19937 random(7);
    const auto below = [&](std::size_t n) { return random() % n; };
    const auto e = Element::Create("cell");
    Row model;
    std::size_t most = 0;
    for (int step = 0; step < 20000; ++step) {
        const std::string tag(1, static_cast<char>('a' + below(4)));
        const bool grows = model.size() < (step / 2000 % 2 ? 8 : 60);
        if (model.empty() || (grows && below(3) == 0)) {
            const auto isInstruction = below(5) == 0;
            model.push_back(isInstruction ? e->append(Element::CreateNote(
                                                Element::Kind::Instruction, tag, "do"))
                                          : e->append(tag));
        } else if (below(3) == 0) {
            const auto gone = model.begin() + static_cast<long>(below(model.size()));
            (*gone)->removeFromParent();
            if (below(2) == 0) {
                e->append(*gone);
                std::rotate(gone, gone + 1, model.end());
            } else {
                model.erase(gone);
            }
        } else if (!model.empty()) {
            const auto child = model[below(model.size())];
            const auto next = below(5) == 0 ? nullptr : model[below(model.size())];
            e->moveBefore(*child, next.get());
            if (child != next) {
                std::erase(model, child);
                model.insert(std::find(model.begin(), model.end(), next), child);
            }
        }
        most = std::max(most, model.size());
        Row alike;
        for (const auto& child : model)
            if (child->tag() == tag && child->kind() == Element::Kind::Element)
                alike.push_back(child);
        ASSERT_EQ(e->children(tag), alike) << "in step " << step;
        ASSERT_EQ(e->get(tag), alike.empty() ? nullptr : alike.front());
        ASSERT_EQ(rowOf(*e), model);
    }
    EXPECT_GT(most, 30u) << "the row was never long enough for an index";
}

TEST(ElementTree, AMillionSiblingsAreDestroyedWithoutRecursion) {
    auto e = Element::Create("root");
    for (int i = 0; i < 1000000; ++i) e->append("child");
    const std::weak_ptr<Element> last = e->append("last");
    e.reset();
    EXPECT_TRUE(last.expired());
}

TEST(ElementTree, AHundredThousandLevelsAreDestroyedWithoutRecursion) {
    auto e = Element::Create("root");
    auto deepest = e;
    for (int i = 0; i < 100000; ++i) deepest = deepest->append("child");
    const std::weak_ptr<Element> end = deepest;
    deepest.reset();
    e.reset();
    EXPECT_TRUE(end.expired());
}

struct LongRow {
    std::shared_ptr<Element> parent;
    Row middle;  // a thousand children to be taken out
};

LongRow longRow(std::size_t size) {
    LongRow row{Element::Create("root"), {}};
    for (std::size_t i = 0; i < size; ++i) {
        const auto child = row.parent->append("smart_component");
        if (i >= size / 2 && row.middle.size() < 1000) row.middle.push_back(child);
    }
    row.parent->append("last_key");
    return row;
}

TEST(ElementCost, FindingAKeyDoesNotGrowWithItsSiblings) {
    const auto find = [](LongRow& row) {
        for (int i = 0; i < 20000; ++i)
            if (!row.parent->get("last_key") || row.parent->get("missing")) std::abort();
    };
    const double few = leastTime([] { return longRow(2000); }, find);
    const double many = leastTime([] { return longRow(200000); }, find);
    EXPECT_LT(many, generous * few);
}

TEST(ElementCost, TakingAChildOutDoesNotGrowWithItsSiblings) {
    const auto takeOut = [](LongRow& row) {
        for (const auto& child : row.middle) child->removeFromParent();
    };
    const double few = leastTime([] { return longRow(2000); }, takeOut);
    const double many = leastTime([] { return longRow(200000); }, takeOut);
    EXPECT_LT(many, generous * few);
}

TEST(ElementCost, TakingTheFirstOfItsTagOutDoesNotGrowWithItsSiblings) {
    const auto mixedRow = [](std::size_t size) {
        LongRow row{Element::Create("root"), {}};
        for (std::size_t i = 0; i < size; ++i) {
            row.parent->append("connection");
            const auto child = row.parent->append("smart_component");
            if (row.middle.size() < 1000) row.middle.push_back(child);
        }
        return row;
    };
    const auto takeOut = [](LongRow& row) {
        for (const auto& child : row.middle) child->removeFromParent();
    };
    const double few = leastTime([&] { return mixedRow(2000); }, takeOut);
    const double many = leastTime([&] { return mixedRow(200000); }, takeOut);
    EXPECT_LT(many, generous * few);
}

TEST(ElementCost, AppendingDoesNotGrowWithTheSiblings) {
    const auto append = [](LongRow& row) {
        for (int i = 0; i < 1000; ++i) row.parent->append("smart_component");
    };
    const double few = leastTime([] { return longRow(2000); }, append);
    const double many = leastTime([] { return longRow(200000); }, append);
    EXPECT_LT(many, generous * few);
}

}  // namespace
