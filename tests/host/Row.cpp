#include "tests/host/Row.h"

#include <fmt/format.h>

#include <iterator>

#include "tests/host/Program.h"

namespace trel::test {

std::string rowText(unsigned size, unsigned firstId, bool ring) {
    std::string components;
    std::string connections;
    for (unsigned i = 0; i != size; ++i) {
        const unsigned long long id = firstId + i;
        const unsigned long long next = firstId + (i + 1) % size;
        fmt::format_to(std::back_inserter(components),
                       "  <smart_component id=\"{0}\" name=\"B{0}\">\n"
                       "    <type string=\"Buffer\" />\n    <parent uint=\"2\" />\n"
                       "    <signal id=\"1\">\n      <name string=\"In\" />\n"
                       "      <type string=\"DigitalInput\" />\n      <value int=\"0\" />\n"
                       "    </signal>\n    <signal id=\"2\">\n      <name string=\"Out\" />\n"
                       "      <type string=\"DigitalOutput\" />\n      <value int=\"0\" />\n"
                       "    </signal>\n  </smart_component>\n",
                       id);
        fmt::format_to(std::back_inserter(connections), "    <child uint=\"{}\" />\n", id);
        if (i + 1 == size && !ring) continue;
        fmt::format_to(std::back_inserter(connections),
                       "    <connection id=\"{}\">\n      <source uint64=\"{}\" />\n"
                       "      <destination uint64=\"{}\" />\n      <index uint=\"{}\" />\n"
                       "    </connection>\n",
                       i + 1, (id << 32) | 2, (next << 32) | 1, i);
    }
    return stationText(components, connections);
}

}  // namespace trel::test
