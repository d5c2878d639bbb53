#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

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
    std::size_t ascii_ = 0;  // from the offset to here there is nothing else
    Element::Place place_{1, 1};
};

/// What a check found out about a text.
struct Markup {
    /// Whether there is text that is more than blanks for the layout.
    bool hasText = false;

    std::string_view rootTag;

    /// Starts of children of the root, some way apart from each other: with the root's
    /// tags added, what stands between two of them is a document by itself. None where
    /// there is text.
    std::vector<std::size_t> cuts;
};

/// Checks that a text is one well-formed XML document in UTF-8, without a
/// document type, and nested at most `maxDepth` deep: all that the parser behind
/// it lets pass. Line ends must be LF already.
/// \throws TextFault
Markup checkMarkup(std::string_view text, unsigned maxDepth);

}  // namespace sdf
