#include "host/Names.h"

#include "host/Objects.h"
#include "smartcomp/Lifecycle.h"
#include "tests/host/LiveCell.h"

namespace trel::test {

namespace {

using host::Member;
using host::NameError;
using host::Names;

constexpr auto Signal = Member::Kind::Signal;
constexpr auto Property = Member::Kind::Property;

class NamesTest : public LiveCell {
protected:
    static Member find(const std::string& path) { return Names().member(path); }
    static std::string fault(const std::string& path) {
        try {
            Names().member(path);
        } catch (const NameError& error) {
            return error.what();
        }
        return "found";
    }
};

}  // namespace

TEST_F(NamesTest, AreFoundByTheirPath) {
    EXPECT_EQ(find("Cell/A.In"), (Member{inner, Signal, 1}));
    EXPECT_EQ(find("A.Out"), (Member{outer, Signal, 2}));
    EXPECT_EQ(find("Robot.Go"), (Member{90, Signal, 1}));
}

TEST_F(NamesTest, WithSpecialCharactersStandInQuotes) {
    EXPECT_EQ(find("\"Belt 1.5\".Run"), (Member{belt, Signal, 3}));
    EXPECT_EQ(find("\"Cell\"/\"A\".\"In\""), (Member{inner, Signal, 1}));
    EXPECT_EQ(host::pathOf(Member{belt, Signal, 3}), "\"Belt 1.5\".Run");
}

TEST_F(NamesTest, AnIdNamesAnything) {
    EXPECT_EQ(find("#11.In"), (Member{inner, Signal, 1}));
    EXPECT_EQ(find("Cell/#11.#2"), (Member{inner, Signal, 2}));
    EXPECT_EQ(find("#90.#2"), (Member{90, Signal, 2}));
}

TEST_F(NamesTest, ASignalAndAPropertyWithOneIdAreToldApart) {
    EXPECT_EQ(find("#13.signal#3"), (Member{belt, Signal, 3}));
    EXPECT_EQ(find("#13.property#3"), (Member{belt, Property, 3}));
}

TEST_F(NamesTest, AnAmbiguousMemberListsItsCandidates) {
    EXPECT_EQ(fault("#13.#3"),
              "#13.#3 is ambiguous; write one of #13.signal#3 (\"Belt 1.5\".Run), #13.property#3 "
              "(\"Belt 1.5\".Speed)");
    EXPECT_EQ(fault("\"Belt 1.5\".Speed"),
              "\"Belt 1.5\".Speed is ambiguous; write one of #13.signal#4 (\"Belt 1.5\".Speed), "
              "#13.property#3 (\"Belt 1.5\".Speed)");
}

TEST_F(NamesTest, AnAmbiguousComponentListsItsCandidates) {
    host::componentOf(cell)->setName("A");
    EXPECT_EQ(fault("A.In"), "A is ambiguous in A.In; write one of #10 (A), #12 (A) for it");
    EXPECT_EQ(find("#12.In"), (Member{outer, Signal, 1}));
}

TEST_F(NamesTest, WhatIsUnknownIsSaidWithWhatThereIs) {
    EXPECT_EQ(fault("Cell/B.In"), "there is no B in Cell; see the names with station show");
    EXPECT_EQ(fault("Sell.In"), "there is no Sell in the station; see the names with station show");
    EXPECT_EQ(fault("Cell/A.Inn"), "Cell/A has no signal or property Inn; it has In, Out");
    EXPECT_EQ(fault("#77.In"), "there is no #77 in the station; see the names with station show");
}

TEST_F(NamesTest, AMalformedPathIsRefused) {
    EXPECT_EQ(fault("Cell"), "Cell names no signal or property; write one behind a point, as in "
                             "Cell/Gripper.Close");
    for (const char* const path : {"", ".", "/", "Cell/.In", "Cell.", "/Cell.In", "Cell.In.x",
                                   "\"Cell.In", "\"Cell\"x.In", "Cell/\"", "\"\\"})
        EXPECT_NE(fault(path), "found") << path;
}

TEST_F(NamesTest, EveryWrittenPathReadsBack) {
    for (const char* const name :
         {"plain", "two words", "a.b", "a/b", "a\"b", "a\\b", "#3", "", " edge", "\xC3\xBC"}) {
        host::componentOf(outer)->setName(name);
        const Member member{outer, Signal, 1};
        EXPECT_EQ(find(host::pathOf(member)), member) << host::pathOf(member);
    }
}

TEST_F(NamesTest, AnObjectThatIsGoneIsNamedByItsId) {
    smartcomp::RemoveSmartComponent(inner);
    EXPECT_EQ(host::pathOf(inner), "#11");
    EXPECT_EQ(host::pathOf(Member{inner, Signal, 1}), "#11.#1");
}

}  // namespace trel::test
