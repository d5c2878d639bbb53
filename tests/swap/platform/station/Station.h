#pragma once

#include <memory>

#include "platform/sdf/Element.h"
#include "platform/sdf/SdfObject.h"

namespace trel {

/// An empty station that cannot be saved.
class [[gnu::visibility("default")]] Station {
public:
    static constexpr unsigned id = 1;
    static constexpr unsigned logicId = 2;
    static Station& inst();

    std::shared_ptr<sdf::Element> element;
    std::shared_ptr<sdf::Element> logic;

private:
    Station();
    std::unique_ptr<sdf::SdfObject> object_;
};

[[gnu::visibility("default")]] std::shared_ptr<sdf::Element> GetStationElem();
[[gnu::visibility("default")]] std::shared_ptr<sdf::Element> GetStationLogicElem();

}  // namespace trel
