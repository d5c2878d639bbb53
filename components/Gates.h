#pragma once

#include <memory>
#include <utility>

#include "components/Furnisher.h"
#include "components/Reacting.h"

namespace trel::components {

/// A logic gate. Every digital input of the component is an input of the gate,
/// whatever its name; the result is the output "Out".
class Gate : public Reacting<smartcomp::SmartComponent> {
protected:
    using Reacting::Reacting;

    void refresh(long long time) override;

    /// The result for `on` of `inputs` inputs being on.
    virtual bool result(unsigned on, unsigned inputs) const = 0;
};

/// `Kind` says what the gate is called and what it makes of its inputs.
template <typename Kind>
class GateOf final : public Gate {
public:
    static constexpr const char* typeName = Kind::typeName;
    static constexpr const char* description = Kind::description;

    explicit GateOf(std::shared_ptr<sdf::Element> element)
        : Gate(std::move(element), sdf::ObjectType::Component) {}

    static void furnish(Furnisher& furnisher) {
        if (Kind::inputs == 1)
            furnisher.signal({"In", "DigitalInput", "The input"});
        else
            furnisher.signal({"In1", "DigitalInput", "First input"})
                .signal({"In2", "DigitalInput", "Second input"});
        furnisher.signal({"Out", "DigitalOutput", "The result"});
    }

private:
    bool result(unsigned on, unsigned inputs) const override { return Kind::result(on, inputs); }
};

struct AndKind {
    static constexpr const char* typeName = "AndGate";
    static constexpr const char* description =
        "And gate: Out is on while every digital input is on.";
    static constexpr unsigned inputs = 2;  // that a new one starts with
    static bool result(unsigned on, unsigned all) { return on == all; }
};

struct OrKind {
    static constexpr const char* typeName = "OrGate";
    static constexpr const char* description =
        "Or gate: Out is on while at least one digital input is on.";
    static constexpr unsigned inputs = 2;
    static bool result(unsigned on, unsigned) { return on > 0; }
};

struct NotKind {
    static constexpr const char* typeName = "NotGate";
    static constexpr const char* description =
        "Not gate: Out is on while the input is off; with several inputs, while all are.";
    static constexpr unsigned inputs = 1;
    static bool result(unsigned on, unsigned) { return on == 0; }
};

struct NandKind {
    static constexpr const char* typeName = "NandGate";
    static constexpr const char* description =
        "Nand gate: Out is off while every digital input is on.";
    static constexpr unsigned inputs = 2;
    static bool result(unsigned on, unsigned all) { return on != all; }
};

struct NorKind {
    static constexpr const char* typeName = "NorGate";
    static constexpr const char* description =
        "Nor gate: Out is off while at least one digital input is on.";
    static constexpr unsigned inputs = 2;
    static bool result(unsigned on, unsigned) { return on == 0; }
};

struct XorKind {
    static constexpr const char* typeName = "XorGate";
    static constexpr const char* description =
        "Exclusive-or gate: Out is on while an odd number of digital inputs is on.";
    static constexpr unsigned inputs = 2;
    static bool result(unsigned on, unsigned) { return on % 2 == 1; }
};

struct BufferKind {
    static constexpr const char* typeName = "Buffer";
    static constexpr const char* description =
        "Buffer: Out follows the input; with several inputs, it is on while one is.";
    static constexpr unsigned inputs = 1;
    static bool result(unsigned on, unsigned) { return on > 0; }
};

}  // namespace trel::components
