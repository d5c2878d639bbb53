#include "host/Scenario.h"

#include <fmt/format.h>
#include <yaml-cpp/yaml.h>

#include <algorithm>
#include <functional>
#include <set>
#include <string_view>
#include <tuple>

namespace trel::host {

namespace {

// What the parser knows no place of, such as the root of an empty file, stands at
// the beginning.
ScenarioPlace placeOf(const YAML::Mark& mark) {
    if (mark.is_null()) return {1, 1};
    return {mark.line + 1, mark.column + 1};
}

class Reader {
public:
    explicit Reader(Scenario& scenario) : scenario_(scenario) {}

    void read(const YAML::Node& root) {
        if (!root.IsMap()) refuse(root, "a scenario is a map; write until, step or timeline");
        eachKey(root, "until, step, timeline",
                [&](const std::string& key, const YAML::Node& value) {
                    if (key == "until")
                        scenario_.until = time(value);
                    else if (key == "step")
                        scenario_.step = step(value);
                    else if (key == "timeline")
                        timeline(value);
                    else
                        return false;
                    return true;
                });
        // Moments of one time keep the order of the file.
        std::ranges::sort(scenario_.timeline, {}, [](const Moment& moment) {
            return std::tuple(moment.at, moment.place.line, moment.place.column);
        });
    }

private:
    [[noreturn]] void refuse(const YAML::Node& node, const std::string& text) const {
        throw scenario_.fault(placeOf(node.Mark()), text);
    }

    // Calls `take` with each key and value; it answers whether there is such a
    // key.
    template <typename Take>
    void eachKey(const YAML::Node& map, std::string_view known, const Take& take) const {
        std::set<std::string> seen;
        for (const auto& entry : map) {
            const std::string key = text(entry.first);
            if (!seen.insert(key).second)
                refuse(entry.first, fmt::format("\"{}\" stands here twice; keep one", key));
            if (!take(key, entry.second))
                refuse(entry.first, fmt::format("\"{}\" is no key here; write one of {}", key,
                                                known));
        }
    }

    std::string text(const YAML::Node& node) const {
        if (!node.IsScalar()) refuse(node, "a plain text or number is expected here; write one");
        return node.Scalar();
    }

    Time time(const YAML::Node& node) const {
        const std::string words = text(node);
        const auto result = readTime(words);
        if (!result)
            refuse(node, fmt::format("\"{}\" is no time; write a number and us, ms, s or min, as "
                                     "in 1.5s",
                                     words));
        return *result;
    }

    Time step(const YAML::Node& node) const {
        const Time result = time(node);
        if (result == 0) refuse(node, "a step of 0 gets nowhere; write a longer one, as in 10ms");
        return result;
    }

    void timeline(const YAML::Node& list) {
        if (!list.IsSequence())
            refuse(list, "the timeline is a list; begin each moment with \"- at:\"");
        for (const YAML::Node& entry : list) scenario_.timeline.push_back(moment(entry));
    }

    Moment moment(const YAML::Node& map) const {
        if (!map.IsMap()) refuse(map, "a moment is a map; write at, and say, set or expect");
        Moment result;
        result.place = placeOf(map.Mark());
        bool timed = false;
        eachKey(map, "at, say, set, expect", [&](const std::string& key, const YAML::Node& value) {
            if (key == "at") {
                result.at = time(value);
                timed = true;
            } else if (key == "say") {
                result.say = sayings(value);
            } else if (key == "set") {
                result.set = wishes(value);
            } else if (key == "expect") {
                result.expect = wishes(value);
            } else {
                return false;
            }
            return true;
        });
        if (!timed) refuse(map, "a moment needs its time; write at, as in \"at: 1.5s\"");
        return result;
    }

    std::vector<std::string> sayings(const YAML::Node& node) const {
        if (!node.IsSequence()) return {text(node)};
        std::vector<std::string> result;
        for (const YAML::Node& line : node) result.push_back(text(line));
        return result;
    }

    std::vector<Wish> wishes(const YAML::Node& map) const {
        if (!map.IsMap())
            refuse(map, "names and values are expected here; write them as in "
                        "\"Cell/Gripper.Close: 1\"");
        std::vector<Wish> result;
        eachKey(map, "", [&](const std::string&, const YAML::Node&) { return true; });
        for (const auto& entry : map)
            result.push_back({text(entry.first), text(entry.second), placeOf(entry.first.Mark()),
                              placeOf(entry.second.Mark())});
        return result;
    }

    Scenario& scenario_;
};

Scenario make(const std::string& name, const std::function<YAML::Node()>& load) {
    Scenario scenario;
    scenario.file = name;
    try {
        Reader(scenario).read(load());
    } catch (const YAML::BadFile&) {
        throw scenario.fault({}, "cannot be read; check the name and that you may read it");
    } catch (const YAML::Exception& error) {
        throw scenario.fault(placeOf(error.mark),
                             fmt::format("{}; correct the YAML here", error.msg));
    }
    return scenario;
}

}  // namespace

Scenario Scenario::read(const std::filesystem::path& file) {
    return make(file.string(), [&] { return YAML::LoadFile(file.string()); });
}

Scenario Scenario::fromText(const std::string& text, const std::string& name) {
    return make(name, [&] { return YAML::Load(text); });
}

Failure Scenario::fault(ScenarioPlace place, const std::string& text) const {
    if (place.line == 0) return {ExitCode::FileInvalid, fmt::format("{}: {}", file, text)};
    return {ExitCode::FileInvalid,
            fmt::format("{}:{}:{}: {}", file, place.line, place.column, text)};
}

}  // namespace trel::host
