#include "host/Scenario.h"

#include <fmt/format.h>
#include <yaml-cpp/yaml.h>

#include <algorithm>
#include <functional>
#include <set>
#include <string_view>
#include <tuple>

#include "host/Numbers.h"

namespace trel::host {

namespace {

struct TooMuch {};  // to read on

// Reads one file into the scenario. What is wrong is noted, and the rest is read as if
// the wrong thing were not there.
class ScenarioReader {
public:
    ScenarioReader(Scenario& scenario, ScenarioFaults& faults, std::filesystem::path file,
                   Time shift, std::vector<std::filesystem::path> outer)
        : scenario_(scenario),
          faults_(faults),
          place_(scenario.files.size() - 1),
          file_(std::move(file)),
          shift_(shift),
          outer_(std::move(outer)) {}

    void read(const std::function<YAML::Node()>& load) {
        try {
            readMap(load());
        } catch (const YAML::BadFile&) {
            faults_.add({0, 0, place_}, "cannot be read; check the name and that you may read it");
        } catch (const YAML::Exception& error) {
            faults_.add(at(error.mark), fmt::format("{}; correct the YAML here", error.msg));
        }
    }

private:
    // What the parser knows no place of, such as the root of an empty file, stands at
    // the beginning.
    ScenarioPlace at(const YAML::Mark& mark) const {
        if (mark.is_null()) return {1, 1, place_};
        return {mark.line + 1, mark.column + 1, place_};
    }

    void complain(const YAML::Node& node, const std::string& text) const {
        faults_.add(at(node.Mark()), text);
    }

    void readMap(const YAML::Node& root) {
        if (!root.IsMap())
            return complain(root, "a scenario is a map; write until, step or timeline");
        eachKey(root, "until, step, seed, include, timeline",
                [&](const std::string& key, const YAML::Node& value) {
                    if (key == "until")
                        keep(scenario_.until, shifted(time(value)));
                    else if (key == "step")
                        keep(scenario_.step, time(value, 1));
                    else if (key == "seed")
                        keep(scenario_.seed, seed(value));
                    else if (key == "timeline")
                        timeline(value);
                    else
                        return key == "include";
                    return true;
                });
        if (const YAML::Node included = root["include"]) include(included);
    }

    // The outermost file that says it counts.
    template <typename Value>
    static void keep(std::optional<Value>& kept, const std::optional<Value>& value) {
        if (!kept) kept = value;
    }

    std::optional<Time> shifted(std::optional<Time> time) const {
        if (time) *time = std::min(*time + shift_, longestTime);
        return time;
    }

    // Calls `take` with each key and value; it answers whether there is such a
    // key.
    template <typename Take>
    void eachKey(const YAML::Node& map, std::string_view known, const Take& take) const {
        std::set<std::string> seen;
        for (const auto& entry : map) {
            const auto key = text(entry.first);
            if (!key) continue;
            if (!seen.insert(*key).second)
                complain(entry.first, fmt::format("\"{}\" stands here twice; keep one", *key));
            else if (!take(*key, entry.second))
                complain(entry.first,
                         fmt::format("\"{}\" is no key here; write one of {}", *key, known));
        }
    }

    std::optional<std::string> text(const YAML::Node& node) const {
        if (node.IsScalar()) return node.Scalar();
        complain(node, "a plain text or number is expected here; write one");
        return std::nullopt;
    }

    std::optional<Time> time(const YAML::Node& node, Time least = 0) const {
        const auto words = text(node);
        if (!words) return std::nullopt;
        const auto result = readTime(*words);
        if (!result)
            complain(node, fmt::format("\"{}\" is no time; write a number and us, ms, s or min, "
                                       "as in 1.5s",
                                       *words));
        else if (*result < least)
            complain(node, "a step of 0 gets nowhere; write a longer one, as in 10ms");
        else
            return result;
        return std::nullopt;
    }

    template <typename Number>
    std::optional<Number> count(const YAML::Node& node, Number least,
                                std::string_view expected) const {
        const auto words = text(node);
        if (!words) return std::nullopt;
        const auto number = readNumber<Number>(*words);
        if (number && *number >= least) return number;
        complain(node, fmt::format("\"{}\" is no {}", *words, expected));
        return std::nullopt;
    }

    std::optional<std::uint64_t> seed(const YAML::Node& node) const {
        return count<std::uint64_t>(node, 0, "seed; write a whole number from 0 on");
    }

    void timeline(const YAML::Node& list) {
        if (!list.IsSequence())
            return complain(list, "the timeline is a list; begin each moment with \"- at:\"");
        for (const YAML::Node& entry : list) moment(entry);
    }

    struct Repeat {
        std::optional<Time> every;
        std::optional<Time> until;
        std::optional<std::size_t> times;
    };

    void moment(const YAML::Node& map) {
        if (!map.IsMap())
            return complain(map, "a moment is a map; write at, and say, set or expect");
        Moment result;
        result.place = at(map.Mark());
        std::optional<Time> begin;
        std::optional<YAML::Node> repeating;
        eachKey(map, "at, repeat, say, release, force, set, pulse, expect, within, never",
                [&](const std::string& key, const YAML::Node& value) {
                    if (key == "at")
                        begin = shifted(time(value));
                    else if (key == "repeat")
                        repeating = value;
                    else if (key == "say")
                        result.say = sayings(value);
                    else if (key == "within")
                        result.within = time(value);
                    else if (std::vector<Wish>* const wishes = wishesOf(result, key))
                        *wishes = read(value, key);
                    else
                        return false;
                    return true;
                });
        if (!map["at"]) complain(map, "a moment needs its time; write at, as in \"at: 1.5s\"");
        if (map["within"] && result.expect.empty() && result.never.empty())
            complain(map["within"], "within is the span of what is expected; write expect or "
                                    "never beside it");
        result.at = begin.value_or(0);
        if (repeating)
            repeat(std::move(result), *repeating);
        else
            add(std::move(result));
    }

    static std::vector<Wish>* wishesOf(Moment& moment, const std::string& key) {
        if (key == "release") return &moment.release;
        if (key == "force") return &moment.force;
        if (key == "set") return &moment.set;
        if (key == "pulse") return &moment.pulse;
        if (key == "expect") return &moment.expect;
        if (key == "never") return &moment.never;
        return nullptr;
    }

    void add(Moment moment) {
        if (moment.at > longestTime) {
            faults_.add(moment.place, "this comes after a thousand hours; let it come earlier");
            throw TooMuch();
        }
        if (scenario_.timeline.size() == Scenario::mostMoments) {
            faults_.add(moment.place, fmt::format("the scenario has more than {} moments, repeats "
                                                  "included; repeat less",
                                                  Scenario::mostMoments));
            throw TooMuch();
        }
        scenario_.timeline.push_back(std::move(moment));
    }

    // Written out, a moment for each time.
    void repeat(Moment moment, const YAML::Node& map) {
        Repeat rule;
        if (!map.IsMap())
            return complain(map, "how it repeats is a map; write {every: 100ms, times: 10}");
        eachKey(map, "every, times, until", [&](const std::string& key, const YAML::Node& value) {
            if (key == "every")
                rule.every = time(value, 1);
            else if (key == "times")
                rule.times = count<std::size_t>(value, 1, "number of times; write 1 or more");
            else if (key == "until")
                rule.until = shifted(time(value));
            else
                return false;
            return true;
        });
        if (!map["every"] || map["times"].IsDefined() == map["until"].IsDefined())
            return complain(map, "every is needed, and either times or until; write {every: "
                                 "100ms, times: 10}");
        if (!rule.every || (!rule.times && !rule.until)) return;
        for (std::size_t n = 0; rule.times ? n != *rule.times : moment.at <= *rule.until; ++n) {
            add(moment);
            moment.at += *rule.every;
        }
    }

    std::vector<std::string> sayings(const YAML::Node& node) const {
        std::vector<std::string> result;
        const auto take = [&](const YAML::Node& line) {
            if (const auto words = text(line)) result.push_back(*words);
        };
        if (node.IsSequence())
            for (const YAML::Node& line : node) take(line);
        else
            take(node);
        return result;
    }

    // Names and values; of what needs no values, names alone will do.
    std::vector<Wish> read(const YAML::Node& node, const std::string& key) const {
        std::vector<Wish> result;
        const bool needsNone = key == "release" || key == "pulse";
        if (node.IsSequence() && needsNone) {
            for (const YAML::Node& name : node)
                if (const auto path = text(name))
                    result.push_back({*path, key == "pulse" ? "1" : "", at(name.Mark()),
                                      at(name.Mark())});
        } else if (!node.IsMap() || key == "release") {
            complain(node, needsNone ? "a list of names is expected here; write it as in "
                                       "[Cell/Gripper.Close]"
                                     : "names and values are expected here; write them as in "
                                       "\"Cell/Gripper.Close: 1\"");
        } else {
            eachKey(node, "", [&](const std::string&, const YAML::Node&) { return true; });
            for (const auto& entry : node)
                if (const auto path = text(entry.first))
                    if (const auto value = text(entry.second))
                        result.push_back({*path, *value, at(entry.first.Mark()),
                                          at(entry.second.Mark())});
        }
        return result;
    }

    void include(const YAML::Node& node) {
        if (!node.IsSequence()) return includeOne(node);
        for (const YAML::Node& entry : node) includeOne(entry);
    }

    void includeOne(const YAML::Node& node) {
        const YAML::Node name = node.IsMap() ? node["file"] : node;
        Time shift = shift_;
        if (node.IsMap()) {
            if (!name.IsDefined())
                return complain(node, "what is included needs a file; write {file: arm.yaml, at: "
                                      "2s}");
            eachKey(node, "file, at", [&](const std::string& key, const YAML::Node& value) {
                if (key == "at") shift += time(value).value_or(0);
                return key == "at" || key == "file";
            });
        }
        const auto words = text(name);
        if (!words) return;
        if (file_.empty()) return complain(name, "what is no file includes none; take it out");
        const auto file = (file_.parent_path() / *words).lexically_normal();
        auto chain = outer_;
        chain.push_back(file_);
        if (std::ranges::find(chain, file) != chain.end())
            return complain(name, fmt::format("{} includes itself here; take it out", *words));
        std::error_code none;
        if (!std::filesystem::is_regular_file(file, none))
            return complain(name, fmt::format("there is no file {}; names of files begin in the "
                                              "folder of this one",
                                              *words));
        if (scenario_.files.size() == Scenario::mostFiles) {
            complain(name, fmt::format("more than {} files are included; include less",
                                       Scenario::mostFiles));
            throw TooMuch();
        }
        scenario_.files.push_back(file.string());
        ScenarioReader(scenario_, faults_, file, shift, std::move(chain)).read([&] {
            return YAML::LoadFile(file.string());
        });
    }

    Scenario& scenario_;
    ScenarioFaults& faults_;
    const std::size_t place_;                         // of the file
    const std::filesystem::path file_;                // empty for a text
    const Time shift_;                                // of all its times
    const std::vector<std::filesystem::path> outer_;  // that include it
};

Scenario make(const std::string& name, const std::filesystem::path& file,
              const std::function<YAML::Node()>& load) {
    Scenario scenario;
    scenario.files.push_back(name);
    ScenarioFaults faults(scenario);
    try {
        ScenarioReader(scenario, faults, file, 0, {}).read(load);
    } catch (const TooMuch&) {
        // The fault says so.
    }
    faults.refuse();
    // Moments of one time keep the order of the files.
    std::ranges::sort(scenario.timeline, {}, [](const Moment& moment) {
        return std::tuple(moment.at, moment.place.file, moment.place.line, moment.place.column);
    });
    return scenario;
}

}  // namespace

Scenario Scenario::read(const std::filesystem::path& file) {
    return make(file.string(), file.lexically_normal(),
                [&] { return YAML::LoadFile(file.string()); });
}

Scenario Scenario::fromText(const std::string& text, const std::string& name) {
    return make(name, {}, [&] { return YAML::Load(text); });
}

std::string Scenario::textOf(ScenarioPlace place) const {
    const std::string& file = files.at(place.file);
    if (place.line == 0) return file;
    return fmt::format("{}:{}:{}", file, place.line, place.column);
}

void ScenarioFaults::add(ScenarioPlace place, const std::string& text) {
    faults_.push_back({place, text});
}

void ScenarioFaults::refuse() const {
    if (faults_.empty()) return;
    auto sorted = faults_;
    std::ranges::sort(sorted, {}, [](const Fault& fault) {
        return std::tuple(fault.place.file, fault.place.line, fault.place.column, fault.text);
    });
    std::string text;
    for (const Fault& fault : sorted) {
        if (!text.empty()) text += '\n';
        text += fmt::format("{}: error: {}", scenario_.textOf(fault.place), fault.text);
    }
    throw Failure(ExitCode::FileInvalid, text);
}

}  // namespace trel::host
