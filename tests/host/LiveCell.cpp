#include "tests/host/LiveCell.h"

#include <fmt/format.h>

#include "platform/sdf/SdfManager.h"
#include "smartcomp/Lifecycle.h"
#include "smartcomp/TypeLibrary.h"

namespace trel::test {

namespace {

std::string signalText(unsigned id, const std::string& name, const std::string& type,
                       const std::string& more = "") {
    return fmt::format(R"(    <signal id="{}">
      <name string="{}" />
      <type string="{}" />
      <value int="0" />
{}    </signal>
)",
                       id, name, type, more);
}

std::string connectionText(unsigned id, unsigned index, unsigned from, unsigned output, unsigned to,
                           unsigned input) {
    const auto end = [](unsigned component, unsigned signal) {
        return (static_cast<unsigned long long>(component) << 32) | signal;
    };
    return fmt::format(R"(    <connection id="{}">
      <source uint64="{}" />
      <destination uint64="{}" />
      <index uint="{}" />
    </connection>
)",
                       id, end(from, output), end(to, input), index);
}

std::string componentText(unsigned id, const std::string& name, const std::string& type,
                          unsigned parent, const std::string& more) {
    return fmt::format(R"(  <smart_component id="{}" name="{}">
    <type string="{}" />
    <parent uint="{}" />
{}  </smart_component>
)",
                       id, name, type, parent, more);
}

std::string bufferText(unsigned id, unsigned parent) {
    return componentText(id, "A", "Buffer", parent,
                         signalText(1, "In", "DigitalInput") +
                             signalText(2, "Out", "DigitalOutput"));
}

std::string propertyText(unsigned id, const std::string& name, const std::string& type,
                         const std::string& value) {
    return fmt::format(R"(    <property id="{}" name="{}" string="{}">
      <type string="{}" />
    </property>
)",
                       id, name, value, type);
}

std::string cellText() {
    const std::string connections =
        connectionText(5, 0, 90, 1, 10, 1) + connectionText(4, 1, 90, 1, 12, 1) +
        connectionText(3, 2, 90, 1, 91, 1) + connectionText(2, 3, 90, 2, 12, 1);
    const std::string components =
        componentText(10, "Cell", "Group", 2,
                      signalText(1, "In", "DigitalInput") + "    <role_object uint=\"0\" />\n" +
                          connectionText(1, 0, 10, 1, 11, 1)) +
        bufferText(11, 10) + bufferText(12, 2) +
        componentText(13, "Belt 1.5", "Conveyor", 2,
                      propertyText(3, "Speed", "Double", "250") +
                          signalText(3, "Run", "DigitalInput") +
                          signalText(4, "Speed", "AnalogOutput"));
    const std::string controllers =
        "  <controller id=\"90\" name=\"Robot\">\n" + signalText(1, "Go", "DigitalOutput") +
        signalText(2, "Tap", "DigitalOutput", "      <auto_reset bool=\"1\" />\n") +
        signalText(3, "Seen", "AnalogInput") + "  </controller>\n" +
        "  <controller id=\"91\" name=\"Other\">\n" + signalText(1, "Told", "DigitalInput") +
        "  </controller>\n";
    return stationText(components + controllers, connections);
}

}  // namespace

void LiveCell::SetUp() {
    FolderTest::SetUp();
    trelRegisterComponents();
    station_ = std::make_unique<host::LiveStation>(write("cell.xml", cellText()));
}

void LiveCell::TearDown() {
    station_.reset();
    EXPECT_EQ(sdf::SdfManager::inst()->objects().size(), 2u)
        << "more than the station and its logic is left in the object table";
    FolderTest::TearDown();
}

void LiveCell::start() {
    const auto all = smartcomp::GetAllSmartComponents();
    for (smartcomp::SmartComponent* const component : all) component->initialize();
    for (smartcomp::SmartComponent* const component : all) component->start(0);
}

}  // namespace trel::test
