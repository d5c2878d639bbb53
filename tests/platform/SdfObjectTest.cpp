#include "platform/sdf/SdfObject.h"

#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>

#include "platform/layout/AttachableNode.h"
#include "platform/sdf/SdfManager.h"
#include "platform/sdf/SdfNode.h"
#include "tests/platform/WriteLog.h"

namespace {

using sdf::Element;
using sdf::ObjectType;
using sdf::SdfNode;
using sdf::SdfObject;
using trel::test::WriteLog;
using Lines = std::vector<std::string>;
using Pose = trel::rob::PoseTemplate<double>;

std::shared_ptr<Element> elementWith(unsigned id) {
    auto e = Element::Create("smart_component");
    e->setId(id);
    e->setName("Gripper");
    return e;
}

TEST(SdfObject, TakesIdAndNameFromItsElement) {
    const auto element = elementWith(7);
    const SdfObject object(element, ObjectType::Sensor);
    EXPECT_EQ(object.id(), 7u);
    EXPECT_EQ(object.name(), "Gripper");
    EXPECT_EQ(object.getDisplayString(), "Gripper");
    EXPECT_EQ(object.element(), element);
    EXPECT_EQ(object.objectType(), ObjectType::Sensor);
    EXPECT_TRUE(object.asType(ObjectType::Sensor));
    EXPECT_FALSE(object.asType(ObjectType::Component));
    EXPECT_EQ(object.getObjParentId(), 0u);
}

TEST(SdfObject, HasTheIdZeroWithoutOne) {
    EXPECT_EQ(SdfObject(Element::Create("property"), ObjectType::None).id(), 0u);
}

TEST(SdfObject, NeedsAnElement) {
    EXPECT_THROW(SdfObject(nullptr, ObjectType::None), std::invalid_argument);
}

TEST(SdfObject, WritesItsNameIntoTheElement) {
    SdfObject object(elementWith(7), ObjectType::Component);
    object.setName("Lamp");
    EXPECT_EQ(object.name(), "Lamp");
    EXPECT_EQ(object.element()->name(), "Lamp");
}

TEST(SdfObject, ACopyMirrorsTheSameElement) {
    const auto element = elementWith(7);
    {
        const SdfObject object(element, ObjectType::Component);
        SdfObject other(elementWith(8), ObjectType::None);
        other = object;
        const SdfObject copy(object);
        EXPECT_EQ(other.element(), element);
        EXPECT_EQ(other.id(), 7u);
        EXPECT_EQ(copy.objectType(), ObjectType::Component);
    }
    EXPECT_FALSE(element->isMirrored());
}

TEST(SdfObject, ItsOnlyDescendantIsItself) {
    const SdfObject object(elementWith(7), ObjectType::Component);
    const auto always = [](const SdfObject*) { return true; };
    EXPECT_TRUE(object.anyOfDescendant(always, true));
    EXPECT_FALSE(object.anyOfDescendant(always, false));
    EXPECT_FALSE(object.anyOfDescendant([](const SdfObject*) { return false; }, true));
}

TEST(SdfObject, ASearchFromAnUnknownIdFindsNothing) {
    EXPECT_FALSE(SdfObject::AnyOfDescendant(7, [](const SdfObject*) { return true; }, true));
}

TEST(SdfObject, ASearchFromAnIdAsksTheObjectItselfIfTold) {
    SdfObject object(elementWith(7), ObjectType::Component);
    sdf::SdfManager::inst()->objects()[7] = &object;
    const auto isIt = [&](const SdfObject* o) { return o == &object; };
    EXPECT_TRUE(SdfObject::AnyOfDescendant(7, isIt, true));
    EXPECT_FALSE(SdfObject::AnyOfDescendant(7, isIt, false));
    sdf::SdfManager::Remove(7);
}

TEST(SdfNode, StandsUnturnedAtTheOriginWithoutAPose) {
    const SdfNode node(elementWith(7), ObjectType::Component);
    EXPECT_EQ(node.getPose(), (Pose{{0, 0, 0}, {1, 0, 0, 0}}));
    EXPECT_EQ(node.element()->get("pose"), nullptr);
}

TEST(SdfNode, WritesItsPoseIntoTheKeyPose) {
    SdfNode node(elementWith(7), ObjectType::Component);
    const Pose pose{{1, 2, 3}, {0, 1, 0, 0}};
    node.setPose(pose);
    EXPECT_EQ(node.getPose(), pose);
    EXPECT_EQ(node.element()->get("pose")->asPose(""), pose);
}

TEST(SdfNode, SettingThePoseThatStandsThereWritesNothing) {
    SdfNode node(elementWith(7), ObjectType::Component);
    const Pose pose{{1, 2, 3}, {0, 1, 0, 0}};
    WriteLog log;
    node.setPose({});
    EXPECT_EQ(node.element()->get("pose"), nullptr);
    node.setPose(pose);
    node.setPose(pose);
    EXPECT_EQ(log.lines, Lines{"pose=1 2 3 0 1 0 0"});
}

TEST(SdfNode, SetsBothParentsTogether) {
    SdfNode node(elementWith(7), ObjectType::Component);
    node.setVisAndObjParent(4);
    EXPECT_EQ(node.getObjParentId(), 4u);
    EXPECT_EQ(node.getVisParentId(), 4u);
    node.setObjParentAsDefault();
    EXPECT_EQ(node.getObjParentId(), 0u);
    EXPECT_EQ(node.getVisParentId(), 4u);
}

class Tool : public trel::layout::AttachableNode {
public:
    Tool() : AttachableNode(elementWith(7), ObjectType::Component) {}
};

TEST(AttachableNode, CanBeAttachedToAnyOtherNode) {
    Tool tool;
    Tool flange;
    EXPECT_TRUE(tool.canAttachTo(&flange));
    EXPECT_FALSE(tool.canAttachTo(&tool));
    EXPECT_FALSE(tool.canAttachTo(nullptr));
}

TEST(AttachableNode, StandsWhereItWasPut) {
    Tool tool;
    tool.setPose({{5, 6, 7}, {1, 0, 0, 0}});
    EXPECT_EQ(tool.getPose().position.y, 6);
    EXPECT_EQ(tool.element()->asString("pose"), "5 6 7 1 0 0 0");
}

}  // namespace
