#pragma once

#include <any>
#include <optional>
#include <string>
#include <string_view>

#include "smartcomp/Lifecycle.h"
#include "tests/smartcomp/Types.h"

namespace trel::test {

/// A component and one of its signals or properties: an end of a connection.
struct End {
    unsigned component;
    unsigned member;
};

unsigned long long packed(End end);

/// The "smart_component" element of a component that is to be made, last under
/// the station element.
class Draft {
public:
    Draft(const std::string& type, unsigned id, const std::string& name);

    /// Without this it sits in the station logic.
    Draft& in(unsigned parentId);

    /// A property of that name, type and value; an empty value writes none.
    Draft& property(unsigned id, const std::string& name, const std::string& type, std::any value,
                    const std::string& unit = "");

    /// A signal of that name and type, holding 0 as a document would: an int if
    /// it is digital, a double otherwise.
    Draft& signal(unsigned id, const std::string& name, const std::string& type);
    Draft& autoReset(unsigned id, const std::string& name, const std::string& type);

    /// A signal connection, or a binding for an empty index.
    Draft& connection(unsigned id, End source, End destination, std::optional<unsigned> index);
    Draft& child(unsigned id);
    Draft& xy(double childId, double x, double y);

    const ElementPtr& element() const { return element_; }

    /// Makes it, as a document that was read is made.
    template <typename Type>
    Type& make() const {
        return dynamic_cast<Type&>(*smartcomp::Create(element_));
    }

private:
    ElementPtr element_;
};

/// A "property" element with its keys, in no document yet.
ElementPtr propertyElement(unsigned id, const std::string& name, const std::string& type,
                           std::any value, const std::string& unit = "");

/// A "signal" element with its keys, in no document yet.
ElementPtr signalElement(unsigned id, const std::string& name, const std::string& type,
                         std::any value, bool autoReset = false);

}  // namespace trel::test
