#pragma once

#include <ostream>

#include "host/TraceSink.h"
#include "host/Watch.h"

namespace trel::host {

/// Prints a run for people: a line for each change, with time, path of names and
/// value, for each event, and for what the scenario says.
class TextTrace : public TraceSink {
public:
    /// Changes of members that are not watched are left out.
    explicit TextTrace(std::ostream& out, Watch watch = {});

    void changed(const Change& change) override;
    void reported(const Event& event) override;
    void forced(Time time, const Member& signal, bool on) override;
    void said(Time time, std::string_view text) override;

private:
    void line(Time time, std::string_view text);

    std::ostream& out_;
    Watch watch_;
};

/// Prints a run for programs: a JSON object on a line for each change, event, and
/// line for people.
///
///     {"time_us":15000,"kind":"signal","name":"A.In","value":1}
///     {"time_us":15000,"kind":"property","name":"Belt.Speed","value":"250.00 mm/s"}
///     {"time_us":15000,"kind":"event","code":"10008","texts":["A","Out",""]}
///     {"time_us":15000,"kind":"said","text":"ok: A.Out = 0"}
///
/// An event about a ring of connections has the "ring" as well. A signal has "forced":true
/// while the scenario holds it at a value, which begins and ends with a line of the kind
/// "forced" or "released".
class JsonTrace : public TraceSink {
public:
    explicit JsonTrace(std::ostream& out, Watch watch = {});

    void changed(const Change& change) override;
    void reported(const Event& event) override;
    void forced(Time time, const Member& signal, bool on) override;
    void said(Time time, std::string_view text) override;

private:
    std::ostream& out_;
    Watch watch_;
};

/// Writes changes and events as comma-separated values, a row for each, with the
/// columns time_us, kind, name, value and forced. Kinds are those of JsonTrace.
class CsvTrace : public TraceSink {
public:
    explicit CsvTrace(std::ostream& out);

    void changed(const Change& change) override;
    void reported(const Event& event) override;
    void forced(Time time, const Member& signal, bool on) override;

private:
    void row(Time time, std::string_view kind, const std::string& name, const std::string& value,
             bool forced);

    std::ostream& out_;
};

}  // namespace trel::host
