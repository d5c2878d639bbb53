#pragma once

#include "platform/Export.h"

namespace trel::visual {

/// The graphics of one component. The library only hands it on to the function
/// that dresses it.
class TREL_PLATFORM_API Visual {
public:
    virtual ~Visual() = default;
};

}  // namespace trel::visual
