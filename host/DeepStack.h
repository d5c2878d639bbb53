#pragma once

#include <functional>

namespace trel::host {

/// Calls `function` on a thread of its own whose stack has room for deliveries over
/// hundreds of thousands of components, and waits for its end. What it throws is
/// thrown here.
void onDeepStack(const std::function<void()>& function);

}  // namespace trel::host
