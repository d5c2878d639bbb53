#include <gtest/gtest.h>

#include <QString>
#include <cstdlib>
#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "platform/broker/SignalBroker.h"
#include "smartcomp/Hold.h"
#include "smartcomp/Manager.h"
#include "tests/smartcomp/Cell.h"

// A value on its way through 1,000 components, and an exception at one of them after
// the other. What the value came by before keeps it, what lies behind is
// untouched, and the marks of the settings that were interrupted stay.
//
//   Chain   0 -> 1 -> 2 -> ...                 each from its output 2 to the next input 1
//   Tree    0 -> 1, 2, 3;  1 -> 4, 5, 6; ...   depth first
//   Nested  0 ( 1 ( 2 ( ... ) ) )              from input to input, and text to text
//
// In a chain and in a tree each output leads to the controller first, which gets the
// number of the component. Every day some components throw; all of them do with
//
//   TREL_FAULT_STEP=1 build/dev/bin/faults_tests --gtest_filter='EveryHop/*'

namespace trel::test {
namespace {

constexpr unsigned count = 1'000;
constexpr unsigned firstId = 100;
constexpr unsigned cellId = 10;
constexpr unsigned controllerId = 11;
constexpr unsigned in = 1;
constexpr unsigned out = 2;
constexpr unsigned note = 1;  // the property
constexpr unsigned nowhere = ~0u;

enum class Shape { Chain, Tree, Nested };
enum class Path { Dynamic, Static, Property };
enum class Place {
    Type,    // the component's reaction, or its override
    Input,   // the listener, when it is told of the input or of the property
    Output,  // the listener, when it is told of the output
    Controller,
    Observer,  // the document, by an observer that refuses
    Element,   // the document, by an element that holds a number
};

struct Case {
    Shape shape;
    Path path;
    Place place;
};

// Where the next exception comes from.
struct Plan {
    Place place = Place::Type;
    unsigned node = nowhere;
};
Plan plan;

void throwAt(Place place, unsigned id) {
    if (plan.place == place && plan.node != nowhere && id == firstId + plan.node)
        throw std::runtime_error("stop at " + std::to_string(plan.node));
}

// Stores what reaches it and hands it on.
class Hop : public Open<SmartComponent> {
public:
    explicit Hop(ElementPtr element) : Open(std::move(element), sdf::ObjectType::Component) {}

    void handleInputSignal(unsigned signalId, int value, long long time) override {
        throwAt(Place::Type, id());
        signalAt(signalId).setValue(value);
        notifySignalValueChanged(signalId);
        handleOutputSignal(out, value, time);
    }
    void setStaticInputSignal(unsigned signalId, SignalValue value) override {
        throwAt(Place::Type, id());
        SmartComponent::setStaticInputSignal(signalId, value);
        setStaticOutputSignal(out, value);
        endSetSignalValue(signalId);
    }
    void setPropertyValue(unsigned propertyId, const std::string& value) override {
        const smartcomp::Hold hold(*this);
        if (!shouldSetProperty(propertyId, value)) return;
        throwAt(Place::Type, id());
        SmartComponent::setPropertyValue(propertyId, value);
        endSetPropertyValue(propertyId);
    }
    void readPropertyValues() override {}
};

SmartComponent* makeHop(ElementPtr element) { return new Hop(std::move(element)); }

class Robot : public Thing, public ControllerInterface {
public:
    Robot() : Thing(controllerId, "Robot") {}
    void setSignalValue(unsigned signalId, SignalValue, bool) override {
        throwAt(Place::Controller, signalId);
    }
};

// Hears of everything, keeps the last event, and throws as planned.
class Listener : public broker::Listener, public sdf::ValueObserver {
public:
    Listener() {
        broker::SignalBroker::subscribe(*this);
        sdf::Element::Subscribe(*this);
    }
    ~Listener() override {
        sdf::Element::Unsubscribe(*this);
        broker::SignalBroker::unsubscribe(*this);
    }
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    const sdf::Element* refused = nullptr;
    std::string event;

private:
    void scSignalValueChanged(unsigned signalId, unsigned componentId) override {
        throwAt(signalId == in ? Place::Input : Place::Output, componentId);
    }
    void scPropertyValueChanged(unsigned, unsigned componentId) override {
        throwAt(Place::Input, componentId);
    }
    void reportEvent(const std::string& code, const std::string& text1, const std::string& text2,
                     const std::string& text3) override {
        event += code + "|" + text1 + "|" + text2 + "|" + text3;
    }
    void valueWritten(sdf::Element& element, const std::any&) override {
        if (&element == refused) throw std::runtime_error("stop at " + std::to_string(plan.node));
    }
};

// What a component holds: values and marks.
struct State {
    int input = 0;
    int inputInDocument = 0;
    int output = 0;
    bool inputIsMarked = false;
    bool outputIsMarked = false;

    bool operator==(const State&) const = default;
};

class ThrowingCallees : public CellTest, public testing::WithParamInterface<Case> {
protected:
    void SetUp() override {
        CellTest::SetUp();
        // Its lines of what happens would be too many.
        sdf::Element::Unsubscribe(log());
        broker::SignalBroker::unsubscribe(log());
        smartcomp::Manager::inst()->registerType("Hop", makeHop, makeHop,
                                                 [] { return QString("hands on"); });
        enterObject(controllerId, &robot_);
        logic();
        Draft("Box", cellId, "Cell").make<Box>();
        makeNodes();
    }
    void TearDown() override {
        plan = Plan();
        CellTest::TearDown();
    }

    static Shape shape() { return GetParam().shape; }
    static Path path() { return GetParam().path; }

    static unsigned parentOf(unsigned node) {
        return node == 0 ? nowhere : shape() == Shape::Tree ? (node - 1) / 3 : node - 1;
    }

    void makeNodes() {
        for (unsigned node = 0; node != count; ++node) {
            const bool isNested = shape() == Shape::Nested;
            Draft draft(isNested ? "Group" : "Hop", firstId + node, "Node" + std::to_string(node));
            draft.in(isNested && node > 0 ? firstId + node - 1 : cellId)
                .property(note, "note", "String", std::string("0"))
                .signal(in, "in", "DigitalInput")
                .signal(out, "out", "DigitalOutput");
            nodes_.push_back(&draft.make<SmartComponent>());
        }
        for (unsigned node = 0; node != count; ++node) {
            const unsigned id = firstId + node;
            if (shape() != Shape::Nested) connect(box(cellId), {id, out}, {controllerId, id});
        }
        for (unsigned node = 1; node != count; ++node) {
            const unsigned id = firstId + node;
            const unsigned from = firstId + parentOf(node);
            Aggregation& owner = box(shape() == Shape::Nested ? from : cellId);
            connect(owner, {from, shape() == Shape::Nested ? in : out}, {id, in});
            bind(owner, {from, note}, {id, note});
        }
        findPlaces();
    }

    // Connections are served in their order, bindings as the table has them; depth
    // first in any case.
    void findPlaces() {
        std::vector<std::vector<unsigned>> below(count);
        if (path() == Path::Property && shape() == Shape::Tree) {
            for (const auto& [id, connection] : tableOf(box(cellId)))
                if (connection->isBinding())
                    below[connection->getSrcComponentId() - firstId].push_back(
                        connection->getDstComponentId() - firstId);
        } else {
            for (unsigned node = 1; node != count; ++node) below[parentOf(node)].push_back(node);
        }
        std::vector<unsigned> waiting = {0};
        for (unsigned place = 0; !waiting.empty(); ++place) {
            const unsigned node = waiting.back();
            waiting.pop_back();
            place_[node] = place;
            waiting.insert(waiting.end(), below[node].rbegin(), below[node].rend());
        }
    }

    static Box& box(unsigned id) { return dynamic_cast<Box&>(*sdf::SdfManager::inst()->find(id)); }

    static bool isAbove(unsigned upper, unsigned node) {
        while (node != nowhere && node > upper) node = parentOf(node);
        return node == upper;
    }

    // Sends a value in at the top; gives what was thrown.
    std::string send(int value) {
        SmartComponent& top = *nodes_[0];
        try {
            switch (path()) {
                case Path::Dynamic: top.handleSignalValue(in, value, 7); break;
                case Path::Static: top.setStaticSignalValue(in, value); break;
                case Path::Property: top.setPropertyValue(note, textOf(value)); break;
            }
        } catch (const std::exception& error) {
            return error.what();
        }
        return "";
    }

    // No number, so that an element that holds one refuses it.
    static std::string textOf(int value) { return value == 0 ? "0" : "t" + std::to_string(value); }
    static int valueOf(const std::string& text) {
        return text == "0" ? 0 : std::stoi(text.substr(1));
    }

    static State stateOf(SmartComponent& component) {
        State state;
        if (path() == Path::Property) {
            const Property& property = *component.getProperty(note);
            state.input = valueOf(property.value());
            state.inputInDocument = valueOf(property.element()->getStringFromValue());
            state.inputIsMarked = settingProperties(component).contains(note);
            return state;
        }
        state.input = component.getSignal(in)->getDigitalValue();
        state.inputInDocument = signalOf(component, in).element()->asInt("value");
        state.output = component.getSignal(out)->getDigitalValue();
        state.inputIsMarked = settingSignals(component).contains(in);
        state.outputIsMarked = settingSignals(component).contains(out);
        return state;
    }

    static State allOf(int value) {
        const bool hasOutput = path() != Path::Property && shape() != Shape::Nested;
        return {value, value, hasOutput ? value : 0, false, false};
    }

    // What node holds after the value was stopped at `stop`.
    State expected(unsigned node, unsigned stop, int before, int value) const {
        if (node == stop) return expectedAtStop(before, value);
        if (place_[node] > place_[stop]) return allOf(before);
        State state = allOf(value);
        if (isAbove(node, stop)) {
            const bool isNested = shape() == Shape::Nested;
            state.inputIsMarked = path() != Path::Dynamic;
            state.outputIsMarked = path() != Path::Property && !isNested;
        }
        return state;
    }

    State expectedAtStop(int before, int value) const {
        State state = allOf(before);
        const Place place = GetParam().place;
        if (place == Place::Type || place == Place::Element) return state;
        if (place == Place::Observer) {
            // A signal keeps its value before it is written.
            if (path() != Path::Property) state.input = value;
            return state;
        }
        state.input = state.inputInDocument = value;
        state.inputIsMarked = path() == Path::Property;
        if (place == Place::Input) return state;
        state.output = value;
        state.inputIsMarked = path() == Path::Static;
        state.outputIsMarked = place == Place::Controller;
        return state;
    }

    void arm(unsigned node) {
        plan = {GetParam().place, node};
        SmartComponent& component = *nodes_[node];
        if (plan.place == Place::Observer)
            listener_.refused = path() == Path::Property
                                    ? component.getProperty(note)->element().get()
                                    : signalOf(component, in).element()->get("value").get();
        if (plan.place == Place::Element) {
            // A number that reads as the text that was there.
            component.getProperty(note)->element()->setValue(0);
            component.getProperty(note)->setValue("0");
        }
    }
    void disarm(unsigned node, int before) {
        if (plan.place == Place::Element) {
            nodes_[node]->getProperty(note)->element()->setValue(textOf(before));
            nodes_[node]->getProperty(note)->setValue(textOf(before));
        }
        plan.node = nowhere;
        listener_.refused = nullptr;
    }

    std::string expectedThrow(unsigned node, int value) const {
        if (GetParam().place == Place::Element)
            return "\"" + textOf(value) + "\" is not a value of type int";
        return "stop at " + std::to_string(node);
    }

    void expectLockIsFree() const {
        ASSERT_TRUE(sdf::SdfManager::inst()->mutex().try_lock());
        sdf::SdfManager::inst()->mutex().unlock();
    }

    // The marks at the top decide about what comes next.
    void expectNextIsHeldUp(int value) {
        const State top = stateOf(*nodes_[0]);
        listener_.event.clear();
        EXPECT_EQ(send(value), "");
        EXPECT_EQ(listener_.event, "") << "the same value again is no conflict";
        EXPECT_EQ(send(value + 1), "");
        if (path() == Path::Property && top.inputIsMarked) {
            EXPECT_EQ(listener_.event, "10007|Node0|note|" + textOf(value + 1));
        } else if (top.outputIsMarked) {
            EXPECT_EQ(listener_.event, "10008|Node0|out|");
        } else if (top.inputIsMarked && shape() == Shape::Nested) {
            EXPECT_EQ(listener_.event, "10008|Node0|in|");
        } else {
            EXPECT_EQ(listener_.event, "");
        }
    }

    void endMarks() {
        for (SmartComponent* const node : nodes_) node->clearMarks();
    }

    Listener listener_;
    Robot robot_;
    std::vector<SmartComponent*> nodes_;
    std::vector<unsigned> place_ = std::vector<unsigned>(count);  // in the order of service
};

unsigned step() {
    constexpr unsigned everyDay = 83;
    const char* const wanted = std::getenv("TREL_FAULT_STEP");
    return wanted ? static_cast<unsigned>(std::strtoul(wanted, nullptr, 10)) : everyDay;
}

TEST_P(ThrowingCallees, LeaveWhatWasBeforeThemAndNothingBehindThem) {
    unsigned points = 0;
    int before = 0;
    for (unsigned stop = 0; stop < count; stop += step(), ++points) {
        SCOPED_TRACE(stop);
        const int value = before + 1;
        arm(stop);
        ASSERT_EQ(send(value), expectedThrow(stop, value));
        disarm(stop, before);
        expectLockIsFree();
        for (unsigned node = 0; node != count; ++node)
            ASSERT_EQ(stateOf(*nodes_[node]), expected(node, stop, before, value)) << node;

        expectNextIsHeldUp(value);
        endMarks();
        // Whoever took which of the two values, all take a third one.
        before = value + 2;
        ASSERT_EQ(send(before), "");
        for (unsigned node = 0; node != count; ++node)
            ASSERT_EQ(stateOf(*nodes_[node]), allOf(before)) << node;
    }
    std::cout << points << " components threw\n";
}

std::vector<Case> cases() {
    std::vector<Case> all;
    for (const Shape shape : {Shape::Chain, Shape::Tree}) {
        for (const Path path : {Path::Dynamic, Path::Static})
            for (const Place place :
                 {Place::Type, Place::Input, Place::Output, Place::Controller, Place::Observer})
                all.push_back({shape, path, place});
        for (const Place place : {Place::Type, Place::Input, Place::Observer, Place::Element})
            all.push_back({shape, Path::Property, place});
    }
    for (const Path path : {Path::Dynamic, Path::Static, Path::Property})
        for (const Place place : {Place::Input, Place::Observer})
            all.push_back({Shape::Nested, path, place});
    all.push_back({Shape::Nested, Path::Property, Place::Element});
    return all;
}

std::string nameOfCase(const testing::TestParamInfo<Case>& info) {
    constexpr const char* shapes[] = {"Chain", "Tree", "Nested"};
    constexpr const char* paths[] = {"Dynamic", "Static", "Property"};
    constexpr const char* places[] = {"Type",       "Input",    "Output",
                                      "Controller", "Observer", "Element"};
    return std::string(shapes[static_cast<int>(info.param.shape)]) +
           paths[static_cast<int>(info.param.path)] + places[static_cast<int>(info.param.place)];
}

INSTANTIATE_TEST_SUITE_P(EveryHop, ThrowingCallees, testing::ValuesIn(cases()), nameOfCase);

}  // namespace
}  // namespace trel::test
