#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>

#include "platform/sdf/Element.h"

namespace sdf {

/// A fault at a byte of a text; what() says what is wrong and what is expected.
class TextFault : public std::runtime_error {
public:
    TextFault(std::size_t offset, const std::string& fault)
        : std::runtime_error(fault), offset_(offset) {}

    std::size_t offset() const { return offset_; }

private:
    std::size_t offset_;
};

/// Tells line and column of bytes of a text. Asking front to back passes over
/// the text once.
class PlaceFinder {
public:
    /// `text` must outlive the finder.
    explicit PlaceFinder(std::string_view text) : text_(text) {}

    Element::Place placeOf(std::size_t offset);

private:
    std::string_view text_;
    std::size_t offset_ = 0;
    Element::Place place_{1, 1};
};

/// Checks that a text is one well-formed XML document in UTF-8, without a
/// document type, and nested at most `maxDepth` deep: all that the parser behind
/// it lets pass. Line ends must be LF already. Says whether there is text in it
/// that is more than blanks for the layout.
/// \throws TextFault
bool checkMarkup(std::string_view text, unsigned maxDepth);

}  // namespace sdf
