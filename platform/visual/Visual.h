#pragma once

namespace trel::visual {

/// The graphics of one component. The library only hands it on to the function
/// that dresses it.
class Visual {
public:
    virtual ~Visual() = default;
};

}  // namespace trel::visual
