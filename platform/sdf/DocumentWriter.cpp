#include "platform/sdf/DocumentWriter.h"

#include <algorithm>
#include <any>
#include <cstddef>
#include <utility>

#include "platform/sdf/ValueText.h"
#include "platform/sdf/XmlText.h"

namespace sdf {

namespace {

using Kind = Element::Kind;

constexpr std::size_t longestPath = 200;

[[noreturn]] void fail(const Element& e, const std::string& fault) {
    throw WriteFault(xml::quoted(e.path(), longestPath) + " cannot be written: " + fault);
}

bool isReserved(std::string_view name) {
    return name == "id" || name == "name" || valuetext::isTypeName(name);
}

// The text of a key that can stand as an attribute, null for any other node: the
// file keeps neither the type nor the keys of an attribute.
const std::string* attributeText(const Element& e) {
    if (e.kind() != Kind::Attribute || e.getId(true) != 0 || e.hasName() || e.firstChild() ||
        isReserved(e.tag()))
        return nullptr;
    const std::any* const value = e.ownValue();
    return value ? std::any_cast<std::string>(value) : nullptr;
}

std::string textOf(const Element& note) {
    return note.ownValue() ? valuetext::render(*note.ownValue()) : std::string();
}

bool isEmptyText(const Element& e) { return e.kind() == Kind::Text && textOf(e).empty(); }

}  // namespace

void DocumentWriter::write(const Element& e) {
    if (e.kind() == Kind::Element)
        element(e, 0, Layout::Lines);
    else
        note(e, Layout::Lines);
    text_ += '\n';
}

DocumentWriter::Layout DocumentWriter::layoutOf(const Element& e, Layout outer) {
    if (outer != Layout::Lines) return Layout::Inline;
    Layout layout = Layout::Lines;
    for (const Element* child = e.firstChild(); child; child = child->nextSibling()) {
        if (child->kind() != Kind::Text || isEmptyText(*child)) continue;
        if (textOf(*child).find_first_not_of(xml::blanks) != std::string::npos)
            return Layout::Inline;
        layout = Layout::Verbatim;
    }
    return layout;
}

void DocumentWriter::element(const Element& e, unsigned depth, Layout outer) {
    if (depth >= Document::maxDepth)
        fail(e, "it stands too deep; at most " + std::to_string(Document::maxDepth) +
                    " elements inside each other are expected");
    text_ += '<';
    text_ += e.tag();
    attributes(e);

    const Layout layout = layoutOf(e, outer);
    bool isOpen = false;
    for (const Element* child = e.firstChild(); child; child = child->nextSibling()) {
        if (attributeText(*child) || isEmptyText(*child) || (leftOut_ && leftOut_(*child)))
            continue;
        if (!isOpen) text_ += '>';
        isOpen = true;
        if (layout == Layout::Lines) newLine(depth + 1);
        if (child->kind() == Kind::Element || child->kind() == Kind::Attribute)
            element(*child, depth + 1, layout);
        else
            note(*child, layout);
    }
    if (!isOpen) {
        text_ += " />";
        return;
    }
    if (layout == Layout::Lines) newLine(depth);
    text_ += "</";
    text_ += e.tag();
    text_ += '>';
}

void DocumentWriter::attributes(const Element& e) {
    if (e.getId(true) != 0) attribute(e, "id", std::to_string(e.getId(true)));
    if (e.hasName()) attribute(e, "name", e.name());
    if (const std::any* const value = e.ownValue()) {
        const auto* const text = std::any_cast<std::string>(value);
        attribute(e, Attr::Type(value->type()), text ? *text : valuetext::render(*value));
    }
    for (const Element* child = e.firstChild(); child; child = child->nextSibling())
        if (const std::string* const text = attributeText(*child))
            attribute(e, child->tag(), *text);
}

void DocumentWriter::attribute(const Element& e, std::string_view name, std::string_view value) {
    text_ += ' ';
    text_ += name;
    text_ += "=\"";
    escaped(e, value, true);
    text_ += '"';
}

void DocumentWriter::note(const Element& e, Layout layout) {
    const std::string held = textOf(e);
    if (e.kind() == Kind::Text) {
        if (layout == Layout::Verbatim)
            for (const char blank : held) reference(blank);
        else
            escaped(e, held, false);
        return;
    }
    checkAllowed(e, held);
    if (held.find('\r') != std::string::npos)
        fail(e, "it holds a carriage return, which only values and texts keep; line feeds are "
                "expected");
    if (e.kind() == Kind::Comment) {
        if (held.find("--") != std::string::npos || held.ends_with('-'))
            fail(e, "\"--\" stands in the comment, or \"-\" at its end; neither is expected");
        text_ += "<!--" + held + "-->";
        return;
    }
    if (held.find("?>") != std::string::npos)
        fail(e, "\"?>\" stands in the processing instruction; an instruction without is expected");
    text_ += "<?";
    text_ += e.tag();
    text_ += (held.empty() ? "" : " ") + held + "?>";
}

void DocumentWriter::escaped(const Element& e, std::string_view text, bool isAttribute) {
    checkAllowed(e, text);
    while (!text.empty()) {
        // What stays as it is goes over in one piece.
        const std::size_t plain =
            std::min(text.find_first_of(isAttribute ? "&<\"\n\t\r" : "&<>\r"), text.size());
        text_ += text.substr(0, plain);
        text.remove_prefix(plain);
        if (text.empty()) break;
        switch (text.front()) {
            case '&': text_ += "&amp;"; break;
            case '<': text_ += "&lt;"; break;
            case '>': text_ += "&gt;"; break;
            case '"': text_ += "&quot;"; break;
            default: reference(text.front());
        }
        text.remove_prefix(1);
    }
}

void DocumentWriter::reference(char c) {
    text_ += "&#" + std::to_string(static_cast<int>(c)) + ';';
}

void DocumentWriter::checkAllowed(const Element& e, std::string_view text) const {
    const std::size_t good = xml::allowedLength(text);
    if (good == text.size()) return;
    fail(e, "XML cannot hold the text " + xml::quoted(text) + " from byte " +
                std::to_string(good + 1) + " on; UTF-8 without control characters is expected");
}

void DocumentWriter::newLine(unsigned depth) {
    text_ += '\n';
    text_.append(std::size_t{2} * depth, ' ');
}

}  // namespace sdf
