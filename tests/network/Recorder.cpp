#include "tests/network/Recorder.h"

#include <mutex>
#include <shared_mutex>

#include "platform/sdf/SdfManager.h"
#include "platform/sdf/SdfObject.h"
#include "platform/station/ControllerInterface.h"
#include "tests/network/LiveEdits.h"
#include "tests/network/Model.h"

namespace network {

class Recorder::Controller : public sdf::SdfObject, public trel::ControllerInterface {
public:
    Controller(Recorder& recorder, unsigned id)
        : SdfObject(sdf::Element::Create("controller")->setId(id), sdf::ObjectType::Controller),
          recorder_(recorder) {
        const std::unique_lock lock(sdf::SdfManager::inst()->mutex());
        sdf::SdfManager::inst()->objects().emplace(id, this);
    }
    ~Controller() override { sdf::SdfManager::Remove(id()); }

    void setSignalValue(unsigned signalId, std::variant<int, double> value, bool dynamic) override {
        LiveEdits::expectUnlocked();
        recorder_.log.push_back("controller " + std::to_string(id()) + " " +
                                std::to_string(signalId) + " " + show(value) +
                                (dynamic ? " dynamic" : " static"));
    }

private:
    Recorder& recorder_;
};

Recorder::Recorder() {
    trel::broker::SignalBroker::subscribe(*this);
    sdf::Element::Subscribe(*this);
}

Recorder::~Recorder() {
    sdf::Element::Unsubscribe(*this);
    trel::broker::SignalBroker::unsubscribe(*this);
}

void Recorder::addController(unsigned id) {
    controllers_.push_back(std::make_unique<Controller>(*this, id));
}

void Recorder::scPropertyValueChanged(unsigned propertyId, unsigned componentId) {
    log.push_back("property " + std::to_string(propertyId) + " of " + std::to_string(componentId));
    LiveEdits::called();
}

void Recorder::scSignalValueChanged(unsigned signalId, unsigned componentId) {
    log.push_back("signal " + std::to_string(signalId) + " of " + std::to_string(componentId));
    LiveEdits::called();
}

void Recorder::reportEvent(const std::string& code, const std::string& text1,
                           const std::string& text2, const std::string& text3) {
    LiveEdits::expectUnlocked();
    log.push_back("event " + code + " " + text1 + " " + text2 + " " + text3);
}

// Only values of signals and properties: the rest of the document has its own
// tests.
void Recorder::valueWritten(sdf::Element& element, const std::any& value) {
    LiveEdits::expectUnlocked();
    const bool ofSignal = element.tag() == "value";
    if (!ofSignal && element.tag() != "property") return;
    const auto member = ofSignal ? element.parent() : element.shared_from_this();
    const auto component = member->parent();
    if (!component) return;
    std::string shown = element.getStringFromValue();
    if (const int* number = std::any_cast<int>(&value); ofSignal && number) shown = show(*number);
    if (const double* number = std::any_cast<double>(&value); ofSignal && number)
        shown = show(*number);
    log.push_back("write " + std::to_string(component->getId(true)) + " " +
                  std::string(member->tag()) + " " + std::to_string(member->getId(true)) + " " +
                  shown);
}

}  // namespace network
