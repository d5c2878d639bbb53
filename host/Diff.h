#pragma once

#include <string>
#include <vector>

#include "platform/sdf/Element.h"

namespace trel::host {

/// How two stations differ in what they mean, a line each: components and
/// controllers, their members and values, connections, bindings and the order of
/// delivery. What they share is found by the paths of names, and by ids where names
/// are ambiguous; layout, comments and ids say nothing.
std::vector<std::string> differences(const sdf::Element& a, const sdf::Element& b);

}  // namespace trel::host
