#pragma once

#include <memory>

#include "components/Furnisher.h"
#include "smartcomp/Aggregation.h"

namespace trel::components {

/// An aggregation that the user puts together: what it does is what its
/// children and connections do.
class Group final : public smartcomp::Aggregation {
public:
    static constexpr const char* typeName = "Group";
    static constexpr const char* description =
        "Group: holds other components with the connections and bindings between them. It starts "
        "empty and gets the signals and properties that its user gives it.";

    explicit Group(std::shared_ptr<sdf::Element> element);
    static void furnish(Furnisher&) {}

    void initialize() override;
    void execute(long long) override {}
};

}  // namespace trel::components
