#include "smartcomp/ElementBuilder.h"

#include "tests/smartcomp/Cell.h"

namespace trel::test {

namespace {
class ElementBuilderTest : public CellTest {};
}  // namespace

TEST_F(ElementBuilderTest, GivesTheElementThatTheComponentWasMadeFrom) {
    const Draft draft = Draft("Plain", 10, "Lamp").signal(1, "on", "DigitalInput");
    Plain& lamp = draft.make<Plain>();
    freshLog();

    EXPECT_EQ(smartcomp::ElementBuilder::Build(&lamp), draft.element());
    EXPECT_EQ(log().lines(), Lines{});
    EXPECT_EQ(GetStationElem()->children("smart_component").back(), draft.element());
}

TEST_F(ElementBuilderTest, TheElementOutlivesTheComponent) {
    Plain& lamp = Draft("Plain", 10, "Lamp").make<Plain>();
    const ElementPtr element = smartcomp::ElementBuilder::Build(&lamp);
    smartcomp::RemoveSubSmartComponent(10);
    EXPECT_EQ(element->parent(), nullptr);
    EXPECT_EQ(element->asString("type"), "Plain");
}

}  // namespace trel::test
