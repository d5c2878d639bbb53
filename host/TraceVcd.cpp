#include "host/TraceVcd.h"

#include <fmt/format.h>

#include <algorithm>
#include <bitset>
#include <cmath>
#include <cstdint>
#include <limits>
#include <set>
#include <string_view>
#include <utility>
#include <variant>

#include "host/Members.h"
#include "host/Numbers.h"
#include "host/Objects.h"
#include "host/Tree.h"
#include "platform/station/Station.h"

namespace trel::host {

namespace {

constexpr unsigned vectorBits = 32;

std::string identifier(const std::string& name) {
    if (name.empty()) return "%";
    std::string result;
    for (const char c : name) {
        const bool plain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
                           (c >= '0' && c <= '9') || c == '_' || c == '-';
        if (plain)
            result += c;
        else if (c == ' ')
            result += '_';
        else
            result += fmt::format("%{:02X}", static_cast<unsigned char>(c));
    }
    return result;
}

// The shortest codes first, of the printable characters.
std::string codeOf(std::size_t number) {
    constexpr std::size_t first = '!';
    constexpr std::size_t count = '~' - first + 1;
    std::string code;
    do {
        code += static_cast<char>(first + number % count);
        number /= count;
    } while (number-- > 0);
    return code;
}

// The number that a property holds now.
std::optional<SignalValue> numberOf(const smartcomp::Property& property) {
    const std::string& type = property.type();
    if (type == "Bool" || type == "Double" || type == "Int32" || type == "Index")
        if (const auto number = readNumber<double>(property.value())) return *number;
    return std::nullopt;
}

std::string wire(const SignalValue& value) {
    const double number = std::visit([](auto n) { return static_cast<double>(n); }, value);
    return number == 0 ? "0" : number == 1 ? "1" : "x";
}

std::string vector(const SignalValue& value) {
    const double number = std::visit([](auto n) { return static_cast<double>(n); }, value);
    if (number != std::floor(number) || number < std::numeric_limits<std::int32_t>::min() ||
        number > std::numeric_limits<std::int32_t>::max())
        return "bx ";
    const auto bits =
        std::bitset<vectorBits>(static_cast<std::uint32_t>(static_cast<std::int32_t>(number)));
    const std::string text = bits.to_string();
    return fmt::format("b{} ", text.substr(std::min(text.find('1'), text.size() - 1)));
}

}  // namespace

// Declares the variables, scope by scope.
class VcdTrace::Head {
public:
    Head(VcdTrace& dump, const std::vector<Member>& forcible)
        : dump_(dump), forcible_(forcible.begin(), forcible.end()) {
        dump_.out_ << "$version station $end\n$timescale 1 ps $end\n";
        open(identifier(GetStationElem()->name()));
        logic();
        close();
        dump_.out_ << "$enddefinitions $end\n";
    }

private:
    struct Taken {
        std::set<std::string> scopes;
        std::set<std::string> variables;
    };

    // They may nest as deep as they like.
    void logic() {
        members(tree_.root());
        std::vector<std::pair<unsigned, bool>> waiting;  // and whether it is open already
        const auto addInside = [&](unsigned id) {
            const auto inside = tree_.children(id);
            for (auto child = inside.rbegin(); child != inside.rend(); ++child)
                waiting.emplace_back(*child, false);
        };
        addInside(tree_.root());
        while (!waiting.empty()) {
            const auto [id, isOpen] = waiting.back();
            waiting.pop_back();
            if (isOpen) {
                close();
                continue;
            }
            waiting.emplace_back(id, true);
            open(unique(taken_.back().scopes, objectOf(id)->name(), id));
            members(id);
            addInside(id);
        }
    }

    void open(const std::string& name) {
        dump_.out_ << fmt::format("$scope module {} $end\n", name);
        ends_.push_back(place_.size());
        place_ += name + ".";
        taken_.emplace_back();
    }

    void close() {
        dump_.out_ << "$upscope $end\n";
        place_.resize(ends_.back());
        ends_.pop_back();
        taken_.pop_back();
    }

    void members(unsigned object) {
        for (const Member& member : membersOf(object)) {
            if (const auto form = formOf(member)) declare(member, *form);
        }
    }

    static std::optional<Form> formOf(const Member& member) {
        if (auto* const signal = signalOf(member))
            return signal->isDigital()  ? Form::Wire
                   : signal->isAnalog() ? Form::Real
                                        : Form::Vector;
        if (const auto* const signal = controllerSignalOf(member))
            return signal->type.starts_with("Digital")  ? Form::Wire
                   : signal->type.starts_with("Analog") ? Form::Real
                                                        : Form::Vector;
        const auto* const property = propertyOf(member);
        if (!property || !numberOf(*property)) return std::nullopt;
        return property->type() == "Bool" ? Form::Wire : Form::Real;
    }

    void declare(const Member& member, Form form) {
        Variable variable{member, form, codeOf(codes_++), "", ""};
        const std::string name =
            unique(taken_.back().variables, nameOf(member).value_or(""), member.id);
        variable.place = place_ + name;
        switch (form) {
            case Form::Wire: line("wire 1", variable.code, name); break;
            case Form::Real: line("real 64", variable.code, name); break;
            case Form::Vector:
                line(fmt::format("wire {}", vectorBits), variable.code,
                     fmt::format("{} [{}:0]", name, vectorBits - 1));
                break;
        }
        if (forcible_.contains(member)) {
            variable.forcedCode = codeOf(codes_++);
            line("wire 1", variable.forcedCode,
                 unique(taken_.back().variables, nameOf(member).value_or("") + "_forced",
                        member.id));
        }
        dump_.places_.emplace(member, dump_.variables_.size());
        dump_.variables_.push_back(std::move(variable));
    }

    void line(const std::string& kind, const std::string& code, const std::string& name) {
        dump_.out_ << fmt::format("$var {} {} {} $end\n", kind, code, name);
    }

    // Siblings may have the same name, and look the same when they are escaped.
    static std::string unique(std::set<std::string>& taken, const std::string& name, unsigned id) {
        std::string result = identifier(name);
        while (!taken.insert(result).second) result += fmt::format("_{}", id);
        return result;
    }

    VcdTrace& dump_;
    const std::set<Member> forcible_;
    const Tree tree_;
    std::string place_;
    std::vector<std::size_t> ends_;  // of the outer places
    std::vector<Taken> taken_;       // in the scopes that are open
    std::size_t codes_ = 0;
};

VcdTrace::VcdTrace(std::ostream& out, const std::vector<Member>& forcible) : out_(out) {
    const Head head(*this, forcible);
    out_ << "#0\n$dumpvars\n";
    for (const Variable& variable : variables_) {
        if (const auto value = signalValueOf(variable.member))
            write(variable, *value);
        else
            write(variable, numberOf(*propertyOf(variable.member)).value());
        if (!variable.forcedCode.empty()) out_ << '0' << variable.forcedCode << '\n';
    }
    out_ << "$end\n";
}

const VcdTrace::Variable* VcdTrace::variableOf(const Member& member) const {
    const auto place = places_.find(member);
    return place == places_.end() ? nullptr : &variables_[place->second];
}

void VcdTrace::changed(const Change& change) {
    const Variable* const variable = variableOf(change.member);
    if (!variable) return;
    auto value = change.number;
    if (const auto* const property = propertyOf(change.member)) value = numberOf(*property);
    if (!value) return;
    stamp(change.time);
    write(*variable, *value);
}

void VcdTrace::forced(Time time, const Member& signal, bool on) {
    const Variable* const variable = variableOf(signal);
    if (!variable || variable->forcedCode.empty()) return;
    stamp(time);
    out_ << (on ? '1' : '0') << variable->forcedCode << '\n';
}

void VcdTrace::stamp(Time time) {
    if (time != time_) {
        time_ = time;
        step_ = 0;
    } else if (step_ + 1 < stampsPerMicrosecond) {
        ++step_;
    } else {
        ++crowded_;
    }
    const Time now = time_ * stampsPerMicrosecond + step_;
    if (now != written_) out_ << fmt::format("#{}\n", now);
    written_ = now;
}

void VcdTrace::end(Time time) {
    const Time now = time * stampsPerMicrosecond;
    if (now > written_) out_ << fmt::format("#{}\n", now);
}

void VcdTrace::write(const Variable& variable, const SignalValue& value) {
    switch (variable.form) {
        case Form::Wire: out_ << wire(value); break;
        case Form::Vector: out_ << vector(value); break;
        case Form::Real: out_ << 'r' << shown(value) << ' '; break;
    }
    out_ << variable.code << '\n';
}

std::string VcdTrace::saveFile(const std::string& dumpName, const Watch& watch) const {
    // What GTKWave shows a trace as: binary, a signed number, and an analog curve in
    // steps; a group of traces begins and ends with a line of its own.
    constexpr std::string_view flags[] = {"@28", "@420", "@8420"};
    std::string text = fmt::format("[dumpfile] \"{}\"\n[timestart] 0\n", dumpName);
    unsigned group = 0;
    const auto leave = [&] {
        if (group != 0) text += fmt::format("@1000200\n-{}\n", pathOf(group));
    };
    for (const Variable& variable : variables_) {
        const std::string path = pathOf(variable.member);
        if (!watch.suits(path)) continue;
        if (variable.member.object != group) {
            leave();
            group = variable.member.object;
            text += fmt::format("@800200\n-{}\n", pathOf(group));
        }
        text += fmt::format("{}\n+{{{}}} {}{}\n", flags[static_cast<int>(variable.form)],
                            nameOf(variable.member).value_or(""), variable.place,
                            variable.form == Form::Vector ? "[31:0]" : "");
        if (!variable.forcedCode.empty()) text += fmt::format("@28\n{}_forced\n", variable.place);
    }
    leave();
    return text;
}

}  // namespace trel::host
