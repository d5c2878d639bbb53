#pragma once

#include <string>
#include <vector>

#include "platform/sdf/Element.h"

namespace trel::host {

/// What is wrong with a station file, and where.
struct Fault {
    sdf::Element::Place place;
    std::string text;  // what is wrong; what to do
};
using Faults = std::vector<Fault>;

/// The faults of a station as a document, before anything is made from it: ids,
/// parents, values of a wrong type, connection ends that lead nowhere.
Faults faultsOfDocument(const sdf::Element& station);

/// The faults that show when the components live: parents that contain nothing,
/// property texts that their types cannot use, references to nothing.
Faults faultsOfComponents();

/// One line for each fault, "FILE:LINE:COLUMN: text", in the order of the file.
std::string textOfFaults(const std::string& file, Faults faults);

/// How messages call an element that is a component or a controller:
/// "component "Gripper" (id 5)".
std::string called(const sdf::Element& element);

}  // namespace trel::host
