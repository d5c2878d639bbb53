#include "platform/sdf/SdfContainer.h"

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <vector>

#include "platform/sdf/SdfManager.h"
#include "tests/platform/LeastTime.h"

namespace {

using sdf::Element;
using sdf::SdfContainer;
using sdf::SdfObject;
using Ids = std::vector<unsigned>;

class Container : public testing::Test {
protected:
    ~Container() override {
        for (const auto& [id, object] : objects_) sdf::SdfManager::Remove(id);
    }

    SdfContainer& container(unsigned id) {
        auto& object = objects_[id];
        if (!object) {
            auto element = Element::Create("smart_component");
            element->setId(id);
            object = std::make_unique<SdfContainer>(element, sdf::ObjectType::Component);
            sdf::SdfManager::inst()->objects()[id] = object.get();
        }
        return *object;
    }

    void destroy(unsigned id) {
        sdf::SdfManager::Remove(id);
        objects_.erase(id);
    }

    static Ids childrenInDocument(const SdfContainer& c) {
        Ids ids;
        for (const auto& child : c.element()->children("child")) ids.push_back(child->asUInt(""));
        return ids;
    }

    // The ids of those asked, in the order of asking.
    static Ids asked(unsigned from, bool itself) {
        Ids ids;
        SdfObject::AnyOfDescendant(
            from,
            [&](const SdfObject* object) {
                ids.push_back(object->id());
                return false;
            },
            itself);
        return ids;
    }

private:
    std::map<unsigned, std::unique_ptr<SdfContainer>> objects_;
};

TEST_F(Container, AChildIsAnUnsignedNumberInTheDocument) {
    container(1).addObjChildWithSdf(4294967295u);
    const auto child = container(1).element()->get("child");
    ASSERT_NE(child, nullptr);
    EXPECT_EQ(std::any_cast<unsigned>(child->value()), 4294967295u);
    EXPECT_TRUE(container(1).hasObjChild(4294967295u));
}

TEST_F(Container, AddingAChildTwiceLeavesOne) {
    container(1).addObjChildWithSdf(2);
    container(1).addObjChildWithSdf(2);
    EXPECT_EQ(childrenInDocument(container(1)), Ids{2});
    container(1).removeObjChildWithSdf(2);
    EXPECT_FALSE(container(1).hasObjChild(2));
    EXPECT_TRUE(childrenInDocument(container(1)).empty());
}

TEST_F(Container, ASecondElementForOneChildIsPassedOver) {
    for (const unsigned id : {5u, 5u}) {
        const auto child = container(1).element()->append("child");
        child->setValue(id);
        container(1).addObjChild(child);
    }
    EXPECT_EQ(childrenInDocument(container(1)), (Ids{5, 5}));
    container(1).removeObjChildWithSdf(5);
    EXPECT_EQ(childrenInDocument(container(1)), Ids{5});
    EXPECT_FALSE(container(1).hasObjChild(5));
}

TEST_F(Container, RemovingWhatIsNoChildDoesNothing) {
    container(1).addObjChildWithSdf(2);
    container(1).removeObjChildWithSdf(3);
    EXPECT_EQ(childrenInDocument(container(1)), Ids{2});
}

TEST_F(Container, MovesAChildToAPlace) {
    for (const unsigned id : {2u, 3u, 4u, 5u}) container(1).addObjChildWithSdf(id);
    container(1).moveChild(4, 0);
    EXPECT_EQ(childrenInDocument(container(1)), (Ids{4, 2, 3, 5}));
    container(1).moveChild(4, 2);
    EXPECT_EQ(childrenInDocument(container(1)), (Ids{2, 3, 4, 5}));
    container(1).moveChild(2, 3);
    EXPECT_EQ(childrenInDocument(container(1)), (Ids{3, 4, 5, 2}));
    container(1).moveChild(3, 99);
    EXPECT_EQ(childrenInDocument(container(1)), (Ids{4, 5, 2, 3}));
    container(1).moveChild(5, 1);
    container(1).moveChild(77, 0);
    EXPECT_EQ(childrenInDocument(container(1)), (Ids{4, 5, 2, 3}));
}

TEST_F(Container, AsksItsChildrenInTheirOrder) {
    for (const unsigned id : {2u, 3u, 4u}) {
        container(id);
        container(1).addObjChildWithSdf(id);
    }
    container(1).moveChild(4, 0);
    EXPECT_EQ(asked(1, true), (Ids{1, 4, 2, 3}));
    EXPECT_EQ(asked(1, false), (Ids{4, 2, 3}));
}

TEST_F(Container, OfTheDocumentsOrderOnlyItsOwnChildrenCount) {
    for (const unsigned id : {2u, 3u, 4u}) {
        container(id);
        container(1).addObjChildWithSdf(id);
    }
    const auto children = container(1).element()->children("child");
    container(1).element()->append("child")->setValue(4u);  // taken in by nobody
    container(1).element()->append(children[0]);
    EXPECT_EQ(asked(1, false), (Ids{3, 4, 2}));
    container(1).moveChild(2, 1);
    EXPECT_EQ(childrenInDocument(container(1)), (Ids{3, 2, 4, 4}));
}

//   1 -> 2 -> 3
//   1 -> 4
TEST_F(Container, AsksDescendantsDepthFirst) {
    container(1).addObjChildWithSdf(2);
    container(1).addObjChildWithSdf(4);
    container(2).addObjChildWithSdf(3);
    container(3), container(4);
    EXPECT_EQ(asked(1, true), (Ids{1, 2, 3, 4}));
}

TEST_F(Container, TheSearchEndsAtTheFirstHit) {
    container(1).addObjChildWithSdf(2);
    container(1).addObjChildWithSdf(3);
    container(2), container(3);
    Ids ids;
    EXPECT_TRUE(SdfObject::AnyOfDescendant(
        1,
        [&](const SdfObject* object) {
            ids.push_back(object->id());
            return object->id() == 2;
        },
        true));
    EXPECT_EQ(ids, (Ids{1, 2}));
}

//   1 -> 2 -> 3 -> 1
TEST_F(Container, AsksEachOnceInARing) {
    container(1).addObjChildWithSdf(2);
    container(2).addObjChildWithSdf(3);
    container(3).addObjChildWithSdf(1);
    EXPECT_EQ(asked(1, true), (Ids{1, 2, 3}));
    EXPECT_EQ(asked(2, true), (Ids{2, 3, 1}));
    EXPECT_EQ(asked(1, false), (Ids{2, 3}));
}

TEST_F(Container, AChildThatIsNotInTheTableIsPassedOver) {
    container(1).addObjChildWithSdf(2);
    container(1).addObjChildWithSdf(3);
    container(3);
    EXPECT_EQ(asked(1, false), Ids{3});
}

TEST_F(Container, ThePredicateMayRemoveWhatItIsAskedAbout) {
    container(1).addObjChildWithSdf(2);
    container(1).addObjChildWithSdf(3);
    container(2).addObjChildWithSdf(4);
    container(3), container(4);
    Ids ids;
    EXPECT_FALSE(SdfObject::AnyOfDescendant(
        1,
        [&](const SdfObject* object) {
            ids.push_back(object->id());
            if (ids.back() == 2) destroy(2);
            return false;
        },
        false));
    EXPECT_EQ(ids, (Ids{2, 3}));
}

TEST_F(Container, ALongLineOfDescendantsDoesNotRecurse) {
    for (unsigned id = 1; id < 100000; ++id) container(id).addObjChildWithSdf(id + 1);
    container(100000);
    EXPECT_EQ(asked(1, true).size(), 100000u);
}

TEST_F(Container, ACopyHasTheChildrenInATableOfItsOwn) {
    container(1).addObjChildWithSdf(2);
    container(1).addObjChildWithSdf(3);
    SdfContainer copy(container(1));
    SdfContainer assigned(container(9));
    assigned = copy;
    copy.removeObjChildWithSdf(2);
    EXPECT_FALSE(copy.hasObjChild(2));
    EXPECT_TRUE(copy.hasObjChild(3));
    EXPECT_TRUE(container(1).hasObjChild(2));
    EXPECT_TRUE(assigned.hasObjChild(2));
    EXPECT_EQ(assigned.id(), 1u);
}

TEST_F(Container, KeepsItsChildrenWhenItIsAssignedToItself) {
    container(1).addObjChildWithSdf(2);
    container(1).addObjChildWithSdf(3);
    const SdfContainer& itself = container(1);
    container(1) = itself;
    container(1).removeObjChildWithSdf(2);
    EXPECT_FALSE(container(1).hasObjChild(2));
    EXPECT_TRUE(container(1).hasObjChild(3));
    EXPECT_EQ(childrenInDocument(container(1)), Ids{3});
}

TEST(ContainerCost, RemovingAChildDoesNotGrowWithTheirNumber) {
    struct Family {
        std::unique_ptr<SdfContainer> parent;
        unsigned middle;
    };
    const auto family = [](unsigned size) {
        return [size] {
            Family made{std::make_unique<SdfContainer>(Element::Create("smart_component"),
                                                       sdf::ObjectType::Component),
                        size / 2};
            for (unsigned id = 1; id <= size; ++id) made.parent->addObjChildWithSdf(id);
            return made;
        };
    };
    const auto removeSome = [](Family& f) {
        for (unsigned i = 0; i < 900; ++i) f.parent->removeObjChildWithSdf(f.middle + i);
    };
    const double few = trel::test::leastTime(family(2000), removeSome);
    const double many = trel::test::leastTime(family(200000), removeSome);
    // Scattered memory alone costs some times as much, looking through all of them a hundred
    // times.
    EXPECT_LT(many, 10 * trel::test::generous * few);
}

}  // namespace
