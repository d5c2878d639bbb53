#include "smartcomp/Manager.h"

#include <QString>
#include <algorithm>
#include <array>
#include <stdexcept>
#include <string_view>

#include "platform/visual/Visual.h"
#include "tests/smartcomp/Cell.h"

namespace trel::test {

namespace {

using smartcomp::Manager;

class ManagerTest : public CellTest {};

int firstVisual = 0;
int secondVisual = 0;
visual::Visual* dressed = nullptr;
SmartComponent* dressedComponent = nullptr;

SmartComponent* makePlain(ElementPtr element) {
    return new Plain(std::move(element), sdf::ObjectType::Component);
}
SmartComponent* makeFramed(ElementPtr element) {
    return new Framed(std::move(element), sdf::ObjectType::Component);
}
QString describeFirst() { return "first"; }
QString describeSecond() { return "second"; }
void dressFirst(visual::Visual* visual, SmartComponent* component) {
    ++firstVisual;
    dressed = visual;
    dressedComponent = component;
}
void dressSecond(visual::Visual*, SmartComponent*) { ++secondVisual; }

bool isFramed(const SmartComponent* component) {
    return dynamic_cast<const Framed*>(component) != nullptr;
}

}  // namespace

TEST_F(ManagerTest, TheFirstFunctionsOfANameWin) {
    Manager::inst()->registerType("Twice", makePlain, makePlain, describeFirst);
    Manager::inst()->registerType("Twice", makeFramed, makeFramed, describeSecond);

    EXPECT_FALSE(isFramed(smartcomp::Create(Draft("Twice", 10, "Created").element())));
    logic();
    EXPECT_FALSE(isFramed(smartcomp::Build("Twice", 11, "Built", logicId)));
    EXPECT_EQ(descFuncOf("Twice"), describeFirst);
    EXPECT_EQ(descFuncOf("Twice")(), "first");
}

TEST_F(ManagerTest, TheCreateFunctionCreatesAndTheBuildFunctionBuilds) {
    Manager::inst()->registerType("Both", makePlain, makeFramed, describeFirst);
    EXPECT_FALSE(isFramed(smartcomp::Create(Draft("Both", 10, "Created").element())));
    logic();
    EXPECT_TRUE(isFramed(smartcomp::Build("Both", 11, "Built", logicId)));
}

TEST_F(ManagerTest, TheFirstVisualFunctionOfANameWins) {
    Manager::inst()->registerVisualType("Plain", dressFirst);
    Manager::inst()->registerVisualType("Plain", dressSecond);
    Plain& lamp = Draft("Plain", 10, "Lamp").make<Plain>();
    visual::Visual visual;

    smartcomp::BuildVisual(&lamp, &visual);

    EXPECT_EQ(firstVisual, 1);
    EXPECT_EQ(secondVisual, 0);
    EXPECT_EQ(dressed, &visual);
    EXPECT_EQ(dressedComponent, &lamp);
}

TEST_F(ManagerTest, RegisteringCallsNothing) {
    const int before = made().created + made().built;
    registerTypes();
    Manager::inst()->registerVisualType("Plain", dressFirst);
    EXPECT_EQ(made().created + made().built, before);
    EXPECT_EQ(firstVisual, 0);
}

TEST_F(ManagerTest, AnUnknownNameHasNoDescription) {
    expectThrow<std::out_of_range>(noKey, [] { descFuncOf("no such type"); });
    expectThrow<std::out_of_range>(noKey, [] { descFuncOf(""); });
}

TEST_F(ManagerTest, ANameKnownOnlyForItsVisualHasNoDescription) {
    Manager::inst()->registerVisualType("OnlySeen", dressFirst);
    expectThrow<std::out_of_range>(noKey, [] { descFuncOf("OnlySeen"); });
    const Draft draft("OnlySeen", 10, "Lamp");
    expectThrow<std::out_of_range>(noKey, [&] { smartcomp::Create(draft.element()); });
}

TEST_F(ManagerTest, ATypeWithoutVisualFunctionIsNotDressed) {
    Plain& lamp = Draft("Plain", 10, "Lamp").make<Plain>();
    visual::Visual visual;
    expectThrow<std::out_of_range>(noKey, [&] { smartcomp::BuildVisual(&lamp, &visual); });
}

TEST_F(ManagerTest, NamesAreEqualByLengthAndBytes) {
    using namespace std::string_view_literals;
    Manager::inst()->registerType("Zero\0One"sv, makePlain, makePlain, describeFirst);
    EXPECT_EQ(descFuncOf("Zero\0One"sv), describeFirst);
    for (const auto other : {"Zero"sv, "Zero\0Two"sv, "zero\0One"sv, "Zero\0One "sv})
        expectThrow<std::out_of_range>(noKey, [&] { descFuncOf(other); });
}

// The registering library keeps the text alive; the registry does not copy it.
TEST_F(ManagerTest, ANameIsKeptWhereItStands) {
    static std::array<char, 5> name = {'M', 'i', 'n', 'e', 'A'};
    Manager::inst()->registerType({name.data(), name.size()}, makePlain, makePlain, describeFirst);
    EXPECT_EQ(descFuncOf("MineA"), describeFirst);
    name[4] = 'B';
    expectThrow<std::out_of_range>(noKey, [] { descFuncOf("MineA"); });
    name[4] = 'A';
    EXPECT_EQ(descFuncOf("MineA"), describeFirst);
}

TEST_F(ManagerTest, TheRegisteredTypesAreListedByName) {
    Manager::inst()->registerType("Zebra", makePlain, makePlain, describeFirst);
    Manager::inst()->registerType("Ant", makePlain, makePlain, nullptr);
    Manager::inst()->registerVisualType("OnlySeen", dressFirst);
    const auto types = Manager::inst()->types();
    EXPECT_TRUE(std::ranges::is_sorted(types, {}, &Manager::Type::name));
    const auto descriptionOf = [&](std::string_view name) {
        return std::ranges::find(types, name, &Manager::Type::name)->description;
    };
    EXPECT_EQ(descriptionOf("Zebra"), describeFirst);
    EXPECT_EQ(descriptionOf("Ant"), nullptr);
    EXPECT_EQ(std::ranges::count(types, "OnlySeen", &Manager::Type::name), 0);
}

}  // namespace trel::test
