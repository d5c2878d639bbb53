#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "platform/broker/SignalBroker.h"
#include "platform/sdf/Element.h"
#include "smartcomp/Aggregation.h"
#include "smartcomp/Property.h"
#include "smartcomp/SCSignal.h"
#include "smartcomp/SmartComponent.h"
#include "smartcomp/StationLogic.h"

namespace trel::test {

using smartcomp::Aggregation;
using smartcomp::SCSignal;
using smartcomp::SmartComponent;

using Lines = std::vector<std::string>;

constexpr long long millisecond = 1'000;  // of simulation time
constexpr long long second = 1'000'000;

/// Keeps what is written and told, one line each: "Timer.Out := 1" for a value of
/// a signal in the document, "Timer.Out told" for the broker's notice of it,
/// "Part.Position := 0 0 0" for a property, "event 10007 Part Position x".
class Log : private sdf::ValueObserver, private broker::Listener {
public:
    Log();
    ~Log() override;

    /// What came since the last call.
    Lines take();

private:
    void valueWritten(sdf::Element& element, const std::any& value) override;
    void scSignalValueChanged(unsigned signalId, unsigned componentId) override;
    void setVisualPose(unsigned objectId, const rob::PoseTemplate<double>& pose) override;
    void reportEvent(const std::string& code, const std::string& text1, const std::string& text2,
                     const std::string& text3) override;

    Lines lines_;
};

/// A station without components in which the types of the library are tried out.
/// Components are built as the editor builds them, and removed at the end.
class Bench : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    /// A new component of a type, with what the type starts with.
    SmartComponent& make(const std::string& type, const std::string& name,
                         unsigned parent = stationItself);
    void addSignal(SmartComponent& component, unsigned id, const std::string& name,
                   const std::string& type);

    /// Initialises and starts all components, in the order of making.
    void start(long long time = 0);
    void execute(long long time);
    void stop();

    static SCSignal& signal(const SmartComponent& component, const std::string& name);
    static smartcomp::Property& property(const SmartComponent& component, const std::string& name);

    /// Sets an input, or an output, while the simulation runs.
    static void set(SmartComponent& component, const std::string& name, int value,
                    long long time = 0);
    static int get(const SmartComponent& component, const std::string& name);

    static void write(SmartComponent& component, const std::string& property,
                      const std::string& text);
    static std::string read(const SmartComponent& component, const std::string& property);

    /// Connects signals, or binds properties, of children of `owner`.
    static void connect(Aggregation& owner, SmartComponent& from, const std::string& output,
                        SmartComponent& to, const std::string& input);
    static void bind(Aggregation& owner, SmartComponent& from, const std::string& source,
                     SmartComponent& to, const std::string& target);

    static Aggregation& logic();
    Log& log() { return *log_; }
    Lines freshLog() { return log_->take(); }

private:
    static constexpr unsigned stationItself = 0;

    std::vector<unsigned> ids_;
    std::unique_ptr<Log> log_;
    unsigned nextId_ = 10;
};

}  // namespace trel::test
