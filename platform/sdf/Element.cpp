#include "platform/sdf/Element.h"

#include <algorithm>
#include <cstdint>
#include <functional>
#include <stdexcept>
#include <unordered_map>
#include <utility>

#include "platform/sdf/Subscribers.h"
#include "platform/sdf/ValueText.h"
#include "platform/sdf/XmlText.h"

namespace sdf {

namespace {

constexpr std::string_view valueKey = "value";

// With more children than this, keys are found through an index.
constexpr unsigned fewChildren = 16;

constinit LastingSubscribers<ValueObserver> observers;

struct TextHash : std::hash<std::string_view> {
    using is_transparent = void;
};

}  // namespace

/// The first child of each tag and how many there are. Instructions are left out: their
/// tags are no keys.
class Element::TagIndex {
public:
    struct Alike {
        Element* first = nullptr;
        std::size_t count = 0;
    };

    explicit TagIndex(Element* firstChild) {
        for (Element* child = firstChild; child; child = child->next_) {
            if (child->kind_ == Kind::Instruction) continue;
            Alike& alike = byTag_[std::string(child->tag())];
            if (++alike.count == 1) alike.first = child;
        }
    }

    void makeRoomFor(std::string_view tag) { byTag_.try_emplace(std::string(tag)); }

    // There is room for its tag.
    void add(Element& child) noexcept {
        if (child.kind_ == Kind::Instruction) return;
        Alike& alike = byTag_.find(child.tag())->second;
        if (++alike.count == 1 || nextAlike(child) == alike.first) alike.first = &child;
    }

    // Its room stays. Who takes one after the other walks over each sibling once: a search
    // begins where the one before it ended.
    void remove(Element& child) noexcept {
        if (child.kind_ == Kind::Instruction) return;
        Alike& alike = byTag_.find(child.tag())->second;
        --alike.count;
        if (alike.first == &child) alike.first = alike.count > 0 ? nextAlike(child) : nullptr;
    }

    void dropEmptyRoom(std::string_view tag) noexcept {
        const auto entry = byTag_.find(tag);
        if (entry != byTag_.end() && entry->second.count == 0) byTag_.erase(entry);
    }

    Alike alike(std::string_view tag) const {
        const auto entry = byTag_.find(tag);
        return entry == byTag_.end() ? Alike() : entry->second;
    }

private:
    static Element* nextAlike(const Element& child) {
        Element* e = child.next_;
        while (e && !e->isKey(child.tag())) e = e->next_;
        return e;
    }

    std::unordered_map<std::string, Alike, TextHash, std::equal_to<>> byTag_;
};

/// What only few elements have.
struct Element::Rare {
    std::string name;
    std::unique_ptr<TagIndex> index;  // once there are many children
};

bool Element::isIndexed() const { return childCount_ > fewChildren; }

// There is one.
Element::TagIndex& Element::index() const { return *rare_->index; }

Element::Rare& Element::rare() {
    if (!rare_) rare_ = std::make_unique<Rare>();
    return *rare_;
}

std::shared_ptr<Element> Element::Make(Kind kind, std::string_view tag) {
    auto e = std::make_shared<Element>(Key{}, kind, tag);
    e->self_.know(e);
    return e;
}

std::shared_ptr<Element> Element::Create(std::string_view tag) {
    if (!xml::isName(tag))
        throw std::invalid_argument(xml::quoted(tag) + " cannot be a tag: it must be an XML name");
    return Make(Kind::Element, tag);
}

std::shared_ptr<Element> Element::CreateNote(Kind kind, std::string_view tag,
                                             std::string_view text) {
    const bool isNamed = kind == Kind::Attribute || kind == Kind::Instruction;
    if (isNamed && !xml::isName(tag))
        throw std::invalid_argument(xml::quoted(tag) + " cannot be a tag: it must be an XML name");
    auto note = Make(kind, tag);
    note->value_ = std::string(text);
    return note;
}

Element::Element(Key, Kind kind, std::string_view tag) : tag_(tag), kind_(kind) {}

// Asks for the memory of a small tree, which mostly stands in one stretch, as it was made.
// Always inline: a function of nothing else is taken for one that does nothing.
[[gnu::always_inline]] inline void Element::prefetchTree() const {
    constexpr std::uintptr_t line = 64;  // bytes
    constexpr std::uintptr_t most = 8192;
    const auto from = reinterpret_cast<std::uintptr_t>(first_);
    const auto to = reinterpret_cast<std::uintptr_t>(last()) + sizeof *this;
    if (to - from > most) return;
    for (std::uintptr_t place = from; place < to; place += line)
        __builtin_prefetch(reinterpret_cast<const void*>(place));
}

Element::~Element() {
    if (first_) prefetchTree();
    // Neither a long row nor a deep tree may recurse: the children of a dying child
    // come next in the row that is taken apart here, in the order of the file.
    for (Element* next = first_; next;) {
        Element& child = *next;
        next = child.next_;
        const std::shared_ptr<Element> kept = child.self_.release();
        if (kept.use_count() == 1 && child.first_) {
            child.last()->next_ = next;
            next = std::exchange(child.first_, nullptr);
        }
        child.parent_ = child.prev_ = child.next_ = nullptr;
    }
}

std::shared_ptr<Element> Element::shared_from_this() {
    return parent_ ? self_.kept() : self_.found();
}

std::shared_ptr<Element> Element::parent() const {
    return parent_ ? parent_->shared_from_this() : nullptr;
}

std::string Element::path() const {
    std::vector<const Element*> line;
    for (const Element* e = this; e; e = e->parent_) line.push_back(e);
    std::string path;
    for (auto e = line.rbegin(); e != line.rend(); ++e) {
        if (!path.empty()) path += '/';
        path += (*e)->tag();
        if ((*e)->hasName_)
            path += ' ' + (*e)->name();
        else if ((*e)->id_ != 0)
            path += ' ' + std::to_string((*e)->id_);
    }
    return path;
}

const std::string& Element::name() const {
    static const auto& none = *new std::string;
    return rare_ ? rare_->name : none;
}

void Element::setName(std::string name) {
    rare().name = std::move(name);
    hasName_ = true;
}

unsigned Element::getId(bool orZero) const {
    if (id_ == 0 && !orZero) throw std::logic_error(path() + " has no object id");
    return id_;
}

std::shared_ptr<Element> Element::setId(unsigned id) {
    id_ = id;
    return shared_from_this();
}

// The first node of that tag; notes have tags that are no keys.
inline Element* Element::find(std::string_view name) const {
    if (!first_) return nullptr;
    if (lastFound_ && lastFound_->tag_.is(name)) return lastFound_;
    return findAnew(name);
}

[[gnu::noinline]] Element* Element::findAnew(std::string_view name) const {
    if (isIndexed()) return index().alike(name).first;
    for (Element* e = first_; e; e = e->next_)
        if (e->tag_.is(name) && e->kind_ != Kind::Instruction) return lastFound_ = e;
    return nullptr;
}

const Element& Element::holder() const {
    const Element* e = this;
    while (const Element* const inner = e->find(valueKey)) e = inner;
    return *e;
}

Element& Element::holder() { return const_cast<Element&>(std::as_const(*this).holder()); }

// What is found at once, as mostly, needs no frame; what waits for a call stands apart.
std::shared_ptr<Element> Element::touch(std::string_view name) {
    if (lastFound_ && lastFound_->tag_.isShort(name)) return lastFound_->self_.kept();
    return touchAnew(name);
}

[[gnu::noinline]] std::shared_ptr<Element> Element::touchAnew(std::string_view name) {
    if (name.empty()) return shared_from_this();
    if (const Element* const key = find(name)) return key->self_.kept();
    return append(name);
}

std::shared_ptr<Element> Element::get(std::string_view name) {
    if (name.empty()) return shared_from_this();
    const Element* const key = find(name);
    return key ? key->self_.kept() : nullptr;
}

std::vector<std::shared_ptr<Element>> Element::children(std::string_view name) const {
    std::vector<std::shared_ptr<Element>> found;
    auto [e, left] = isIndexed() ? index().alike(name) : TagIndex::Alike{first_, childCount_};
    for (; left > 0 && e; e = e->next_) {
        if (!e->isKey(name)) continue;
        --left;
        if (e->kind_ == Kind::Element) found.push_back(e->self_.kept());
    }
    return found;
}

std::shared_ptr<Element> Element::append(std::string_view tag) {
    auto child = Create(tag);
    appendNew(child);
    return child;
}

std::shared_ptr<Element> Element::append(std::shared_ptr<Element> child) {
    if (!child) throw std::invalid_argument("a null element cannot be appended to " + path());
    if (child.get() == this) throw std::invalid_argument(path() + " cannot stand inside itself");
    for (const Element* e = child->first_ ? this : nullptr; e; e = e->parent_)
        if (e == child.get())
            throw std::invalid_argument(child->path() + " cannot stand inside itself");
    makeRoomFor(*child);
    if (child->parent_ == this)
        unlink(*child);
    else
        child->removeFromParent();
    // No two attributes have one name.
    if (child->kind_ == Kind::Attribute && find(child->tag())) child->kind_ = Kind::Element;
    insertBefore(std::shared_ptr<Element>(child), nullptr);
    return child;
}

std::shared_ptr<Element> Element::appendObject(std::string_view tag, unsigned id,
                                               std::string_view name) {
    auto object = Create(tag);
    object->id_ = id;
    object->setName(std::string(name));
    appendNew(object);
    return object;
}

void Element::removeFromParent() noexcept {
    if (!parent_) return;
    Element& parent = *parent_;
    const auto self = parent.unlink(*this);
    if (parent.isIndexed()) parent.index().dropEmptyRoom(tag());
}

void Element::moveBefore(Element& child, const Element* next) noexcept {
    if (&child == next || child.next_ == next) return;
    Element* const place = next ? const_cast<Element*>(next) : nullptr;
    insertBefore(unlink(child), place);
}

void Element::appendNew(std::shared_ptr<Element> child) {
    makeRoomFor(*child);
    insertBefore(std::move(child), nullptr);
}

// All of an insertion that may throw.
inline void Element::makeRoomFor(const Element& child) {
    if (childCount_ >= fewChildren) makeRoomInIndexFor(child);
}

void Element::makeRoomInIndexFor(const Element& child) {
    if (!isIndexed()) {
        rare().index = std::make_unique<TagIndex>(first_);
        childCount_ = fewChildren + 1;
    }
    index().makeRoomFor(child.tag());
}

inline void Element::insertBefore(std::shared_ptr<Element>&& child, Element* next) noexcept {
    Element& e = *child;
    const bool isNote = e.kind_ != Kind::Element && e.kind_ != Kind::Attribute;
    if (value_.has_value() && !isNote && e.tag() == valueKey) {
        // Into the innermost key "value" that it brings along.
        std::any& inner = e.holder().value_;
        if (!inner.has_value()) inner = std::move(value_);
        value_.reset();
    }
    lastFound_ = nullptr;
    e.parent_ = this;
    e.prev_ = next ? next->prev_ : first_ ? last() : &e;
    e.next_ = next;
    (next == first_ ? first_ : e.prev_->next_) = &e;
    (next ? next : first_)->prev_ = &e;
    if (isIndexed())
        index().add(e);
    else
        ++childCount_;
    e.self_.keep(std::move(child));
}

std::shared_ptr<Element> Element::unlink(Element& child) noexcept {
    std::shared_ptr<Element> self = child.self_.release();
    if (isIndexed())
        index().remove(child);
    else
        --childCount_;
    Element* const next = child.next_;
    (&child == first_ ? first_ : child.prev_->next_) = next;
    if (first_) (next ? next : first_)->prev_ = child.prev_;
    child.prev_ = child.next_ = child.parent_ = nullptr;
    lastFound_ = nullptr;
    return self;
}

const std::any& Element::value() const { return holder().value_; }

const std::any& Element::valueOf(std::string_view name) const {
    static const auto& none = *new std::any;
    if (name.empty()) return value();
    if (const Element* const key = find(name)) return key->value();
    return name == valueKey ? value() : none;
}

template <typename T>
T Element::as(std::string_view name) const {
    try {
        return valuetext::convert<T>(valueOf(name));
    } catch (const std::invalid_argument& error) {
        throw std::invalid_argument(path() + (name.empty() ? "" : "/") + std::string(name) + ": " +
                                    error.what());
    }
}

int Element::asInt(std::string_view name) const { return as<int>(name); }
unsigned Element::asUInt(std::string_view name) const { return as<unsigned>(name); }
unsigned long long Element::asUInt64(std::string_view name) const {
    return as<unsigned long long>(name);
}
double Element::asDouble(std::string_view name) const { return as<double>(name); }
bool Element::asBool(std::string_view name) const { return as<bool>(name); }
std::string Element::asString(std::string_view name) const { return as<std::string>(name); }
trel::rob::Vec3Template<double> Element::asVec3(std::string_view name) const {
    return as<trel::rob::Vec3Template<double>>(name);
}
trel::rob::PoseTemplate<double> Element::asPose(std::string_view name) const {
    return as<trel::rob::PoseTemplate<double>>(name);
}

void Element::setValue(const std::any& value) {
    if (!first_ && observers.all.empty() && value.has_value()) return Attr::Assign(value_, value);
    setValueOfHolder(value);
}

[[gnu::noinline]] void Element::setValueOfHolder(const std::any& value) {
    Element& e = holder();
    if (observers.all.empty()) {
        if (value.has_value()) return Attr::Assign(e.value_, value);
        e.value_.reset();
        return;
    }
    if (value.has_value()) Attr::Type(value.type());
    const auto kept = e.shared_from_this();
    std::any old = std::exchange(e.value_, std::any(value));
    try {
        observers.all.tell([&](ValueObserver& observer) { observer.valueWritten(e, value); });
    } catch (...) {
        e.holder().value_ = std::move(old);
        throw;
    }
}

void Element::restoreValue(std::any value) { Attr::Assign(holder().value_, std::move(value)); }

void Element::setValueFromString(std::string_view text) {
    Element& e = holder();
    if (observers.all.empty() && Attr::AssignText(e.value_, text)) return;
    setValue(e.ownValue() ? valuetext::parse(Attr::Type(e.value_.type()), text)
                          : std::any(std::string(text)));
}

std::string Element::getStringFromValue() const { return valuetext::render(value()); }

void Element::addAttribute(std::string_view name, std::string_view type, std::string_view value) {
    const std::any parsed = valuetext::parse(type, value);
    auto key = get(name);
    if (!key) {
        key = Create(name);
        key->kind_ = Kind::Attribute;
        appendNew(key);
    }
    key->setValue(parsed);
}

void Element::Subscribe(ValueObserver& observer) { observers.all.add(observer); }

void Element::Unsubscribe(ValueObserver& observer) { observers.all.remove(observer); }

ElementMirror::ElementMirror(std::shared_ptr<Element> element) : element_(std::move(element)) {
    if (!element_) throw std::invalid_argument("a document object needs an element");
    ++element_->mirrors_;
    element_->wasMirrored_ = true;
}

ElementMirror::ElementMirror(const ElementMirror& other) : element_(other.element_) {
    ++element_->mirrors_;
}

ElementMirror& ElementMirror::operator=(const ElementMirror& other) {
    ++other.element_->mirrors_;
    --element_->mirrors_;
    element_ = other.element_;
    return *this;
}

ElementMirror::~ElementMirror() { --element_->mirrors_; }

}  // namespace sdf
