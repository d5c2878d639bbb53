#pragma once

#include <any>
#include <memory>
#include <string>
#include <vector>

#include "platform/broker/SignalBroker.h"
#include "platform/sdf/Element.h"

namespace network {

/// Writes down, in the words of the model's log, what happens in the library.
class Recorder : public trel::broker::Listener, public sdf::ValueObserver {
public:
    Recorder();
    ~Recorder() override;

    std::vector<std::string> log;

    void scPropertyValueChanged(unsigned propertyId, unsigned componentId) override;
    void scSignalValueChanged(unsigned signalId, unsigned componentId) override;
    void reportEvent(const std::string& code, const std::string& text1, const std::string& text2,
                     const std::string& text3) override;
    void valueWritten(sdf::Element& element, const std::any& value) override;

    /// Enters a controller in the object table that writes down what it is given,
    /// until the recorder goes.
    void addController(unsigned id);

private:
    class Controller;

    std::vector<std::unique_ptr<Controller>> controllers_;
};

}  // namespace network
