#include "tests/host/StationFile.h"

#include <fmt/format.h>

#include "tests/host/Program.h"

namespace trel::test {

void StationFile::add(unsigned id, const std::string& name, const std::string& type,
                      const std::vector<Signal>& signals, unsigned parent,
                      const std::string& more) {
    std::string keys = more;
    unsigned signalId = 0;
    for (const Signal& signal : signals)
        keys += fmt::format("    <signal id=\"{}\">\n      <name string=\"{}\" />\n"
                            "      <type string=\"{}\" />\n      <value int=\"0\" />\n"
                            "      <auto_reset bool=\"{}\" />\n    </signal>\n",
                            ++signalId, signal.name, signal.type, signal.resets ? 1 : 0);
    places_.emplace(id, components_.size());
    components_.push_back({id,
                           fmt::format("  <smart_component id=\"{}\" name=\"{}\">\n"
                                       "    <type string=\"{}\" />\n    <parent uint=\"{}\" />\n",
                                       id, name, type, parent),
                           keys, "", 0});
    at(parent).keys += fmt::format("    <child uint=\"{}\" />\n", id);
}

void StationFile::gate(unsigned id, const std::string& name, const std::string& type,
                       unsigned inputs, unsigned parent) {
    std::vector<Signal> signals;
    for (unsigned input = 1; input <= inputs; ++input)
        signals.push_back({inputs == 1 ? "In" : fmt::format("In{}", input), "DigitalInput"});
    signals.push_back({"Out", "DigitalOutput"});
    add(id, name, type, signals, parent);
}

void StationFile::connect(End from, End to, unsigned owner) {
    Component& aggregation = at(owner);
    const auto packed = [](End end) {
        return (static_cast<unsigned long long>(end.component) << 32) | end.signal;
    };
    aggregation.connections +=
        fmt::format("    <connection id=\"{}\">\n      <source uint64=\"{}\" />\n"
                    "      <destination uint64=\"{}\" />\n      <index uint=\"{}\" />\n"
                    "    </connection>\n",
                    aggregation.count + 1, packed(from), packed(to), aggregation.count);
    ++aggregation.count;
}

std::string StationFile::text() const {
    std::string all;
    for (std::size_t i = 1; i != components_.size(); ++i)
        all += components_[i].head + components_[i].keys + components_[i].connections +
               "  </smart_component>\n";
    return stationText(all, components_[0].connections + components_[0].keys);
}

StationFile::Component& StationFile::at(unsigned id) { return components_.at(places_.at(id)); }

}  // namespace trel::test
