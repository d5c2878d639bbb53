#include "host/Trace.h"

#include <locale>
#include <memory>
#include <sstream>
#include <string>

#include "host/Objects.h"
#include "host/TraceText.h"
#include "platform/broker/SignalBroker.h"
#include "smartcomp/SCSignal.h"
#include "tests/host/LiveCell.h"

namespace trel::test {

namespace {

class TraceTest : public LiveCell {
protected:
    void SetUp() override {
        LiveCell::SetUp();
        start();
        trace_ = std::make_unique<host::Trace>(std::vector<host::TraceSink*>{&text_});
    }
    void TearDown() override {
        trace_.reset();
        LiveCell::TearDown();
    }
    host::Trace& trace() { return *trace_; }

    // Property display follows the global locale.
    static void showNumbersPlainly() { std::locale::global(std::locale::classic()); }

    // What was printed since the last call.
    std::string printed() {
        trace().flush();
        std::string text = out_.str();
        out_.str("");
        return text;
    }

private:
    std::ostringstream out_;
    host::TextTrace text_{out_};
    std::unique_ptr<host::Trace> trace_;
};

}  // namespace

TEST_F(TraceTest, PrintsASignalWithTimePathAndValue) {
    trace().setTime(1'250'000);
    host::componentOf(outer)->handleSignalValue(1, 1, 1'250'000);
    EXPECT_EQ(printed(), "     1.25s  A.In = 1\n     1.25s  A.Out = 1\n");
}

TEST_F(TraceTest, PrintsBothValuesOfAPulse) {
    robot().setOutput(2, 1, true, 0);
    EXPECT_EQ(printed(), "        0s  Robot.Tap = 1\n"
                         "        0s  Robot.Tap = 0\n"
                         "        0s  A.In = 1\n"
                         "        0s  A.Out = 1\n"
                         "        0s  A.In = 0\n"
                         "        0s  A.Out = 0\n");
}

TEST_F(TraceTest, PrintsAPropertyAsPeopleSeeIt) {
    showNumbersPlainly();
    host::componentOf(belt)->setPropertyValue(3, "12.5");
    EXPECT_EQ(printed(), "        0s  \"Belt 1.5\".Speed = 12.50\n");
}

TEST_F(TraceTest, PrintsAPropertyBeforeWhatComesOfIt) {
    showNumbersPlainly();
    host::componentOf(belt)->setPropertyValue(3, "12.5");
    host::componentOf(outer)->handleSignalValue(1, 1, 0);
    EXPECT_EQ(printed(), "        0s  \"Belt 1.5\".Speed = 12.50\n"
                         "        0s  A.In = 1\n"
                         "        0s  A.Out = 1\n");
}

TEST_F(TraceTest, PassesOverAValueThatIsThereAlready) {
    host::componentOf(outer)->handleSignalValue(1, 0, 0);
    EXPECT_EQ(printed(), "");
    EXPECT_EQ(trace().changes(), 0u);
}

TEST_F(TraceTest, ShowsTheNumberThatASignalHolds) {
    auto& signal = dynamic_cast<smartcomp::SCSignal&>(*host::componentOf(belt)->getSignal(4));
    signal.setValue(2.5);  // getValueString() throws for an int in an analog signal
    signal.setValue(7);
    EXPECT_EQ(printed(), "        0s  \"Belt 1.5\".Speed = 2.5\n"
                         "        0s  \"Belt 1.5\".Speed = 7\n");
}

TEST_F(TraceTest, PrintsEvents) {
    broker::SignalBroker::reportEvent("10008", "A", "Out", "");
    EXPECT_EQ(printed(), "        0s  !! event 10008: another value came back to A on a ring of "
                         "connections, at the signal Out, and was dropped\n");
    host::componentOf(belt)->setPropertyValue(3, "fast");
    EXPECT_EQ(printed(), "        0s  !! event 10007: \"Belt 1.5\" refuses \"fast\" for the "
                         "property Speed\n");
}

TEST_F(TraceTest, IsSilentAboutEverythingElseInTheDocument) {
    host::componentOf(outer)->setName("Renamed");
    host::componentOf(outer)->setPose({{1, 2, 3}, {}});
    EXPECT_EQ(printed(), "");
}

}  // namespace trel::test
