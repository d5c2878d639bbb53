#include "host/Script.h"

#include <fmt/format.h>

#include <limits>
#include <map>
#include <random>
#include <set>
#include <string_view>
#include <tuple>
#include <utility>

#include "host/Members.h"
#include "host/Numbers.h"
#include "host/Objects.h"

namespace trel::host {

namespace {

// Draws the same numbers everywhere: what the standard says of distributions leaves
// that open.
class Random {
public:
    explicit Random(std::uint64_t seed) : engine_(seed) {}

    int between(int least, int most) {
        const auto count = static_cast<std::uint64_t>(static_cast<std::int64_t>(most) - least) + 1;
        // What lies beyond the last whole multiple would come up more often.
        const std::uint64_t end = engine_.max() - engine_.max() % count;
        std::uint64_t drawn = engine_();
        while (drawn >= end) drawn = engine_();
        return static_cast<int>(least + static_cast<std::int64_t>(drawn % count));
    }

private:
    std::mt19937_64 engine_;
};

// "random 0..255".
struct Range {
    int least;
    int most;
};

class Binder {
public:
    Binder(const Scenario& scenario, ScenarioFaults& faults, std::optional<std::uint64_t> seed)
        : scenario_(scenario), faults_(faults) {
        if (!seed) seed = scenario.seed;
        if (seed) random_.emplace(*seed);
    }

    Script::Moment bind(const Moment& moment) {
        using Kind = Setting::Kind;
        Script::Moment result{moment.at, moment.say, {}, {}};
        for (const auto& [kind, wishes] :
             {std::pair(Kind::Release, &moment.release), std::pair(Kind::Force, &moment.force),
              std::pair(Kind::Set, &moment.set), std::pair(Kind::Pulse, &moment.pulse)})
            for (const Wish& wish : *wishes)
                if (const auto member = find(wish))
                    if (auto made = setting(kind, *member, wish))
                        result.settings.push_back(std::move(*made));
        const bool inSpan = moment.within.has_value();
        for (const Wish& wish : moment.expect)
            expectation(result, inSpan ? Expectation::Kind::Within : Expectation::Kind::Now, wish,
                        moment.within);
        for (const Wish& wish : moment.never)
            expectation(result, Expectation::Kind::Never, wish, moment.within);
        return result;
    }

private:
    struct Found {
        std::optional<Member> member;
        std::string fault;
    };

    // A repeated moment is told what is wrong with it once.
    void complain(ScenarioPlace place, const std::string& text) {
        if (told_.insert({place.file, place.line, place.column}).second) faults_.add(place, text);
    }

    std::optional<Member> find(const Wish& wish) {
        const auto [entry, isNew] = found_.try_emplace(wish.path);
        Found& found = entry->second;
        if (isNew) {
            try {
                found.member = names_.member(wish.path);
            } catch (const NameError& error) {
                found.fault = error.what();
            }
        }
        if (!found.member) complain(wish.pathPlace, found.fault);
        return found.member;
    }

    std::optional<Setting> setting(Setting::Kind kind, const Member& member, const Wish& wish) {
        Setting result{kind, member, 0, wish.value, scenario_.textOf(wish.pathPlace)};
        if (member.kind == Member::Kind::Property) {
            if (kind != Setting::Kind::Set) {
                complain(wish.pathPlace, fmt::format("{} is a property, which can be set but not "
                                                     "held or pulsed; name a signal",
                                                     wish.path));
                return std::nullopt;
            }
            return isSettable(member, wish) ? std::optional(result) : std::nullopt;
        }
        if (kind == Setting::Kind::Release) return result;
        const auto value = number(member, wish);
        if (!value) return std::nullopt;
        result.number = *value;
        return result;
    }

    // The run-time path of signals carries whole numbers only.
    std::optional<int> number(const Member& member, const Wish& wish) {
        if (wish.value.starts_with("random")) return drawn(member, wish);
        const auto whole = readNumber<int>(wish.value);
        if (!whole)
            complain(wish.valuePlace,
                     fmt::format("{} cannot be set to {}: while the simulation runs, signals carry "
                                 "whole numbers of 32 bits; write one",
                                 wish.path, wish.value));
        else if (isDigital(member) && *whole != 0 && *whole != 1)
            complain(wish.valuePlace, fmt::format("{} is digital and cannot be {}; write 0 or 1",
                                                  wish.path, wish.value));
        else
            return whole;
        return std::nullopt;
    }

    std::optional<int> drawn(const Member& member, const Wish& wish) {
        const auto range = rangeOf(member, wish.value.substr(std::string_view("random").size()));
        if (!range)
            complain(wish.valuePlace,
                     fmt::format("\"{}\" is no range of values for {}; write \"random\" for a "
                                 "digital signal, and \"random 0..255\" for another",
                                 wish.value, wish.path));
        else if (!random_)
            complain(wish.valuePlace, "random values need a seed, so that they are the same "
                                      "again; write seed: 1 at the top");
        else
            return random_->between(range->least, range->most);
        return std::nullopt;
    }

    static std::optional<Range> rangeOf(const Member& member, std::string_view text) {
        if (text.empty()) return isDigital(member) ? std::optional(Range{0, 1}) : std::nullopt;
        const auto dots = text.find("..");
        if (dots == std::string_view::npos || text.front() != ' ') return std::nullopt;
        const auto least = readNumber<int>(text.substr(1, dots - 1));
        const auto most = readNumber<int>(text.substr(dots + 2));
        if (!least || !most || *least > *most) return std::nullopt;
        if (isDigital(member) && (*least < 0 || *most > 1)) return std::nullopt;
        return Range{*least, *most};
    }

    bool isSettable(const Member& member, const Wish& wish) {
        if (propertyOf(member)->isReadOnly()) {
            complain(wish.pathPlace, fmt::format("{} is kept by the component itself; set what "
                                                 "makes it change instead",
                                                 wish.path));
            return false;
        }
        const std::string instead = insteadOf(member, wish.value);
        if (instead.empty()) return true;
        complain(wish.valuePlace,
                 fmt::format("{} cannot be \"{}\"; write {}", wish.path, wish.value, instead));
        return false;
    }

    void expectation(Script::Moment& moment, Expectation::Kind kind, const Wish& wish,
                     std::optional<Time> span) {
        const auto member = find(wish);
        if (!member) return;
        if (member->kind == Member::Kind::Signal && !readNumber<double>(wish.value))
            complain(wish.valuePlace,
                     fmt::format("{} is a signal and is never \"{}\"; write a number", wish.path,
                                 wish.value));
        else
            moment.expect.push_back({kind, *member, wish.path, wish.value,
                                     scenario_.textOf(wish.pathPlace), span});
    }

    const Scenario& scenario_;
    ScenarioFaults& faults_;
    Names names_;
    std::optional<Random> random_;
    std::map<std::string, Found> found_;  // by path
    std::set<std::tuple<std::size_t, int, int>> told_;
};

bool holds(smartcomp::Property& property, const Member& member, const std::string& text) {
    if (property.value() == text || shown(member) == text) return true;
    const auto wanted = readNumber<double>(text);
    return wanted && wanted == readNumber<double>(property.value());
}

}  // namespace

bool Expectation::holdsFor(const SignalValue& value) const {
    const double number = std::visit([](auto n) { return static_cast<double>(n); }, value);
    return number == readNumber<double>(text);
}

std::optional<std::string> Expectation::found() const {
    if (const auto value = signalValueOf(member)) {
        if (holdsFor(*value)) return std::nullopt;
    } else if (auto* const property = propertyOf(member)) {
        if (holds(*property, member, text)) return std::nullopt;
    }
    return shown(member);
}

Script::Script(const Scenario& scenario, std::optional<std::uint64_t> seed) {
    ScenarioFaults faults(scenario);
    Binder binder(scenario, faults, seed);
    std::set<Member> held;
    for (const host::Moment& moment : scenario.timeline) {
        moments.push_back(binder.bind(moment));
        for (const Setting& setting : moments.back().settings)
            if (setting.kind == Setting::Kind::Force) held.insert(setting.member);
    }
    faults.refuse();
    forced.assign(held.begin(), held.end());
}

}  // namespace trel::host
