#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/sdf/SdfObject.h"
#include "platform/station/ControllerInterface.h"
#include "smartcomp/SignalInterface.h"

namespace trel::host {

/// A robot controller: an object with named inputs and outputs and no behaviour
/// of its own. Its element keeps the values:
///
///     <controller id="90" name="Robot">
///       <signal id="1">
///         <name string="PartReady" />
///         <type string="DigitalInput" />
///         <value int="0" />
///         <auto_reset bool="0" />
///       </signal>
///     </controller>
///
/// What it is called an input reads, connections drive; its outputs are set by
/// whoever plays the robot program, and drive connections of the station logic.
class Controller : public sdf::SdfObject, public ControllerInterface {
public:
    /// Reads the element and stands in the object table from now on, until it is
    /// destroyed.
    /// \throws std::logic_error "object exists" if its id is taken, and
    /// std::invalid_argument if a signal holds a value that is no number.
    explicit Controller(std::shared_ptr<sdf::Element> element);
    ~Controller() override;
    Controller(const Controller&) = delete;
    Controller& operator=(const Controller&) = delete;

    /// One input or output, as its element has it.
    struct Signal {
        unsigned id;
        std::string name;
        std::string type;  // one of the six names of signal types
        bool autoReset;
        std::shared_ptr<sdf::Element> element;

        bool isOutput() const { return type.ends_with("Output"); }
        SignalValue value() const;
    };

    /// In the order of the document.
    const std::vector<Signal>& signals() const { return signals_; }

    /// \throws std::out_of_range for an id that the controller does not have.
    const Signal& signal(unsigned id) const;

    /// Keeps a value; an input that resets itself is 0 after.
    void setSignalValue(unsigned signalId, SignalValue value, bool dynamic) override;

    /// Keeps a value of an output, and delivers one that changed along the
    /// station logic's connections in their order: to components on the run-time
    /// path while the simulation runs, else on the static one. An output that
    /// resets itself delivers the value and then 0, and is 0 after.
    /// \throws std::bad_variant_access for a double while the simulation runs.
    void setOutput(unsigned signalId, SignalValue value, bool running, long long time);

private:
    std::vector<Signal> signals_;
};

}  // namespace trel::host
