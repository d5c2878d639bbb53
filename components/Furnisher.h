#pragma once

#include <string_view>

#include "platform/sdf/Element.h"

namespace trel::components {

/// Gives a new component's element the properties and signals that its type
/// starts with, complete with every key that the document keeps of them.
class Furnisher {
public:
    explicit Furnisher(sdf::Element& component) : component_(component) {}

    struct Property {
        unsigned id;  // 1 to 10, which every component keeps for its type
        std::string_view name;
        std::string_view type;
        std::string_view value;
        std::string_view unit;
        std::string_view description;
        bool readOnly = false;  // kept by the component, not by the user
    };
    Furnisher& property(const Property& property);

    struct Signal {
        std::string_view name;
        std::string_view type;
        std::string_view description;
        bool autoReset = false;
    };
    /// Signals are numbered from 1 in the order in which they are given.
    Furnisher& signal(const Signal& signal);

private:
    sdf::Element& component_;
    unsigned signals_ = 0;
};

}  // namespace trel::components
