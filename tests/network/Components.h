#pragma once

#include <memory>
#include <string>

#include "platform/sdf/Element.h"
#include "tests/network/Model.h"

namespace network {

/// Registers the component types of the test; their components behave as the
/// nodes of `plan` with their ids say.
void registerTypes(const Model& plan);

/// The type name of a node.
const char* typeName(Kind kind);

/// Appends the signals and properties of a node to its element, and one
/// connection to that of a group.
void appendMembers(sdf::Element& element, const Node& node);
void appendConnection(sdf::Element& element, unsigned id, const Connection& connection);

}  // namespace network
