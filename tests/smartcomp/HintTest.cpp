#include <stdexcept>

#include "tests/smartcomp/SignalCell.h"

// A delivery keeps what it found, where the next one comes by. That must never show:
// whatever took the place of the destination, it gets what a delivery that looks
// everything up would give it.
//
//   A.out -> B.in

namespace trel::test {
namespace {

class HintTest : public SignalCell {
protected:
    void SetUp() override {
        SignalCell::SetUp();
        make(10, "A");
        make(11, "B");
        connect(logic(), {10, 2}, {11, 1});
        // Until the last ones go by what the others kept.
        for (int value = 1; value <= 20; ++value) send(value);
    }

    static Plain& component(unsigned id) {
        return dynamic_cast<Plain&>(*sdf::SdfManager::inst()->find(id));
    }

    static void remake(SmartComponent& owner, unsigned signal, const std::string& type) {
        owner.deleteSignal(signal);
        SCSignal::Create(&owner,
                         owner.element()->append(signalElement(signal, "new", type, std::any(0))));
    }

    // What the destination does about the value.
    static Lines send(int value) {
        freshLog();
        component(10).handleSignalValue(2, value, 5);
        Lines lines = log().lines();
        std::erase(lines, "write A/signal 2/value int " + std::to_string(value));
        std::erase(lines, "notice signal 2 of 10");
        return lines;
    }
};

TEST_F(HintTest, AnInputGetsEveryValue) {
    EXPECT_EQ(send(30), Lines{"B.input 1 = 30 at 5"});
    EXPECT_EQ(send(31), Lines{"B.input 1 = 31 at 5"});
}

TEST_F(HintTest, AnInputThatBecomesAnOutputIsSetAsOne) {
    remake(component(11), 1, "DigitalOutput");
    EXPECT_EQ(send(30), (Lines{"write B/signal 1/value int 30", "notice signal 1 of 11"}));
    EXPECT_EQ(documentValue(component(11), 1), "int 30");

    remake(component(11), 1, "DigitalInput");
    EXPECT_EQ(send(31), Lines{"B.input 1 = 31 at 5"});
}

TEST_F(HintTest, ASignalThatIsDeletedIsMissed) {
    component(11).deleteSignal(1);
    expectThrow<std::out_of_range>(noKey, [] { send(30); });
}

TEST_F(HintTest, AnotherComponentUnderTheIdReacts) {
    smartcomp::RemoveSmartComponent(11);
    expectThrow<std::out_of_range>(noKey, [] { send(30); });
    component(10).endSetSignalValue(2);

    make(11, "C");
    EXPECT_EQ(send(31), Lines{"C.input 1 = 31 at 5"});
}

TEST_F(HintTest, AControllerUnderTheIdGetsTheValue) {
    smartcomp::RemoveSmartComponent(11);
    enter<Controller>(11, "R");
    EXPECT_EQ(send(30), Lines{"R.set 1 = int 30 dynamic"});
}

TEST_F(HintTest, ASourceThatIsMadeAgainFindsItsConnections) {
    remake(component(10), 2, "DigitalOutput");
    signalOf(component(10), 2).setValue(0);
    EXPECT_EQ(send(30), Lines{"B.input 1 = 30 at 5"});
}

}  // namespace
}  // namespace trel::test
