#pragma once

#include <string>

#include "platform/Export.h"
#include "platform/rob/PoseTemplate.h"

namespace trel::broker {

/// One who is told what happens in the station. The operations do nothing
/// unless they are overridden, and are named after what the broker was told.
class TREL_PLATFORM_API Listener {
public:
    virtual ~Listener() = default;

    virtual void smartComponentUpdated(unsigned /*componentId*/) {}
    virtual void scPropertyValueChanged(unsigned /*propertyId*/, unsigned /*componentId*/) {}
    virtual void scSignalValueChanged(unsigned /*signalId*/, unsigned /*componentId*/) {}
    virtual void signalConnectionDeleted(unsigned /*connectionId*/, unsigned /*stationLogicId*/) {}
    virtual void setVisualPose(unsigned /*objectId*/, const rob::PoseTemplate<double>& /*pose*/) {}
    virtual void reportEvent(const std::string& /*code*/, const std::string& /*text1*/,
                             const std::string& /*text2*/, const std::string& /*text3*/) {}
};

/// Carries notices from the components to whoever listens, on the thread of
/// the sender and in the order of subscription. What a listener throws reaches
/// the sender; the listeners behind it are not told.
class TREL_PLATFORM_API SignalBroker {
public:
    /// `listener` is told from the next notice on, until `unsubscribe`; it must
    /// live that long. Both may be called from inside a notice.
    static void subscribe(Listener& listener);

    /// From now on `listener` is told nothing, not even the notice that is
    /// under way. One that never subscribed is passed over.
    static void unsubscribe(Listener& listener);

    static void smartComponentUpdated(unsigned componentId);
    static void scPropertyValueChanged(unsigned propertyId, unsigned componentId);
    static void scSignalValueChanged(unsigned signalId, unsigned componentId);
    static void signalConnectionDeleted(unsigned connectionId, unsigned stationLogicId);
    static void setVisualPose(unsigned objectId, const rob::PoseTemplate<double>& pose);

    /// An event that the user should see: a numeric code as text, then what it
    /// is about.
    static void reportEvent(std::string code, std::string text1, std::string text2,
                            std::string text3);
};

}  // namespace trel::broker
