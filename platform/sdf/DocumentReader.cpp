#include "platform/sdf/DocumentReader.h"

#include <any>
#include <array>
#include <charconv>
#include <new>
#include <pugixml.hpp>
#include <stdexcept>
#include <string>
#include <utility>

#include "platform/sdf/DocumentCheck.h"
#include "platform/sdf/Pages.h"
#include "platform/sdf/ValueText.h"
#include "platform/sdf/XmlText.h"

namespace sdf {

namespace {

using Kind = Element::Kind;
using Fault = ValueFault::Kind;
using pugi::xml_attribute;
using pugi::xml_node;

// Blank text says something beside other text, and costs much where it does not.
constexpr unsigned parseFlags(bool hasText) {
    return pugi::parse_pi | pugi::parse_comments | pugi::parse_cdata | pugi::parse_escapes |
           pugi::parse_wconv_attribute | (hasText ? pugi::parse_ws_pcdata : 0);
}

std::string_view expectedFor(std::string_view type) {
    struct Entry {
        std::string_view type;
        std::string_view expected;
    };
    static constexpr std::array<Entry, 7> entries{{
        {"bool", "1, 0, true or false is"},
        {"int", "a whole number from -2147483648 to 2147483647 is"},
        {"uint", "a whole number from 0 to 4294967295 is"},
        {"uint64", "a whole number from 0 to 18446744073709551615 is"},
        {"double", "a number such as -0.5 or 2e-3 is"},
        {"vec3", "three numbers with blanks between them are"},
        {"pose", "seven numbers with blanks between them, x y z and the quaternion w x y z, are"},
    }};
    for (const Entry& entry : entries)
        if (entry.type == type) return entry.expected;
    return "text is";
}

unsigned idOf(std::string_view text, std::size_t offset) {
    const auto fail = [&](std::string_view wrong, Fault kind = Fault::Id) {
        throw ValueTextFault(kind, offset,
                             "the id " + xml::quoted(text) + std::string(wrong) +
                                 "; a whole number from 1 to 4294967295 is expected");
    };
    unsigned id = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), id);
    if (text.empty() || end != text.data() + text.size() || error == std::errc::invalid_argument)
        fail(" is no number");
    if (error != std::errc{}) fail(" does not fit into 32 bits");
    if (id == 0) fail(" stands for no object", Fault::NoId);
    return id;
}

}  // namespace

// The checked text holds nothing that the operations of an element would refuse.
class DocumentReader {
public:
    DocumentReader(std::string_view text, const Markup& markup, const OnValueFault& onFault)
        : text_(text), markup_(markup), places_(text), onFault_(onFault) {}

    DocumentParts parts();

private:
    void parse(std::size_t start, std::size_t end);
    std::shared_ptr<Element> element(const xml_node& node, bool insideText);
    void attribute(std::string_view name, const char* value, Element& e);
    void ownValue(Element& e, std::string_view type, std::string_view text,
                  valuetext::Parser parser);
    void children(xml_node first, const std::shared_ptr<Element>& e, bool insideText);
    std::shared_ptr<Element> key(const xml_node& node, const Element& parent, bool insideText);
    std::shared_ptr<Element> note(const xml_node& node);
    std::shared_ptr<Element> note(Kind kind, std::string_view tag, std::string_view text,
                                  std::size_t offset);
    template <typename Reading>
    void tolerantly(const std::shared_ptr<Element>& e, const Reading& reading) const;
    std::shared_ptr<Element> made(Kind kind, std::string_view tag, std::size_t offset);

    bool hasText(const xml_node& node) const;
    std::size_t startOf(const xml_node& node) const;

    // The parser leaves names and values where they stand in the text that it was given.
    std::size_t offsetOf(const char* parsed) const {
        return pieceStart_ + static_cast<std::size_t>(parsed - piece_.data()) - prefixSize_;
    }

    std::string_view text_;
    const Markup& markup_;
    PlaceFinder places_;
    Pages pages_;
    const OnValueFault& onFault_;

    std::string piece_;  // of the text; the parser writes into it
    std::size_t pieceStart_ = 0;
    std::size_t prefixSize_ = 0;  // what stands in front of the piece
    pugi::xml_document parsed_;
};

DocumentParts DocumentReader::parts() {
    DocumentParts parts;
    std::size_t start = 0;
    const auto read = [&](std::size_t end) {
        parse(start, end);
        for (const xml_node& node : parsed_) {
            if (node.type() != pugi::node_element)
                (parts.root ? parts.after : parts.before).push_back(note(node));
            else if (parts.root)
                children(node.first_child(), parts.root, false);
            else
                parts.root = element(node, false);
        }
        start = end;
    };
    for (const std::size_t cut : markup_.cuts) read(cut);
    read(text_.size());
    return parts;
}

// Parses a piece of the text, as a document by itself.
void DocumentReader::parse(std::size_t start, std::size_t end) {
    piece_.clear();
    if (start != 0) piece_.append("<").append(markup_.rootTag).append(">");
    prefixSize_ = piece_.size();
    pieceStart_ = start;
    piece_.append(text_, start, end - start);
    if (end != text_.size()) piece_.append("</").append(markup_.rootTag).append(">");
    const auto result = parsed_.load_buffer_inplace(
        piece_.data(), piece_.size(), parseFlags(markup_.hasText), pugi::encoding_utf8);
    if (result.status == pugi::status_out_of_memory) throw std::bad_alloc();
    if (!result)
        throw TextFault(offsetOf(piece_.data() + result.offset),
                        std::string(result.description()) + "; well-formed XML is expected");
}

std::shared_ptr<Element> DocumentReader::element(const xml_node& node, bool insideText) {
    const char* const tag = node.name();
    auto e = made(Kind::Element, tag, offsetOf(tag) - std::string_view("<").size());
    for (auto each = node.first_attribute(); each; each = each.next_attribute())
        tolerantly(e, [&] { attribute(each.name(), each.value(), *e); });
    if (const auto first = node.first_child())
        children(first, e, insideText || (markup_.hasText && hasText(node)));
    return e;
}

void DocumentReader::attribute(std::string_view name, const char* value, Element& e) {
    if (xml::is(name, "id")) {
        e.id_ = idOf(value, offsetOf(value));
    } else if (xml::is(name, "name")) {
        e.setName(value);
    } else if (const valuetext::Parser parser = valuetext::parserOf(name)) {
        ownValue(e, name, value, parser);
    } else {
        if (name == "value" && e.ownValue())
            throw ValueTextFault(Fault::SecondValue, offsetOf(name.data()),
                                 "the element has a value of its own and an attribute \"value\"; "
                                 "one of the two is expected");
        e.appendNew(note(Kind::Attribute, name, value, offsetOf(name.data())));
    }
}

// Passes a fault on to who is to be told.
template <typename Reading>
void DocumentReader::tolerantly(const std::shared_ptr<Element>& e, const Reading& reading) const {
    if (!onFault_) return reading();
    try {
        reading();
    } catch (const ValueTextFault& fault) {
        onFault_(fault, e);
    }
}

void DocumentReader::ownValue(Element& e, std::string_view type, std::string_view text,
                              valuetext::Parser parser) {
    if (e.ownValue())
        throw ValueTextFault(Fault::SecondValue, offsetOf(type.data()),
                             "the element has a value of type " + Attr::Type(e.value_.type()) +
                                 " and one of type " + std::string(type) +
                                 "; one value is expected");
    if (e.first_ && e.get("value"))
        throw ValueTextFault(Fault::SecondValue, offsetOf(type.data()),
                             "the element has an attribute \"value\" and a value of its own; one "
                             "of the two is expected");
    if (!parser(text, e.value_))
        throw ValueTextFault(Fault::Value, offsetOf(text.data()),
                             xml::quoted(text) + " is no value of type " + std::string(type) +
                                 "; " + std::string(expectedFor(type)) + " expected");
}

void DocumentReader::children(xml_node first, const std::shared_ptr<Element>& e, bool insideText) {
    std::string text;  // adjacent texts are one
    std::size_t textStart = 0;
    const auto endText = [&] {
        if (text.empty()) return;
        e->appendNew(note(Kind::Text, {}, text, textStart));
        text.clear();
    };
    for (auto child = first; child; child = child.next_sibling()) {
        const auto type = child.type();
        if (type == pugi::node_pcdata || type == pugi::node_cdata) {
            if (!insideText) continue;
            if (text.empty()) textStart = startOf(child);
            text += child.value();
            continue;
        }
        endText();
        if (type == pugi::node_element)
            tolerantly(e, [&] { e->appendNew(key(child, *e, insideText)); });
        else
            e->appendNew(note(child));
    }
    endText();
}

// A child that does not stand beside its parent's value as a second one.
std::shared_ptr<Element> DocumentReader::key(const xml_node& node, const Element& parent,
                                             bool insideText) {
    auto inner = element(node, insideText);
    if (parent.ownValue() && inner->tag() == "value" && inner->value().has_value())
        throw ValueTextFault(Fault::SecondValue, startOf(node),
                             "the element has a value of its own and a key \"value\" that holds "
                             "one; one of the two is expected");
    return inner;
}

std::shared_ptr<Element> DocumentReader::note(const xml_node& node) {
    const Kind kind = node.type() == pugi::node_comment ? Kind::Comment : Kind::Instruction;
    return note(kind, node.name(), node.value(), startOf(node));
}

std::shared_ptr<Element> DocumentReader::note(Kind kind, std::string_view tag,
                                              std::string_view text, std::size_t offset) {
    auto note = made(kind, tag, offset);
    note->value_ = std::string(text);
    return note;
}

std::shared_ptr<Element> DocumentReader::made(Kind kind, std::string_view tag, std::size_t offset) {
    auto e =
        std::allocate_shared<Element>(PageAllocator<Element>(pages_), Element::Key{}, kind, tag);
    e->self_.know(e);
    e->place_ = places_.placeOf(offset);
    return e;
}

// Whether the node holds text that is more than the layout of the file: not
// blank, or put down as character data or as references.
bool DocumentReader::hasText(const xml_node& node) const {
    for (const xml_node& child : node) {
        if (child.type() == pugi::node_cdata && *child.value()) return true;
        if (child.type() != pugi::node_pcdata) continue;
        if (text_[xml::behindBlanks(text_, startOf(child))] != '<') return true;
    }
    return false;
}

// The first character of its markup.
std::size_t DocumentReader::startOf(const xml_node& node) const {
    switch (node.type()) {
        case pugi::node_element: return offsetOf(node.name()) - std::string_view("<").size();
        case pugi::node_pi: return offsetOf(node.name()) - std::string_view("<?").size();
        case pugi::node_comment: return offsetOf(node.value()) - std::string_view("<!--").size();
        case pugi::node_cdata: return offsetOf(node.value()) - std::string_view("<![CDATA[").size();
        default: return offsetOf(node.value());
    }
}

DocumentParts readParts(std::string_view text, const Markup& markup, const OnValueFault& onFault) {
    return DocumentReader(text, markup, onFault).parts();
}

}  // namespace sdf
