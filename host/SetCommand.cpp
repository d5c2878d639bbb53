#include <fmt/ostream.h>

#include <memory>
#include <string>
#include <utility>

#include "host/Commands.h"
#include "host/Edit.h"
#include "host/Members.h"
#include "host/Numbers.h"
#include "host/Objects.h"
#include "host/Trace.h"
#include "smartcomp/Hold.h"

namespace trel::host {

namespace {

struct SetOptions {
    EditOptions edit;
    std::vector<std::string> settings;  // path, value, path, value
};

// Changes, without a time: while a station is edited, none passes.
class ChangePrinter : public TraceSink {
public:
    explicit ChangePrinter(std::ostream& out) : out_(out) {}
    void changed(const Change& change) override {
        fmt::print(out_, "{} = {}\n", pathOf(change.member), change.shown);
    }
    void reported(const Event& event) override { fmt::print(out_, "!! {}\n", event.told()); }

private:
    std::ostream& out_;
};

[[noreturn]] void refuse(const std::string& path, const std::string& value,
                         const std::string& remedy) {
    throw Failure(ExitCode::Usage,
                  fmt::format("{} cannot be \"{}\"; write {}", path, value, remedy));
}

// In the alternative that the signal holds, so that an equal value is equal.
SignalValue signalValue(const Member& member, const std::string& path, const std::string& text) {
    const auto whole = readNumber<int>(text);
    if (isDigital(member)) {
        if (whole != 0 && whole != 1) refuse(path, text, "0 or 1");
        return *whole;
    }
    const auto number = readNumber<double>(text);
    if (!number) refuse(path, text, "a number");
    const bool holdsInt = std::holds_alternative<int>(*signalValueOf(member));
    return whole && holdsInt ? SignalValue(*whole) : SignalValue(*number);
}

void setSignal(const Member& member, SignalValue value) {
    if (signalOf(member)) return componentOf(member.object)->setStaticSignalValue(member.id, value);
    auto& controller = dynamic_cast<Controller&>(*objectOf(member.object));
    if (controllerSignalOf(member)->isOutput())
        controller.setOutput(member.id, value, false, 0);
    else
        controller.setSignalValue(member.id, value, false);
}

void setProperty(const Member& member, const std::string& path, const std::string& text) {
    if (const std::string instead = insteadOf(member, text); !instead.empty())
        refuse(path, text, instead);
    smartcomp::SmartComponent& component = *componentOf(member.object);
    const smartcomp::Hold hold(component);
    component.setPropertyValue(member.id, text);
}

ExitCode set(const SetOptions& options, std::ostream& out) {
    if (options.settings.size() % 2 != 0)
        throw Failure(ExitCode::Usage, fmt::format("{} is given no value; write NAME VALUE pairs",
                                                   options.settings.back()));
    return edit(options.edit, out, [&](const Names& names) {
        ChangePrinter printer(out);
        Trace trace({&printer});
        for (std::size_t i = 0; i != options.settings.size(); i += 2) {
            const std::string& path = options.settings[i];
            const std::string& value = options.settings[i + 1];
            const Member member = names.member(path);
            if (propertyOf(member))
                setProperty(member, path, value);
            else
                setSignal(member, signalValue(member, path, value));
            trace.flush();
        }
        if (trace.changes() == 0) fmt::print(out, "nothing changes\n");
    });
}

}  // namespace

void addSet(const CommandLine& line) {
    const auto options = std::make_shared<SetOptions>();
    Command command(
        line, "set",
        "Sets signals and properties as they are set while a station is edited, prints all\n"
        "that changes with them, and saves the station.\n"
        "Example: station set station.xml Cell/Gripper.Close 1 Belt.Speed 250");
    addEditOptions(command, options->edit);
    command.argument("NAME VALUE", options->settings, "What is set, and to what");
    command.does([options](std::ostream& out) { return set(*options, out); });
}

}  // namespace trel::host
