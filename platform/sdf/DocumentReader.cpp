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

// The offsets of the attributes of one tag, in order; looked for once they are asked
// for, which is mostly never.
class AttributeFinder {
public:
    AttributeFinder(std::string_view text, std::size_t behindTag) : text_(text), pos_(behindTag) {}

    void next() { ++ahead_; }
    std::size_t name() {
        find();
        return name_;
    }
    std::size_t value() {
        find();
        return value_;
    }

private:
    void find() {
        for (; ahead_ != 0; --ahead_) {
            name_ = xml::behindBlanks(text_, pos_);
            value_ = text_.find_first_of("\"'", name_) + 1;
            pos_ = text_.find(text_[value_ - 1], value_) + 1;
        }
    }

    std::string_view text_;
    std::size_t pos_;
    std::size_t name_ = 0;
    std::size_t value_ = 0;
    std::size_t ahead_ = 0;
};

class Reader {
public:
    Reader(std::string_view text, bool hasText, const OnValueFault& onFault)
        : text_(text), places_(text), hasText_(hasText), onFault_(onFault) {}

    DocumentParts parts();

private:
    std::shared_ptr<Element> element(const xml_node& node, bool insideText);
    void attributes(const xml_node& node, const std::shared_ptr<Element>& e, std::size_t behindTag);
    void attribute(const xml_attribute& attribute, Element& e, AttributeFinder& offsets);
    void ownValue(Element& e, std::string_view type, const char* text, AttributeFinder& offsets);
    void children(const xml_node& node, const std::shared_ptr<Element>& e, bool insideText);
    std::shared_ptr<Element> key(const xml_node& node, const Element& parent, bool insideText);
    std::shared_ptr<Element> note(const xml_node& node);
    template <typename Reading>
    void tolerantly(const std::shared_ptr<Element>& e, const Reading& reading) const;
    std::shared_ptr<Element> placed(std::shared_ptr<Element> e, std::size_t offset);

    bool hasText(const xml_node& node) const;
    static std::size_t offsetOf(const xml_node& node);

    std::string_view text_;
    PlaceFinder places_;
    bool hasText_;
    const OnValueFault& onFault_;
};

DocumentParts Reader::parts() {
    pugi::xml_document document;
    const auto result =
        document.load_buffer(text_.data(), text_.size(), parseFlags(hasText_), pugi::encoding_utf8);
    if (result.status == pugi::status_out_of_memory) throw std::bad_alloc();
    if (!result)
        throw TextFault(static_cast<std::size_t>(result.offset),
                        std::string(result.description()) + "; well-formed XML is expected");
    DocumentParts parts;
    for (const xml_node& node : document) {
        if (node.type() == pugi::node_element)
            parts.root = element(node, false);
        else
            (parts.root ? parts.after : parts.before).push_back(note(node));
    }
    return parts;
}

std::shared_ptr<Element> Reader::element(const xml_node& node, bool insideText) {
    const std::size_t start = offsetOf(node);
    const std::string_view tag = node.name();
    auto e = placed(Element::Create(tag), start);
    attributes(node, e, start + 1 + tag.size());
    children(node, e, insideText || (hasText_ && hasText(node)));
    return e;
}

void Reader::attributes(const xml_node& node, const std::shared_ptr<Element>& e,
                        std::size_t behindTag) {
    AttributeFinder offsets(text_, behindTag);
    for (const xml_attribute& each : node.attributes()) {
        offsets.next();
        tolerantly(e, [&] { attribute(each, *e, offsets); });
    }
}

void Reader::attribute(const xml_attribute& attribute, Element& e, AttributeFinder& offsets) {
    const std::string_view name = attribute.name();
    if (name == "id") {
        e.setId(idOf(attribute.value(), offsets.value()));
    } else if (name == "name") {
        e.setName(attribute.value());
    } else if (valuetext::isTypeName(name)) {
        ownValue(e, name, attribute.value(), offsets);
    } else {
        if (name == "value" && e.ownValue())
            throw ValueTextFault(Fault::SecondValue, offsets.name(),
                                 "the element has a value of its own and an attribute \"value\"; "
                                 "one of the two is expected");
        e.append(placed(Element::CreateNote(Kind::Attribute, name, attribute.value()),
                        offsets.name()));
    }
}

// Passes a fault on to who is to be told.
template <typename Reading>
void Reader::tolerantly(const std::shared_ptr<Element>& e, const Reading& reading) const {
    if (!onFault_) return reading();
    try {
        reading();
    } catch (const ValueTextFault& fault) {
        onFault_(fault, e);
    }
}

void Reader::ownValue(Element& e, std::string_view type, const char* text,
                      AttributeFinder& offsets) {
    if (e.ownValue())
        throw ValueTextFault(Fault::SecondValue, offsets.name(),
                             "the element has a value of type " + e.ownValue()->type() +
                                 " and one of type " + std::string(type) +
                                 "; one value is expected");
    if (e.get("value"))
        throw ValueTextFault(Fault::SecondValue, offsets.name(),
                             "the element has an attribute \"value\" and a value of its own; one "
                             "of the two is expected");
    std::any value;
    try {
        value = valuetext::parse(type, text);
    } catch (const std::invalid_argument&) {
        throw ValueTextFault(Fault::Value, offsets.value(),
                             xml::quoted(text) + " is no value of type " + std::string(type) +
                                 "; " + std::string(expectedFor(type)) + " expected");
    }
    e.restoreValue(std::move(value));
}

void Reader::children(const xml_node& node, const std::shared_ptr<Element>& e, bool insideText) {
    std::string text;  // adjacent texts are one
    std::size_t textStart = 0;
    const auto endText = [&] {
        if (text.empty()) return;
        e->append(placed(Element::CreateNote(Kind::Text, {}, text), textStart));
        text.clear();
    };
    for (const xml_node& child : node) {
        if (child.type() == pugi::node_pcdata || child.type() == pugi::node_cdata) {
            if (!insideText) continue;
            if (text.empty()) textStart = offsetOf(child);
            text += child.value();
            continue;
        }
        endText();
        if (child.type() != pugi::node_element) {
            e->append(note(child));
            continue;
        }
        tolerantly(e, [&] { e->append(key(child, *e, insideText)); });
    }
    endText();
}

// A child that does not stand beside its parent's value as a second one.
std::shared_ptr<Element> Reader::key(const xml_node& node, const Element& parent, bool insideText) {
    auto inner = element(node, insideText);
    if (inner->tag() == "value" && parent.ownValue() && inner->value().has_value())
        throw ValueTextFault(Fault::SecondValue, offsetOf(node),
                             "the element has a value of its own and a key \"value\" that holds "
                             "one; one of the two is expected");
    return inner;
}

std::shared_ptr<Element> Reader::note(const xml_node& node) {
    const Kind kind = node.type() == pugi::node_comment ? Kind::Comment : Kind::Instruction;
    return placed(Element::CreateNote(kind, node.name(), node.value()), offsetOf(node));
}

std::shared_ptr<Element> Reader::placed(std::shared_ptr<Element> e, std::size_t offset) {
    e->setPlace(places_.placeOf(offset));
    return e;
}

// Whether the node holds text that is more than the layout of the file: not
// blank, or put down as character data or as references.
bool Reader::hasText(const xml_node& node) const {
    for (const xml_node& child : node) {
        if (child.type() == pugi::node_cdata && *child.value()) return true;
        if (child.type() != pugi::node_pcdata) continue;
        if (text_[xml::behindBlanks(text_, offsetOf(child))] != '<') return true;
    }
    return false;
}

// Of the first character of its markup; the parser gives that of its name or text.
std::size_t Reader::offsetOf(const xml_node& node) {
    const auto offset = static_cast<std::size_t>(node.offset_debug());
    switch (node.type()) {
        case pugi::node_element: return offset - std::string_view("<").size();
        case pugi::node_comment: return offset - std::string_view("<!--").size();
        case pugi::node_cdata: return offset - std::string_view("<![CDATA[").size();
        case pugi::node_pi: return offset - std::string_view("<?").size();
        default: return offset;
    }
}

}  // namespace

DocumentParts readParts(std::string_view text, bool hasText, const OnValueFault& onFault) {
    return Reader(text, hasText, onFault).parts();
}

}  // namespace sdf
