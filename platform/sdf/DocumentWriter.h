#pragma once

#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

#include "platform/sdf/Document.h"
#include "platform/sdf/Element.h"

namespace sdf {

/// What the document holds and a file cannot; what() says it, and what is
/// expected.
class WriteFault : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// Puts the parts of a document down as text, in the form that Document
/// describes. One writer writes one text.
class DocumentWriter {
public:
    explicit DocumentWriter(const Document::LeftOut& leftOut) : leftOut_(leftOut) {}

    /// Appends a root element or a note, on a line of its own.
    /// \throws WriteFault
    void write(const Element& e);

    std::string text() && { return std::move(text_); }

private:
    /// How the content of an element is laid out.
    enum class Layout {
        Lines,     // each child on a line of its own
        Inline,    // beside text, where every blank counts
        Verbatim,  // the same, and only blanks: written as references
    };

    static Layout layoutOf(const Element& e, Layout outer);

    void element(const Element& e, unsigned depth, Layout outer);
    void attributes(const Element& e);
    void attribute(const Element& e, std::string_view name, std::string_view value);
    void note(const Element& e, Layout layout);
    void escaped(const Element& e, std::string_view text, bool isAttribute);
    void reference(char c);
    void checkAllowed(const Element& e, std::string_view text) const;
    void newLine(unsigned depth);

    const Document::LeftOut& leftOut_;
    std::string text_ = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
};

}  // namespace sdf
