#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/sdf/Document.h"
#include "platform/sdf/DocumentCheck.h"
#include "platform/sdf/Element.h"

namespace sdf {

/// What stands in a document file, in order.
struct DocumentParts {
    std::vector<std::shared_ptr<Element>> before;  // notes ahead of the root
    std::shared_ptr<Element> root;
    std::vector<std::shared_ptr<Element>> after;  // and behind it
};

/// A fault of a value at a byte of a text.
class ValueTextFault : public TextFault {
public:
    ValueTextFault(ValueFault::Kind kind, std::size_t offset, const std::string& fault)
        : TextFault(offset, fault), kind_(kind) {}

    ValueFault::Kind kind() const { return kind_; }

private:
    ValueFault::Kind kind_;
};

/// Told of an id or a value that is none; the element goes without it.
using OnValueFault =
    std::function<void(const ValueTextFault& fault, const std::shared_ptr<Element>& element)>;

/// Makes elements of a text that is well-formed XML; `markup` is what checkMarkup
/// said of it.
/// \throws ValueTextFault for an id or a value that is none, if nobody is to be told.
DocumentParts readParts(std::string_view text, const Markup& markup,
                        const OnValueFault& onFault = {});

}  // namespace sdf
