#pragma once

#include <string>

namespace trel::host {

/// The live station as text: the tree of components with their properties as
/// users see them, their signals, connections in delivery order, and bindings,
/// all by names; then the controllers.
std::string textOfStation();

}  // namespace trel::host
