#include "host/TraceText.h"

#include <fmt/ostream.h>

#include <nlohmann/json.hpp>
#include <utility>
#include <variant>

namespace trel::host {

namespace {

using Json = nlohmann::ordered_json;

void print(std::ostream& out, const Json& object) {
    out << object.dump(-1, ' ', false, Json::error_handler_t::replace) << '\n';
}

std::string_view kindOf(const Change& change) {
    return change.member.kind == Member::Kind::Signal ? "signal" : "property";
}

// In quotes where the field would be read otherwise.
std::string field(const std::string& text) {
    if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
    std::string result = "\"";
    for (const char c : text) {
        if (c == '"') result += '"';
        result += c;
    }
    return result + '"';
}

}  // namespace

TextTrace::TextTrace(std::ostream& out, Watch watch) : out_(out), watch_(std::move(watch)) {}

void TextTrace::changed(const Change& change) {
    const std::string path = pathOf(change.member);
    if (watch_.suits(path))
        line(change.time,
             fmt::format("{} = {}{}", path, change.shown, change.forced ? " (forced)" : ""));
}

void TextTrace::reported(const Event& event) { line(event.time, "!! " + event.told()); }

void TextTrace::forced(Time time, const Member& signal, bool on) {
    const std::string path = pathOf(signal);
    if (watch_.suits(path)) line(time, fmt::format("{} is {}", path, on ? "forced" : "released"));
}

void TextTrace::said(Time time, std::string_view text) { line(time, fmt::format("-- {}", text)); }

void TextTrace::line(Time time, std::string_view text) {
    fmt::print(out_, "{:>10}  {}\n", textOfTime(time), text);
}

JsonTrace::JsonTrace(std::ostream& out, Watch watch) : out_(out), watch_(std::move(watch)) {}

void JsonTrace::changed(const Change& change) {
    const std::string path = pathOf(change.member);
    if (!watch_.suits(path)) return;
    Json object = {{"time_us", change.time}, {"kind", kindOf(change)}, {"name", path}};
    if (change.number)
        std::visit([&](auto number) { object["value"] = number; }, *change.number);
    else
        object["value"] = change.shown;
    if (change.forced) object["forced"] = true;
    print(out_, object);
}

void JsonTrace::reported(const Event& event) {
    Json object = {{"time_us", event.time},
                   {"kind", "event"},
                   {"code", event.code},
                   {"texts", {event.text1, event.text2, event.text3}}};
    if (!event.ring.empty()) object["ring"] = event.ring;
    print(out_, object);
}

void JsonTrace::forced(Time time, const Member& signal, bool on) {
    const std::string path = pathOf(signal);
    if (watch_.suits(path))
        print(out_, {{"time_us", time}, {"kind", on ? "forced" : "released"}, {"name", path}});
}

void JsonTrace::said(Time time, std::string_view text) {
    print(out_, {{"time_us", time}, {"kind", "said"}, {"text", text}});
}

CsvTrace::CsvTrace(std::ostream& out) : out_(out) { out_ << "time_us,kind,name,value,forced\n"; }

void CsvTrace::changed(const Change& change) {
    row(change.time, kindOf(change), pathOf(change.member), change.shown, change.forced);
}

void CsvTrace::reported(const Event& event) {
    row(event.time, "event", event.code, event.told(), false);
}

void CsvTrace::forced(Time time, const Member& signal, bool on) {
    row(time, on ? "forced" : "released", pathOf(signal), "", on);
}

void CsvTrace::row(Time time, std::string_view kind, const std::string& name,
                   const std::string& value, bool forced) {
    fmt::print(out_, "{},{},{},{},{}\n", time, kind, field(name), field(value), forced ? 1 : 0);
}

}  // namespace trel::host
