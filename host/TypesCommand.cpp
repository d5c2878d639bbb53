#include <dlfcn.h>
#include <fmt/format.h>

#include <QString>
#include <algorithm>
#include <filesystem>
#include <iterator>
#include <memory>
#include <string>

#include "host/Child.h"
#include "host/Command.h"
#include "host/Commands.h"
#include "host/Failure.h"
#include "host/Inspections.h"
#include "host/Members.h"
#include "host/StationMap.h"
#include "host/TypeLibraries.h"
#include "platform/station/Station.h"
#include "smartcomp/Lifecycle.h"
#include "smartcomp/Manager.h"
#include "smartcomp/StationLogic.h"

namespace trel::host {

namespace {

using smartcomp::Manager;
using smartcomp::SmartComponent;

struct TypesOptions {
    std::string name;  // empty for all
    std::vector<std::filesystem::path> libraries;
};

std::string descriptionOf(const Manager::Type& type) {
    const std::string text = type.description ? type.description().toStdString() : "";
    return text.empty() ? "It has no description." : text;
}

// The library that describes the type is the one that brings it.
std::string libraryOf(const Manager::Type& type) {
    Dl_info info{};
    if (!type.description || !dladdr(reinterpret_cast<void*>(type.description), &info)) return "";
    return fmt::format("  ({})", std::filesystem::path(info.dli_fname).filename().string());
}

// Lines of names with what is said of them, in columns.
class Table {
public:
    void add(std::string left, std::string right) {
        width_ = std::max(width_, left.size());
        rows_.emplace_back(std::move(left), std::move(right));
    }

    std::string text() const {
        std::string text;
        for (const auto& [left, right] : rows_) {
            text += fmt::format("    {:<{}}  {}", left, width_, right);
            text.erase(text.find_last_not_of(' ') + 1);
            text += '\n';
        }
        return text;
    }

private:
    std::vector<std::pair<std::string, std::string>> rows_;
    std::size_t width_ = 0;
};

// "How it goes [one of Fast, Slow]".
std::string said(const std::string& description, const std::string& choices) {
    if (choices.empty()) return description;
    return fmt::format("{}{}[{}]", description, description.empty() ? "" : "  ", choices);
}

// What a new component of the type starts with.
std::string membersOf(SmartComponent& component) {
    Table properties;
    Table signals;
    for (const Member& member : host::membersOf(component.id())) {
        if (const auto* const property = propertyOf(member))
            properties.add(fmt::format("{} : {} = {}", quoted(property->name()), property->type(),
                                       shown(member)),
                           said(property->description(), choicesOf(member)));
        else if (auto* const signal = signalOf(member))
            signals.add(fmt::format("{} : {}{}", quoted(signal->getName()), signal->getTypeString(),
                                    signal->isAutoReset() ? ", resets itself" : ""),
                        signal->description());
    }
    std::string text;
    for (const auto& [heading, table] :
         {std::pair("properties", &properties), std::pair("signals", &signals)})
        if (const std::string rows = table->text(); !rows.empty())
            text += fmt::format("  {}\n{}", heading, rows);
    return text;
}

// What `station check` would say of what the type gave its new component.
std::string faultsNow() {
    const StationMap map(*GetStationElem());
    FaultList faults;
    inspectKeys(*GetStationElem(), map, faults);
    inspectObjects(map, faults);
    std::string text;
    for (const Fault& fault : faults.take())
        text += fmt::format("  {}: {}: {}; {} [{}]\n", nameOf(fault.code->severity), fault.path,
                            fault.text, fault.remedy, fault.code->code);
    return text;
}

std::string madeOf(const std::string& type) {
    constexpr unsigned id = 10;
    const unsigned parent = smartcomp::StationLogic::inst()->id();
    std::string text;
    try {
        text = membersOf(*smartcomp::Build(type, id, type, parent));
    } catch (...) {
        text = fmt::format("  a component cannot be made: {}\n", textOfThrown());
    }
    return text + faultsNow();
}

// Somebody else's code makes the component.
std::string textOf(const Manager::Type& type) {
    const ChildResult made = inChild([&] { return madeOf(std::string(type.name)); }, 60);
    return fmt::format("{}{}\n  {}\n{}", type.name, libraryOf(type), descriptionOf(type),
                       made.end.empty()
                           ? made.output
                           : fmt::format("  a component cannot be made: {}\n", made.end));
}

ExitCode types(const TypesOptions& options, std::ostream& out) {
    loadTypeLibraries(options.libraries);
    std::string text;
    for (const Manager::Type& type : Manager::inst()->types()) {
        if (!options.name.empty() && options.name != type.name) continue;
        if (!text.empty()) text += '\n';
        text += textOf(type);
    }
    if (text.empty()) {
        const std::string_view near = nearestType(options.name);
        throw Failure(ExitCode::Usage,
                      fmt::format("no library that is loaded brings the type \"{}\"; {}see the "
                                  "types with station types, or load its library with --components",
                                  options.name,
                                  near.empty() ? "" : fmt::format("\"{}\" is near; ", near)));
    }
    out << text;
    return ExitCode::Good;
}

}  // namespace

void addTypes(const CommandLine& line) {
    const auto options = std::make_shared<TypesOptions>();
    Command command(line, "types",
                    "Prints the component types with what they do, their properties and signals.\n"
                    "Example: station types Timer");
    command.optionalArgument("NAME", options->name, "The type; all of them without it");
    command.libraries(options->libraries);
    command.does([options](std::ostream& out) { return types(*options, out); });
}

}  // namespace trel::host
