#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include "platform/sdf/Element.h"

namespace sdf {

/// What stands in a document file, in order.
struct DocumentParts {
    std::vector<std::shared_ptr<Element>> before;  // notes ahead of the root
    std::shared_ptr<Element> root;
    std::vector<std::shared_ptr<Element>> after;  // and behind it
};

/// Makes elements of a text that is well-formed XML; `hasText` is what checkMarkup
/// said of it.
/// \throws TextFault for an id or a value that is none.
DocumentParts readParts(std::string_view text, bool hasText);

}  // namespace sdf
