#pragma once

#include <cstddef>
#include <map>
#include <ostream>
#include <string>
#include <vector>

#include "host/TraceSink.h"
#include "host/Watch.h"

namespace trel::host {

/// Writes the signals of a run as a value change dump (IEEE 1364), which wave
/// viewers read. The scopes are the tree of components; a digital signal is a wire,
/// a group a vector of 32 bits, an analog signal a real; so are properties that are
/// numbers.
///
/// A change at t microseconds that is the n-th at that time stands at t * 1,000,000 +
/// n picoseconds, so that a pulse is seen. From the 999,999th on all of them stand
/// there, in their order.
///
/// A wire that holds neither 0 nor 1 is x, and so is a vector whose signal holds no
/// whole number. Names keep letters, digits and "-"; a blank is "_", any other byte
/// "%" and its two hexadecimal digits, and what is then called like a sibling gets
/// its id behind.
class VcdTrace : public TraceSink {
public:
    static constexpr Time stampsPerMicrosecond = 1'000'000;

    /// Writes the head, with everything that lives now and its present value. Each
    /// of the signals in `forcible` gets a wire that tells when it is forced.
    VcdTrace(std::ostream& out, const std::vector<Member>& forcible = {});

    void changed(const Change& change) override;

    void forced(Time time, const Member& signal, bool on) override;

    /// The dump lasts until `time`.
    void end(Time time);

    /// How many changes share the last stamp of their time with others.
    std::size_t crowded() const { return crowded_; }

    /// The save file for GTKWave that shows the watched signals of the dump, grouped
    /// by component, under their own names.
    std::string saveFile(const std::string& dumpName, const Watch& watch) const;

private:
    enum class Form { Wire, Vector, Real };

    struct Variable {
        Member member;
        Form form = Form::Wire;
        std::string code;   // that stands for it in the dump
        std::string place;  // "Cell.Gripper.Close"
        std::string forcedCode;
    };

    class Head;

    const Variable* variableOf(const Member& member) const;
    void stamp(Time time);
    void write(const Variable& variable, const SignalValue& value);

    std::ostream& out_;
    std::vector<Variable> variables_;  // in the order of the dump
    std::map<Member, std::size_t> places_;
    Time time_ = 0;
    Time step_ = 0;  // of the present time
    Time written_ = 0;
    std::size_t crowded_ = 0;
};

}  // namespace trel::host
