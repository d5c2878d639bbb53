#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <fstream>
#include <iterator>
#include <optional>
#include <sstream>
#include <string>

#include "fuzz/LoadedStation.h"
#include "fuzz/Require.h"
#include "host/Run.h"
#include "host/Scenario.h"
#include "host/Script.h"
#include "host/Trace.h"
#include "host/TraceText.h"
#include "platform/station/Station.h"
#include "smartcomp/TypeLibrary.h"

// Bytes are a scenario: a refusal that names the place, or a play on a small
// station.

namespace {

using fuzz::requireNone;
using trel::host::Failure;
using trel::host::Scenario;
using trel::host::Script;

const std::string& smallStation() {
    static const std::string text = [] {
        std::ifstream file(SMALL_STATION, std::ios::binary);
        return std::string{std::istreambuf_iterator<char>(file), {}};
    }();
    return text;
}

bool isNumber(std::string_view text) {
    return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
}

// Every message names the file, line and column.
void requirePlace(const Failure& failure) {
    std::istringstream message(failure.what());
    std::string file;
    std::string line;
    std::string column;
    std::getline(message, file, ':');
    std::getline(message, line, ':');
    std::getline(message, column, ':');
    if (file != "input" || !isNumber(line) || !isNumber(column))
        requireNone("unclear: " + std::string(failure.what()));
}

std::optional<Scenario> read(const std::string& text) {
    try {
        return Scenario::fromText(text, "input");
    } catch (const Failure& failure) {
        requirePlace(failure);
    }
    return std::nullopt;
}

std::optional<Script> bound(const Scenario& scenario) {
    try {
        return Script(scenario);
    } catch (const Failure& failure) {
        requirePlace(failure);
    }
    return std::nullopt;
}

// The beginning of it, where it would take too long.
void play(const Script& script, const Scenario& scenario) {
    constexpr trel::host::Time mostSteps = 100;

    const trel::host::Time step = scenario.step.value_or(10'000);
    const trel::host::Time last = script.moments.empty() ? 0 : script.moments.back().at;
    const trel::host::Time wanted = scenario.until.value_or(last);
    const trel::host::Time length = wanted / step < mostSteps ? wanted : step * mostSteps;
    std::size_t expectations = 0;
    for (const Script::Moment& moment : script.moments)
        if (moment.at <= length) expectations += moment.expect.size();

    std::ostringstream out;
    trel::host::TextTrace text(out);
    trel::host::Trace trace({&text});
    trel::host::RunRules rules;
    rules.step = step;
    rules.until = length;
    rules.budget = 100'000;
    const auto outcome = trel::host::Run(script, trace, rules).play();
    if (outcome.verdicts.size() < expectations)
        requireNone("not everything expected was looked at");
}

void requireSaves() {
    std::string saved;
    try {
        saved = trel::Station::inst().text();
    } catch (const sdf::DocumentError&) {
        // A property was set to a text that XML cannot hold, and is named.
        return;
    }
    if (sdf::Document::fromText(saved, "saved").text() != saved) requireNone("the form differs");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    trelRegisterComponents();
    const auto scenario = read(std::string(reinterpret_cast<const char*>(data), size));
    if (!scenario) return 0;
    const fuzz::LoadedStation station(smallStation());
    if (!station.isWhole()) requireNone("the small station is not whole");
    const auto script = bound(*scenario);
    if (!script) return 0;
    try {
        play(*script, *scenario);
    } catch (const Failure&) {
        // A component failed at what it was given, and was named.
    }
    requireNone(fuzz::LoadedStation::faults());
    requireSaves();
    return 0;
}
