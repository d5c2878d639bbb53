#pragma once

#include <string>

#include "platform/rob/PoseTemplate.h"

namespace trel::broker {

class [[gnu::visibility("default")]] Listener {
public:
    virtual ~Listener() = default;
    virtual void smartComponentUpdated(unsigned) {}
    virtual void scPropertyValueChanged(unsigned, unsigned) {}
    virtual void scSignalValueChanged(unsigned, unsigned) {}
    virtual void signalConnectionDeleted(unsigned, unsigned) {}
    virtual void setVisualPose(unsigned, const rob::PoseTemplate<double>&) {}
    virtual void reportEvent(const std::string&, const std::string&, const std::string&,
                             const std::string&) {}
};

class [[gnu::visibility("default")]] SignalBroker {
public:
    static void subscribe(Listener& listener);
    static void unsubscribe(Listener& listener);

    static void smartComponentUpdated(unsigned componentId);
    static void scPropertyValueChanged(unsigned propertyId, unsigned componentId);
    static void scSignalValueChanged(unsigned signalId, unsigned componentId);
    static void signalConnectionDeleted(unsigned connectionId, unsigned stationLogicId);
    static void setVisualPose(unsigned objectId, const rob::PoseTemplate<double>& pose);
    static void reportEvent(std::string code, std::string text1, std::string text2,
                            std::string text3);
};

}  // namespace trel::broker
