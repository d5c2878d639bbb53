#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include "host/TraceSink.h"
#include "host/Watch.h"

namespace trel::host {

/// Keeps the values of the watched members during a run, and draws them over time. Where
/// nothing is watched in particular, these are the signals that changed.
class Waveforms : public TraceSink {
public:
    static constexpr std::size_t mostRows = 100;
    static constexpr std::size_t mostChanges = 1'000'000;

    explicit Waveforms(Watch watch);

    void changed(const Change& change) override;
    void forced(Time time, const Member& signal, bool on) override;

    /// As an SVG element for an HTML page, a row for each member, from 0 to `end`. What
    /// happens within a pixel is a line from the smallest value to the largest.
    std::string drawn(Time end) const;

    /// What of that is left out, as a sentence; empty for nothing.
    std::string leftOut() const;

private:
    enum class Form { Wire, Number, Text };

    struct Point {
        Time time;
        double number;      // but for a text
        std::string shown;  // of a text
    };
    struct Span {
        Time from;
        Time to;  // the end of the run while it is open
    };
    struct Row {
        Member member;
        std::string name;
        Form form;
        std::vector<Point> points;  // the first is the value at the start
        std::vector<Span> forced;
    };
    class Canvas;

    Row* rowOf(const Member& member);
    std::vector<const Row*> shownRows() const;

    const Watch watch_;
    std::vector<Row> rows_;  // in the order of the tree
    std::map<Member, std::size_t> places_;
    std::size_t changes_ = 0;
    std::size_t lost_ = 0;
};

}  // namespace trel::host
