#include "host/Edit.h"

#include <fmt/ostream.h>

#include <new>
#include <set>
#include <string>
#include <tuple>

#include "host/Inspections.h"
#include "host/LiveStation.h"
#include "host/TypeLibraries.h"
#include "platform/sdf/Document.h"
#include "platform/station/Station.h"

namespace trel::host {

namespace {

Faults faultsOfText(const std::string& text, const std::string& name) {
    const sdf::Document document = sdf::Document::fromText(text, name);
    const StationMap map(*document.root());
    FaultList faults;
    inspectDocument(*document.root(), map, faults);
    inspectFlow(map, [&](unsigned id) { return map.looksLikeAggregation(*map.find(id)); }, faults);
    return faults.take();
}

// What a fault is of, wherever it stands: its text may name other lines.
auto subjectOf(const Fault& fault) { return std::tuple(fault.code.index(), fault.path); }

void printNew(const Faults& before, const Faults& after, std::ostream& out) {
    std::multiset<decltype(subjectOf(after.front()))> known;
    for (const Fault& fault : before) known.insert(subjectOf(fault));
    for (const Fault& fault : after)
        if (const auto entry = known.find(subjectOf(fault)); entry != known.end())
            known.erase(entry);
        else
            fmt::print(out, "{}: {}: {}; {} [{}]\n", nameOf(fault.code->severity), fault.path,
                       fault.text, fault.remedy, fault.code->code);
}

void carryOut(const std::function<void(const Names&)>& change) {
    try {
        change(Names());
    } catch (const NameError& error) {
        throw Failure(ExitCode::Usage, error.what());
    } catch (const Failure&) {
        throw;
    } catch (const std::bad_alloc&) {
        throw;
    } catch (...) {
        throw Failure(ExitCode::ComponentFailed,
                      fmt::format("the edit made a component fail: {}; the fault is in its type, "
                                  "and nothing is saved",
                                  textOfThrown()));
    }
}

}  // namespace

void addEditOptions(Command& command, EditOptions& options) {
    command.argument("FILE", options.file, "The station file");
    command.libraries(options.libraries);
    command.option("--save", options.save, "FILE",
                   "Where the station is saved after the edit; in its own place without it");
}

ExitCode edit(const EditOptions& options, std::ostream& out,
              const std::function<void(const Names&)>& change) {
    loadTypeLibraries(options.libraries);
    const LiveStation station(options.file);
    const std::string name = options.file.string();
    const Faults before = faultsOfText(Station::inst().text(), name);
    carryOut(change);
    const Faults after = faultsOfText(Station::inst().text(), name);
    if (const Faults errors = errorsIn(after); !errors.empty())
        throw Failure(ExitCode::FileInvalid,
                      fmt::format("the edit would leave faults, and nothing is saved:\n{}",
                                  textOfFaults(name, errors)));
    printNew(before, after, out);
    const auto target = options.save.value_or(options.file);
    station.save(target);
    fmt::print(out, "saved to {}\n", target.string());
    return ExitCode::Good;
}

}  // namespace trel::host
