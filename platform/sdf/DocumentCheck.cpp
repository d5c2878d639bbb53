#include "platform/sdf/DocumentCheck.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <vector>

#include "platform/sdf/XmlText.h"

namespace sdf {

namespace {

// Bytes of a text between two cuts, or more: what the parser makes of so many stays in
// the processor's second cache until it is read.
constexpr std::size_t pieceSize = std::size_t{32} * 1024;

std::string hex(unsigned number, std::size_t digits) {
    std::array<char, 8> buffer;
    const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number, 16).ptr;
    std::string text(buffer.data(), end);
    text.insert(0, digits > text.size() ? digits - text.size() : 0, '0');
    std::transform(text.begin(), text.end(), text.begin(),
                   [](char c) { return c >= 'a' ? static_cast<char>(c - 'a' + 'A') : c; });
    return text;
}

std::string lower(std::string_view text) {
    std::string result(text);
    for (char& c : result)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return result;
}

class Check {
public:
    Check(std::string_view text, unsigned maxDepth) : text_(text), maxDepth_(maxDepth) {}

    Markup run();

private:
    struct Open {
        std::string_view tag;
        std::size_t offset;
    };

    [[noreturn]] static void fail(std::size_t offset, const std::string& fault) {
        throw TextFault(offset, fault);
    }

    void characters();
    void declaration();
    void stray();
    void markup();
    void startTag();
    void attribute();
    void distinctAttributes();
    void endTag();
    void comment();
    void characterData();
    void instruction();
    void text();
    void reference();
    void numericReference(std::size_t start, std::string_view digits);

    bool ended() const { return pos_ == text_.size(); }
    std::string_view rest() const { return {text_.data() + pos_, text_.size() - pos_}; }
    bool isAt(std::string_view token) const { return rest().starts_with(token); }
    bool isAt(char c) const { return pos_ < text_.size() && text_[pos_] == c; }
    bool hasRoot() const { return !found_.rootTag.empty(); }
    bool isAtTagEnd() const { return isAt('>') || xml::is(rest().substr(0, 2), "/>"); }
    std::size_t lastCut() const { return found_.cuts.empty() ? 0 : found_.cuts.back(); }
    bool skipBlanks();
    std::string_view name(std::string_view bearer);
    [[noreturn]] void noName(std::string_view bearer) const;
    std::string_view quotedValue();
    std::string lineOf(std::size_t offset) const {
        return std::to_string(PlaceFinder(text_).placeOf(offset).line);
    }

    std::string_view text_;
    unsigned maxDepth_;
    std::size_t pos_ = 0;
    Markup found_;
    std::vector<Open> open_;
    std::vector<std::string_view> attributes_;  // of the tag that is being read
};

Markup Check::run() {
    characters();
    if (isAt("<?xml") && xml::nameLength(text_.substr(2)) == 3) declaration();
    while (!ended()) {
        if (text_[pos_] == '<')
            markup();
        else if (open_.empty())
            stray();
        else
            text();
    }
    if (!open_.empty()) {
        const std::string tag(open_.back().tag);
        fail(pos_, "the file ends inside <" + tag + "> of line " + lineOf(open_.back().offset) +
                       "; </" + tag + "> is expected");
    }
    if (text_.find_first_not_of(xml::blanks) == std::string_view::npos)
        fail(0, "the file is empty; a root element is expected");
    if (!hasRoot()) fail(pos_, "the file has no element; a root element is expected");
    if (found_.hasText) found_.cuts.clear();
    return std::move(found_);
}

void Check::characters() {
    if (text_.starts_with("\xFE\xFF") || text_.starts_with("\xFF\xFE") ||
        text_.substr(0, 2) == std::string_view("<\0", 2) ||
        text_.substr(0, 2) == std::string_view("\0<", 2))
        fail(0, "the text is UTF-16; UTF-8 is expected");
    const std::size_t good = xml::allowedLength(text_);
    if (good == text_.size()) return;
    const auto [code, length] = xml::decode(text_.substr(good));
    if (length == 0)
        fail(good, "the byte 0x" + hex(code, 2) + " is no UTF-8 here; text in UTF-8 is expected");
    fail(good, "the character U+" + hex(code, 4) +
                   " cannot stand in XML; text without control characters is expected");
}

void Check::declaration() {
    pos_ += 5;
    std::vector<std::string_view> seen;
    while (true) {
        const bool apart = skipBlanks();
        if (isAt("?>")) break;
        const std::size_t start = pos_;
        if (ended() || !apart)
            fail(pos_, "the XML declaration does not end here; \"?>\" is expected");
        const std::string key(name("version or encoding"));
        if (key != "version" && key != "encoding" && key != "standalone")
            fail(start, xml::quoted(key) +
                            " cannot stand in the XML declaration; version or encoding "
                            "is expected");
        if (std::find(seen.begin(), seen.end(), key) != seen.end())
            fail(start, "the XML declaration says " + key + " twice; once is expected");
        seen.push_back(text_.substr(start, key.size()));
        const std::string_view value = quotedValue();
        const std::size_t valueStart = static_cast<std::size_t>(value.data() - text_.data());
        if (key == "version" && value != "1.0")
            fail(valueStart, "the XML version is " + xml::quoted(value) + "; \"1.0\" is expected");
        if (key == "standalone" && value != "yes" && value != "no")
            fail(valueStart,
                 "standalone is " + xml::quoted(value) + "; \"yes\" or \"no\" is expected");
        if (key == "encoding" && lower(value) != "utf-8")
            fail(valueStart,
                 "the encoding is declared as " + xml::quoted(value) + "; \"UTF-8\" is expected");
    }
    if (seen.empty() || seen.front() != "version")
        fail(0, "the XML declaration has no version; version=\"1.0\" is expected first");
    pos_ += 2;
}

void Check::stray() {
    if (skipBlanks()) return;
    if (!hasRoot())
        fail(pos_, "text stands before the root element; an element or a comment is expected");
    fail(pos_, "text stands behind the root element; the end of the file or a comment is expected");
}

void Check::markup() {
    const char second = pos_ + 1 < text_.size() ? text_[pos_ + 1] : '\0';
    if (second == '/')
        endTag();
    else if (second != '!' && second != '?')
        startTag();
    else if (isAt("<!--"))
        comment();
    else if (isAt("<![CDATA["))
        characterData();
    else if (isAt("<!DOCTYPE"))
        fail(pos_, "a document type is declared; a file without <!DOCTYPE> is expected");
    else if (isAt("<!"))
        fail(pos_, "\"<!\" begins nothing that is known; <!-- or <![CDATA[ is expected");
    else
        instruction();
}

void Check::startTag() {
    const std::size_t start = pos_++;
    const std::string_view tag = name("a tag behind \"<\"");
    if (open_.empty() && hasRoot())
        fail(start, "<" + std::string(tag) +
                        "> is a second root element; the file is expected to "
                        "have one");
    if (open_.size() >= maxDepth_)
        fail(start, "<" + std::string(tag) + "> stands too deep; at most " +
                        std::to_string(maxDepth_) + " elements inside each other are expected");
    if (open_.empty()) found_.rootTag = tag;
    if (open_.size() == 1 && start - lastCut() >= pieceSize) found_.cuts.push_back(start);
    attributes_.clear();
    while (true) {
        const bool apart = skipBlanks();
        if (ended())
            fail(pos_, "the file ends inside the tag <" + std::string(tag) + "> of line " +
                           lineOf(start) + "; \">\" is expected");
        if (isAtTagEnd()) break;
        if (!apart && !attributes_.empty() && text_[pos_] != '/')
            fail(pos_, "two attributes stand without a blank between them; a blank is expected");
        attribute();
    }
    if (attributes_.size() > 1) distinctAttributes();
    const bool isOpen = isAt('>');
    if (isOpen) open_.push_back({tag, start});
    pos_ += isOpen ? 1 : 2;
}

void Check::attribute() {
    attributes_.push_back(name("an attribute name or \">\""));
    quotedValue();
}

void Check::distinctAttributes() {
    constexpr std::size_t few = 4;
    if (attributes_.size() <= few) {
        bool areDistinct = true;
        for (auto a = attributes_.begin(); a != attributes_.end(); ++a)
            areDistinct &= std::find(attributes_.begin(), a, *a) == a;
        if (areDistinct) return;
    }
    // By name, those of one name in the order in which they stand.
    std::sort(attributes_.begin(), attributes_.end(),
              [](auto a, auto b) { return a != b ? a < b : a.data() < b.data(); });
    const auto first = std::adjacent_find(attributes_.begin(), attributes_.end());
    if (first == attributes_.end()) return;
    const std::string_view again = *std::next(first);
    fail(static_cast<std::size_t>(again.data() - text_.data()),
         "the attribute " + xml::quoted(again) +
             " stands twice; attributes of different names are "
             "expected");
}

void Check::endTag() {
    const std::size_t start = pos_;
    pos_ += 2;
    if (!open_.empty() && isAt(open_.back().tag)) {  // as mostly
        const std::size_t end = pos_ + open_.back().tag.size();
        if (end < text_.size() && text_[end] == '>') {
            pos_ = end + 1;
            return open_.pop_back();
        }
    }
    const std::string_view tag = name("a tag behind \"</\"");
    const auto shown = [&] { return "</" + std::string(tag) + '>'; };
    if (open_.empty())
        fail(start, shown() + " closes nothing; an element or the end of the file is expected");
    if (open_.back().tag != tag) {
        const std::string expected(open_.back().tag);
        fail(start, shown() + " stands inside <" + expected + "> of line " +
                        lineOf(open_.back().offset) + "; </" + expected + "> is expected");
    }
    skipBlanks();
    if (!isAt('>')) fail(pos_, "the end tag " + shown() + " is not closed; \">\" is expected");
    ++pos_;
    open_.pop_back();
}

void Check::comment() {
    const std::size_t start = pos_;
    const std::size_t dashes = text_.find("--", pos_ + 4);
    if (dashes == std::string_view::npos)
        fail(start, "the comment does not end; \"-->\" is expected");
    if (text_.substr(dashes, 3) != "-->")
        fail(dashes, "\"--\" stands inside a comment; \"-->\" is expected");
    pos_ = dashes + 3;
}

void Check::characterData() {
    if (open_.empty())
        fail(pos_, "character data stands outside the root element; an element is expected");
    found_.hasText = true;
    const std::size_t end = text_.find("]]>", pos_);
    if (end == std::string_view::npos)
        fail(pos_, "the character data does not end; \"]]>\" is expected");
    pos_ = end + 3;
}

void Check::instruction() {
    const std::size_t start = pos_;
    pos_ += 2;
    const std::string_view target = name("the target of a processing instruction");
    if (target == "xml")
        fail(start, "an XML declaration stands here; it is expected at the very beginning only");
    if (lower(target) == "xml")
        fail(start + 2, "the instruction target " + xml::quoted(target) +
                            " is reserved; another name is "
                            "expected");
    if (!isAt("?>") && !skipBlanks())
        fail(pos_, "the processing instruction does not end here; a blank or \"?>\" is expected");
    const std::size_t end = text_.find("?>", pos_);
    if (end == std::string_view::npos)
        fail(start, "the processing instruction does not end; \"?>\" is expected");
    pos_ = end + 2;
}

void Check::text() {
    pos_ = xml::behindBlanks(text_, pos_);
    if (ended() || isAt('<')) return;
    const std::size_t end = std::min(text_.find('<', pos_), text_.size());
    found_.hasText = true;
    const std::string_view run = text_.substr(pos_, end - pos_);
    const std::size_t bracket = run.find("]]>");
    if (bracket != std::string_view::npos)
        fail(pos_ + bracket, "\"]]>\" stands in a text; \"]]&gt;\" is expected");
    while (pos_ < end) {
        pos_ += std::min(text_.substr(pos_, end - pos_).find('&'), end - pos_);
        if (pos_ < end) reference();
    }
}

void Check::reference() {
    const std::size_t start = pos_++;
    const std::size_t end = text_.find_first_of(";<&\"' \t\n", pos_);
    if (end == std::string_view::npos || text_[end] != ';')
        fail(start, "\"&\" begins no reference that ends in \";\"; \"&amp;\" is expected for the "
                    "character itself");
    const std::string_view body = text_.substr(pos_, end - pos_);
    if (body.starts_with('#'))
        numericReference(start, body.substr(1));
    else if (body != "lt" && body != "gt" && body != "amp" && body != "quot" && body != "apos")
        fail(start, "the entity " + xml::quoted(body) +
                        " is unknown; lt, gt, amp, quot, apos or a number is expected");
    pos_ = end + 1;
}

void Check::numericReference(std::size_t start, std::string_view digits) {
    const int base = digits.starts_with('x') ? 16 : 10;
    if (base == 16) digits.remove_prefix(1);
    unsigned code = 0;
    const char* const end = digits.data() + digits.size();
    const auto [read, error] = std::from_chars(digits.data(), end, code, base);
    if (digits.empty() || read != end || error == std::errc::invalid_argument)
        fail(start, "the character reference is no number; digits, or x and hexadecimal digits, "
                    "are expected");
    if (error != std::errc{} || !xml::isAllowed(code))
        fail(start, "the character reference " + xml::quoted(digits) +
                        " names no character of XML; another number is expected");
}

bool Check::skipBlanks() {
    const std::size_t start = pos_;
    pos_ = xml::behindBlanks(text_, pos_);
    return pos_ > start;
}

inline std::string_view Check::name(std::string_view bearer) {
    const std::string_view found = rest().substr(0, xml::nameLength(rest()));
    if (found.empty()) noName(bearer);
    pos_ += found.size();
    return found;
}

void Check::noName(std::string_view bearer) const {
    const std::string found =
        ended() ? "the file ends"
                : xml::quoted(rest().substr(0, xml::decode(rest()).length)) + " stands";
    fail(pos_, found + " where a name belongs; " + std::string(bearer) + " is expected");
}

// "=" and a value in quotes.
std::string_view Check::quotedValue() {
    skipBlanks();
    if (!isAt('=')) fail(pos_, "the attribute has no value; \"=\" is expected");
    ++pos_;
    skipBlanks();
    if (!isAt('"') && !isAt('\''))
        fail(pos_, "the value is not in quotes; a quotation mark is expected");
    const char quote = text_[pos_];
    const std::size_t start = ++pos_;
    while (true) {
        while (!ended() && !xml::is(xml::mayEndValue, text_[pos_])) ++pos_;
        if (ended()) fail(start - 1, "the value does not end; a second quotation mark is expected");
        if (text_[pos_] == quote) break;
        if (text_[pos_] == '<')
            fail(pos_, "\"<\" stands in a value; a quotation mark, or \"&lt;\", is expected");
        if (text_[pos_] == '&')
            reference();
        else
            ++pos_;
    }
    return text_.substr(start, pos_++ - start);
}

}  // namespace

Element::Place PlaceFinder::placeOf(std::size_t offset) {
    if (offset < offset_) *this = PlaceFinder(text_);
    std::string_view between = text_.substr(offset_, offset - offset_);
    Element::Place place = place_;
    for (std::size_t end; (end = between.find('\n')) != std::string_view::npos;) {
        place = {place.line + 1, 1};
        between.remove_prefix(end + 1);
    }
    place.column += static_cast<unsigned>(between.size());
    if (offset > ascii_) {
        const auto continuesCharacter = [](char c) {
            return (static_cast<unsigned char>(c) & 0xC0u) == 0x80u;
        };
        place.column -= static_cast<unsigned>(std::ranges::count_if(between, continuesCharacter));
        ascii_ = offset + xml::asciiLength(text_.substr(offset));
    }
    offset_ = offset;
    place_ = place;
    return place;
}

Markup checkMarkup(std::string_view text, unsigned maxDepth) { return Check(text, maxDepth).run(); }

}  // namespace sdf
