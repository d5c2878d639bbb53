#include "components/Timer.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "components/Texts.h"

namespace trel::components {

namespace {

// In the order of TimerSettings::Mode.
constexpr std::array<std::string_view, 3> modeNames = {"OnDelay", "OffDelay", "Pulse"};

constexpr double microsecondsPerMillisecond = 1000;

}  // namespace

bool TimerSettings::read(unsigned propertyId, const std::string& text) {
    if (propertyId == Timer::time) return takeAtLeastZero(time, readNumber(text));
    if (propertyId != Timer::mode) return true;
    const auto name = std::ranges::find(modeNames, text);
    if (name == modeNames.end()) return false;
    mode = static_cast<Mode>(name - modeNames.begin());
    return true;
}

Timer::Timer(std::shared_ptr<sdf::Element> element)
    : Reacting(std::move(element), sdf::ObjectType::Component) {}

void Timer::furnish(Furnisher& furnisher) {
    furnisher.property({mode, "Mode", "String", "OnDelay", "", "OnDelay, OffDelay or Pulse"})
        .property({time, "Time", "Double", "500", "ms", "How long it waits"})
        .signal({"In", "DigitalInput", "What is timed"})
        .signal({"Out", "DigitalOutput", "Follows In according to Mode"});
}

std::vector<std::string> Timer::getEnumPropertyList(unsigned propertyId, const std::string&) {
    if (propertyId != mode) return {};
    return {modeNames.begin(), modeNames.end()};
}

void Timer::initialize() {
    Reacting::initialize();
    since_.reset();
}

// A station may be saved in the middle of a wait: the wait begins anew.
void Timer::refresh(long long now) {
    if (since_) return;
    const bool in = isOn("In");
    const bool out = isOn("Out");
    if (settings().mode == Mode::Pulse) {
        if (out) wait(now);
    } else if (in && !out) {
        rise(now);
    } else if (!in && out) {
        fall(now);
    }
}

void Timer::inputArrived(const Arrival& arrival) {
    if (arrival.rose()) rise(arrival.time);
    if (arrival.fell()) fall(arrival.time);
}

void Timer::rise(long long now) {
    if (settings().mode == Mode::OnDelay) return wait(now);
    send("Out", 1, now);
    if (settings().mode == Mode::Pulse)
        wait(now);
    else
        since_.reset();
}

void Timer::fall(long long now) {
    if (settings().mode == Mode::OffDelay) return wait(now);
    if (settings().mode == Mode::Pulse) return;
    since_.reset();
    send("Out", 0, now);
}

void Timer::wait(long long now) {
    since_ = now;
    step(now);
}

void Timer::step(long long now) {
    if (!since_) return;
    const double waited = static_cast<double>(now - *since_);
    if (waited < settings().time * microsecondsPerMillisecond) return;
    since_.reset();
    send("Out", settings().mode == Mode::OnDelay ? 1 : 0, now);
}

// Another time counts from when the waiting began; another mode forgets it.
void Timer::propertyChanged(unsigned propertyId) {
    if (propertyId == mode) since_.reset();
    Reacting::propertyChanged(propertyId);
}

}  // namespace trel::components
